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

// What the data-path and relay tests read back from the host recorder: log lines as (priority,
// text) pairs.

#pragma once

#include <android/log.h>
#include <stdio.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/RetainingSink.h"

namespace datapath_test {

using LogLine = std::pair<int, std::string>;

inline LogLine info(const std::string& msg) {
    return {ANDROID_LOG_INFO, msg};
}

inline LogLine error(const std::string& msg) {
    return {ANDROID_LOG_ERROR, msg};
}

// The lines recorded since the last clear; with a priority, only the lines at it.
inline std::vector<LogLine> logLines(int prio = 0) {
    std::vector<LogLine> lines;
    for (const auto& log : testsupport::recorded().all<hostplatform::LogRecord>()) {
        if (prio == 0 || log.prio == prio) lines.emplace_back(log.prio, log.msg);
    }
    return lines;
}

// The line every lookup of the client logs.
inline LogLine lookupLine(const void* client) {
    char text[48];
    snprintf(text, sizeof(text), " GetInstance p=%p\n", client);
    return info(text);
}

}  // namespace datapath_test
