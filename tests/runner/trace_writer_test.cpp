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

// The trace writer's thread: every record written once and in order, flush and finish, a slow
// reader that holds the recording threads only once the queue is full, a reader that went away.

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "TraceWriter.h"

namespace hostrunner {
namespace {

using hostplatform::ExitRecord;
using hostplatform::Record;

// Each record as its status and `padding` dots, one a line.
TraceWriter::Format numbered(size_t padding = 0) {
    return [padding](const Record& r, std::string* out) {
        out->append(std::to_string(std::get<ExitRecord>(r.body).status));
        out->append(padding, '.');
        out->push_back('\n');
    };
}

Record numberedRecord(int n) {
    return Record{0, ExitRecord{n}};
}

std::string lines(int from, int to, size_t padding = 0) {
    std::string text;
    for (int i = from; i < to; ++i) text += std::to_string(i) + std::string(padding, '.') + "\n";
    return text;
}

std::string contents(FILE* file) {
    std::string text;
    char buf[4096];
    rewind(file);
    for (size_t n; (n = fread(buf, 1, sizeof(buf), file)) > 0;) text.append(buf, n);
    return text;
}

TEST(TraceWriterTest, WritesEveryRecordOnceInOrderAndFlushWaitsForThem) {
    FILE* out = tmpfile();
    ASSERT_NE(nullptr, out);
    TraceWriter writer(numbered(), out, 4);
    for (int i = 0; i < 1000; ++i) writer.push(numberedRecord(i));
    writer.flush();
    EXPECT_EQ(lines(0, 1000), contents(out));
    writer.push(numberedRecord(1000));
    writer.flush();
    EXPECT_EQ(lines(0, 1001), contents(out));
    fclose(out);
}

TEST(TraceWriterTest, NothingAfterFinishAndTheRestWrittenWhenDestroyed) {
    FILE* out = tmpfile();
    ASSERT_NE(nullptr, out);
    {
        TraceWriter writer(numbered(), out);
        writer.push(numberedRecord(0));
        writer.finish();
        EXPECT_EQ(lines(0, 1), contents(out));
        writer.push(numberedRecord(1));
    }
    EXPECT_EQ(lines(0, 1), contents(out));
    {
        TraceWriter writer(numbered(), out);
        for (int i = 1; i < 100; ++i) writer.push(numberedRecord(i));
    }
    EXPECT_EQ(lines(0, 100), contents(out));
    fclose(out);
}

TEST(TraceWriterTest, SlowReaderHoldsTheRecordersOnlyOnceTheQueueIsFull) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    FILE* out = fdopen(fds[1], "w");
    ASSERT_NE(nullptr, out);
    constexpr int kRecords = 200;
    constexpr size_t kPadding = 4096;  // a few lines fill the pipe
    std::atomic<int> pushed{0};
    {
        TraceWriter writer(numbered(kPadding), out, 8);
        std::thread recorder([&] {
            for (int i = 0; i < kRecords; ++i, ++pushed) writer.push(numberedRecord(i));
        });
        // Nobody reads yet: the pipe fills, then the queue, then the recorder waits.
        while (pushed < 8) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_LT(pushed.load(), kRecords);
        std::string text;
        char buf[65536];
        const size_t expected = lines(0, kRecords, kPadding).size();
        while (text.size() < expected) {
            const ssize_t n = read(fds[0], buf, sizeof(buf));
            ASSERT_GT(n, 0);
            text.append(buf, n);
        }
        recorder.join();
        EXPECT_EQ(lines(0, kRecords, kPadding), text);
    }
    fclose(out);
    close(fds[0]);
}

TEST(TraceWriterTest, ReaderThatWentAwayLosesTheLinesNotTheProcess) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    close(fds[0]);
    FILE* out = fdopen(fds[1], "w");
    ASSERT_NE(nullptr, out);
    TraceWriter writer(numbered(), out);
    writer.push(numberedRecord(0));
    writer.flush();  // EPIPE, and no SIGPIPE
    writer.push(numberedRecord(1));
    writer.finish();
    EXPECT_TRUE(ferror(out));
    fclose(out);
}

}  // namespace
}  // namespace hostrunner
