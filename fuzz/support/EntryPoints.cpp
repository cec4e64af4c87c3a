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

// The libc entry points through which the service reaches "/dev/vexa", and usleep. Defined in the
// fuzz program itself, they come before libc and the sanitizer runtime. Device calls go to the
// fake device; every other call is handed on unchanged.
//
// The definitions below are the entry points themselves, so the fortified inline wrappers of the
// headers must not stand in for them.
//
// usleep returns at once: the event thread's back-off after a failed read and the bridge's pause
// only cost time here, and the order of what they separate stays the same.

#undef _FORTIFY_SOURCE

#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <unistd.h>

#include "fuzz/support/FakeModem.h"
#include "fuzz/support/RealLibc.h"

using fuzzsupport::FakeModem;

namespace {

// bionic declares the request as int, glibc as unsigned long.
#if defined(__BIONIC__)
using IoctlRequest = int;
#else
using IoctlRequest = unsigned long;
#endif

using RealOpenFn = int (*)(const char*, int, mode_t);

// The mode argument is there only when the flags ask for a new file.
int routeOpen(const char* path, int flags, va_list args, RealOpenFn realOpen) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) mode = va_arg(args, mode_t);
    if (FakeModem::isDevicePath(path)) return FakeModem::instance().open();
    return realOpen(path, flags, mode);
}

}  // namespace

extern "C" {

ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen);
int __open_2(const char* path, int flags);
int ioctl(int fd, IoctlRequest request, ...);

int open(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    int fd = routeOpen(path, flags, args, fuzzsupport::realOpen);
    va_end(args);
    return fd;
}

int open64(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    int fd = routeOpen(path, flags, args, fuzzsupport::realOpen64);
    va_end(args);
    return fd;
}

// What a fortified open() calls.
int __open_2(const char* path, int flags) {
    if (FakeModem::isDevicePath(path)) return FakeModem::instance().open();
    return fuzzsupport::realOpen2(path, flags);
}

int ioctl(int fd, IoctlRequest request, ...) {
    va_list args;
    va_start(args, request);
    void* arg = va_arg(args, void*);
    va_end(args);
    if (FakeModem::isDeviceFd(fd)) return FakeModem::instance().ioctl(arg);
    return fuzzsupport::realIoctl(fd, static_cast<unsigned long>(request), arg);
}

ssize_t read(int fd, void* buf, size_t count) {
    if (FakeModem::isDeviceFd(fd)) return FakeModem::instance().read(buf, count);
    return fuzzsupport::realRead(fd, buf, count);
}

// What a fortified read() calls when the buffer's size is known.
ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen) {
    if (FakeModem::isDeviceFd(fd)) {
        if (count > bufLen) abort();
        return FakeModem::instance().read(buf, count);
    }
    return fuzzsupport::realReadChk(fd, buf, count, bufLen);
}

int usleep(useconds_t) {
    return 0;
}

}  // extern "C"
