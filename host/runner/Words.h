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

// Splits one scenario line into words: blanks separate them, `#` starts a comment, and a word in
// double quotes may hold blanks and the escapes \" \\ \n \t \xHH.

#pragma once

#include <string>
#include <vector>

namespace hostrunner {

struct Word {
    std::string text;
    bool quoted = false;  // a quoted "absent" is text, not the keyword
};

struct SplitResult {
    std::vector<Word> words;
    std::string error;  // empty when the line was well formed
};

SplitResult splitWords(const std::string& line);

// How a message shows a word of the user's: its first 40 bytes, then "...", with every byte
// outside printable ASCII written \xHH, so that a message stays short and on one line.
std::string excerpt(const std::string& word);

}  // namespace hostrunner
