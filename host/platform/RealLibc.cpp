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

#include "RealLibc.h"

#include <dlfcn.h>
#include <errno.h>

#include <atomic>

namespace hostplatform {
namespace {

// One slot per entry point. Constant-initialised, so a call that arrives before static
// initialisation (from another library's constructor, say) still finds them.
std::atomic<void*> gOpen{nullptr};
std::atomic<void*> gOpen64{nullptr};
std::atomic<void*> gIoctl{nullptr};
std::atomic<void*> gRead{nullptr};
std::atomic<void*> gReadChk{nullptr};
std::atomic<void*> gFopen{nullptr};
std::atomic<void*> gFopen64{nullptr};

// No guard variable and no lock: two threads racing here both get the same answer from dlsym.
template <typename Fn>
Fn next(std::atomic<void*>& slot, const char* name) {
    void* fn = slot.load(std::memory_order_acquire);
    if (fn == nullptr) {
        fn = dlsym(RTLD_NEXT, name);
        slot.store(fn, std::memory_order_release);
    }
    return reinterpret_cast<Fn>(fn);
}

// What a call returns when libc lacks the entry point, which only a broken process can see.
template <typename T>
T missing(T failure) {
    errno = ENOSYS;
    return failure;
}

using OpenFn = int (*)(const char*, int, ...);
using IoctlFn = int (*)(int, unsigned long, ...);
using ReadFn = ssize_t (*)(int, void*, size_t);
using ReadChkFn = ssize_t (*)(int, void*, size_t, size_t);
using FopenFn = FILE* (*)(const char*, const char*);

}  // namespace

int realOpen(const char* path, int flags, mode_t mode) {
    OpenFn fn = next<OpenFn>(gOpen, "open");
    if (fn == nullptr) return missing<int>(-1);
    return fn(path, flags, mode);
}

int realOpen64(const char* path, int flags, mode_t mode) {
    OpenFn fn = next<OpenFn>(gOpen64, "open64");
    if (fn == nullptr) return missing<int>(-1);
    return fn(path, flags, mode);
}

int realIoctl(int fd, unsigned long request, void* arg) {
    IoctlFn fn = next<IoctlFn>(gIoctl, "ioctl");
    if (fn == nullptr) return missing<int>(-1);
    return fn(fd, request, arg);
}

ssize_t realRead(int fd, void* buf, size_t count) {
    ReadFn fn = next<ReadFn>(gRead, "read");
    if (fn == nullptr) return missing<ssize_t>(-1);
    return fn(fd, buf, count);
}

ssize_t realReadChk(int fd, void* buf, size_t count, size_t bufLen) {
    ReadChkFn fn = next<ReadChkFn>(gReadChk, "__read_chk");
    if (fn == nullptr) return missing<ssize_t>(-1);
    return fn(fd, buf, count, bufLen);
}

FILE* realFopen(const char* path, const char* mode) {
    FopenFn fn = next<FopenFn>(gFopen, "fopen");
    if (fn == nullptr) return missing<FILE*>(nullptr);
    return fn(path, mode);
}

FILE* realFopen64(const char* path, const char* mode) {
    FopenFn fn = next<FopenFn>(gFopen64, "fopen64");
    if (fn == nullptr) return missing<FILE*>(nullptr);
    return fn(path, mode);
}

}  // namespace hostplatform
