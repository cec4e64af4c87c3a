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

// Reads scenario text into checked commands. It only reads: nothing here touches the world, so a
// script is checked whole before anything runs.

#pragma once

#include <string>
#include <vector>

#include "Command.h"

namespace hostrunner {

enum class Source { kScript, kConsole };

// The longest line a scenario may have, its newline not counted. Readers stop at it, so no input
// makes them hold more.
constexpr size_t kMaxLineBytes = 64 * 1024;

struct LineResult {
    bool blank = true;  // nothing but blanks or a comment
    Command command;
    std::string error;  // "what is wrong", without file and line
};

LineResult parseLine(const std::string& text, int line, Source source);

// A script's lines one after another, with the rule that spans lines: `device absent` only
// before any other command.
class ScriptLines {
public:
    LineResult next(const std::string& text);

    // The next line is longer than kMaxLineBytes; its reader did not keep it.
    LineResult tooLong();

    // The number of the line last read.
    int line() const { return mLine; }

private:
    int mLine = 0;
    bool mOnlyStartupSettings = true;
};

struct ScriptResult {
    std::vector<Command> commands;
    std::string error;  // "NAME:LINE: what is wrong", empty when the script is good
};

// A whole script held in memory, for tools and tests; the host executable streams its script.
// `name` is how errors name the script: its path, or "<stdin>".
ScriptResult parseScript(const std::string& text, const std::string& name);

}  // namespace hostrunner
