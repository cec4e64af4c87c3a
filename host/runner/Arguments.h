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

// The host executable's command line:
// tetheroffload-service [--trace=text|jsonl|logcat] [SCENARIO]

#pragma once

#include <string>

namespace hostrunner {

enum class TraceFormat { kText, kJsonl, kLogcat };

struct Arguments {
    TraceFormat trace = TraceFormat::kText;
    std::string scenario;  // empty (or "-" given): standard input
    std::string error;     // empty when the command line was good
};

Arguments parseArguments(int argc, const char* const* argv);

constexpr const char* kUsage =
        "usage: tetheroffload-service [--trace=text|jsonl|logcat] [SCENARIO]";

}  // namespace hostrunner
