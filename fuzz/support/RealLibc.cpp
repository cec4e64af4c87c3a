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

#include "fuzz/support/RealLibc.h"

#include <dlfcn.h>
#include <errno.h>

#include <atomic>

namespace fuzzsupport {
namespace {

// Constant-initialised slots; two threads racing here both get the same answer from dlsym.
template <typename Fn>
Fn next(std::atomic<void*>& slot, const char* name) {
    void* fn = slot.load(std::memory_order_acquire);
    if (fn == nullptr) {
        fn = dlsym(RTLD_NEXT, name);
        slot.store(fn, std::memory_order_release);
    }
    return reinterpret_cast<Fn>(fn);
}

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

using OpenFn = int (*)(const char*, int, ...);
using Open2Fn = int (*)(const char*, int);
using IoctlFn = int (*)(int, unsigned long, ...);
using ReadFn = ssize_t (*)(int, void*, size_t);
using ReadChkFn = ssize_t (*)(int, void*, size_t, size_t);

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

}  // namespace fuzzsupport
