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

// What the tests read back from the host recorder: log lines as (priority, text) pairs.

#pragma once

#include <android/log.h>
#include <hostplatform/Recorder.h>

#include <string>
#include <utility>
#include <vector>

namespace datapath_test {

using LogLine = std::pair<int, std::string>;

inline std::vector<LogLine> logLines() {
    std::vector<LogLine> lines;
    for (const auto& log : hostplatform::Recorder::instance().all<hostplatform::LogRecord>()) {
        lines.emplace_back(log.prio, log.msg);
    }
    return lines;
}

inline std::vector<LogLine> logLinesAt(int prio) {
    std::vector<LogLine> lines;
    for (const auto& line : logLines()) {
        if (line.first == prio) lines.push_back(line);
    }
    return lines;
}

inline LogLine info(const std::string& msg) {
    return {ANDROID_LOG_INFO, msg};
}

inline LogLine error(const std::string& msg) {
    return {ANDROID_LOG_ERROR, msg};
}

inline std::string pointerText(const void* p) {
    char text[32];
    snprintf(text, sizeof(text), "%p", p);
    return text;
}

}  // namespace datapath_test
