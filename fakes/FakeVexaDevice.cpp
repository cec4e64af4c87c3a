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

#include "fakes/FakeVexaDevice.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>

#include "fakes/Crossings.h"
#include "fakes/RealLibc.h"

namespace fakes {
namespace {

// The service's end. Constant-initialised: read() asks it for every descriptor of the process,
// from the first call on.
std::atomic<int> gServiceFd{-1};

// As much room as the kernel grants, so that long runs of records seldom wait for the reader.
constexpr int kSendBuffer = 4 << 20;

vexa_common_hdr_t headerOf(const uint8_t* record) {
    vexa_common_hdr_t hdr;
    memcpy(&hdr, record, sizeof(hdr));
    return hdr;
}

// The bytes the driver takes from the caller: the header and data_len payload bytes (at most
// 256), or the whole buffer of a statistics request, which the answer is written into. A record
// shorter than it claims is read past its end, which a sanitizer reports.
std::vector<uint8_t> readRequest(const uint8_t* record) {
    const vexa_common_hdr_t hdr = headerOf(record);
    size_t size = sizeof(hdr) + std::min<size_t>(hdr.data_len, VEXA_MAX_PAYLOAD);
    if (hdr.msg == VEXA_CMSG_GET_DATA_USAGE) size = VEXA_STATS_BUF_SIZE;
    return std::vector<uint8_t>(record, record + size);
}

}  // namespace

FakeVexaDevice& FakeVexaDevice::instance() {
    static FakeVexaDevice* device = new FakeVexaDevice();
    return *device;
}

bool FakeVexaDevice::isDevicePath(const char* path) {
    return path != nullptr && strcmp(path, VEXA_DEV_PATH) == 0;
}

bool FakeVexaDevice::isDeviceFd(int fd) {
    return fd >= 0 && fd == gServiceFd.load(std::memory_order_acquire);
}

int FakeVexaDevice::deviceFd() const {
    return gServiceFd.load(std::memory_order_acquire);
}

void FakeVexaDevice::setPresent(bool present) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.present = present;
}

void FakeVexaDevice::setIoctlError(int errnum) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.ioctlError = errnum;
}

void FakeVexaDevice::setStatsAnswer(uint64_t rxBytes, uint64_t txBytes, uint32_t dataLen) {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings.rxBytes = rxBytes;
    mSettings.txBytes = txBytes;
    mSettings.statsLen = dataLen;
}

void FakeVexaDevice::restoreDefaults() {
    std::lock_guard<std::mutex> lock(mLock);
    mSettings = Settings();
}

int FakeVexaDevice::open(const char* path) {
    int fd = -1;
    int errnum = ENOENT;
    std::unique_lock<std::mutex> lock(mLock);
    if (mSettings.present) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0) {
            setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
            // An earlier pair stays open: its reader, if any, keeps blocking, as on a device
            // opened twice.
            mDriverFd = ends[1];
            mWaiting.clear();
            fd = ends[0];
            gServiceFd.store(fd, std::memory_order_release);
        } else {
            errnum = errno;
        }
    }
    lock.unlock();
    if (Observers::any()) Observers::report(OpenRecord{path, fd, fd < 0 ? errnum : 0});
    if (fd < 0) errno = errnum;
    return fd;
}

int FakeVexaDevice::ioctl(int fd, unsigned long request, void* arg) {
    IoctlRecord record;
    record.fd = fd;
    record.req = request;
    const int errnum = answer(request, arg, &record.bytes);
    record.ret = errnum == 0 ? 0 : -1;
    record.errnum = errnum;
    if (Observers::any()) Observers::report(record);
    if (errnum != 0) errno = errnum;
    return record.ret;
}

// Reads the request as the driver does and answers it; returns the errno of a failure, or 0.
int FakeVexaDevice::answer(unsigned long request, void* arg, std::vector<uint8_t>* requestBytes) {
    if (request != VEXA_IOCTL_REQUEST) return ENOTTY;
    if (arg == nullptr) return EFAULT;
    auto* record = static_cast<uint8_t*>(arg);
    *requestBytes = readRequest(record);
    std::lock_guard<std::mutex> lock(mLock);
    if (mSettings.ioctlError != 0) return mSettings.ioctlError;
    if (headerOf(record).msg == VEXA_CMSG_GET_DATA_USAGE) {
        memcpy(record + offsetof(vexa_common_hdr_t, data_len), &mSettings.statsLen,
               sizeof(mSettings.statsLen));
        memcpy(record + offsetof(vexa_data_usage_req_t, rx_bytes), &mSettings.rxBytes,
               sizeof(mSettings.rxBytes));
        memcpy(record + offsetof(vexa_data_usage_req_t, tx_bytes), &mSettings.txBytes,
               sizeof(mSettings.txBytes));
    }
    return 0;
}

ssize_t FakeVexaDevice::read(int fd, void* buf, size_t count) {
    std::lock_guard<std::mutex> serial(mReadSerial);
    {
        std::lock_guard<std::mutex> lock(mLock);
        mInRead = true;
        mBusy = false;
        // Woken only when what they wait for may have come: a wake-up per record would cost
        // the reader and its writer a switch each.
        if (mReaderWaiters > 0 && mWaiting.empty()) mChanged.notify_all();
    }
    ssize_t n = realRead(fd, buf, count);
    int errnum = n < 0 ? errno : 0;
    {
        std::lock_guard<std::mutex> lock(mLock);
        mInRead = false;
        if (n >= 0) {
            // A record that was dropped meanwhile has no entry left.
            if (!mWaiting.empty()) {
                errnum = mWaiting.front();
                mWaiting.pop_front();
            }
            ++mTaken;
            mBusy = true;
            if (mRoomWanted != 0 && mTaken >= mRoomWanted) mChanged.notify_all();
        }
    }
    if (errnum != 0) n = -1;
    if (Observers::any()) {
        ReadRecord record;
        record.ret = static_cast<long>(n);
        record.errnum = errnum;
        if (n > 0) record.bytes.assign(static_cast<uint8_t*>(buf), static_cast<uint8_t*>(buf) + n);
        Observers::report(record);
    }
    if (errnum != 0) errno = errnum;
    return n;
}

bool FakeVexaDevice::queueRecord(const std::vector<uint8_t>& record, size_t readSize,
                                 std::chrono::milliseconds timeout) {
    std::vector<uint8_t> packet(std::min(readSize, kMaxRead), 0);
    std::copy_n(record.begin(), std::min(record.size(), packet.size()), packet.begin());
    return send(packet, 0, timeout);
}

bool FakeVexaDevice::queueReadFailure(int errnum, std::chrono::milliseconds timeout) {
    // An empty record leaves the reader's buffer as it was; the errno is the fake's.
    return send({}, errnum, timeout);
}

bool FakeVexaDevice::send(const std::vector<uint8_t>& packet, int errnum,
                          std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mDriverFd < 0) return false;
    for (;;) {
        mWaiting.push_back(errnum);
        if (::send(mDriverFd, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
            return true;
        }
        mWaiting.pop_back();
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != ENOBUFS) return false;
        // Full: written again once the reader has taken half of what waits, not per record.
        mRoomWanted = mTaken + std::max<size_t>(mWaiting.size() / 2, 1);
        const bool room = waitWhileReading(lock, timeout, [&] { return mTaken >= mRoomWanted; });
        mRoomWanted = 0;
        if (!room) return false;
    }
}

bool FakeVexaDevice::waitUntilDrained(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mDriverFd < 0) return false;
    ++mReaderWaiters;
    const bool drained =
            waitWhileReading(lock, timeout, [&] { return mWaiting.empty() && mInRead; });
    --mReaderWaiters;
    return drained;
}

template <typename Done>
bool FakeVexaDevice::waitWhileReading(std::unique_lock<std::mutex>& lock,
                                      std::chrono::milliseconds timeout, Done done) {
    for (;;) {
        const uint64_t takenBefore = mTaken;
        if (mChanged.wait_for(lock, timeout, done)) return true;
        // Slow, but reading; or busy with a record, and it always comes back for more (the trace
        // may hold it while its reader is slow). Progress is looked at once a timeout.
        if (mTaken != takenBefore || mBusy) continue;
        dropWaiting();
        return false;
    }
}

// Nobody reads them: lost, as the driver would lose them.
void FakeVexaDevice::dropWaiting() {
    const int fd = gServiceFd.load(std::memory_order_acquire);
    uint8_t scratch[kMaxRead];
    while (!mWaiting.empty() && recv(fd, scratch, sizeof(scratch), MSG_DONTWAIT) >= 0) {
        mWaiting.pop_front();
    }
    mWaiting.clear();
}

bool FakeVexaDevice::waitReaderBlocked(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mDriverFd < 0) return false;
    ++mReaderWaiters;
    const bool blocked = mChanged.wait_for(lock, timeout, [&] { return mInRead; });
    --mReaderWaiters;
    return blocked;
}

}  // namespace fakes
