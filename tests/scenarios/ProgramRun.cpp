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

#include "ProgramRun.h"

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace scenariotest {

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

std::string scratch(const std::string& name) {
    static const std::string* dir = [] {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp ? tmp : "/tmp") + "/tetheroffload-test-XXXXXX";
        atexit([] { std::filesystem::remove_all(*dir); });
        return new std::string(mkdtemp(pattern.data()));
    }();
    return *dir + "/" + name;
}

ProgramRun runProgram(const std::string& program, const std::string& args, const std::string& input,
                      Stdin from) {
    writeFile(scratch("in"), input);
    const std::string invocation = "'" + program + "' " + args;
    const std::string command =
            (from == Stdin::kFile ? invocation + " <" + scratch("in")
                                  : "cat " + scratch("in") + " | " + invocation) +
            " >" + scratch("out") + " 2>" + scratch("err");
    const int status = system(command.c_str());
    ProgramRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(scratch("out")),
                   readFile(scratch("err"))};
    for (const char* name : {"in", "out", "err"}) unlink(scratch(name).c_str());
    return run;
}

}  // namespace scenariotest
