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

// The trace a phone shows: only the log lines, as `adb logcat -v threadtime` prints them,
// formatted by liblog's own logcat formatter.

#pragma once

#include <string>

#include "hostplatform/Recorder.h"

struct AndroidLogFormat_t;

namespace hostrunner {

class LogcatTrace {
public:
    LogcatTrace();
    ~LogcatTrace();
    LogcatTrace(const LogcatTrace&) = delete;
    LogcatTrace& operator=(const LogcatTrace&) = delete;

    // The lines logcat shows for a log record (one per line of its message), without the last
    // newline; "" for every other kind of record.
    std::string format(const hostplatform::Record& record);

private:
    AndroidLogFormat_t* mFormat;  // owned
};

}  // namespace hostrunner
