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

// The one fake "/dev/vexa". It answers open("/dev/vexa") with one end of a SOCK_SEQPACKET socket
// pair, so that the event thread's reads are real system calls that block in the kernel and
// return one record each; the fake keeps the other end and writes the modem's records into it.
// What the kernel cannot do is done here: the driver's answer to the ioctl requests (read as the
// driver reads them, the statistics answer written back, a failure injected), and a read that
// fails with an errno, in its place among the records.

#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "datapath/vexa_protocol.h"

namespace fakes {

class FakeVexaDevice {
public:
    static constexpr size_t kMaxRead = sizeof(vexa_dev_rsp_common_t);
    static constexpr std::chrono::milliseconds kTimeout{1000};

    // Never destroyed: the event thread stays blocked in read() while the process exits.
    static FakeVexaDevice& instance();

    // When absent, open fails with ENOENT; only the opens after the call see it.
    void setPresent(bool present);
    // 0 makes the requests that follow succeed; an errno value makes them fail with it.
    void setIoctlError(int errnum);
    // How the driver answers statistics requests from now on.
    void setStatsAnswer(uint64_t rxBytes, uint64_t txBytes,
                        uint32_t dataLen = VEXA_STATS_ANSWER_LEN);
    // Present, requests succeed, statistics 0 and 0 with data_len 128. An open device stays open.
    void restoreDefaults();

    // Queues one record behind those already waiting; read() returns `readSize` bytes of it (at
    // most 272, zeros past its end). When the device is full, waits for room as long as the
    // reader takes records or works on one. False when nothing reads the device: it was never
    // opened, or nobody read for `timeout` (then every record still waiting is dropped).
    bool queueRecord(const std::vector<uint8_t>& record, size_t readSize,
                     std::chrono::milliseconds timeout = kTimeout);
    // Queues a read() that fails with `errnum`, in its place among the records.
    bool queueReadFailure(int errnum, std::chrono::milliseconds timeout = kTimeout);
    // Waits until every queued record has been read and the reader is blocked in read() again,
    // so that everything they caused has happened. False as queueRecord.
    bool waitUntilDrained(std::chrono::milliseconds timeout = kTimeout);
    // Waits until a reader is blocked in read(); false at once when the device was never opened.
    bool waitReaderBlocked(std::chrono::milliseconds timeout = kTimeout);

    // The service's end of the device, or -1 before the first successful open.
    int deviceFd() const;

    // What the interposed libc entry points call.
    static bool isDevicePath(const char* path);
    static bool isDeviceFd(int fd);
    int open(const char* path);
    int ioctl(int fd, unsigned long request, void* arg);
    ssize_t read(int fd, void* buf, size_t count);

private:
    struct Settings {
        bool present = true;
        int ioctlError = 0;
        uint64_t rxBytes = 0;
        uint64_t txBytes = 0;
        uint32_t statsLen = VEXA_STATS_ANSWER_LEN;
    };

    FakeVexaDevice() = default;
    bool send(const std::vector<uint8_t>& packet, int errnum, std::chrono::milliseconds timeout);
    // Waits on the modem's side until `done`, as long as the reader takes records or works on
    // one; otherwise drops what is waiting and returns false.
    template <typename Done>
    bool waitWhileReading(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds timeout,
                          Done done);
    void dropWaiting();
    int answer(unsigned long request, void* arg, std::vector<uint8_t>* requestBytes);

    mutable std::mutex mLock;
    std::condition_variable mChanged;
    Settings mSettings;
    int mDriverFd = -1;        // the modem's end of the pair
    std::deque<int> mWaiting;  // per record written and not yet read: 0, or the errno to fail with
    bool mInRead = false;      // a reader is in read(), blocked or about to block
    bool mBusy = false;        // a reader took a record and is not back in read() yet
    uint64_t mTaken = 0;       // records readers took
    int mReaderWaiters = 0;    // callers waiting for the reader to be back in read()
    uint64_t mRoomWanted = 0;  // mTaken at which a writer waiting for room goes on; 0: none
    std::mutex mReadSerial;    // one reader at a time, so that each record meets its own entry
};

}  // namespace fakes
