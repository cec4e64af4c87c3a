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

// The scenario language of the host executable written out a second time, from its description:
// how a line splits into words, and which command lines are well formed. The scenario fuzz
// target holds the parser's verdict on every line against this one.

#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace reference {

struct ScenarioWord {
    std::string text;
    bool quoted = false;
};

// False when the line cannot be split (a bad quote or escape).
bool splitLine(const std::string& line, std::vector<ScenarioWord>* words);

enum class Where { kScript, kConsole };

// Blank lines and comments are well formed. `device absent` is judged as a line; where it may
// stand in a script is the caller's business.
bool wellFormed(const std::string& line, Where where);

// Decimal or 0x hexadecimal, at most `max`.
bool number(const std::string& text, uint64_t max, uint64_t* value);

// The lines of a text as std::getline reads them.
std::vector<std::string> linesOf(const std::string& text);

}  // namespace reference
