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

#include "JsonWriter.h"

#include <cstdint>

namespace hostrunner {
namespace {

constexpr const char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

// The well-formed sequences of UTF-8: how long the one that starts with `lead` is, and the range
// its second byte must lie in (the ranges exclude overlong forms, surrogates and code points
// beyond U+10FFFF). 0 for a byte that starts no sequence.
struct Lead {
    size_t length = 0;
    uint8_t low = 0x80;
    uint8_t high = 0xBF;
};

Lead leadOf(uint8_t lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80, 0xBF};
    if (lead == 0xE0) return {3, 0xA0, 0xBF};
    if (lead == 0xED) return {3, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {3, 0x80, 0xBF};
    if (lead == 0xF0) return {4, 0x90, 0xBF};
    if (lead == 0xF4) return {4, 0x80, 0x8F};
    if (lead >= 0xF1 && lead <= 0xF3) return {4, 0x80, 0xBF};
    return {};
}

// How many bytes from `at` form a well-formed sequence; otherwise 0, with `*bad` the length of
// the ill-formed part that one U+FFFD replaces (at least 1).
size_t wellFormedAt(const std::string& text, size_t at, size_t* bad) {
    const Lead lead = leadOf(static_cast<uint8_t>(text[at]));
    *bad = 1;
    if (lead.length == 0) return 0;
    for (size_t k = 1; k < lead.length; ++k) {
        if (at + k >= text.size()) {
            *bad = k;  // cut off by the end of the text
            return 0;
        }
        const auto next = static_cast<uint8_t>(text[at + k]);
        const uint8_t low = k == 1 ? lead.low : 0x80;
        const uint8_t high = k == 1 ? lead.high : 0xBF;
        if (next < low || next > high) {
            *bad = k;  // the byte that does not fit starts afresh
            return 0;
        }
    }
    return lead.length;
}

void appendAscii(char c, std::string* out) {
    static const char kHex[] = "0123456789abcdef";
    switch (c) {
        case '"':
            out->append("\\\"");
            return;
        case '\\':
            out->append("\\\\");
            return;
        case '\b':
            out->append("\\b");
            return;
        case '\f':
            out->append("\\f");
            return;
        case '\n':
            out->append("\\n");
            return;
        case '\r':
            out->append("\\r");
            return;
        case '\t':
            out->append("\\t");
            return;
        default:
            break;
    }
    if (static_cast<uint8_t>(c) < 0x20) {
        const char escape[] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0xF]};
        out->append(escape, sizeof(escape));
        return;
    }
    out->push_back(c);
}

}  // namespace

void appendJsonString(const std::string& text, std::string* out) {
    out->push_back('"');
    for (size_t at = 0; at < text.size();) {
        if (static_cast<uint8_t>(text[at]) < 0x80) {
            appendAscii(text[at], out);
            ++at;
            continue;
        }
        size_t bad = 0;
        const size_t length = wellFormedAt(text, at, &bad);
        if (length > 0) {
            out->append(text, at, length);
            at += length;
        } else {
            out->append(kReplacement);
            at += bad;
        }
    }
    out->push_back('"');
}

JsonObject& JsonObject::string(const char* key, const std::string& value) {
    name(key);
    appendJsonString(value, mOut);
    return *this;
}

JsonObject& JsonObject::strings(const char* key, const std::vector<std::string>& values) {
    name(key);
    mOut->push_back('[');
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0) mOut->push_back(',');
        appendJsonString(values[i], mOut);
    }
    mOut->push_back(']');
    return *this;
}

JsonObject& JsonObject::boolean(const char* key, bool value) {
    name(key);
    mOut->append(value ? "true" : "false");
    return *this;
}

JsonObject JsonObject::object(const char* key) {
    name(key);
    return JsonObject(mOut);
}

void JsonObject::name(const char* key) {
    if (!mEmpty) mOut->push_back(',');
    mEmpty = false;
    mOut->push_back('"');
    mOut->append(key);
    mOut->append("\":");
}

}  // namespace hostrunner
