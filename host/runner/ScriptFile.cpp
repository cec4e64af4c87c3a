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

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

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
        *error = path + ": cannot read the scenario";
        return nullptr;
    }
    return std::unique_ptr<ScriptFile>(new ScriptFile(in, true, path));
}

ScriptFile::ScriptFile(FILE* in, bool ownsIn, std::string name)
    : mIn(in), mOwnsIn(ownsIn), mName(std::move(name)) {}

ScriptFile::~ScriptFile() {
    if (mOwnsIn) fclose(mIn);
    if (mCopy != nullptr) fclose(mCopy);
    free(mLineBuf);
}

std::string ScriptFile::check() {
    if (!canReadAgain(mIn, &mStart)) {
        mCopy = tmpfile();
        if (mCopy == nullptr) return mName + ": cannot keep the scenario to run it";
    }
    ScriptLines lines;
    bool first = true;
    std::string text;
    while (readLine(mIn, &text)) {
        if (mCopy != nullptr) {
            fwrite(text.data(), 1, text.size(), mCopy);
            fputc('\n', mCopy);
        }
        const LineResult parsed = lines.next(text);
        if (!parsed.error.empty()) {
            return mName + ":" + std::to_string(lines.line()) + ": " + parsed.error;
        }
        if (parsed.blank) continue;
        if (first)
            mStartsWithDeviceAbsent = std::holds_alternative<DeviceAbsent>(parsed.command.body);
        first = false;
    }
    if (ferror(mIn)) return mName + ": cannot read the scenario";
    if (mCopy != nullptr && (fflush(mCopy) != 0 || ferror(mCopy))) {
        return mName + ": cannot keep the scenario to run it";
    }
    return "";
}

void ScriptFile::run(const std::function<void(const Command&)>& run) {
    FILE* from = mCopy != nullptr ? mCopy : mIn;
    if (fseek(from, mCopy != nullptr ? 0 : mStart, SEEK_SET) != 0) return;
    ScriptLines lines;
    std::string text;
    while (readLine(from, &text)) {
        const LineResult parsed = lines.next(text);
        if (!parsed.error.empty()) {
            fprintf(stderr, "%s:%d: %s (the scenario changed while it ran)\n", mName.c_str(),
                    lines.line(), parsed.error.c_str());
            fflush(stderr);
            return;
        }
        if (!parsed.blank) run(parsed.command);
    }
}

// One line without its newline; a NUL in it is kept.
bool ScriptFile::readLine(FILE* from, std::string* line) {
    const ssize_t n = getline(&mLineBuf, &mLineCap, from);
    if (n < 0) return false;
    const size_t length = n > 0 && mLineBuf[n - 1] == '\n' ? n - 1 : n;
    line->assign(mLineBuf, length);
    return true;
}

}  // namespace hostrunner
