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

// The emulated modem data-path device. It answers open("/dev/vexa", O_RDWR), and the ioctl and
// read calls on the descriptor it hands out, at the process boundary: the service calls libc as
// on the device and never knows. Other paths and descriptors go straight to libc.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace hostplatform {

class ModemEmulator {
public:
    static constexpr const char* kDevicePath = "/dev/vexa";
    static constexpr size_t kMaxRead = 272;
    static constexpr size_t kQueueCapacity = 4096;

    static ModemEmulator& instance();

    // Start-up setting: when absent, open fails with ENOENT. Only the opens after the call see it.
    void setDevicePresent(bool present);

    // 0 makes the ioctls that follow succeed; an errno value makes them fail with it.
    void setIoctlError(int errnum);

    // How the driver answers statistics requests from now on.
    void setStatsAnswer(uint64_t rxBytes, uint64_t txBytes, uint32_t dataLen = 128);

    // Back to the defaults: device present, ioctls succeed, statistics answer 0 and 0 with
    // data_len 128. The descriptor already handed out stays the device.
    void restoreDefaults();

    // Hands the event thread one record and returns once it has been dispatched and the reader
    // is blocked in read() again. `readSize` is what read() returns (capped by the reader's
    // count); bytes beyond the record read as zero. Returns false when nobody took it within
    // `timeout` (the record is dropped), or when the reader took it but was not back in read()
    // within another `timeout`.
    bool deliverEvent(std::vector<uint8_t> record, size_t readSize,
                      std::chrono::milliseconds timeout = kDeliveryTimeout);

    // Makes the next read() fail with `errnum`, with the same synchronisation as deliverEvent.
    bool deliverReadFailure(int errnum, std::chrono::milliseconds timeout = kDeliveryTimeout);

    // Queued mode: records wait on the device and each read() takes the next one at once, with
    // no hand-shake; queued records come before a delivery. A record holds at most kMaxRead
    // bytes, and at most kQueueCapacity wait at a time. When the queue is full, waits for room as
    // long as the reader takes records or works on one it took; false when it did neither for
    // `timeout` (the record is dropped, with those still waiting).
    bool queueEvent(const std::vector<uint8_t>& record, size_t readSize,
                    std::chrono::milliseconds timeout = kDeliveryTimeout);

    // Queues a read() that fails with `errnum`, as queueEvent does.
    bool queueReadFailure(int errnum, std::chrono::milliseconds timeout = kDeliveryTimeout);

    // Queues `copies` copies of the record as far as there is room, without waiting; returns
    // how many. For measuring the reader alone.
    size_t queueEvents(const std::vector<uint8_t>& record, size_t readSize, size_t copies);

    // Waits until every queued record has been read and the reader is blocked in read() again.
    // False when the reader neither took one nor worked on one for `timeout`: those left are
    // dropped.
    bool waitQueueDrained(std::chrono::milliseconds timeout = kDeliveryTimeout);

    // Waits until a reader is blocked in read() on the device. False after `timeout`, or at once
    // when the device was never opened.
    bool waitReaderBlocked(std::chrono::milliseconds timeout = kDeliveryTimeout);

    // The descriptor handed out by the last successful open, or -1. Never close it: its number
    // would go to another file while the emulator still answers for it.
    int deviceFd() const;

    static constexpr std::chrono::milliseconds kDeliveryTimeout{1000};

private:
    ModemEmulator();
    struct State;
    State* mState;  // never freed: the event thread may block in read() while the process exits
};

}  // namespace hostplatform
