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

#include "ScriptFile.h"

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include "ScenarioParser.h"

namespace hostrunner {
namespace {

// A regular file can be read again from where the script began; a pipe or a terminal cannot.
bool canReadAgain(FILE* in, long* start) {
    struct stat st;
    if (fstat(fileno(in), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    *start = ftell(in);
    return *start >= 0;
}

}  // namespace

std::unique_ptr<ScriptFile> ScriptFile::open(const std::string& path, std::string* error) {
    if (path.empty()) return std::unique_ptr<ScriptFile>(new ScriptFile(stdin, false, "<stdin>"));
    FILE* in = fopen(path.c_str(), "r");
    if (in == nullptr) {
        *error = path + ": cannot read the scenario: " + strerror(errno);
        return nullptr;
    }
    return std::unique_ptr<ScriptFile>(new ScriptFile(in, true, path));
}

ScriptFile::ScriptFile(FILE* in, bool ownsIn, std::string name)
    : mIn(in), mOwnsIn(ownsIn), mName(std::move(name)) {
    mLine.reserve(kMaxLineBytes);
}

ScriptFile::~ScriptFile() {
    if (mOwnsIn) fclose(mIn);
    if (mCopy != nullptr) fclose(mCopy);
}

std::string ScriptFile::check() {
    if (!canReadAgain(mIn, &mStart)) {
        mCopy = tmpfile();
        if (mCopy == nullptr) return failure("cannot keep the scenario to run it", errno);
    }
    ScriptLines lines;
    bool first = true;
    for (;;) {
        const Read read = readLine(mIn);
        if (read == Read::kEnd) break;
        if (read == Read::kFailed) return failure("cannot read the scenario", mReadErrno);
        const LineResult parsed = read == Read::kTooLong ? lines.tooLong() : lines.next(mLine);
        if (!parsed.error.empty()) {
            return mName + ":" + std::to_string(lines.line()) + ": " + parsed.error;
        }
        if (mCopy != nullptr && (fwrite(mLine.data(), 1, mLine.size(), mCopy) != mLine.size() ||
                                 putc('\n', mCopy) == EOF)) {
            return failure("cannot keep the scenario to run it", errno);
        }
        if (parsed.blank) continue;
        if (first)
            mStartsWithDeviceAbsent = std::holds_alternative<DeviceAbsent>(parsed.command.body);
        first = false;
    }
    if (mCopy != nullptr && fflush(mCopy) != 0) {
        return failure("cannot keep the scenario to run it", errno);
    }
    return "";
}

std::string ScriptFile::run(const std::function<void(const Command&)>& run) {
    FILE* from = mCopy != nullptr ? mCopy : mIn;
    if (fseek(from, mCopy != nullptr ? 0 : mStart, SEEK_SET) != 0) {
        return failure("cannot read the scenario", errno);
    }
    ScriptLines lines;
    for (;;) {
        const Read read = readLine(from);
        if (read == Read::kEnd) return "";
        if (read == Read::kFailed) return failure("cannot read the scenario", mReadErrno);
        const LineResult parsed = read == Read::kTooLong ? lines.tooLong() : lines.next(mLine);
        if (!parsed.error.empty()) {
            return mName + ":" + std::to_string(lines.line()) + ": " + parsed.error +
                   " (the scenario changed while it ran)";
        }
        if (!parsed.blank) run(parsed.command);
    }
}

// One line into mLine, without its newline; a NUL in it is kept. A line longer than
// kMaxLineBytes is not read on: the input may never end.
ScriptFile::Read ScriptFile::readLine(FILE* from) {
    mLine.clear();
    int c;
    while ((c = getc_unlocked(from)) != EOF) {
        if (c == '\n') return Read::kLine;
        if (mLine.size() == kMaxLineBytes) return Read::kTooLong;
        mLine.push_back(static_cast<char>(c));
    }
    if (ferror(from)) {
        mReadErrno = errno;
        return Read::kFailed;
    }
    return mLine.empty() ? Read::kEnd : Read::kLine;
}

std::string ScriptFile::failure(const char* what, int errnum) const {
    return mName + ": " + what + ": " + strerror(errnum);
}

}  // namespace hostrunner
