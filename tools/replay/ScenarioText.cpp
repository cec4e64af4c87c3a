/*
 * Copyright (C) 2026 The Tether Offload Project
 *
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *      http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

#include "ScenarioText.h"

#include <cstdio>

namespace hostreplay {
namespace {

bool isControl(char c) {
    unsigned char u = static_cast<unsigned char>(c);
    return u < 0x20 || u == 0x7f;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (isControl(c)) {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02x", static_cast<unsigned char>(c));
            out += hex;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

}  // namespace

std::string scenarioWord(const std::string& text) {
    bool plain = !text.empty();
    for (char c : text) {
        if (c == ' ' || c == '"' || c == '\\' || c == '#' || isControl(c)) plain = false;
    }
    return plain ? text : quoted(text);
}

std::string quotedForComment(const std::string& text, size_t max) {
    if (text.size() <= max) return quoted(text);
    return quoted(text.substr(0, max)) + "...";
}

}  // namespace hostreplay
