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

#include "fuzz/support/FakeModem.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <chrono>

#include "fuzz/support/RealLibc.h"

namespace fuzzsupport {
namespace {

constexpr size_t kHeaderSize = 16;
constexpr size_t kMaxPayload = 256;
constexpr uint32_t kStatsMsg = 4;
constexpr std::chrono::seconds kHangLimit{10};

// Constant-initialised: every read() of the process asks it, from the first call on.
std::atomic<int> gDeviceFd{-1};

uint32_t u32At(const uint8_t* record, size_t offset) {
    uint32_t value;
    memcpy(&value, record + offset, sizeof(value));
    return value;
}

}  // namespace

FakeModem& FakeModem::instance() {
    // Never destroyed: the event thread stays blocked in read() while the process exits.
    static FakeModem* modem = new FakeModem();
    return *modem;
}

bool FakeModem::isDevicePath(const char* path) {
    return path != nullptr && strcmp(path, kPath) == 0;
}

bool FakeModem::isDeviceFd(int fd) {
    return fd >= 0 && fd == gDeviceFd.load(std::memory_order_acquire);
}

// A real descriptor that nothing else owns, so that its number stays the device's.
int FakeModem::open() {
    int fd = realOpen("/dev/null", O_RDWR, 0);
    if (fd >= 0) gDeviceFd.store(fd, std::memory_order_release);
    return fd;
}

void FakeModem::feed(const std::vector<ModemRead>& reads) {
    std::unique_lock<std::mutex> lock(mLock);
    mQueue.insert(mQueue.end(), reads.begin(), reads.end());
    mChanged.notify_all();
    if (!mChanged.wait_for(lock, kHangLimit, [&] { return mQueue.empty() && mReaderBlocked; })) {
        fprintf(stderr, "fake modem: the event thread did not come back to read()\n");
        abort();
    }
}

bool FakeModem::waitReaderBlocked() {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, kHangLimit, [&] { return mReaderBlocked; });
}

void FakeModem::setRequestObserver(RequestObserver observer) {
    std::lock_guard<std::mutex> lock(mLock);
    mObserver = std::move(observer);
}

void FakeModem::setIoctlError(int errnum) {
    std::lock_guard<std::mutex> lock(mLock);
    mIoctlError = errnum;
}

void FakeModem::setStatsAnswer(uint64_t rxBytes, uint64_t txBytes, uint32_t dataLen) {
    std::lock_guard<std::mutex> lock(mLock);
    mRxBytes = rxBytes;
    mTxBytes = txBytes;
    mStatsLen = dataLen;
}

// The bytes the driver takes from the caller: the header and data_len payload bytes (at most
// 256), or the whole statistics buffer. A record shorter than it claims is read past its end,
// which the sanitizer reports.
std::vector<uint8_t> FakeModem::takeRequest(const uint8_t* record) const {
    size_t size = kHeaderSize + std::min<size_t>(u32At(record, 12), kMaxPayload);
    if (u32At(record, 8) == kStatsMsg) size = kStatsBufSize;
    return std::vector<uint8_t>(record, record + size);
}

int FakeModem::ioctl(void* arg) {
    if (arg == nullptr) {
        errno = EFAULT;
        return -1;
    }
    auto* record = static_cast<uint8_t*>(arg);
    std::vector<uint8_t> request = takeRequest(record);
    RequestObserver observer;
    int errnum;
    {
        std::lock_guard<std::mutex> lock(mLock);
        observer = mObserver;
        errnum = mIoctlError;
        if (errnum == 0 && u32At(record, 8) == kStatsMsg) {
            memcpy(record + 12, &mStatsLen, sizeof(mStatsLen));
            memcpy(record + 16, &mRxBytes, sizeof(mRxBytes));
            memcpy(record + 80, &mTxBytes, sizeof(mTxBytes));
        }
    }
    if (observer) observer(request);
    if (errnum != 0) {
        errno = errnum;
        return -1;
    }
    return 0;
}

// Only the bytes of the record are written: the rest of the caller's buffer is left alone, as
// the kernel leaves it.
ssize_t FakeModem::read(void* buf, size_t count) {
    ModemRead next;
    {
        std::unique_lock<std::mutex> lock(mLock);
        mReaderBlocked = true;
        mChanged.notify_all();
        mChanged.wait(lock, [&] { return !mQueue.empty(); });
        mReaderBlocked = false;
        next = std::move(mQueue.front());
        mQueue.pop_front();
    }
    if (next.errnum != 0) {
        errno = next.errnum;
        return -1;
    }
    const size_t size = std::min(next.bytes.size(), count);
    if (size > 0) memcpy(buf, next.bytes.data(), size);
    return static_cast<ssize_t>(size);
}

}  // namespace fuzzsupport
