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

// A scenario file, or standard input, read twice and never held whole: a first pass checks every
// line before the service starts, a second one runs them. Standard input that cannot be read
// again is copied, as it is checked, to a temporary file that has no name.

#pragma once

#include <stdio.h>

#include <functional>
#include <memory>
#include <string>

#include "Command.h"

namespace hostrunner {

class ScriptFile {
public:
    // The script at `path`, or standard input when `path` is empty. Null, with `error` set to
    // "PATH: cannot read the scenario: WHY", when it cannot be opened.
    static std::unique_ptr<ScriptFile> open(const std::string& path, std::string* error);
    ~ScriptFile();
    ScriptFile(const ScriptFile&) = delete;
    ScriptFile& operator=(const ScriptFile&) = delete;

    // The first pass: "NAME:LINE: what is wrong" for the first bad line (or "NAME: ..." when the
    // input cannot be read or kept), or empty.
    std::string check();

    // Whether the first command is the start-up setting `device absent` (after check()).
    bool startsWithDeviceAbsent() const { return mStartsWithDeviceAbsent; }

    // The second pass: hands each command to `run`, in order. Returns what stopped it early (a
    // line that no longer reads as it did, the file having changed in between, or a failed
    // read), or empty when every line ran.
    std::string run(const std::function<void(const Command&)>& run);

private:
    enum class Read { kLine, kTooLong, kEnd, kFailed };

    ScriptFile(FILE* in, bool ownsIn, std::string name);
    Read readLine(FILE* from);
    std::string failure(const char* what, int errnum) const;

    FILE* mIn;
    bool mOwnsIn;
    std::string mName;      // how errors name the script: its path, or "<stdin>"
    long mStart = 0;        // where the script begins in mIn
    FILE* mCopy = nullptr;  // standard input as read, when mIn cannot be read again
    bool mStartsWithDeviceAbsent = false;
    std::string mLine;   // the line last read, reused
    int mReadErrno = 0;  // why the last read failed
};

}  // namespace hostrunner
