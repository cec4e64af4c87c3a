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

// What the scenario tests share: running one of the host executables as a person does, with its
// standard streams in files of a scratch folder, and reading those files back.

#pragma once

#include <string>
#include <vector>

namespace scenariotest {

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);
std::vector<std::string> splitLines(const std::string& text);

// A file in this process's scratch folder, which is removed at exit.
std::string scratch(const std::string& name);

struct ProgramRun {
    int status;  // -1 when the process did not exit
    std::string out, err;
};

// Standard input is a file, which the program can read twice, or a pipe, which it cannot.
enum class Stdin { kFile, kPipe };

// Runs `program` with `args` (shell words) and `input` on standard input.
ProgramRun runProgram(const std::string& program, const std::string& args,
                      const std::string& input = "", Stdin from = Stdin::kFile);

}  // namespace scenariotest
