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

// The libc entry points through which the service reaches "/dev/vexa" and the conntrack files.
// Defined in the program itself, they come before libc and the sanitizer runtimes. They answer
// for the emulated device and the stand-in files and hand every other call on unchanged.

#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "ModemDevice.h"
#include "ProcFileHook.h"
#include "RealLibc.h"

using hostplatform::ModemDevice;

namespace {

using RealOpenFn = int (*)(const char*, int, mode_t);

// The mode argument is there only when the flags ask for a new file.
int routeOpen(const char* path, int flags, va_list args, RealOpenFn realOpen) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) mode = va_arg(args, mode_t);
    if (ModemDevice::isDevicePath(path)) return ModemDevice::instance().open(path);
    return realOpen(path, flags, mode);
}

}  // namespace

extern "C" {

ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen);
[[noreturn]] void __chk_fail();

int open(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    int fd = routeOpen(path, flags, args, hostplatform::realOpen);
    va_end(args);
    return fd;
}

int open64(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    int fd = routeOpen(path, flags, args, hostplatform::realOpen64);
    va_end(args);
    return fd;
}

int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list args;
    va_start(args, request);
    void* arg = va_arg(args, void*);
    va_end(args);
    if (ModemDevice::isDeviceFd(fd)) return ModemDevice::instance().ioctl(fd, request, arg);
    return hostplatform::realIoctl(fd, request, arg);
}

ssize_t read(int fd, void* buf, size_t count) {
    if (ModemDevice::isDeviceFd(fd)) return ModemDevice::instance().read(fd, buf, count);
    return hostplatform::realRead(fd, buf, count);
}

// What a fortified read() calls when the buffer's size is known.
ssize_t __read_chk(int fd, void* buf, size_t count, size_t bufLen) {
    if (ModemDevice::isDeviceFd(fd)) {
        if (count > bufLen) __chk_fail();
        return ModemDevice::instance().read(fd, buf, count);
    }
    return hostplatform::realReadChk(fd, buf, count, bufLen);
}

FILE* fopen(const char* path, const char* mode) {
    FILE* standIn = nullptr;
    if (hostplatform::openStandInProcFile(path, mode, &standIn)) return standIn;
    return hostplatform::realFopen(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    FILE* standIn = nullptr;
    if (hostplatform::openStandInProcFile(path, mode, &standIn)) return standIn;
    return hostplatform::realFopen64(path, mode);
}

}  // extern "C"
