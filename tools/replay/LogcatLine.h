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

// One line of a captured log, as `adb logcat` writes it in the threadtime format
// ("MM-DD HH:MM:SS.mmm  PID  TID L TAG: MESSAGE", also with a year or finer seconds, or with the
// uid before the pid as `-v uid` writes it) or in the brief format ("L/TAG(  PID): MESSAGE").

#pragma once

#include <optional>
#include <string>

namespace hostreplay {

struct LogcatLine {
    char level = '?';
    std::string tag;
    int pid = 0;
    int tid = -1;       // -1 in the brief format, which has none
    std::string stamp;  // the date and time as written; empty in the brief format
    std::string message;

    // The lines of one message that held newlines have the same header.
    std::string header() const;
};

std::optional<LogcatLine> parseLogcatLine(const std::string& text);

// A message as `-v printable` wrote it, back as it was logged: `\\` is a backslash, `\xHH` a
// byte.
std::string decodePrintable(const std::string& text);

// logd's line in place of repeated lines of one process ("uid=1000(system) NAME identical 3
// lines"), with that process's pid.
constexpr const char* kChattyTag = "chatty";

// "--------- beginning of main" and the like, which logcat writes between its buffers.
bool isLogcatBanner(const std::string& text);

}  // namespace hostreplay
