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

// Runs the host executable as a person would, and collects what it wrote and how it ended.

#pragma once

#include <string>
#include <vector>

namespace scenariotest {

struct ServiceRun {
    int status = -1;  // exit status, or -1 when the process did not exit normally
    std::string out;
    std::string err;
};

// `args` follow the program name; `input` is its standard input.
ServiceRun runService(const std::vector<std::string>& args, const std::string& input = "");

// A scenario file that lives as long as the object.
class TempScenario {
public:
    explicit TempScenario(const std::string& text);
    ~TempScenario();
    TempScenario(const TempScenario&) = delete;
    TempScenario& operator=(const TempScenario&) = delete;

    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

}  // namespace scenariotest
