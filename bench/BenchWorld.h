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

// The service as the benchmarks drive it: its log lines dropped, a framework callback that does
// nothing (and can hold the event thread when asked), the host world in a fixed state, and the
// records the modem sends.

#pragma once

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "hal/TetherOffloadHal.h"

namespace bench {

using Bytes = std::vector<uint8_t>;

// liblog's lines are formatted and dropped: nothing observes them. Conntrack timeouts are fixed
// and no property is set.
void prepareWorld();

// A 1.1 framework callback that does nothing. Once park() is asked for, the next event holds
// the event thread inside the callback, where it reads nothing, until release(). It can also
// time a run of calls from inside, so that no wake-up of another thread is counted.
class ParkingCallback
    : public android::hardware::tetheroffload::control::V1_1::ITetheringOffloadCallback {
public:
    using Return = android::hardware::Return<void>;

    Return onEvent(android::hardware::tetheroffload::control::V1_0::OffloadCallbackEvent) override;
    Return updateTimeout(
            const android::hardware::tetheroffload::control::V1_0::NatTimeoutUpdate&) override;
    Return onEvent_1_1(
            android::hardware::tetheroffload::control::V1_1::OffloadCallbackEvent) override;

    // Holds the event thread with one queued status event; returns once it is held. False when
    // it did not come within seconds.
    bool park();
    // Lets it go, and returns once it is blocked in read() again.
    void release();

    // While parked: the next `calls` calls after release() are timed, from the end of the first
    // to the end of the last.
    void timeNextCalls(size_t calls);
    // The time of the last timed run, once release() returned.
    double timedSeconds() const;

private:
    Return arrive();
    void countTimed();

    std::atomic<bool> mParkWanted{false};
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mParked = false;
    // Set while parked, then used by the event thread alone.
    size_t mTimedCalls = 0;
    size_t mCallsSeen = 0;
    std::chrono::steady_clock::time_point mFirst, mLast;
};

// The HAL object, initialised with a ParkingCallback, and the event thread blocked in read().
struct Service {
    static Service& instance();  // started on first use

    android::sp<vendor::tetheroffload::TetherOffloadHal> hal;
    android::sp<ParkingCallback> callback;
};

// A status event as the modem sends it: the 16-byte header alone.
Bytes statusRecord(uint16_t status);

// A connection update: 192.168.43.2:80 to 8.8.8.8:53, UDP, no destination NAT.
Bytes connectionRecord();

}  // namespace bench
