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

// Collects the first problem found while reading the words of one command, prefixed with the
// command's name. Readers return a harmless value once something is wrong, so callers can read
// on and test ok() once at the end.

#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Words.h"

namespace hostrunner {

class Checker {
public:
    explicit Checker(std::string what) : mWhat(std::move(what)) {}

    bool ok() const { return mError.empty(); }
    const std::string& error() const { return mError; }
    void fail(const std::string& problem);
    void take(const Checker& other);  // adopts the problem of a sub-command's checker

    // Argument counts; `max` of kAny means no upper bound.
    static constexpr size_t kAny = static_cast<size_t>(-1);
    bool count(const std::vector<Word>& words, size_t min, size_t max);

    uint64_t number(const std::string& text, uint64_t max);
    int errnum(const std::string& text);
    std::array<uint8_t, 4> ipv4(const std::string& text);
    std::vector<uint8_t> hex(const std::string& text);

    // The index of `text` among `choices`.
    size_t choice(const std::string& text, std::initializer_list<const char*> choices);

    // key=value words, each key at most once and one of `allowed`.
    std::map<std::string, std::string> options(const std::vector<Word>& words, size_t from,
                                               const std::set<std::string>& allowed);

private:
    std::string mWhat;
    std::string mError;
};

}  // namespace hostrunner
