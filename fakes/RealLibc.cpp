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

#include "fakes/RealLibc.h"

#include <dlfcn.h>
#include <errno.h>

#include <atomic>

namespace fakes {
namespace {

// What a slot holds for an entry point that is not there, so that it is looked up only once.
char gMissing;

// One constant-initialised slot per entry point; two threads racing here get the same answer.
template <typename Fn>
Fn next(std::atomic<void*>& slot, const char* name) {
    void* fn = slot.load(std::memory_order_acquire);
    if (fn == nullptr) {
        fn = dlsym(RTLD_NEXT, name);
        if (fn == nullptr) fn = &gMissing;
        slot.store(fn, std::memory_order_release);
    }
    return fn == &gMissing ? nullptr : reinterpret_cast<Fn>(fn);
}

// What a call returns when libc lacks the entry point, which only a broken process can see.
template <typename T>
T missing(T failure) {
    errno = ENOSYS;
    return failure;
}

std::atomic<void*> gOpen{nullptr};
std::atomic<void*> gOpen64{nullptr};
std::atomic<void*> gOpen2{nullptr};
std::atomic<void*> gIoctl{nullptr};
std::atomic<void*> gRead{nullptr};
std::atomic<void*> gReadChk{nullptr};
std::atomic<void*> gFopen{nullptr};
std::atomic<void*> gFopen64{nullptr};
std::atomic<void*> gUsleep{nullptr};
std::atomic<void*> gPropertyGet{nullptr};

using OpenFn = int (*)(const char*, int, ...);
using Open2Fn = int (*)(const char*, int);
using IoctlFn = int (*)(int, unsigned long, ...);
using ReadFn = ssize_t (*)(int, void*, size_t);
using ReadChkFn = ssize_t (*)(int, void*, size_t, size_t);
using FopenFn = FILE* (*)(const char*, const char*);
using UsleepFn = int (*)(useconds_t);

}  // namespace

int realOpen(const char* path, int flags, mode_t mode) {
    OpenFn fn = next<OpenFn>(gOpen, "open");
    return fn == nullptr ? missing(-1) : fn(path, flags, mode);
}

int realOpen64(const char* path, int flags, mode_t mode) {
    OpenFn fn = next<OpenFn>(gOpen64, "open64");
    return fn == nullptr ? missing(-1) : fn(path, flags, mode);
}

int realOpen2(const char* path, int flags) {
    Open2Fn fn = next<Open2Fn>(gOpen2, "__open_2");
    return fn == nullptr ? missing(-1) : fn(path, flags);
}

int realIoctl(int fd, unsigned long request, void* arg) {
    IoctlFn fn = next<IoctlFn>(gIoctl, "ioctl");
    return fn == nullptr ? missing(-1) : fn(fd, request, arg);
}

ssize_t realRead(int fd, void* buf, size_t count) {
    ReadFn fn = next<ReadFn>(gRead, "read");
    return fn == nullptr ? missing<ssize_t>(-1) : fn(fd, buf, count);
}

ssize_t realReadChk(int fd, void* buf, size_t count, size_t bufLen) {
    ReadChkFn fn = next<ReadChkFn>(gReadChk, "__read_chk");
    return fn == nullptr ? missing<ssize_t>(-1) : fn(fd, buf, count, bufLen);
}

FILE* realFopen(const char* path, const char* mode) {
    FopenFn fn = next<FopenFn>(gFopen, "fopen");
    return fn == nullptr ? missing<FILE*>(nullptr) : fn(path, mode);
}

FILE* realFopen64(const char* path, const char* mode) {
    FopenFn fn = next<FopenFn>(gFopen64, "fopen64");
    return fn == nullptr ? missing<FILE*>(nullptr) : fn(path, mode);
}

int realUsleep(useconds_t micros) {
    UsleepFn fn = next<UsleepFn>(gUsleep, "usleep");
    return fn == nullptr ? missing(-1) : fn(micros);
}

PropertyGetFn realPropertyGet() {
    return next<PropertyGetFn>(gPropertyGet, "property_get");
}

}  // namespace fakes
