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

// Text as a scenario holds it: words that read back as they were written, and comments that
// stay on their line.

#pragma once

#include <cstddef>
#include <string>

namespace hostreplay {

// Plain when the text can stand as a word, else in double quotes with \" \\ \n \t \xHH.
std::string scenarioWord(const std::string& text);

// Quoted and escaped like a word, cut to at most `max` characters of the original.
std::string quotedForComment(const std::string& text, size_t max = 160);

}  // namespace hostreplay
