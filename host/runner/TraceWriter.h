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

// Writes the trace on a thread of its own. The threads that record only copy each record into a
// bounded queue, in record order; the writer formats what has gathered and writes it in one go.
// A recording thread waits only while the queue is full, which keeps memory flat when the reader
// of the output is slow.

#pragma once

#include <pthread.h>
#include <stdio.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "hostplatform/Recorder.h"

namespace hostrunner {

class TraceWriter {
public:
    // Appends the text of one record, newline included.
    using Format = std::function<void(const hostplatform::Record&, std::string*)>;

    static constexpr size_t kCapacity = 1024;  // records waiting at most

    // Starts the writer thread. `out` must outlive the writer.
    TraceWriter(Format format, FILE* out, size_t capacity = kCapacity);
    ~TraceWriter();
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    // Queues a copy of the record; waits while the queue is full. Dropped after finish().
    void push(const hostplatform::Record& record);

    // Returns once everything pushed so far is written and flushed.
    void flush();

    // flush(), and nothing pushed later is written: the record just pushed stays the last.
    void finish();

private:
    static void* run(void* self);
    void writeUntilStopped();
    void waitForWork(std::unique_lock<std::mutex>& lock);
    void writeAlone(const hostplatform::Record& record);
    void write(size_t first, size_t count);

    const Format mFormat;
    FILE* const mOut;
    std::vector<hostplatform::Record> mSlots;  // a ring
    std::mutex mLock;
    std::condition_variable mWork;      // for the writer: records to write, a flush, the stop
    std::condition_variable mProgress;  // for the recorders: room in the queue, records written
    size_t mHead = 0;                   // the oldest record not yet written
    size_t mCount = 0;
    uint64_t mPushed = 0;
    uint64_t mWritten = 0;
    uint64_t mFlushWanted = 0;  // write at once up to this many records
    bool mFinished = false;
    bool mStopping = false;
    std::string mText;  // the writer's batch, reused
    pthread_t mThread;
    bool mThreadStarted = false;
};

}  // namespace hostrunner
