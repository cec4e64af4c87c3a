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

// Routes every line that reaches liblog into the recorder instead of standard error. Installed
// before main, so that nothing the service logs is lost.

#include <android/log.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

std::string currentThreadName() {
    char name[16] = "";  // the kernel keeps 15 characters and a NUL
    if (pthread_getname_np(pthread_self(), name, sizeof(name)) != 0) return "";
    return name;
}

void captureLine(const struct __android_logger_data* data, const char* message) {
    if (!Recorder::instance().listening()) return;  // nobody would see it
    LogRecord record;
    record.prio = data->priority;
    record.tag = data->tag != nullptr ? data->tag : "";
    record.msg = message != nullptr ? message : "";
    record.thread = currentThreadName();
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    record.wallSec = now.tv_sec;
    record.wallNsec = static_cast<int32_t>(now.tv_nsec);
    record.pid = getpid();
    record.tid = gettid();
    Recorder::instance().add(std::move(record));
}

__attribute__((constructor)) void installLogCapture() {
    __android_log_set_logger(captureLine);
    // The host liblog drops lines below INFO unless told otherwise; the device keeps them.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

}  // namespace
}  // namespace hostplatform
