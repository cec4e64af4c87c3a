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

// The data-path client against the fake device: the requests as the driver receives them and
// the ways a command fails; the event thread's dispatch, its pause after failed reads, the lock
// every dispatch lets go of, and unregistering while a dispatch is in progress.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"
#include "timeout/ConnTimeoutUpdate.h"

using fakes::ConntrackFiles;
using fakes::FakeFramework;
using fakes::FakeVexaDevice;
using testing::Contains;
using testsupport::error;
using testsupport::info;
using testsupport::logEntries;
using testsupport::LogLine;
namespace V1_0 = android::hardware::tetheroffload::control::V1_0;

namespace {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<LogLine>;

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

template <typename T>
Bytes raw(T value) {
    Bytes bytes(sizeof(T));
    memcpy(bytes.data(), &value, sizeof(T));
    return bytes;
}

// The 54 24 02 00 prefix (mcode, then the request status), app, msg and data_len.
Bytes header(uint32_t app, uint32_t msg, uint32_t dataLen) {
    return Bytes{0x54, 0x24, 0x02, 0x00} + raw(app) + raw(msg) + raw(dataLen);
}

Bytes name(const char* text) {
    Bytes field(16, 0);
    memcpy(field.data(), text, strlen(text));
    return field;
}

char gFifteen[] = "abcdefghijklmno";
char gTwenty[] = "ABCDEFGHIJKLMNOPQRST";

struct Command {
    std::function<int(OffloadEventHandle*)> run;
    Bytes request;
    std::string stem;  // of the lines "STEM ok \n" and "STEM  fail errno: N \n"
};

// Names are cut to 15 characters and a NUL. The conntrack files read 7200 (TCP) and 120 (UDP).
// clang-format off
const Command kCommands[] = {
    {[](OffloadEventHandle* h) { return h->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE); },
     header(255, 0, 0), "sendCmd2MD (app: 255 cmd: 0)"},
    {[](OffloadEventHandle* h) { return h->activeVexa(VEXA_APP_TYPE_WH, gTwenty, gFifteen); },
     header(1, 2, 32) + name("ABCDEFGHIJKLMNO") + name("abcdefghijklmno"), "activeVexa (app: 1 )"},
    {[](OffloadEventHandle* h) { tether_offload_stats_t s; return h->getDataUsage(VEXA_APP_TYPE_ALL, &s); },
     header(255, 4, 0) + Bytes(240, 0), "getDataUsage (app: 255 )"},
    {[](OffloadEventHandle* h) { return h->setDataLimit(VEXA_APP_TYPE_USB, gTwenty, 5000); },
     header(0, 5, 24) + name("ABCDEFGHIJKLMNO") + raw<uint64_t>(5000), "setDataLimit (app: 0 )"},
    // The limit before the warning.
    {[](OffloadEventHandle* h) { return h->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, gTwenty, 100, 200); },
     header(255, 7, 32) + name("ABCDEFGHIJKLMNO") + raw<uint64_t>(200) + raw<uint64_t>(100),
     "setDataWarningAndLimit (app: 255 )"},
    {[](OffloadEventHandle* h) { return h->sendTimeoutValue(VEXA_APP_TYPE_ALL); },
     header(255, 6, 8) + raw<int32_t>(120) + raw<int32_t>(7200), "sendTimeoutValue (app: 255 )"},
};
// clang-format on

class CommandTest : public testing::Test {
protected:
    void SetUp() override {
        FakeVexaDevice::instance().restoreDefaults();
        setConntrackFiles("7200\n", "120\n");
        testsupport::observed().clear();
    }

    void TearDown() override {
        FakeVexaDevice::instance().restoreDefaults();
        ConntrackFiles::reset();
    }

    static void setConntrackFiles(const char* tcp, const char* udp) {  // null: no such file
        for (auto [proto, text] : {std::make_pair(ConntrackFiles::Proto::kTcp, tcp),
                                   std::make_pair(ConntrackFiles::Proto::kUdp, udp)}) {
            if (text == nullptr) ConntrackFiles::setAbsent(proto);
            if (text != nullptr) ConntrackFiles::setContent(proto, text);
        }
    }

    // The one request sent since the last clear, as the driver read it.
    static Bytes onlyRequest() {
        auto ioctls = testsupport::observed().of<fakes::IoctlRecord>();
        EXPECT_EQ(ioctls.size(), 1u);
        return ioctls.empty() ? Bytes{} : ioctls[0].bytes;
    }

    OffloadEventHandle* mHandle = OffloadEventHandle::getInstance();
};

TEST_F(CommandTest, EachRequestCarriesItsBytesAndAFailedIoctlItsErrno) {
    for (const Command& command : kCommands) {
        SCOPED_TRACE(command.stem);
        FakeVexaDevice::instance().setIoctlError(0);
        testsupport::observed().clear();
        EXPECT_EQ(command.run(mHandle), 0);
        EXPECT_EQ(onlyRequest(), command.request);
        EXPECT_THAT(logEntries(), Contains(info(command.stem + " ok \n")));
        EXPECT_EQ(logEntries(ANDROID_LOG_ERROR), Lines{});

        FakeVexaDevice::instance().setIoctlError(EBUSY);
        testsupport::observed().clear();
        EXPECT_EQ(command.run(mHandle), -1);
        EXPECT_EQ(logEntries(ANDROID_LOG_ERROR),
                  Lines{error(command.stem + "  fail errno: 16 \n")});
    }
}

TEST_F(CommandTest, StatisticsAreTakenOnlyFromAnAnswerOf128Bytes) {
    for (uint32_t answerLen : {128u, 127u, 136u}) {
        SCOPED_TRACE(answerLen);
        testsupport::observed().clear();
        FakeVexaDevice::instance().setStatsAnswer(0x0102030405060708, 0x1112131415161718, answerLen);
        tether_offload_stats_t stats = {7, 9};
        const bool taken = answerLen == 128;
        EXPECT_EQ(mHandle->getDataUsage(VEXA_APP_TYPE_ALL, &stats), taken ? 0 : -1);
        EXPECT_EQ(stats.rx_bytes, taken ? 0x0102030405060708u : 7u);
        EXPECT_EQ(stats.tx_bytes, taken ? 0x1112131415161718u : 9u);
        EXPECT_THAT(logEntries(),
                    Contains(info(taken ? "getDataUsage (app: 255 ) ok \n"
                                        : "getDataUsage : response length is not right \n")));
    }
}

TEST_F(CommandTest, NullNamesAreRefusedBeforeAnythingElse) {
    // clang-format off
    const std::pair<std::function<int()>, const char*> cases[] = {
        {[&] { return mHandle->activeVexa(VEXA_APP_TYPE_USB, gFifteen, nullptr); }, "activeVexa: interface is null \n"},
        {[&] { return mHandle->activeVexa(VEXA_APP_TYPE_WH, nullptr, gFifteen); }, "activeVexa: interface is null \n"},
        {[&] { return mHandle->setDataLimit(VEXA_APP_TYPE_ALL, nullptr, 1); }, "setDataLimit: interface is null \n"},
        {[&] { return mHandle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, nullptr, 1, 2); },
         "setDataWarningAndLimit: interface is null \n"},
    };
    // clang-format on
    for (const auto& [run, line] : cases) {
        SCOPED_TRACE(line);
        testsupport::observed().clear();
        EXPECT_EQ(run(), -1);
        EXPECT_EQ(logEntries(), Lines{error(line)});  // not even a lookup of the client
        EXPECT_EQ(testsupport::observed().of<fakes::IoctlRecord>().size(), 0u);
    }
}

// The rows run one after another on the one client, so a value kept from an earlier request fails.
TEST_F(CommandTest, TimeoutsComeFromTheConntrackFilesOrTheDefaults) {
    const Lines noNumber = {error(" tcp timeout atoi fail ,ret = 0"),
                            error(" udp timeout atoi fail ,ret = 0")};
    // clang-format off
    const std::tuple<const char*, const char*, int32_t, int32_t, Lines> cases[] = {
        {"600\n", "60\n", 600, 60, {}},
        {nullptr, nullptr, 432000, 180,
         {error("open proc (tcp) item fail err: 2"), error("open proc (udp) item fail err: 2")}},
        {"0\n", "0", 432000, 180, noNumber},
        {"abc\n", "x60", 432000, 180, noNumber},
    };
    // clang-format on
    for (const auto& [tcpFile, udpFile, tcp, udp, errors] : cases) {
        SCOPED_TRACE(tcpFile == nullptr ? "(no files)" : tcpFile);
        setConntrackFiles(tcpFile, udpFile);
        testsupport::observed().clear();
        EXPECT_EQ(mHandle->sendTimeoutValue(VEXA_APP_TYPE_ALL), 0);
        EXPECT_EQ(onlyRequest(), header(255, 6, 8) + raw(udp) + raw(tcp));
        EXPECT_EQ(logEntries(ANDROID_LOG_ERROR), errors);
    }
}

Bytes eventRecord(uint16_t status, uint32_t dataLen = 0) {
    return Bytes{0x54, 0x24} + raw(status) + raw(0u) + raw(0u) + raw(dataLen) + Bytes(dataLen, 0);
}

using testsupport::deliver;

// What the framework heard, e.g. {"onEvent_1_1 6"} or {"updateTimeout 0 failed"}.
std::vector<std::string> frameworkCalls() {
    std::vector<std::string> calls;
    for (const auto& cb : testsupport::observed().of<fakes::CallbackRecord>()) {
        calls.push_back(cb.op + " " + std::to_string(cb.event) + (cb.ok ? "" : " failed"));
    }
    return calls;
}

class EventThreadTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(OffloadEventHandle::createEventThread(), 0);
        ASSERT_TRUE(FakeVexaDevice::instance().waitReaderBlocked());
    }

    void SetUp() override { testsupport::observed().clear(); }

    // The argument is not compared: this clears whatever a test left registered. A lock that a
    // dispatch kept would hold it for good.
    void TearDown() override {
        FakeFramework::setAlive(true);
        if (!mLockKept) mHandle->unregisterTimeoutCallback(nullptr);
    }

    OffloadEventHandle* mHandle = OffloadEventHandle::getInstance();
    bool mLockKept = false;
};

// Each row with the framework dead and alive: a lost call is logged and the event thread reads on.
TEST_F(EventThreadTest, DispatchTableForBothCallbackVersions) {
    struct Case {
        uint16_t status;
        const char* line;
        std::string v10;  // what a 1.0 framework hears, if anything
        std::string v11;  // and a 1.1 framework
    };
    // clang-format off
    const Case cases[] = {
        {1, " recv VEXA_STARTED msg from MD\n", "onEvent 1", "onEvent_1_1 1"},
        {2, "recv VEXA_STOPPED_ERROR msg from MD\n", "onEvent 2", "onEvent_1_1 2"},
        {3, "recv VEXA_STOPPED_UNSUPPORTED msg from MD\n", "onEvent 3", "onEvent_1_1 3"},
        {4, "recv VEXA_SUPPORT_AVAILABLE msg from MD\n", "onEvent 4", "onEvent_1_1 4"},
        {5, "recv VEXA_STOPPED_LIMIT_REACHED msg from MD\n", "onEvent 5", "onEvent_1_1 5"},
        {6, "recv VEXA_CONNECT_UPDATE msg from MD\n", "updateTimeout 0", "updateTimeout 0"},
        {7, "recv VEXA_WARNING_REACHED msg from MD\n", "", "onEvent_1_1 6"},
        {0, "recv unknown msg from MD (type = 0)\n", "", ""},
        {8, "recv unknown msg from MD (type = 8)\n", "", ""},
    };
    // clang-format on
    namespace V1_1 = android::hardware::tetheroffload::control::V1_1;
    for (bool v10 : {true, false}) {
        android::sp<V1_0::ITetheringOffloadCallback> cb = FakeFramework::makeCallback(
                v10 ? FakeFramework::Version::k1_0 : FakeFramework::Version::k1_1);
        ConnTimeoutUpdate updater =
                v10 ? ConnTimeoutUpdate(cb)
                    : ConnTimeoutUpdate(V1_1::ITetheringOffloadCallback::castFrom(cb));
        mHandle->registerTimeoutCallback(&updater);
        // Dead first: the next version's callback cannot be made while the framework is dead.
        for (bool alive : {false, true}) {
            FakeFramework::setAlive(alive);
            for (const Case& c : cases) {
                SCOPED_TRACE(std::string(v10 ? "1.0 " : "1.1 ") + (alive ? "" : "dead ") + c.line);
                testsupport::observed().clear();
                ASSERT_TRUE(deliver(eventRecord(c.status, c.status == 6 ? 28 : 0)));
                EXPECT_THAT(logEntries(), Contains(info(c.line)));
                const std::string& call = v10 ? c.v10 : c.v11;
                std::vector<std::string> heard;
                Lines errors;
                if (!call.empty()) heard = {call + (alive ? "" : " failed")};
                if (!call.empty() && !alive) {
                    errors = {error(call.substr(0, call.find(' ')) + " to framework failed: " +
                                    "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT'\n")};
                }
                EXPECT_EQ(frameworkCalls(), heard);
                EXPECT_EQ(logEntries(ANDROID_LOG_ERROR), errors);
            }
        }
        mHandle->unregisterTimeoutCallback(&updater);
    }
}

// Whether `call` returns within a few seconds on another thread. One that waits on a lock nobody
// lets go of is left behind, detached, so that the test fails instead of hanging.
bool returnsSoon(std::function<void()> call) {
    auto returned = std::make_shared<std::promise<void>>();
    std::future<void> done = returned->get_future();
    std::thread([call, returned] {
        call();
        returned->set_value();
    }).detach();
    return done.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
}

// Every way out of a dispatch lets go of the lock: without a relay, with a bad mcode, after each
// status, an unknown one and a failed read, for a 1.0 and a 1.1 relay. Otherwise the next
// registration would wait for good, and only a scenario's timeout would tell.
TEST_F(EventThreadTest, EveryDispatchPathLetsGoOfTheLock) {
    namespace V1_1 = android::hardware::tetheroffload::control::V1_1;
    Bytes badMcode = eventRecord(VEXA_STARTED);
    badMcode[0] = 0;
    const std::pair<const char*, Bytes> paths[] = {
            {"started", eventRecord(1)},
            {"stopped error", eventRecord(2)},
            {"stopped unsupported", eventRecord(3)},
            {"support available", eventRecord(4)},
            {"limit reached", eventRecord(5)},
            {"connection update", eventRecord(6, sizeof(vexa_conn_update_t))},
            {"connection update of a wrong length", eventRecord(6, 4)},
            {"warning reached", eventRecord(7)},
            {"unknown status", eventRecord(9)},
            {"bad mcode", badMcode},
            {"failed read", {}},
    };
    ConnTimeoutUpdate v10(FakeFramework::makeCallback(FakeFramework::Version::k1_0));
    ConnTimeoutUpdate v11(V1_1::ITetheringOffloadCallback::castFrom(
            FakeFramework::makeCallback(FakeFramework::Version::k1_1)));
    OffloadEventHandle* handle = mHandle;
    for (ConnTimeoutUpdate* relay : {static_cast<ConnTimeoutUpdate*>(nullptr), &v10, &v11}) {
        if (relay != nullptr) handle->registerTimeoutCallback(relay);
        for (const auto& [path, record] : paths) {
            SCOPED_TRACE(std::string(path) +
                         (relay == nullptr ? ", no relay"
                                           : std::string(", relay ") + relay->callbackVersion()));
            ASSERT_TRUE(record.empty() ? testsupport::deliverReadFailure(EIO) : deliver(record));
            mLockKept = !returnsSoon([handle, relay] {
                handle->unregisterTimeoutCallback(relay);
                if (relay != nullptr) handle->registerTimeoutCallback(relay);
            });
            ASSERT_FALSE(mLockKept) << "the dispatch kept the lock";
        }
        handle->unregisterTimeoutCallback(relay);
    }
}

// Milliseconds between the read() returns recorded since the last clear.
std::vector<int64_t> gapsBetweenReads() {
    std::vector<int64_t> gaps;
    int64_t last = -1;
    for (const auto& record : testsupport::observed().all()) {
        if (!std::holds_alternative<fakes::ReadRecord>(record.crossing)) continue;
        if (last >= 0) gaps.push_back((record.tMicros - last) / 1000);
        last = record.tMicros;
    }
    return gaps;
}

TEST_F(EventThreadTest, FailedReadsAreSpacedOutAndAGoodReadResetsThePause) {
    // Pauses of 10, 20, 40, 80 and 160 ms; the next would be 320 ms.
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(testsupport::deliverReadFailure(EIO));
    ASSERT_TRUE(deliver(eventRecord(VEXA_STARTED)));
    std::vector<int64_t> gaps = gapsBetweenReads();
    ASSERT_EQ(gaps.size(), 5u);
    for (size_t i = 0; i < gaps.size(); ++i) EXPECT_GE(gaps[i], 10 << i) << i;

    testsupport::observed().clear();
    ASSERT_TRUE(testsupport::deliverReadFailure(EIO));
    ASSERT_TRUE(deliver(eventRecord(VEXA_STARTED)));
    gaps = gapsBetweenReads();
    ASSERT_EQ(gaps.size(), 1u);
    // Without the reset this pause would be 320 ms; the margin is for a loaded machine.
    EXPECT_GE(gaps[0], 10);
    EXPECT_LT(gaps[0], 320);
}

// A framework whose updateTimeout holds the event thread until the test lets it go.
class BlockingFramework : public V1_0::ITetheringOffloadCallback {
public:
    android::hardware::Return<void> onEvent(V1_0::OffloadCallbackEvent) override { return {}; }
    android::hardware::Return<void> updateTimeout(const V1_0::NatTimeoutUpdate&) override {
        entered.set_value();
        release.get_future().wait();
        return {};
    }

    std::promise<void> entered;
    std::promise<void> release;
};

// True while the thread sleeps in futex(), where a pthread_mutex_lock held elsewhere waits.
bool sleepsOnALock(pid_t tid) {
    std::ifstream syscallFile("/proc/self/task/" + std::to_string(tid) + "/syscall");
    long number = -1;
    syscallFile >> number;
    return number == SYS_futex;
}

// The caller deletes the updater once unregisterTimeoutCallback returns, so it must wait for a
// framework call in progress. The call is let go only once the unregistering thread is seen back
// (the fault) or asleep on a lock: no timing decides the outcome.
TEST_F(EventThreadTest, UnregisterWaitsForTheDispatchInProgress) {
    auto* framework = new BlockingFramework();
    android::sp<V1_0::ITetheringOffloadCallback> held = framework;
    std::future<void> entered = framework->entered.get_future();
    ConnTimeoutUpdate updater(held);
    mHandle->registerTimeoutCallback(&updater);

    const Bytes update = eventRecord(VEXA_CONNECT_UPDATE, sizeof(vexa_conn_update_t));
    std::thread modem([&] {
        FakeVexaDevice& device = FakeVexaDevice::instance();
        device.queueRecord(update, update.size()) &&
                device.waitUntilDrained(std::chrono::seconds(10));
    });
    EXPECT_EQ(entered.wait_for(std::chrono::seconds(10)), std::future_status::ready);

    std::atomic<pid_t> binderTid{0};
    std::atomic<bool> unregistered{false};
    std::thread binder([&] {
        binderTid = gettid();
        mHandle->unregisterTimeoutCallback(&updater);
        unregistered = true;
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!unregistered && (binderTid == 0 || !sleepsOnALock(binderTid)) &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(unregistered) << "returned while the framework call was in progress";
    framework->release.set_value();
    binder.join();
    modem.join();
}

}  // namespace
