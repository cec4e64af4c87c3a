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

#include "EventChannel.h"

#include <utility>

namespace hostplatform {

using std::chrono::steady_clock;

bool EventChannel::deliver(Delivery delivery, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    if (!offer(std::move(delivery), lock, steady_clock::now() + timeout)) return false;
    const uint64_t blockingsAtTake = mBlockingsAtTake;
    return mChanged.wait_for(lock, timeout, [&] { return mBlockings > blockingsAtTake; });
}

bool EventChannel::offer(Delivery delivery, std::unique_lock<std::mutex>& lock,
                         steady_clock::time_point deadline) {
    // A second controller waits for the first one's record to go.
    if (!mChanged.wait_until(lock, deadline, [&] { return !mPending.has_value(); })) return false;
    const uint64_t id = ++mLastOffered;
    mPending = std::move(delivery);
    mChanged.notify_all();
    if (mChanged.wait_until(lock, deadline, [&] { return mLastTaken >= id; })) return true;
    mPending.reset();  // nobody read it: the record is lost, as the driver would lose it
    mChanged.notify_all();
    return false;
}

Delivery EventChannel::take() {
    std::unique_lock<std::mutex> lock(mLock);
    ++mBlockedReaders;
    ++mBlockings;
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return mPending.has_value(); });
    Delivery delivery = std::move(*mPending);
    mPending.reset();
    mLastTaken = mLastOffered;
    mBlockingsAtTake = mBlockings;
    --mBlockedReaders;
    mChanged.notify_all();
    return delivery;
}

bool EventChannel::waitBlocked(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, timeout, [&] { return mBlockedReaders > 0; });
}

}  // namespace hostplatform
