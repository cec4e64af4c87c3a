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

// The part of a captured log that a replay works from, line by line: the lines of the service's
// tag from one process, each recognised where it can be (a message that logcat split over several
// lines put back together), and notes for the input lines that say something else a replay must
// keep (lines that are no log lines, lines too long to read, logcat's chatty lines for the
// process). Everything else is counted.

#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LogInput.h"
#include "ServiceMessages.h"
#include "Step.h"

namespace hostreplay {

constexpr const char* kServiceTag = "TetherOffload";

struct ServiceLine {
    int lineNo = 0;  // of the input, from 1; a message of several lines has its first
    char level = '?';
    std::string text;                       // lines of one message joined with '\n'
    std::optional<ServiceMessage> message;  // empty for a text this service does not write whole
    std::vector<Msg> cutFrom;  // without a message: those it can be the beginning of, cut short
};

// Where the reader hands what it keeps, in the order of the lines.
class LineSink {
public:
    virtual ~LineSink() = default;
    virtual void serviceLine(ServiceLine line) = 0;
    virtual void note(Note note) = 0;
};

struct LogCounts {
    int pid = 0;              // 0 when no line has the service's tag
    size_t serviceLines = 0;  // input lines of the tag from that process
    size_t logcatLines = 0;   // input lines that are logcat lines at all
    size_t otherTagLines = 0;
    size_t banners = 0;
    // pid: lines of the service's tag. A log may name any number of processes, so only the first
    // kListedProcesses are listed; the lines of the others are only counted.
    std::map<int, size_t> otherProcesses;
    size_t unlistedProcessLines = 0;
    static constexpr size_t kListedProcesses = 32;
};

class ServiceLogReader {
public:
    // `pid`: the process to keep; without it, the first that logs under the service's tag.
    ServiceLogReader(std::optional<int> pid, LineSink* sink);
    ~ServiceLogReader();

    void take(const InputLine& line);
    void finish();
    const LogCounts& counts() const { return mCounts; }

private:
    class Joiner;

    std::optional<int> mPid;
    LineSink* mSink;
    std::unique_ptr<Joiner> mJoiner;
    LogCounts mCounts;
    std::map<int, size_t> mEarlyChatty;  // chatty lines of each process before one was chosen
};

}  // namespace hostreplay
