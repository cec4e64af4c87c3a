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

// The libc entry points through which the service reaches its world: open, ioctl and read of
// "/dev/vexa", fopen of the two conntrack files, and usleep. Defined in the program itself, they
// come before libc and the sanitizer runtimes, on the desktop (glibc) and on a phone (bionic).
// They answer for the fakes and hand every other call on unchanged.
//
// These definitions are the entry points themselves, so the fortified inline wrappers of the
// headers must not stand in for them.

#undef _FORTIFY_SOURCE

#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/types.h>

#include <atomic>

#include "fakes/ConntrackFiles.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/Pauses.h"
#include "fakes/RealLibc.h"

using fakes::FakeVexaDevice;

namespace {

// bionic declares the request as int, glibc as unsigned long.
#if defined(__BIONIC__)
using IoctlRequest = int;
#else
using IoctlRequest = unsigned long;
#endif

std::atomic<bool> gPausesSkipped{false};

using RealOpenFn = int (*)(const char*, int, mode_t);

// The mode argument is there only when the flags ask for a new file.
int routeOpen(const char* path, int flags, va_list args, RealOpenFn realOpen) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) mode = va_arg(args, mode_t);
    if (FakeVexaDevice::isDevicePath(path)) return FakeVexaDevice::instance().open(path);
    return realOpen(path, flags, mode);
}

FILE* routeFopen(const char* path, const char* mode, FILE* (*realFopen)(const char*, const char*)) {
    FILE* standIn = nullptr;
    if (fakes::ConntrackFiles::open(path, mode, &standIn)) return standIn;
    return realFopen(path, mode);
}

}  // namespace

namespace fakes {

void skipPauses(bool skipped) {
    gPausesSkipped.store(skipped, std::memory_order_relaxed);
}

}  // namespace fakes

extern "C" {

int open(const char* path, int flags, ...);
int open64(const char* path, int flags, ...);
int __open_2(const char* path, int flags);
int ioctl(int fd, IoctlRequest request, ...);
ssize_t read(int fd, void* buf, size_t count);
ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen);
int usleep(useconds_t micros);

int open(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const int fd = routeOpen(path, flags, args, fakes::realOpen);
    va_end(args);
    return fd;
}

int open64(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const int fd = routeOpen(path, flags, args, fakes::realOpen64);
    va_end(args);
    return fd;
}

// What a fortified open() calls.
int __open_2(const char* path, int flags) {
    if (FakeVexaDevice::isDevicePath(path)) return FakeVexaDevice::instance().open(path);
    return fakes::realOpen2(path, flags);
}

int ioctl(int fd, IoctlRequest request, ...) {
    va_list args;
    va_start(args, request);
    void* arg = va_arg(args, void*);
    va_end(args);
    const auto req = static_cast<unsigned long>(request);
    if (FakeVexaDevice::isDeviceFd(fd)) return FakeVexaDevice::instance().ioctl(fd, req, arg);
    return fakes::realIoctl(fd, req, arg);
}

ssize_t read(int fd, void* buf, size_t count) {
    if (FakeVexaDevice::isDeviceFd(fd)) return FakeVexaDevice::instance().read(fd, buf, count);
    return fakes::realRead(fd, buf, count);
}

// What a fortified read() calls when the buffer's size is known.
ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen) {
    if (!FakeVexaDevice::isDeviceFd(fd)) return fakes::realReadChk(fd, buf, count, bufLen);
    if (count > bufLen) abort();
    return FakeVexaDevice::instance().read(fd, buf, count);
}

FILE* fopen(const char* path, const char* mode) {
    return routeFopen(path, mode, fakes::realFopen);
}

FILE* fopen64(const char* path, const char* mode) {
    return routeFopen(path, mode, fakes::realFopen64);
}

// The event thread's back-off and the bridge's pause cost only time, which a fuzz target skips;
// the order of what they separate stays the same.
int usleep(useconds_t micros) {
    if (gPausesSkipped.load(std::memory_order_relaxed)) return 0;
    return fakes::realUsleep(micros);
}

}  // extern "C"
