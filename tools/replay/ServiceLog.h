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

// The part of a captured log that a replay works from: the lines of the service's tag from one
// process, each recognised where it can be, and the input lines that are no log lines at all,
// all with their line numbers. Everything else is counted.

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ServiceMessages.h"

namespace hostreplay {

constexpr const char* kServiceTag = "TetherOffload";

struct ServiceLine {
    int lineNo = 0;  // of the input, from 1; a message of several lines has its first
    char level = '?';
    std::string text;                       // lines of one message joined with '\n'
    std::optional<ServiceMessage> message;  // empty for a text this service does not write
};

struct UnreadableLine {
    int lineNo = 0;
    std::string text;
};

struct ServiceLog {
    int pid = 0;  // 0 when no line has the service's tag
    std::vector<ServiceLine> lines;
    std::vector<UnreadableLine> unreadable;
    size_t otherTagLines = 0;
    size_t banners = 0;
    std::map<int, size_t> otherProcesses;  // pid: lines of the service's tag
};

struct ReadResult {
    ServiceLog log;
    std::string error;  // why the input is not a log; empty when it is one
};

// `pid`: the process to keep; without it, the first that logs under the service's tag.
ReadResult readServiceLog(const std::string& input, std::optional<int> pid);

}  // namespace hostreplay
