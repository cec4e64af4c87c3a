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

#include "Checker.h"

#include "Values.h"

namespace hostrunner {
namespace {

std::string plural(size_t n) {
    return std::to_string(n) + (n == 1 ? " argument" : " arguments");
}

std::string expectedCount(size_t min, size_t max) {
    if (max == Checker::kAny) return "at least " + plural(min);
    if (min == max) return plural(min);
    return std::to_string(min) + " to " + plural(max);
}

}  // namespace

void Checker::fail(const std::string& problem) {
    if (mError.empty()) mError = mWhat + ": " + problem;
}

void Checker::take(const Checker& other) {
    if (mError.empty()) mError = other.mError;
}

bool Checker::count(const std::vector<Word>& words, size_t min, size_t max) {
    if (words.size() >= min && words.size() <= max) return true;
    fail("expected " + expectedCount(min, max) + ", got " + std::to_string(words.size()));
    return false;
}

uint64_t Checker::number(const std::string& text, uint64_t max) {
    uint64_t value = 0;
    switch (parseNumber(text, max, &value)) {
        case NumberRead::kOk:
            return value;
        case NumberRead::kMalformed:
            fail("malformed number '" + excerpt(text) + "'");
            break;
        case NumberRead::kOutOfRange:
            fail("number " + excerpt(text) + " out of range (at most " + std::to_string(max) + ")");
            break;
    }
    return 0;
}

int Checker::errnum(const std::string& text) {
    int value = 0;
    switch (parseErrno(text, &value)) {
        case NumberRead::kOk:
            break;
        case NumberRead::kMalformed:
            fail("malformed errno '" + excerpt(text) + "'");
            break;
        case NumberRead::kOutOfRange:
            fail("errno " + excerpt(text) + " out of range (1 to " + std::to_string(kMaxErrno) +
                 ")");
            break;
    }
    return value;
}

std::array<uint8_t, 4> Checker::ipv4(const std::string& text) {
    std::array<uint8_t, 4> addr{};
    if (!parseIpv4(text, &addr)) fail("malformed address '" + excerpt(text) + "'");
    return addr;
}

std::vector<uint8_t> Checker::hex(const std::string& text) {
    std::vector<uint8_t> bytes;
    if (!parseHexBytes(text, &bytes)) fail("malformed hex string '" + excerpt(text) + "'");
    return bytes;
}

size_t Checker::choice(const std::string& text, std::initializer_list<const char*> choices) {
    size_t index = 0;
    std::string list;
    for (const char* c : choices) {
        if (text == c) return index;
        list += (index == 0 ? "" : index + 1 == choices.size() ? " or " : ", ") + std::string(c);
        ++index;
    }
    fail("expected " + list + ", got '" + excerpt(text) + "'");
    return 0;
}

std::map<std::string, std::string> Checker::options(const std::vector<Word>& words, size_t from,
                                                    const std::set<std::string>& allowed) {
    std::map<std::string, std::string> found;
    for (size_t i = from; i < words.size(); ++i) {
        const std::string& word = words[i].text;
        size_t eq = word.find('=');
        std::string key = word.substr(0, eq);
        if (eq == std::string::npos || allowed.count(key) == 0) {
            fail("unknown option '" + excerpt(word) + "'");
        } else if (!found.emplace(key, word.substr(eq + 1)).second) {
            fail("option " + excerpt(key) + "= given twice");
        }
    }
    return found;
}

}  // namespace hostrunner
