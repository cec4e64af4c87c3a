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

// Reading a JSONL trace, and the form in which the expectations are kept: every record without
// what varies from run to run (the time, descriptors, pointer values in log text).

#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace scenariotest {

using Json = nlohmann::ordered_json;

// One record a line; a line that is not a JSON object fails the calling test.
std::vector<Json> parseTrace(const std::string& text);

// The record without `t` and `fd`, with "fd=3" in log text as "fd=<fd>" and 0x followed by eight
// or more hex digits as "0x<ptr>".
Json stableForm(Json record);

// The stable form of a whole trace, one record a line. The start-up records, which two threads
// write at once, come first in a fixed order and without thread names.
std::string stableTrace(const std::vector<Json>& records);

}  // namespace scenariotest
