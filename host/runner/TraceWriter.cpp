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

#include "TraceWriter.h"

#include <signal.h>

#include <chrono>
#include <utility>

namespace hostrunner {
namespace {

// How long the writer lets a few records gather before it writes them anyway.
constexpr std::chrono::milliseconds kGatherTime{2};

}  // namespace

TraceWriter::TraceWriter(Format format, FILE* out, size_t capacity)
    : mFormat(std::move(format)), mOut(out), mSlots(capacity) {
    mThreadStarted = pthread_create(&mThread, nullptr, run, this) == 0;
    if (mThreadStarted) pthread_setname_np(mThread, "TraceWriter");
}

TraceWriter::~TraceWriter() {
    if (!mThreadStarted) return;
    {
        std::lock_guard<std::mutex> lock(mLock);
        mStopping = true;
    }
    mWork.notify_one();
    pthread_join(mThread, nullptr);
}

void TraceWriter::push(const hostplatform::Record& record) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mFinished) return;
    if (!mThreadStarted) return writeAlone(record);
    mProgress.wait(lock, [&] { return mCount < mSlots.size(); });
    // Copied into a slot of the ring: a slot that held the same kind keeps its buffers.
    mSlots[(mHead + mCount) % mSlots.size()] = record;
    ++mCount;
    ++mPushed;
    // The writer is woken when work begins and when a quarter of the queue has gathered.
    if (mCount == 1 || mCount == mSlots.size() / 4 || mCount == mSlots.size()) mWork.notify_one();
}

void TraceWriter::flush() {
    std::unique_lock<std::mutex> lock(mLock);
    const uint64_t target = mPushed;
    if (mWritten >= target) return;
    mFlushWanted = target;
    mWork.notify_one();
    mProgress.wait(lock, [&] { return mWritten >= target; });
}

void TraceWriter::finish() {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mFinished = true;
    }
    flush();
}

void* TraceWriter::run(void* self) {
    // A reader that goes away makes the writes fail; it does not end the process.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    static_cast<TraceWriter*>(self)->writeUntilStopped();
    return nullptr;
}

void TraceWriter::writeUntilStopped() {
    std::unique_lock<std::mutex> lock(mLock);
    for (;;) {
        waitForWork(lock);
        if (mCount == 0) return;  // stopping, and everything is written
        const size_t first = mHead;
        const size_t count = mCount;
        // The slots being written are not reused until mCount says so.
        lock.unlock();
        write(first, count);
        lock.lock();
        mHead = (mHead + count) % mSlots.size();
        mCount -= count;
        mWritten += count;
        mProgress.notify_all();
    }
}

// Returns with records to write, or when stopping with none left.
void TraceWriter::waitForWork(std::unique_lock<std::mutex>& lock) {
    mWork.wait(lock, [&] { return mCount > 0 || mStopping; });
    // A few records are let gather, unless someone waits for them.
    auto urgent = [&] {
        return mCount >= mSlots.size() / 4 || mFlushWanted > mWritten || mStopping;
    };
    if (!urgent()) mWork.wait_for(lock, kGatherTime, urgent);
}

// Without a thread of its own, the writer writes each record as it comes.
void TraceWriter::writeAlone(const hostplatform::Record& record) {
    mSlots[0] = record;
    write(0, 1);
    ++mPushed;
    ++mWritten;
}

// A write that fails (the reader went away) loses those lines; the next batch tries again.
void TraceWriter::write(size_t first, size_t count) {
    mText.clear();
    for (size_t i = 0; i < count; ++i) mFormat(mSlots[(first + i) % mSlots.size()], &mText);
    fwrite(mText.data(), 1, mText.size(), mOut);
    fflush(mOut);
}

}  // namespace hostrunner
