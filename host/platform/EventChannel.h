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
// it and come back to read() again, so that everything the record caused has happened.

#pragma once

#include <stddef.h>
#include <stdint.h>

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

class EventChannel {
public:
    // True once a reader took `delivery` and blocked in take() again. False when no reader took
    // it within `timeout` (it is dropped), or when the reader did not come back within `timeout`
    // after taking it.
    bool deliver(Delivery delivery, std::chrono::milliseconds timeout);

    // Blocks until a delivery is offered.
    Delivery take();

    // Waits until some reader is blocked in take().
    bool waitBlocked(std::chrono::milliseconds timeout);

private:
    bool offer(Delivery delivery, std::unique_lock<std::mutex>& lock,
               std::chrono::steady_clock::time_point deadline);

    std::mutex mLock;
    std::condition_variable mChanged;
    std::optional<Delivery> mPending;
    uint64_t mLastOffered = 0;  // id of the latest offer
    uint64_t mLastTaken = 0;    // id of the latest offer a reader took
    int mBlockedReaders = 0;
    uint64_t mBlockings = 0;        // how many times a reader began to wait
    uint64_t mBlockingsAtTake = 0;  // mBlockings when the latest offer was taken
};

}  // namespace hostplatform
