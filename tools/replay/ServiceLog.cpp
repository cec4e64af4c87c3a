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

#include "LogcatLine.h"

namespace hostreplay {
namespace {

struct InputLine {
    int lineNo;
    std::string text;
    std::optional<LogcatLine> parsed;
};

std::vector<InputLine> splitLines(const std::string& input) {
    std::vector<InputLine> lines;
    size_t start = 0;
    int lineNo = 0;
    while (start < input.size()) {
        size_t end = input.find('\n', start);
        if (end == std::string::npos) end = input.size();
        std::string text = input.substr(start, end - start);
        if (!text.empty() && text.back() == '\r') text.pop_back();
        ++lineNo;
        std::optional<LogcatLine> parsed = parseLogcatLine(text);
        lines.push_back(InputLine{lineNo, std::move(text), std::move(parsed)});
        start = end + 1;
    }
    return lines;
}

// Checked before anything is read into lines: a binary file can be large.
std::string notText(const std::string& input) {
    if (input.empty()) return "it is empty";
    const size_t nul = input.find('\0');
    if (nul == std::string::npos) return "";
    return "it holds binary data (a NUL byte at offset " + std::to_string(nul) + ")";
}

bool anyLogcatLine(const std::vector<InputLine>& lines) {
    for (const InputLine& line : lines) {
        if (line.parsed) return true;
    }
    return false;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t") == std::string::npos;
}

// Puts a message that logcat wrote on several lines back together. A line that is no message
// of its own, and does not begin one, continues the line before it when they have the same
// header and together make a message, or when that line was no message either.
class MessageJoiner {
public:
    explicit MessageJoiner(std::vector<ServiceLine>* out) : mOut(out) {}

    void add(int lineNo, const LogcatLine& line) {
        std::optional<ServiceMessage> alone = matchServiceMessage(line.message);
        if (mPending && mHeader == line.header() && !alone && !beginsServiceMessage(line.message)) {
            const std::string joined = mPending->text + "\n" + line.message;
            std::optional<ServiceMessage> together = matchServiceMessage(joined);
            if (together || !mPending->message) {
                mPending->text = joined;
                mPending->message = together;
                return;
            }
        }
        flush();
        mPending = ServiceLine{lineNo, line.level, line.message, std::move(alone)};
        mHeader = line.header();
    }

    void flush() {
        if (mPending) mOut->push_back(std::move(*mPending));
        mPending.reset();
    }

private:
    std::vector<ServiceLine>* mOut;
    std::optional<ServiceLine> mPending;
    std::string mHeader;
};

int choosePid(const std::vector<InputLine>& lines, std::optional<int> pid) {
    if (pid) return *pid;
    for (const InputLine& line : lines) {
        if (line.parsed && line.parsed->tag == kServiceTag) return line.parsed->pid;
    }
    return 0;
}

}  // namespace

ReadResult readServiceLog(const std::string& input, std::optional<int> pid) {
    ReadResult result;
    result.error = notText(input);
    if (!result.error.empty()) return result;
    const std::vector<InputLine> lines = splitLines(input);
    if (!anyLogcatLine(lines)) {
        result.error = "no line of it is a logcat line (threadtime or brief format)";
        return result;
    }

    ServiceLog& log = result.log;
    log.pid = choosePid(lines, pid);
    MessageJoiner joiner(&log.lines);
    for (const InputLine& line : lines) {
        const bool ours =
                line.parsed && line.parsed->tag == kServiceTag && line.parsed->pid == log.pid;
        if (!ours) joiner.flush();
        if (ours) {
            joiner.add(line.lineNo, *line.parsed);
        } else if (line.parsed && line.parsed->tag == kServiceTag) {
            ++log.otherProcesses[line.parsed->pid];
        } else if (line.parsed) {
            ++log.otherTagLines;
        } else if (isLogcatBanner(line.text)) {
            ++log.banners;
        } else if (!isBlank(line.text)) {
            log.unreadable.push_back(UnreadableLine{line.lineNo, line.text});
        }
    }
    joiner.flush();
    return result;
}

}  // namespace hostreplay
