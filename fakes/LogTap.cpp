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

#include "fakes/LogTap.h"

#include <android/log.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "fakes/Crossings.h"

namespace fakes {
namespace {

std::atomic<bool> gPassThrough{true};

// A thread's id and the process's change only in a child of fork(), which forgets them.
thread_local int32_t tCachedTid = 0;
std::atomic<int32_t> gPid{0};

int32_t currentTid() {
    if (tCachedTid == 0) tCachedTid = static_cast<int32_t>(gettid());
    return tCachedTid;
}

int32_t currentPid() {
    int32_t pid = gPid.load(std::memory_order_relaxed);
    if (pid == 0) {
        pid = getpid();
        gPid.store(pid, std::memory_order_relaxed);
    }
    return pid;
}

std::string currentThreadName() {
    char name[16] = "";  // the kernel keeps 15 characters and a NUL
    if (pthread_getname_np(pthread_self(), name, sizeof(name)) != 0) return "";
    return name;
}

void report(int priority, const char* tag, const char* message) {
    if (!Observers::any()) return;  // nobody would see it
    LogRecord record;
    record.prio = priority;
    record.tag = tag != nullptr ? tag : "";
    record.msg = message != nullptr ? message : "";
    record.thread = currentThreadName();
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    record.wallSec = now.tv_sec;
    record.wallNsec = static_cast<int32_t>(now.tv_nsec);
    record.pid = currentPid();
    record.tid = currentTid();
    Observers::report(record);
}

// The logger's signature is liblog's: a phone's (API 30 on) passes one message struct, the
// desktop's (the library as Debian builds it) the header and the text apart.
#if defined(__BIONIC__)
void tap(const struct __android_log_message* message) {
    report(message->priority, message->tag, message->message);
    if (gPassThrough.load(std::memory_order_relaxed)) __android_log_logd_logger(message);
}
#else
void tap(const struct __android_logger_data* data, const char* message) {
    report(data->priority, data->tag, message);
}
#endif

__attribute__((constructor)) void installLogTap() {
    pthread_atfork(nullptr, nullptr, [] {
        gPid.store(0, std::memory_order_relaxed);
        tCachedTid = 0;
    });
    __android_log_set_logger(tap);
    // The desktop's liblog drops lines below INFO unless told otherwise; a phone keeps them.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

}  // namespace

void LogTap::setPassThrough(bool passThrough) {
    gPassThrough.store(passThrough, std::memory_order_relaxed);
}

}  // namespace fakes
