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

// tetheroffload-replay [--pid PID] [LOGCAT]: reads a log captured on a phone (or written by
// tetheroffload-service --trace=logcat) and writes the scenario that drives the service through
// the same calls, modem events and faults.

#include <stdio.h>

#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

#include "ScenarioBuilder.h"
#include "ServiceLog.h"

namespace {

constexpr const char* kUsage = "usage: tetheroffload-replay [--pid PID] [LOGCAT]";
constexpr int kNotALog = 2;

struct Arguments {
    std::optional<int> pid;
    std::string path;  // empty: standard input
    std::string error;
    bool help = false;
};

bool parsePid(const std::string& text, std::optional<int>* pid) {
    if (text.empty() || text.size() > 9 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    *pid = std::stoi(text);
    return true;
}

Arguments parseArguments(int argc, char** argv) {
    Arguments args;
    bool havePath = false;
    for (int i = 1; i < argc && args.error.empty(); ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            args.help = true;
        } else if (arg == "--pid" || arg.rfind("--pid=", 0) == 0) {
            const std::string value =
                    arg == "--pid" ? (i + 1 < argc ? argv[++i] : "") : arg.substr(6);
            if (!parsePid(value, &args.pid))
                args.error = "--pid needs a process id, got '" + value + "'";
        } else if (arg.size() > 1 && arg[0] == '-') {
            args.error = "unknown option '" + arg + "'";
        } else if (havePath) {
            args.error = "more than one log";
        } else {
            havePath = true;
            if (arg != "-") args.path = arg;
        }
    }
    return args;
}

bool readInput(const std::string& path, std::string* text) {
    std::ostringstream in;
    if (path.empty()) {
        in << std::cin.rdbuf();
    } else {
        std::ifstream file(path, std::ios::binary);
        if (!file) return false;
        in << file.rdbuf();
    }
    *text = in.str();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const Arguments args = parseArguments(argc, argv);
    if (args.help) {
        printf("%s\n", kUsage);
        return 0;
    }
    if (!args.error.empty()) {
        fprintf(stderr, "tetheroffload-replay: %s\n%s\n", args.error.c_str(), kUsage);
        return kNotALog;
    }
    const std::string source = args.path.empty() ? "<stdin>" : args.path;
    std::string input;
    if (!readInput(args.path, &input)) {
        fprintf(stderr, "tetheroffload-replay: %s: cannot read the log\n", source.c_str());
        return kNotALog;
    }
    const hostreplay::ReadResult read = hostreplay::readServiceLog(input, args.pid);
    if (!read.error.empty()) {
        fprintf(stderr, "tetheroffload-replay: %s is not a log: %s\n", source.c_str(),
                read.error.c_str());
        return kNotALog;
    }
    if (read.log.lines.empty()) {
        fprintf(stderr, "tetheroffload-replay: %s: no line of tag %s to replay\n", source.c_str(),
                hostreplay::kServiceTag);
    }
    const std::string scenario = hostreplay::buildScenario(read.log, source);
    fwrite(scenario.data(), 1, scenario.size(), stdout);
    return fflush(stdout) == 0 ? 0 : 1;
}
