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

// tetheroffload-replay [--pid PID] [LOG]: reads a log captured on a phone (a logcat, a bug report
// zip or its main text file, or what tetheroffload-service --trace=logcat wrote) and writes the
// scenario that drives the service through the same calls, modem events and faults.

#include <stdio.h>

#include <exception>
#include <optional>
#include <string>

#include "Replay.h"

namespace {

constexpr const char* kUsage = "usage: tetheroffload-replay [--pid PID] [LOGCAT|BUGREPORT]";

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

}  // namespace

int main(int argc, char** argv) {
    const Arguments args = parseArguments(argc, argv);
    if (args.help) {
        printf("%s\n", kUsage);
        return 0;
    }
    if (!args.error.empty()) {
        fprintf(stderr, "tetheroffload-replay: %s\n%s\n", args.error.c_str(), kUsage);
        return hostreplay::kNotReplayed;
    }
    hostreplay::LogInput input;
    std::string message;
    int status = hostreplay::kNotReplayed;
    try {
        if (!input.open(args.path)) {
            message = input.error();
        } else {
            status = hostreplay::replayLog(
                    input, args.pid,
                    [](const std::string& text) { fwrite(text.data(), 1, text.size(), stdout); },
                    &message);
        }
    } catch (const std::exception& e) {
        // Its memory does not grow with the log: this is a machine that has none left.
        message = input.name() + ": the replay stopped: " + e.what();
        status = hostreplay::kNotReplayed;
    }
    if (!message.empty()) fprintf(stderr, "tetheroffload-replay: %s\n", message.c_str());
    if (fflush(stdout) != 0) return 1;
    return status;
}
