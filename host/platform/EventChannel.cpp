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

#include <string.h>

#include <algorithm>
#include <utility>

namespace hostplatform {
namespace {

// Copies what the reader gets of a record: `readSize` capped by `count`, zeros past the record.
size_t copyRead(const uint8_t* record, size_t recordSize, size_t readSize, uint8_t* buf,
                size_t count) {
    const size_t size = std::min(readSize, count);
    const size_t fromRecord = std::min(size, recordSize);
    memcpy(buf, record, fromRecord);
    memset(buf + fromRecord, 0, size - fromRecord);
    return size;
}

}  // namespace

using std::chrono::steady_clock;

bool EventChannel::deliver(Delivery delivery, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    const auto deadline = steady_clock::now() + timeout;
    if (!offer(std::move(delivery), lock, deadline)) return false;
    const uint64_t id = mLastOffered;
    // Woken once, when the reader is back: not when it takes the record as well.
    auto back = [&] { return mLastTaken >= id && mBlockings > mBlockingsAtTake; };
    if (mForController.wait_until(lock, deadline, back)) return true;
    if (mLastTaken < id) {
        mPending.reset();  // nobody read it: the record is lost, as the driver would lose it
        mForController.notify_all();
        return false;
    }
    return mForController.wait_for(lock, timeout, back);
}

bool EventChannel::offer(Delivery delivery, std::unique_lock<std::mutex>& lock,
                         steady_clock::time_point deadline) {
    // A second controller waits for the first one's record to go.
    ++mWaitingForOffer;
    const bool room =
            mForController.wait_until(lock, deadline, [&] { return !mPending.has_value(); });
    --mWaitingForOffer;
    if (!room) return false;
    ++mLastOffered;
    mPending = std::move(delivery);
    mForReader.notify_all();
    return true;
}

bool EventChannel::enqueue(const std::vector<uint8_t>& record, size_t readSize, int errnum,
                           std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mQueue.empty()) mQueue.resize(kQueueCapacity);
    if (mQueued == kQueueCapacity) {
        // Refilled from half empty, so that the reader is not woken for every record.
        mWaitingForRoom = true;
        const bool room =
                waitWhileReading(lock, timeout, [&] { return mQueued <= kQueueCapacity / 2; });
        mWaitingForRoom = false;
        if (!room) return false;
    }
    put(record.data(), record.size(), readSize, errnum);
    return true;
}

size_t EventChannel::enqueueCopies(const std::vector<uint8_t>& record, size_t readSize,
                                   size_t copies) {
    std::lock_guard<std::mutex> lock(mLock);
    if (mQueue.empty()) mQueue.resize(kQueueCapacity);
    const size_t queued = std::min(copies, kQueueCapacity - mQueued);
    for (size_t i = 0; i < queued; ++i) put(record.data(), record.size(), readSize, 0);
    return queued;
}

void EventChannel::put(const uint8_t* record, size_t size, size_t readSize, int errnum) {
    QueuedRecord& slot = mQueue[(mQueueHead + mQueued) % kQueueCapacity];
    slot.size = std::min(size, kMaxRecord);
    std::copy_n(record, slot.size, slot.bytes.begin());
    slot.readSize = std::min(readSize, kMaxRecord);
    slot.errnum = errnum;
    // Only the first record wakes a reader: the others it finds when it comes back.
    if (++mQueued == 1) mForReader.notify_all();
}

bool EventChannel::waitDrained(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    return waitWhileReading(lock, timeout, [&] { return mQueued == 0 && mBlockedReaders > 0; });
}

template <typename Done>
bool EventChannel::waitWhileReading(std::unique_lock<std::mutex>& lock,
                                    std::chrono::milliseconds timeout, Done done) {
    for (;;) {
        const uint64_t takenBefore = mQueueTaken;
        if (mForController.wait_for(lock, timeout, done)) return true;
        // Slow, but reading; or busy with a queued record, and it always comes back for more
        // (the trace may hold it while its reader is slow).
        if (mQueueTaken != takenBefore || mBusyWithQueued) continue;
        mQueued = 0;  // nobody reads them: lost, as the driver would lose them
        return false;
    }
}

TakenRead EventChannel::take(uint8_t* buf, size_t count) {
    std::unique_lock<std::mutex> lock(mLock);
    mBusyWithQueued = false;
    if (mQueued > 0) return takeQueued(buf, count);
    ++mBlockedReaders;
    ++mBlockings;
    mForController.notify_all();
    mForReader.wait(lock, [&] { return mPending.has_value() || mQueued > 0; });
    --mBlockedReaders;
    if (mQueued > 0) return takeQueued(buf, count);
    return takePending(buf, count);
}

TakenRead EventChannel::takeQueued(uint8_t* buf, size_t count) {
    const QueuedRecord& slot = mQueue[mQueueHead];
    TakenRead read;
    read.errnum = slot.errnum;
    if (read.errnum == 0) {
        read.size = copyRead(slot.bytes.data(), slot.size, slot.readSize, buf, count);
    }
    mQueueHead = (mQueueHead + 1) % kQueueCapacity;
    --mQueued;
    ++mQueueTaken;
    mBusyWithQueued = true;
    if (mWaitingForRoom && mQueued == kQueueCapacity / 2) mForController.notify_all();
    return read;
}

TakenRead EventChannel::takePending(uint8_t* buf, size_t count) {
    TakenRead read;
    read.errnum = mPending->errnum;
    if (read.errnum == 0) {
        read.size = copyRead(mPending->record.data(), mPending->record.size(), mPending->readSize,
                             buf, count);
    }
    mPending.reset();
    mLastTaken = mLastOffered;
    mBlockingsAtTake = mBlockings;
    if (mWaitingForOffer > 0) mForController.notify_all();
    return read;
}

bool EventChannel::waitBlocked(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mLock);
    return mForController.wait_for(lock, timeout, [&] { return mBlockedReaders > 0; });
}

}  // namespace hostplatform
