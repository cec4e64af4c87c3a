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

// The stand-in's platform side: the emulated modem (ioctl decoding and answers, open, event
// delivery through read, queued records), the conntrack files, property_get, the log capture, the
// standard error switch, and the peers switched while other threads use them.

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <android/log.h>
#include <cutils/properties.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "datapath/vexa_protocol.h"
#include "hostplatform/FakeAgent.h"
#include "hostplatform/Framework.h"
#include "hostplatform/ModemEmulator.h"
#include "hostplatform/ProcFiles.h"
#include "hostplatform/Properties.h"
#include "hostplatform/StandardError.h"
#include "tests/support/RetainingSink.h"

namespace hostplatform {
namespace {

using Bytes = std::vector<uint8_t>;
using std::chrono::milliseconds;

// A request of `size` bytes: the header, then a pattern that tells each byte apart.
Bytes request(uint32_t msg, uint32_t dataLen, size_t size) {
    Bytes buf(size);
    for (size_t i = 0; i < size; ++i) buf[i] = static_cast<uint8_t>(i * 7 + 1);
    const vexa_common_hdr_t hdr = {VEXA_MCODE, VEXA_REQ_STATUS, 255, msg, dataLen};
    memcpy(buf.data(), &hdr, sizeof(hdr));
    return buf;
}

// An event record with `payload` bytes after the header.
Bytes event(uint16_t status, size_t payload) {
    Bytes record = request(0, static_cast<uint32_t>(payload), 16 + payload);
    const vexa_common_hdr_t hdr = {VEXA_MCODE, status, 0, 0, static_cast<uint32_t>(payload)};
    memcpy(record.data(), &hdr, sizeof(hdr));
    return record;
}

template <typename T>
T at(const Bytes& buf, size_t offset) {
    T value;
    memcpy(&value, buf.data() + offset, sizeof(value));
    return value;
}

struct ReadResult {
    long ret;
    int errnum;
    Bytes bytes;
};

// Reads the device as the event thread does, `count` bytes at a time, working `pause` after each
// read, until a read fails with ESHUTDOWN (which stop() sends). `results` is read after stop().
struct Reader {
    Reader(int fd, size_t count, milliseconds pause = milliseconds(0))
        : thread([=] {
              for (;;) {
                  Bytes buf(512, 0xee);  // room for more than any read asks
                  const ssize_t n = read(fd, buf.data(), count);
                  const int errnum = n < 0 ? errno : 0;
                  if (errnum == ESHUTDOWN) break;
                  buf.resize(n > 0 ? n : 0);
                  results.push_back(ReadResult{n, errnum, buf});
                  std::this_thread::sleep_for(pause);
                  ++handled;
              }
              finished = true;
          }) {}
    ~Reader() { stop(); }

    void stop() {
        if (!thread.joinable()) return;
        do {  // the reader does not come back, so the delivery reports false either way
            ModemEmulator::instance().deliverReadFailure(ESHUTDOWN, milliseconds(100));
        } while (!finished);
        thread.join();
    }

    std::vector<ReadResult> results;
    std::atomic<int> handled{0};
    std::atomic<bool> finished{false};
    std::thread thread;
};

class ModemTest : public ::testing::Test {
protected:
    void SetUp() override {
        modem.restoreDefaults();
        if (sFd < 0) sFd = open(VEXA_DEV_PATH, O_RDWR);
        ASSERT_GE(sFd, 0);
        testsupport::recorded().clear();
    }

    // Sends one request; returns what the driver recorded of it.
    IoctlRecord send(Bytes& buf, int expectedRet = 0) {
        testsupport::recorded().clear();
        EXPECT_EQ(expectedRet, ioctl(sFd, VEXA_IOCTL_REQUEST, buf.data()));
        const std::vector<IoctlRecord> records = testsupport::recorded().all<IoctlRecord>();
        EXPECT_EQ(1u, records.size());
        return records.empty() ? IoctlRecord{} : records.back();
    }

    ModemEmulator& modem = ModemEmulator::instance();
    static int sFd;
};

int ModemTest::sFd = -1;

TEST_F(ModemTest, DriverReadsTheHeaderAndDataLenBytes) {
    struct Case {
        uint32_t msg, dataLen;
        size_t size, read;
    } const cases[] = {
            {VEXA_CMSG_ENABLE, 0, 16, 16},
            {VEXA_CMSG_ACTIVATE, 32, 48, 48},
            {VEXA_CMSG_SET_CT_TIMEOUT, 8, 24, 24},
            {VEXA_CMSG_GET_DATA_USAGE, 999, 256, 256},  // statistics: always the 256-byte buffer
            {VEXA_CMSG_SET_DATA_LIMIT, 300, 316, 272},  // data_len capped at 256
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.msg);
        Bytes buf = request(c.msg, c.dataLen, c.size);
        const Bytes sent = buf;
        const IoctlRecord record = send(buf);
        EXPECT_EQ(sFd, record.fd);
        EXPECT_EQ(static_cast<unsigned long>(VEXA_IOCTL_REQUEST), record.req);
        EXPECT_EQ(0, record.ret);
        EXPECT_EQ(Bytes(sent.begin(), sent.begin() + c.read), record.bytes);
        EXPECT_TRUE(c.msg == VEXA_CMSG_GET_DATA_USAGE || sent == buf) << "request was written to";
    }
}

TEST_F(ModemTest, StatisticsAnswerLandsAtItsOffsetsAndNowhereElse) {
    struct Answer {
        uint64_t rx, tx;
        uint32_t dataLen;
    } const defaults = {0, 0, 128}, chosen = {0x1122334455667788ull, 0x99aabbccddeeff00ull, 64};
    for (const Answer& answer : {defaults, chosen}) {
        if (answer.dataLen != 128) modem.setStatsAnswer(answer.rx, answer.tx, answer.dataLen);
        Bytes buf = request(VEXA_CMSG_GET_DATA_USAGE, 0, 256);
        const Bytes sent = buf;
        EXPECT_EQ(sent, send(buf).bytes) << "recorded before the answer";
        EXPECT_EQ(answer.dataLen, at<uint32_t>(buf, 12));
        EXPECT_EQ(answer.rx, at<uint64_t>(buf, 16));
        EXPECT_EQ(answer.tx, at<uint64_t>(buf, 80));
        for (size_t i : {11, 24, 79, 88, 255}) EXPECT_EQ(sent[i], buf[i]) << "byte " << i;
    }
}

TEST_F(ModemTest, FailedRequestIsReadButNotAnswered) {
    modem.setIoctlError(EIO);
    Bytes buf = request(VEXA_CMSG_GET_DATA_USAGE, 0, 256);
    const Bytes sent = buf;
    errno = 0;
    const IoctlRecord record = send(buf, -1);
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(-1, record.ret);
    EXPECT_EQ(EIO, record.errnum);
    EXPECT_EQ(sent, record.bytes);
    EXPECT_EQ(sent, buf) << "a failed statistics request gets no answer";

    modem.restoreDefaults();  // another request number: refused unread
    EXPECT_EQ(-1, ioctl(sFd, 0x5401, buf.data()));
    EXPECT_EQ(ENOTTY, errno);
    EXPECT_TRUE(testsupport::recorded().all<IoctlRecord>().back().bytes.empty());
}

TEST_F(ModemTest, AbsentDeviceFailsToOpenAndKeepsTheOpenedOne) {
    modem.setDevicePresent(false);
    errno = 0;
    EXPECT_EQ(-1, open(VEXA_DEV_PATH, O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(-1, open64(VEXA_DEV_PATH, O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(sFd, modem.deviceFd());

    modem.setDevicePresent(true);
    sFd = open(VEXA_DEV_PATH, O_RDWR);
    ASSERT_GE(sFd, 0);
    EXPECT_EQ(sFd, modem.deviceFd());
    const std::vector<OpenRecord> opens = testsupport::recorded().all<OpenRecord>();
    ASSERT_EQ(3u, opens.size());
    EXPECT_EQ(ENOENT, opens[1].errnum);
    EXPECT_EQ(sFd, opens[2].fd);
}

TEST_F(ModemTest, OtherDescriptorsAndPathsGoToLibc) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    ASSERT_EQ(3, write(fds[1], "abc", 3));
    int pending = 0;
    EXPECT_EQ(0, ioctl(fds[0], FIONREAD, &pending));
    EXPECT_EQ(3, pending);
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(-1, open("/dev/vexa0", O_RDWR));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_TRUE(testsupport::recorded().records().empty());
}

TEST_F(ModemTest, EachReadReturnsOneRecordOrTheFailure) {
    Reader reader(sFd, ModemEmulator::kMaxRead);
    const Bytes first = event(1, 0), second = event(6, 28);
    ASSERT_TRUE(modem.deliverEvent(first, first.size()));
    ASSERT_TRUE(modem.deliverEvent(second, second.size()));
    ASSERT_TRUE(modem.deliverReadFailure(EIO));
    reader.stop();
    const std::vector<ReadResult>& results = reader.results;
    ASSERT_EQ(3u, results.size());
    EXPECT_EQ(first, results[0].bytes);
    EXPECT_EQ(second, results[1].bytes);
    EXPECT_EQ(-1, results[2].ret);
    EXPECT_EQ(EIO, results[2].errnum);
    const std::vector<ReadRecord> reads = testsupport::recorded().all<ReadRecord>();
    ASSERT_EQ(4u, reads.size());  // and the stop
    EXPECT_EQ(44, reads[1].ret);
    EXPECT_EQ(second, reads[1].bytes);
    EXPECT_EQ(-1, reads[2].ret);
    EXPECT_EQ(EIO, reads[2].errnum);
}

TEST_F(ModemTest, ReadSizeCutsOrPadsTheRecord) {
    struct Case {
        size_t payload, readSize, count, expected;
    } const cases[] = {
            {8, 20, 272, 20},      // shorter than the record
            {0, 24, 272, 24},      // longer than the record: zeros
            {256, 300, 272, 272},  // capped by the reader's count
            {28, 44, 32, 32},      // the reader asks for less
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.readSize);
        testsupport::recorded().clear();
        Reader reader(sFd, c.count);
        Bytes record = event(6, c.payload);
        ASSERT_TRUE(modem.deliverEvent(record, c.readSize));
        reader.stop();
        record.resize(c.expected, 0);
        ASSERT_EQ(1u, reader.results.size());
        EXPECT_EQ(static_cast<long>(c.expected), reader.results[0].ret);
        EXPECT_EQ(record, reader.results[0].bytes);
        EXPECT_EQ(record, testsupport::recorded().all<ReadRecord>().at(0).bytes);
    }
}

TEST_F(ModemTest, DeliveryReturnsOnlyOnceTheReaderIsBackInRead) {
    Reader reader(sFd, ModemEmulator::kMaxRead, milliseconds(150));
    ASSERT_TRUE(modem.waitReaderBlocked());
    ASSERT_TRUE(modem.deliverEvent(event(1, 0), 16));
    EXPECT_EQ(1, reader.handled) << "returned before the record was dealt with";
    ASSERT_TRUE(modem.deliverEvent(event(2, 0), 16));
    EXPECT_EQ(2, reader.handled);
}

TEST_F(ModemTest, UntakenRecordIsDroppedAfterTheTimeout) {
    ASSERT_FALSE(modem.waitReaderBlocked(milliseconds(50)));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(modem.deliverEvent(event(1, 0), 16, milliseconds(100)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(100));
    EXPECT_FALSE(modem.deliverReadFailure(EIO, milliseconds(50)));
    EXPECT_TRUE(testsupport::recorded().all<ReadRecord>().empty());

    Reader reader(sFd, ModemEmulator::kMaxRead);  // a later reader gets the next record only
    ASSERT_TRUE(modem.deliverEvent(event(5, 0), 16));
    reader.stop();
    ASSERT_EQ(1u, reader.results.size());
    EXPECT_EQ(event(5, 0), reader.results[0].bytes);
}

TEST_F(ModemTest, QueuedRecordsAreReadInOrderWithoutAHandShake) {
    const Bytes started = event(1, 0), conn = event(6, 28);
    EXPECT_EQ(2u, modem.queueEvents(started, started.size(), 2));  // before any reader
    EXPECT_TRUE(modem.queueEvent(conn, 20));
    EXPECT_TRUE(modem.queueReadFailure(EIO));
    Reader reader(sFd, ModemEmulator::kMaxRead);
    ASSERT_TRUE(modem.waitQueueDrained());
    EXPECT_EQ(4, reader.handled);
    reader.stop();
    ASSERT_EQ(4u, reader.results.size());
    EXPECT_EQ(started, reader.results[0].bytes);
    EXPECT_EQ(started, reader.results[1].bytes);
    EXPECT_EQ(Bytes(conn.begin(), conn.begin() + 20), reader.results[2].bytes);
    EXPECT_EQ(-1, reader.results[3].ret);
    EXPECT_EQ(EIO, reader.results[3].errnum);
    const std::vector<ReadRecord> reads = testsupport::recorded().all<ReadRecord>();
    ASSERT_EQ(5u, reads.size());  // and the stop
    EXPECT_EQ(20, reads[2].ret);
    EXPECT_EQ(reader.results[2].bytes, reads[2].bytes);
    EXPECT_EQ(EIO, reads[3].errnum);
}

TEST_F(ModemTest, FullQueueTakesNoCopiesAndWaitsForRoomWhileTheReaderReads) {
    const size_t capacity = ModemEmulator::kQueueCapacity;
    std::vector<Bytes> records;
    for (size_t i = 0; i <= capacity; ++i) {
        records.push_back(event(1, 4));
        memcpy(records.back().data() + 16, &i, 4);  // tells the records apart
    }
    for (size_t i = 0; i < capacity; ++i) ASSERT_TRUE(modem.queueEvent(records[i], 20));
    EXPECT_EQ(0u, modem.queueEvents(records[0], 20, 1));
    Reader reader(sFd, ModemEmulator::kMaxRead);
    EXPECT_TRUE(modem.queueEvent(records[capacity], 20)) << "no room came";
    ASSERT_TRUE(modem.waitQueueDrained());
    reader.stop();
    ASSERT_EQ(capacity + 1, reader.results.size());
    for (size_t i = 0; i <= capacity; ++i) ASSERT_EQ(records[i], reader.results[i].bytes) << i;
}

TEST_F(ModemTest, ReaderBusyWithAQueuedRecordIsWaitedForPastTheTimeout) {
    Reader reader(sFd, ModemEmulator::kMaxRead, milliseconds(300));
    ASSERT_TRUE(modem.waitReaderBlocked());
    const Bytes started = event(1, 0);
    ASSERT_EQ(2u, modem.queueEvents(started, started.size(), 2));
    EXPECT_TRUE(modem.waitQueueDrained(milliseconds(50)));
    EXPECT_EQ(2, reader.handled);
}

TEST_F(ModemTest, QueuedRecordsNobodyReadsAreDroppedAfterTheTimeout) {
    ASSERT_FALSE(modem.waitReaderBlocked(milliseconds(50)));
    const Bytes lost = event(1, 0), kept = event(5, 0);
    ASSERT_EQ(2u, modem.queueEvents(lost, lost.size(), 2));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(modem.waitQueueDrained(milliseconds(100)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(100));

    Reader reader(sFd, ModemEmulator::kMaxRead);  // a later reader gets the next record only
    ASSERT_TRUE(modem.queueEvent(kept, kept.size()));
    ASSERT_TRUE(modem.waitQueueDrained());
    reader.stop();
    ASSERT_EQ(1u, reader.results.size());
    EXPECT_EQ(kept, reader.results[0].bytes);
}

// Reads a stream to its end in small freads, as the service does, and closes it.
std::string readAll(FILE* file) {
    std::string text;
    char buf[7];
    for (size_t n; (n = fread(buf, 1, sizeof(buf), file)) > 0;) text.append(buf, n);
    EXPECT_TRUE(feof(file));
    EXPECT_EQ(0, fclose(file));
    return text;
}

TEST(ConntrackFilesTest, ContentAbsenceOrTheRealFile) {
    using Proto = ProcFiles::Proto;
    ProcFiles& files = ProcFiles::instance();
    const std::string longer = "  42 and more text than one read takes\n";
    files.setContent(Proto::kTcp, longer);
    files.setContent(Proto::kUdp, "");
    FILE* tcp = fopen(ProcFiles::kTcpPath, "r");
    FILE* udp = fopen64(ProcFiles::kUdpPath, "r");
    ASSERT_NE(nullptr, tcp);
    ASSERT_NE(nullptr, udp);
    files.setContent(Proto::kTcp, "999\n");
    EXPECT_EQ(longer, readAll(tcp)) << "an open stream keeps its content";
    EXPECT_EQ("", readAll(udp));

    files.setAbsent(Proto::kUdp);
    for (auto* openFile : {&fopen, &fopen64}) {
        errno = 0;
        EXPECT_EQ(nullptr, openFile(ProcFiles::kUdpPath, "r"));
        EXPECT_EQ(ENOENT, errno);
        FILE* other = openFile(ProcFiles::kTcpPath, "r");
        ASSERT_NE(nullptr, other);
        EXPECT_EQ("999\n", readAll(other));
    }
    EXPECT_EQ(nullptr, fopen((std::string(ProcFiles::kTcpPath) + "x").c_str(), "r"));

    files.reset();
    for (const char* path : {ProcFiles::kTcpPath, ProcFiles::kUdpPath}) {
        std::string real;
        char buf[64];
        const int fd = ::open(path, O_RDONLY);
        for (ssize_t n; fd >= 0 && (n = read(fd, buf, sizeof(buf))) > 0;) real.append(buf, n);
        if (fd >= 0) close(fd);
        FILE* file = fopen(path, "r");
        EXPECT_EQ(fd >= 0, file != nullptr) << path;
        if (file == nullptr) continue;
        EXPECT_EQ(real, readAll(file)) << path;
    }
}

TEST(PropertyGetTest, ValueOrDefaultCutToTheLimit) {
    const std::string longest(PROPERTY_VALUE_MAX - 1, 'v'), tooLong(PROPERTY_VALUE_MAX + 10, 'w');
    struct Case {
        const char* name;  // set to `stored`, or nothing set when null
        std::string stored;
        const char* defaultValue;
        std::string expected;
    } const cases[] = {
            {"ro.build.type", "userdebug", "user", "userdebug"},
            {nullptr, "", "user", "user"},
            {"ro.build.type", "", "user", "user"},  // empty reads as unset
            {"ro.build.typ", "eng", "user", "user"},
            {nullptr, "", nullptr, ""},
            {"ro.build.type", longest, nullptr, longest},
            {"ro.build.type", tooLong, nullptr, tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
            {nullptr, "", tooLong.c_str(), tooLong.substr(0, PROPERTY_VALUE_MAX - 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored + "|" + (c.defaultValue ? c.defaultValue : "null"));
        Properties::clear();
        if (c.name) Properties::set(c.name, c.stored);
        char value[PROPERTY_VALUE_MAX];
        memset(value, 'x', sizeof(value));
        EXPECT_EQ(static_cast<int>(c.expected.size()),
                  property_get("ro.build.type", value, c.defaultValue));
        EXPECT_EQ(c.expected, std::string(value));
    }
    Properties::clear();
}

std::string threadName() {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return name;
}

TEST(LogCaptureTest, LinesAreRecordedAsFormattedWithTheThreadAndNotPrinted) {
    testsupport::recorded().clear();
    ::testing::internal::CaptureStderr();
    __android_log_print(ANDROID_LOG_INFO, "TetherOffload", "open %s done, fd=%d\n", "/dev/vexa", 7);
    std::thread([] {
        pthread_setname_np(pthread_self(), "HandleEvent");
        __android_log_print(ANDROID_LOG_DEBUG, "Other", "%d%%", 100);
    }).join();
    EXPECT_EQ("", ::testing::internal::GetCapturedStderr());

    const std::vector<LogRecord> logs = testsupport::recorded().all<LogRecord>();
    ASSERT_EQ(2u, logs.size());
    EXPECT_EQ(ANDROID_LOG_INFO, logs[0].prio);
    EXPECT_EQ("TetherOffload", logs[0].tag);
    EXPECT_EQ("open /dev/vexa done, fd=7\n", logs[0].msg);
    EXPECT_EQ(threadName(), logs[0].thread);
    EXPECT_EQ(ANDROID_LOG_DEBUG, logs[1].prio);
    EXPECT_EQ("Other", logs[1].tag);
    EXPECT_EQ("100%", logs[1].msg);
    EXPECT_EQ("HandleEvent", logs[1].thread);
}

TEST(StandardErrorTest, ClosedMakesWritesFailAndOpenRestoresThem) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(7, fprintf(stderr, "before|"));
    StandardError::setClosed(true);
    StandardError::setClosed(true);  // twice: the original must still come back
    EXPECT_LT(fprintf(stderr, "lost|"), 0);
    EXPECT_TRUE(ferror(stderr));
    StandardError::setClosed(false);
    EXPECT_FALSE(ferror(stderr)) << "the error flag is cleared when reopened";
    EXPECT_EQ(5, fprintf(stderr, "after"));
    StandardError::setClosed(false);  // already open: nothing changes
    EXPECT_EQ("before|after", ::testing::internal::GetCapturedStderr());
}

// The scenario thread switches the peers while the service's threads call them: every call is
// recorded once, and the agent is found again at the end.
TEST(PeersTest, SwitchWhileInUse) {
    using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;
    namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;
    testsupport::recorded().clear();
    std::atomic<bool> done{false};
    std::atomic<size_t> agentCalls{0}, callbackCalls{0};
    std::thread switcher([&] {  // until both threads made calls, or 5 s
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        for (int i = 0; (agentCalls < 100 || callbackCalls < 100) &&
                        std::chrono::steady_clock::now() < deadline;
             ++i) {
            FakeAgent::setMode(i % 2 ? FakeAgent::Mode::kAbsent : FakeAgent::Mode::kFailing);
            Framework::setAlive(i % 2 == 0);
        }
        done = true;
    });
    std::thread binder([&] {
        while (!done) {
            android::sp<IPlexd> agent = IPlexd::getService("default", false);
            if (agent == nullptr) continue;
            agent->runCmd("plexd bridge clear mac mdbr0 ").isOk();
            ++agentCalls;
        }
    });
    const auto cb = Framework::makeCallback(Framework::Version::k1_1);
    std::thread events([&] {
        while (!done) {
            auto cb11 = V1_1::ITetheringOffloadCallback::castFrom(cb).withDefault(nullptr);
            if (cb11 == nullptr) continue;  // the framework died during the cast
            cb11->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_STARTED).isOk();
            ++callbackCalls;
        }
    });
    switcher.join();
    binder.join();
    events.join();
    FakeAgent::setMode(FakeAgent::Mode::kUp);
    Framework::setAlive(true);
    EXPECT_EQ(agentCalls.load(), testsupport::recorded().all<AgentRecord>().size());
    EXPECT_EQ(callbackCalls.load(), testsupport::recorded().all<CallbackRecord>().size());
    EXPECT_NE(nullptr, IPlexd::getService("default", false));
    EXPECT_GE(agentCalls.load(), 100u) << "the threads did not overlap";
    EXPECT_GE(callbackCalls.load(), 100u) << "the threads did not overlap";
}

}  // namespace
}  // namespace hostplatform
