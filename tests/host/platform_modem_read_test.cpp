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

// Event delivery through read() on the emulated device: one record per read, sized as asked,
// read failures, and the hand-over that returns only once the reader is back in read().

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "datapath/vexa_protocol.h"
#include "hostplatform/ModemEmulator.h"
#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

using std::chrono::milliseconds;

constexpr int kStopErrno = ESHUTDOWN;  // the read failure that ends a test reader

struct ReadResult {
    long ret = 0;
    int errnum = 0;
    std::vector<uint8_t> bytes;
};

// Reads the device as the event thread does, until a read fails with kStopErrno. After each
// read it works for `pause` before reading again.
class Reader {
public:
    Reader(int fd, size_t count, milliseconds pause = milliseconds(0))
        : mThread([this, fd, count, pause] { run(fd, count, pause); }) {}

    ~Reader() { stop(); }

    void stop() {
        if (!mThread.joinable()) return;
        // The reader does not come back after the stop, so the delivery reports false either way.
        do {
            ModemEmulator::instance().deliverReadFailure(kStopErrno, milliseconds(100));
        } while (!mFinished.load());
        mThread.join();
    }

    std::vector<ReadResult> results() {
        std::lock_guard<std::mutex> lock(mLock);
        return mResults;
    }

    int handled() const { return mHandled.load(); }

private:
    void run(int fd, size_t count, milliseconds pause) {
        for (;;) {
            std::vector<uint8_t> buf(VEXA_STATS_BUF_SIZE + 16, 0xee);
            errno = 0;
            const ssize_t n = read(fd, buf.data(), count);
            const int errnum = errno;
            if (n < 0 && errnum == kStopErrno) break;
            buf.resize(n > 0 ? n : 0);
            {
                std::lock_guard<std::mutex> lock(mLock);
                mResults.push_back(ReadResult{n, n < 0 ? errnum : 0, buf});
            }
            std::this_thread::sleep_for(pause);
            ++mHandled;
        }
        mFinished = true;
    }

    std::mutex mLock;
    std::vector<ReadResult> mResults;
    std::atomic<int> mHandled{0};
    std::atomic<bool> mFinished{false};
    std::thread mThread;
};

std::vector<uint8_t> eventRecord(uint16_t status, size_t payloadSize) {
    std::vector<uint8_t> record(16 + payloadSize);
    const vexa_common_hdr_t hdr = {VEXA_MCODE, status, 0, 0, static_cast<uint32_t>(payloadSize)};
    memcpy(record.data(), &hdr, sizeof(hdr));
    for (size_t i = 16; i < record.size(); ++i) record[i] = static_cast<uint8_t>(i);
    return record;
}

class ModemReadTest : public testing::Test {
protected:
    void SetUp() override {
        if (sFd < 0) sFd = open(VEXA_DEV_PATH, O_RDWR);
        ASSERT_GE(sFd, 0);
        Recorder::instance().clear();
    }

    ModemEmulator& modem() { return ModemEmulator::instance(); }

    static int sFd;
};

int ModemReadTest::sFd = -1;

TEST_F(ModemReadTest, EachReadReturnsOneRecord) {
    Reader reader(sFd, ModemEmulator::kMaxRead);
    const std::vector<uint8_t> first = eventRecord(1, 0);
    const std::vector<uint8_t> second = eventRecord(6, 28);
    ASSERT_TRUE(modem().deliverEvent(first, first.size()));
    ASSERT_TRUE(modem().deliverEvent(second, second.size()));
    reader.stop();

    const std::vector<ReadResult> results = reader.results();
    ASSERT_EQ(2u, results.size());
    EXPECT_EQ(first, results[0].bytes);
    EXPECT_EQ(second, results[1].bytes);
    const std::vector<ReadRecord> reads = Recorder::instance().all<ReadRecord>();
    ASSERT_EQ(3u, reads.size());  // the two records and the stop
    EXPECT_EQ(44, reads[1].ret);
    EXPECT_EQ(second, reads[1].bytes);
}

TEST_F(ModemReadTest, ReadSizeCutsOrPadsTheRecord) {
    struct Case {
        const char* name;
        size_t recordPayload;
        size_t readSize;
        size_t count;
        size_t expected;
    };
    const Case cases[] = {
            {"shorter than the record", 8, 20, 272, 20},
            {"shorter than the header", 0, 10, 272, 10},
            {"longer than the record", 0, 24, 272, 24},
            {"capped by the reader's count", 256, 300, 272, 272},
            {"reader asks for less", 28, 44, 32, 32},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Recorder::instance().clear();
        Reader reader(sFd, c.count);
        std::vector<uint8_t> record = eventRecord(6, c.recordPayload);
        ASSERT_TRUE(modem().deliverEvent(record, c.readSize));
        reader.stop();

        record.resize(c.expected, 0);  // past the record, zeros
        const std::vector<ReadResult> results = reader.results();
        ASSERT_EQ(1u, results.size());
        EXPECT_EQ(static_cast<long>(c.expected), results[0].ret);
        EXPECT_EQ(record, results[0].bytes);
        const std::vector<ReadRecord> reads = Recorder::instance().all<ReadRecord>();
        ASSERT_FALSE(reads.empty());
        EXPECT_EQ(record, reads[0].bytes);
    }
}

TEST_F(ModemReadTest, ReadFailureCarriesItsErrno) {
    Reader reader(sFd, ModemEmulator::kMaxRead);
    ASSERT_TRUE(modem().deliverReadFailure(EIO));
    reader.stop();
    const std::vector<ReadResult> results = reader.results();
    ASSERT_EQ(1u, results.size());
    EXPECT_EQ(-1, results[0].ret);
    EXPECT_EQ(EIO, results[0].errnum);
    const ReadRecord record = Recorder::instance().all<ReadRecord>().at(0);
    EXPECT_EQ(-1, record.ret);
    EXPECT_EQ(EIO, record.errnum);
    EXPECT_TRUE(record.bytes.empty());
}

TEST_F(ModemReadTest, DeliveryReturnsOnlyOnceTheReaderIsBackInRead) {
    Reader reader(sFd, ModemEmulator::kMaxRead, milliseconds(150));
    ASSERT_TRUE(modem().waitReaderBlocked());
    ASSERT_TRUE(modem().deliverEvent(eventRecord(1, 0), 16));
    EXPECT_EQ(1, reader.handled()) << "returned before the record was dealt with";
    ASSERT_TRUE(modem().deliverEvent(eventRecord(2, 0), 16));
    EXPECT_EQ(2, reader.handled());
}

TEST_F(ModemReadTest, UntakenRecordIsDroppedAfterTheTimeout) {
    ASSERT_FALSE(modem().waitReaderBlocked(milliseconds(50)));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(modem().deliverEvent(eventRecord(1, 0), 16, milliseconds(100)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(100));
    EXPECT_FALSE(modem().deliverReadFailure(EIO, milliseconds(50)));
    EXPECT_TRUE(Recorder::instance().all<ReadRecord>().empty());

    // A reader that comes later gets the next record, not the dropped ones.
    Reader reader(sFd, ModemEmulator::kMaxRead);
    const std::vector<uint8_t> next = eventRecord(5, 0);
    ASSERT_TRUE(modem().deliverEvent(next, 16));
    reader.stop();
    const std::vector<ReadResult> results = reader.results();
    ASSERT_EQ(1u, results.size());
    EXPECT_EQ(next, results[0].bytes);
}

}  // namespace
}  // namespace hostplatform
