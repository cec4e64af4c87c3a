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

#include "Arguments.h"

namespace hostrunner {

Arguments parseArguments(int argc, const char* const* argv) {
    Arguments args;
    bool haveScenario = false;
    for (int i = 1; i < argc && args.error.empty(); ++i) {
        const std::string arg = argv[i];
        if (arg == "--trace=text") {
            args.trace = TraceFormat::kText;
        } else if (arg == "--trace=jsonl") {
            args.trace = TraceFormat::kJsonl;
        } else if (arg == "--trace=logcat") {
            args.trace = TraceFormat::kLogcat;
        } else if (arg.size() > 1 && arg[0] == '-') {
            args.error = "unknown option '" + arg + "'";
        } else if (haveScenario) {
            args.error = "more than one scenario";
        } else {
            haveScenario = true;
            if (arg != "-") args.scenario = arg;
        }
    }
    return args;
}

}  // namespace hostrunner
