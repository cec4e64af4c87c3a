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

// The console's terminal, through libedit: line editing, a history kept across sessions in the
// user's state folder, Tab completion of commands and keywords, and Ctrl-C abandoning the line.

#pragma once

#include <string>

#include "Console.h"

namespace hostrunner {

class EditLineReader : public LineReader {
public:
    // Reads the history file, if there is one. `prompt` begins every line.
    explicit EditLineReader(std::string prompt);
    Input readLine(std::string* line) override;

private:
    std::string mPrompt;
    std::string mHistoryPath;  // empty without a home folder
};

}  // namespace hostrunner
