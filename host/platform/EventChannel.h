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

// The hand-over of event records from the controlling thread to the thread blocked in read() on
// the emulated device. One record is offered at a time; the offer ends when the reader has taken
// it and come back to read() again, so that everything the record caused has happened. Records
// may also be queued: each read takes the next one at once, without that hand-shake.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace hostplatform {

struct Delivery {
    std::vector<uint8_t> record;
    size_t readSize = 0;  // what read() returns, before the reader's count caps it
    int errnum = 0;       // non-zero: read() fails with this errno instead
};

// What one read() got: `size` bytes in the reader's buffer, or the errno of a failure.
struct TakenRead {
    size_t size = 0;
    int errnum = 0;
};

class EventChannel {
public:
    static constexpr size_t kMaxRecord = 272;  // the most a queued record holds: a full event
    static constexpr size_t kQueueCapacity = 4096;

    // True once a reader took `delivery` and blocked in take() again. False when no reader took
    // it within `timeout` (it is dropped), or when the reader did not come back within another
    // `timeout` after that.
    bool deliver(Delivery delivery, std::chrono::milliseconds timeout);

    // Queues the record after those already waiting, read as `readSize` bytes, or as a failure
    // with `errnum` when that is not 0. When the queue is full, waits for room as long as a
    // reader takes records or works on one; false when none did for `timeout` (the record is
    // dropped).
    bool enqueue(const std::vector<uint8_t>& record, size_t readSize, int errnum,
                 std::chrono::milliseconds timeout);

    // Queues `copies` copies of the record as far as there is room; returns how many.
    size_t enqueueCopies(const std::vector<uint8_t>& record, size_t readSize, size_t copies);

    // Waits until the queue is empty and a reader is blocked in take() again, as long as a
    // reader takes records or works on one. False when none did for `timeout`: what is left is
    // dropped.
    bool waitDrained(std::chrono::milliseconds timeout);

    // Blocks until a queued record or a delivery is there, and reads it into `buf` (at most
    // `count` bytes; bytes past the end of the record read as zero). Queued records come first.
    TakenRead take(uint8_t* buf, size_t count);

    // Waits until some reader is blocked in take().
    bool waitBlocked(std::chrono::milliseconds timeout);

private:
    struct QueuedRecord {
        std::array<uint8_t, kMaxRecord> bytes;
        size_t size;
        size_t readSize;
        int errnum;
    };

    bool offer(Delivery delivery, std::unique_lock<std::mutex>& lock,
               std::chrono::steady_clock::time_point deadline);
    void put(const uint8_t* record, size_t size, size_t readSize, int errnum);
    // Waits on the controller's side until `done`, or until for `timeout` no reader took a
    // queued record or worked on one; then the queue is emptied and false returned.
    template <typename Done>
    bool waitWhileReading(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds timeout,
                          Done done);
    TakenRead takeQueued(uint8_t* buf, size_t count);
    TakenRead takePending(uint8_t* buf, size_t count);

    std::mutex mLock;
    std::condition_variable mForReader;      // a delivery or a queued record came
    std::condition_variable mForController;  // a reader blocked, an offer went, room came
    std::optional<Delivery> mPending;
    uint64_t mLastOffered = 0;  // id of the latest offer
    uint64_t mLastTaken = 0;    // id of the latest offer a reader took
    int mBlockedReaders = 0;
    uint64_t mBlockings = 0;           // how many times a reader began to wait
    uint64_t mBlockingsAtTake = 0;     // mBlockings when the latest offer was taken
    int mWaitingForOffer = 0;          // controllers waiting for another one's offer to go
    std::vector<QueuedRecord> mQueue;  // a ring, sized on first use
    size_t mQueueHead = 0;
    size_t mQueued = 0;
    uint64_t mQueueTaken = 0;      // how many queued records readers took
    bool mBusyWithQueued = false;  // a reader took a queued record and is not back yet
    bool mWaitingForRoom = false;  // a controller waits for the queue to half empty
};

}  // namespace hostplatform
