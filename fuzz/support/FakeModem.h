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

// A fake "/dev/vexa" for the fuzz targets, answered at the process boundary like the host's
// emulator but without the host layer, so that it also runs on a phone: open, read and ioctl of
// the device never reach a driver. Reads are queued, so one input's records reach the event thread
// with a single hand-over, and nothing is kept once it has been read.

#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace fuzzsupport {

// One read() on the device: the bytes it returns (their count is its result), or a failure.
struct ModemRead {
    std::vector<uint8_t> bytes;
    int errnum = 0;  // non-zero: read() fails with this errno
};

class FakeModem {
public:
    static constexpr const char* kPath = "/dev/vexa";
    static constexpr size_t kStatsBufSize = 256;

    // Sees each request as the driver reads it: 16 + data_len bytes, the whole buffer for
    // statistics. Runs on the calling thread.
    using RequestObserver = std::function<void(const std::vector<uint8_t>& request)>;

    static FakeModem& instance();

    // Hands the reads to the event thread; returns once all have been dispatched and the reader
    // is blocked in read() again. A reader that never comes back is a hang: the process aborts.
    void feed(const std::vector<ModemRead>& reads);
    // False when nobody reads the device within a few seconds.
    bool waitReaderBlocked();

    void setRequestObserver(RequestObserver observer);
    void setIoctlError(int errnum);  // 0: requests succeed
    void setStatsAnswer(uint64_t rxBytes, uint64_t txBytes, uint32_t dataLen);

    // The interposed entry points.
    static bool isDevicePath(const char* path);
    static bool isDeviceFd(int fd);
    int open();
    int ioctl(void* arg);
    ssize_t read(void* buf, size_t count);

private:
    FakeModem() = default;
    std::vector<uint8_t> takeRequest(const uint8_t* record) const;

    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<ModemRead> mQueue;
    bool mReaderBlocked = false;
    RequestObserver mObserver;
    int mIoctlError = 0;
    uint64_t mRxBytes = 0;
    uint64_t mTxBytes = 0;
    uint32_t mStatsLen = 128;
};

}  // namespace fuzzsupport
