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

// The phone side: liblog's own logger hook (API 30 and later); ro.build.type is the device's.

#include <android/log.h>

#include <utility>

#include "fuzz/support/PlatformGlue.h"

namespace fuzzsupport {
namespace {

LogObserver& observer() {
    static auto* o = new LogObserver();
    return *o;
}

void dropLine(const struct __android_log_message* message) {
    if (observer() && message != nullptr && message->message != nullptr) {
        observer()(message->message);
    }
}

}  // namespace

void silenceLog(LogObserver o) {
    observer() = std::move(o);
    __android_log_set_logger(dropLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

void setBuildType(const std::string&) {}

}  // namespace fuzzsupport
