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

// The trace for people: one line a record, logcat-style log lines, calls paired with their
// replies by scenario line, device records decoded beside their bytes, colour on request. A log
// message of several lines and a dump's report take more lines; the console's errors none, as
// the console shows them itself.

#pragma once

#include <string>

#include "hostplatform/Recorder.h"

namespace hostrunner {

class TextTrace {
public:
    explicit TextTrace(bool colour) : mColour(colour) {}

    // The record's lines without the last newline; empty for a record the trace leaves out.
    std::string format(const hostplatform::Record& record);

private:
    friend struct TextFields;

    std::string paint(const char* colour, const std::string& text) const;

    bool mColour;
    int mLastCallLine = 0;  // replies carry no line of their own
};

// Control characters, quotes and backslashes as C escapes, so that a record stays on one line.
std::string escapeText(const std::string& text);

}  // namespace hostrunner
