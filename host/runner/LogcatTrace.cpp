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

#include "LogcatTrace.h"

#include <log/logprint.h>
#include <stdlib.h>

namespace hostrunner {
namespace {

AndroidLogEntry entryOf(const hostplatform::LogRecord& r) {
    AndroidLogEntry entry = {};
    entry.tv_sec = static_cast<time_t>(r.wallSec);
    entry.tv_nsec = r.wallNsec;
    entry.priority = static_cast<android_LogPriority>(r.prio);
    entry.pid = r.pid;
    entry.tid = r.tid;
    entry.tag = r.tag.c_str();
    entry.tagLen = r.tag.size();
    entry.message = r.msg.c_str();
    entry.messageLen = r.msg.size();
    return entry;
}

}  // namespace

LogcatTrace::LogcatTrace() : mFormat(android_log_format_new()) {
    if (mFormat != nullptr) android_log_setPrintFormat(mFormat, FORMAT_THREADTIME);
}

LogcatTrace::~LogcatTrace() {
    if (mFormat != nullptr) android_log_format_free(mFormat);
}

std::string LogcatTrace::format(const hostplatform::Record& record) {
    const auto* log = std::get_if<hostplatform::LogRecord>(&record.body);
    if (log == nullptr || mFormat == nullptr) return "";
    const AndroidLogEntry entry = entryOf(*log);
    char buffer[1024];
    size_t length = 0;
    char* text = android_log_formatLogLine(mFormat, buffer, sizeof(buffer), &entry, &length);
    if (text == nullptr) return "";
    std::string lines(text, length);
    if (text != buffer) free(text);
    // The formatter ends every line with a newline; the caller adds the last one.
    if (!lines.empty() && lines.back() == '\n') lines.pop_back();
    return lines;
}

}  // namespace hostrunner
