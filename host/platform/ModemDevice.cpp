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

#include "ModemDevice.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>

#include <atomic>
#include <utility>

#include "RealLibc.h"
#include "datapath/vexa_protocol.h"
#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

// The descriptor of the last successful open. Constant-initialised: read() asks it for every
// descriptor of the process, from the first call on.
std::atomic<int> gDeviceFd{-1};

}  // namespace

ModemDevice& ModemDevice::instance() {
    static ModemDevice* device = new ModemDevice();
    return *device;
}

bool ModemDevice::isDevicePath(const char* path) {
    return path != nullptr && strcmp(path, VEXA_DEV_PATH) == 0;
}

bool ModemDevice::isDeviceFd(int fd) {
    return fd >= 0 && fd == gDeviceFd.load(std::memory_order_acquire);
}

int ModemDevice::deviceFd() {
    return gDeviceFd.load(std::memory_order_acquire);
}

int ModemDevice::open(const char* path) {
    int fd = -1;
    int errnum = ENOENT;
    if (settings().present) {
        // A real descriptor that nothing else owns, so that its number stays ours.
        fd = realOpen("/dev/null", O_RDWR, 0);
        errnum = fd < 0 ? errno : 0;
    }
    if (fd >= 0) {
        std::lock_guard<std::mutex> lock(mLock);
        mOpened = true;
        gDeviceFd.store(fd, std::memory_order_release);
    }
    Recorder::instance().add(OpenRecord{path, fd, errnum});
    if (fd < 0) errno = errnum;
    return fd;
}

int ModemDevice::ioctl(int fd, unsigned long request, void* arg) {
    IoctlRecord record;
    record.fd = fd;
    record.req = request;
    const int errnum = answer(request, arg, &record.bytes);
    record.ret = errnum == 0 ? 0 : -1;
    record.errnum = errnum;
    Recorder::instance().add(std::move(record));
    if (errnum != 0) errno = errnum;
    return errnum == 0 ? 0 : -1;
}

// Reads the request as the driver does and answers it; returns the errno of a failure, or 0.
int ModemDevice::answer(unsigned long request, void* arg, std::vector<uint8_t>* requestBytes) {
    if (request != VEXA_IOCTL_REQUEST) return ENOTTY;
    if (arg == nullptr) return EFAULT;
    *requestBytes = readRequest(static_cast<const uint8_t*>(arg));
    const Settings now = settings();
    if (now.ioctlError != 0) return now.ioctlError;
    if (isStatsRequest(*requestBytes)) writeStatsAnswer(static_cast<uint8_t*>(arg), now.stats);
    return 0;
}

ssize_t ModemDevice::read(int /*fd*/, void* buf, size_t count) {
    auto* bytes = static_cast<uint8_t*>(buf);
    const TakenRead taken = mEvents.take(bytes, count);
    // Built only for a listener: a read nobody traces costs no allocation.
    if (Recorder::instance().listening()) recordRead(taken, bytes);
    if (taken.errnum != 0) {
        errno = taken.errnum;
        return -1;
    }
    return static_cast<ssize_t>(taken.size);
}

void ModemDevice::recordRead(const TakenRead& taken, const uint8_t* bytes) {
    ReadRecord record;
    if (taken.errnum != 0) {
        record.ret = -1;
        record.errnum = taken.errnum;
    } else {
        record.ret = static_cast<long>(taken.size);
        record.bytes.assign(bytes, bytes + taken.size);
    }
    Recorder::instance().add(std::move(record));
}

void ModemDevice::setPresent(bool present) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.present = present;
}

void ModemDevice::setIoctlError(int errnum) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.ioctlError = errnum;
}

void ModemDevice::setStatsAnswer(const StatsAnswer& answer) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.stats = answer;
}

void ModemDevice::restoreDefaults() {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings = Settings();
}

bool ModemDevice::wasOpened() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mOpened;
}

ModemDevice::Settings ModemDevice::settings() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mSettings;
}

}  // namespace hostplatform
