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

#include "ServiceLog.h"

#include <utility>

#include "FormatPattern.h"
#include "LogcatLine.h"
#include "ScenarioText.h"

namespace hostreplay {
namespace {

constexpr size_t kExcerpt = 80;

// Counts a line of `pid` while the map is within its bound, so that a log of many processes keeps
// the reader's memory flat; false for a line of a process past the bound.
bool countLine(std::map<int, size_t>* byPid, int pid) {
    auto it = byPid->find(pid);
    if (it == byPid->end()) {
        if (byPid->size() >= LogCounts::kListedProcesses) return false;
        it = byPid->emplace(pid, 0).first;
    }
    ++it->second;
    return true;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t") == std::string::npos;
}

}  // namespace

// Puts a message that logcat wrote on several lines back together. A line that is no message
// of its own, and does not begin one, continues the line before it when they have the same
// header and together make a message, or when that line was no message either (up to the
// longest text a message can have).
class ServiceLogReader::Joiner {
public:
    explicit Joiner(LineSink* sink) : mSink(sink) {}

    void add(int lineNo, const LogcatLine& line) {
        std::optional<ServiceMessage> alone = matchServiceMessage(line.message);
        if (mPending && mHeader == line.header() && !alone && !beginsServiceMessage(line.message) &&
            mPending->text.size() + line.message.size() < FormatPattern::kMaxText) {
            const std::string joined = mPending->text + "\n" + line.message;
            std::optional<ServiceMessage> together = matchServiceMessage(joined);
            if (together || !mPending->message) {
                mPending->text = joined;
                mPending->message = together;
                return;
            }
        }
        flush();
        mPending = ServiceLine{lineNo, line.level, line.message, std::move(alone), {}};
        mHeader = line.header();
    }

    void flush() {
        if (!mPending) return;
        if (!mPending->message) mPending->cutFrom = messagesCutShort(mPending->text);
        mSink->serviceLine(std::move(*mPending));
        mPending.reset();
    }

private:
    LineSink* mSink;
    std::optional<ServiceLine> mPending;
    std::string mHeader;
};

ServiceLogReader::ServiceLogReader(std::optional<int> pid, LineSink* sink)
    : mPid(pid), mSink(sink), mJoiner(std::make_unique<Joiner>(sink)) {
    mCounts.pid = pid.value_or(0);
}

ServiceLogReader::~ServiceLogReader() = default;

void ServiceLogReader::take(const InputLine& input) {
    if (input.tooLong()) {
        mJoiner->flush();
        mSink->note(Note{input.lineNo,
                         "a line of " + std::to_string(input.length) + " bytes, longer than the " +
                                 std::to_string(kMaxLineBytes) + " a replay reads, skipped: " +
                                 quotedForComment(input.text, kExcerpt)});
        return;
    }
    std::optional<LogcatLine> parsed = parseLogcatLine(input.text);
    if (parsed && input.printable) parsed->message = decodePrintable(parsed->message);
    if (parsed && parsed->tag == kServiceTag && !mPid) {
        mPid = parsed->pid;
        mCounts.pid = parsed->pid;
    }
    const bool ours = parsed && parsed->tag == kServiceTag && parsed->pid == mPid;
    if (ours) {
        ++mCounts.logcatLines;
        ++mCounts.serviceLines;
        mJoiner->add(input.lineNo, *parsed);
        return;
    }
    mJoiner->flush();
    if (parsed) {
        ++mCounts.logcatLines;
        if (parsed->tag == kServiceTag) {
            if (!countLine(&mCounts.otherProcesses, parsed->pid)) ++mCounts.unlistedProcessLines;
        } else if (parsed->tag == kChattyTag && mPid && parsed->pid == *mPid) {
            mSink->note(Note{input.lineNo,
                             "logcat's chatty line, for lines of this process that it "
                             "left out and the replay cannot repeat: " +
                                     quotedForComment(parsed->message)});
        } else {
            ++mCounts.otherTagLines;
            if (parsed->tag == kChattyTag && !mPid) countLine(&mEarlyChatty, parsed->pid);
        }
    } else if (isLogcatBanner(input.text)) {
        ++mCounts.banners;
    } else if (!isBlank(input.text)) {
        mSink->note(Note{input.lineNo, "not a log line: " + quotedForComment(input.text)});
    }
}

void ServiceLogReader::finish() {
    mJoiner->flush();
    // Chatty lines of the process that came before its first line are placed, not counted.
    if (mPid) mCounts.otherTagLines -= mEarlyChatty[*mPid];
}

}  // namespace hostreplay
