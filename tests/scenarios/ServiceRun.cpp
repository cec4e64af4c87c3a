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

#include "ServiceRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

extern char** environ;

namespace scenariotest {
namespace {

std::string tempPath(const char* what) {
    const char* dir = getenv("TMPDIR");
    std::string pattern = std::string(dir ? dir : "/tmp") + "/tetheroffload-" + what + "-XXXXXX";
    int fd = mkstemp(pattern.data());
    if (fd >= 0) close(fd);
    return pattern;
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

TempScenario::TempScenario(const std::string& text) : mPath(tempPath("scenario")) {
    writeFile(mPath, text);
}

TempScenario::~TempScenario() {
    unlink(mPath.c_str());
}

ServiceRun runService(const std::vector<std::string>& args, const std::string& input) {
    const std::string inPath = tempPath("in");
    const std::string outPath = tempPath("out");
    const std::string errPath = tempPath("err");
    writeFile(inPath, input);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, inPath.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(), O_WRONLY | O_TRUNC,
                                     0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(), O_WRONLY | O_TRUNC,
                                     0);
    std::vector<std::string> words{TETHEROFFLOAD_SERVICE};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);

    ServiceRun run;
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
        int wstatus = 0;
        if (waitpid(pid, &wstatus, 0) == pid && WIFEXITED(wstatus)) {
            run.status = WEXITSTATUS(wstatus);
        }
    }
    posix_spawn_file_actions_destroy(&actions);
    run.out = readFile(outPath);
    run.err = readFile(errPath);
    unlink(inPath.c_str());
    unlink(outPath.c_str());
    unlink(errPath.c_str());
    return run;
}

}  // namespace scenariotest
