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

// The event thread against the emulated modem: framing, the dispatch table, registration, a dead
// framework, and unregistering while a dispatch is in progress.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "tests/datapath/RecordedLog.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::sp;
using datapath_test::error;
using datapath_test::info;
using datapath_test::LogLine;
using datapath_test::logLines;
using hostplatform::CallbackRecord;
using hostplatform::Framework;
using hostplatform::LogRecord;
using hostplatform::ModemEmulator;
using hostplatform::ReadRecord;
using hostplatform::Recorder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

constexpr uint16_t kStarted = 1;

std::vector<uint8_t> eventRecord(uint16_t status, uint32_t dataLen = 0, uint16_t mcode = VEXA_MCODE,
                                 uint32_t msg = 0) {
    std::vector<uint8_t> record(16 + std::min<uint32_t>(dataLen, 256), 0);
    vexa_common_hdr_t hdr = {mcode, status, 0, msg, dataLen};
    memcpy(record.data(), &hdr, sizeof(hdr));
    return record;
}

// A connection update from 192.168.43.2:0x50 to 8.8.8.8:0x35, UDP.
std::vector<uint8_t> connUpdateRecord() {
    std::vector<uint8_t> record = eventRecord(VEXA_CONNECT_UPDATE, sizeof(vexa_conn_update_t));
    vexa_conn_update_t conn = {};
    const uint8_t ip0[4] = {192, 168, 43, 2};
    memcpy(conn.ip0, ip0, 4);
    memset(conn.ip1, 8, 4);
    conn.port0 = 0x50;
    conn.port1 = 0x35;
    conn.proto = 17;
    memcpy(record.data() + 16, &conn, sizeof(conn));
    return record;
}

bool deliver(const std::vector<uint8_t>& record, size_t readSize) {
    return ModemEmulator::instance().deliverEvent(record, readSize);
}

bool deliver(const std::vector<uint8_t>& record) {
    return deliver(record, record.size());
}

std::vector<std::string> callbackOps() {
    std::vector<std::string> ops;
    for (const auto& cb : Recorder::instance().all<CallbackRecord>()) {
        ops.push_back(cb.op + " " + std::to_string(cb.event) + (cb.ok ? "" : " failed"));
    }
    return ops;
}

std::unique_ptr<ConnTimeoutUpdate> makeUpdater(Framework::Version version) {
    sp<V1_0::ITetheringOffloadCallback> cb = Framework::makeCallback(version);
    if (version == Framework::Version::k1_0) return std::make_unique<ConnTimeoutUpdate>(cb);
    sp<V1_1::ITetheringOffloadCallback> cb11 = V1_1::ITetheringOffloadCallback::castFrom(cb);
    return std::make_unique<ConnTimeoutUpdate>(cb11);
}

int gFirstStartResult = -99;
std::vector<LogLine> gStartLines;

class EventThreadTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        Recorder::instance().clear();
        gFirstStartResult = OffloadEventHandle::createEventThread();
        ASSERT_TRUE(ModemEmulator::instance().waitReaderBlocked());
        gStartLines = logLines();
    }

    void SetUp() override {
        mHandle = OffloadEventHandle::getInstance();
        Framework::setAlive(true);
        Recorder::instance().clear();
    }

    void TearDown() override {
        Framework::setAlive(true);
        if (mUpdater != nullptr) mHandle->unregisterTimeoutCallback(mUpdater.get());
    }

    void registerUpdater(Framework::Version version) {
        if (mUpdater != nullptr) mHandle->unregisterTimeoutCallback(mUpdater.get());
        mUpdater = makeUpdater(version);
        mHandle->registerTimeoutCallback(mUpdater.get());
        Recorder::instance().clear();
    }

    OffloadEventHandle* mHandle = nullptr;
    std::unique_ptr<ConnTimeoutUpdate> mUpdater;
};

TEST_F(EventThreadTest, StartsOnceAndRunsUnderItsName) {
    EXPECT_EQ(gFirstStartResult, 0);
    EXPECT_THAT(gStartLines, Contains(error("created HandleEvent thread\n")));

    EXPECT_EQ(OffloadEventHandle::createEventThread(), 0);
    EXPECT_THAT(logLines(), Contains(info(" HandleEvent thread has  been created \n")));
    EXPECT_THAT(logLines(), Not(Contains(error("created HandleEvent thread\n"))));

    registerUpdater(Framework::Version::k1_1);
    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    bool sawParserLine = false;
    for (const LogRecord& log : Recorder::instance().all<LogRecord>()) {
        if (log.msg.find("parsingEvent") == std::string::npos) continue;
        EXPECT_EQ(log.thread, "HandleEvent");
        sawParserLine = true;
    }
    EXPECT_TRUE(sawParserLine);
}

struct DispatchCase {
    uint16_t status;
    const char* line;
    std::vector<std::string> v10;  // callbacks a 1.0 framework sees
    std::vector<std::string> v11;  // and a 1.1 framework
};

const DispatchCase kDispatchTable[] = {
        {1, " recv VEXA_STARTED msg from MD\n", {"onEvent 1"}, {"onEvent_1_1 1"}},
        {2, "recv VEXA_STOPPED_ERROR msg from MD\n", {"onEvent 2"}, {"onEvent_1_1 2"}},
        {3, "recv VEXA_STOPPED_UNSUPPORTED msg from MD\n", {"onEvent 3"}, {"onEvent_1_1 3"}},
        {4, "recv VEXA_SUPPORT_AVAILABLE msg from MD\n", {"onEvent 4"}, {"onEvent_1_1 4"}},
        {5, "recv VEXA_STOPPED_LIMIT_REACHED msg from MD\n", {"onEvent 5"}, {"onEvent_1_1 5"}},
        {6, "recv VEXA_CONNECT_UPDATE msg from MD\n", {"updateTimeout 0"}, {"updateTimeout 0"}},
        {7, "recv VEXA_WARNING_REACHED msg from MD\n", {}, {"onEvent_1_1 6"}},
        {0, "recv unknown msg from MD (type = 0)\n", {}, {}},
        {8, "recv unknown msg from MD (type = 8)\n", {}, {}},
        {9, "recv unknown msg from MD (type = 9)\n", {}, {}},
        {0xffff, "recv unknown msg from MD (type = 65535)\n", {}, {}},
};

TEST_F(EventThreadTest, DispatchTableForBothCallbackVersions) {
    for (Framework::Version version : {Framework::Version::k1_0, Framework::Version::k1_1}) {
        registerUpdater(version);
        for (const DispatchCase& c : kDispatchTable) {
            SCOPED_TRACE(std::string(version == Framework::Version::k1_0 ? "1.0 " : "1.1 ") +
                         c.line);
            Recorder::instance().clear();
            std::vector<uint8_t> record =
                    c.status == VEXA_CONNECT_UPDATE ? connUpdateRecord() : eventRecord(c.status);
            const uint32_t msg = 3;  // logged only
            memcpy(record.data() + offsetof(vexa_common_hdr_t, msg), &msg, sizeof(msg));
            ASSERT_TRUE(deliver(record));
            EXPECT_THAT(logLines(), Contains(info(" parsingEvent : recv a msg from MD: status:" +
                                                  std::to_string(c.status) + " ,msg: 3\n")));
            EXPECT_THAT(logLines(), Contains(info(c.line)));
            EXPECT_EQ(callbackOps(), version == Framework::Version::k1_0 ? c.v10 : c.v11);
        }
    }
}

struct FramingCase {
    const char* what;
    std::vector<uint8_t> record;
    size_t readSize;
    std::vector<LogLine> errors;
    bool dispatched;
};

TEST_F(EventThreadTest, FramingChecks) {
    const LogLine tooShort = error("handleEvent: response msg is too short \n");
    const LogLine payloadShort = error("handleEvent: msg payload is too short\n");
    const LogLine tooBig = error("handleEvent: message payload too big (>256 bytes)\n");
    const std::vector<FramingCase> cases = {
            {"10-byte read", eventRecord(kStarted), 10, {tooShort}, false},
            {"15-byte read", eventRecord(kStarted), 15, {tooShort}, false},
            {"header only", eventRecord(kStarted), 16, {}, true},
            {"20-byte read, 8-byte payload", eventRecord(kStarted, 8), 20, {payloadShort}, false},
            {"24-byte read, 8-byte payload", eventRecord(kStarted, 8), 24, {}, true},
            {"full read, length 300", eventRecord(kStarted, 300), 272, {tooBig}, true},
            {"271-byte read, length 300",
             eventRecord(kStarted, 300),
             271,
             {tooBig, payloadShort},
             false},
    };
    registerUpdater(Framework::Version::k1_1);
    for (const FramingCase& c : cases) {
        SCOPED_TRACE(c.what);
        Recorder::instance().clear();
        ASSERT_TRUE(deliver(c.record, c.readSize));
        EXPECT_THAT(logLines(),
                    Contains(info("handleEvent: readsize " + std::to_string(c.readSize) + " \n")));
        EXPECT_EQ(datapath_test::logLinesAt(ANDROID_LOG_ERROR), c.errors);
        EXPECT_EQ(callbackOps(), c.dispatched ? std::vector<std::string>{"onEvent_1_1 1"}
                                              : std::vector<std::string>{});
    }
}

TEST_F(EventThreadTest, WrongMcodeIsRejected) {
    registerUpdater(Framework::Version::k1_0);
    for (uint16_t mcode : {0x0000, 0x5424, 0x2455}) {
        SCOPED_TRACE(mcode);
        Recorder::instance().clear();
        ASSERT_TRUE(deliver(eventRecord(kStarted, 0, mcode)));
        EXPECT_THAT(logLines(), Contains(info(" parsingEvent, mcode is not right  (type = 1) \n")));
        EXPECT_THAT(callbackOps(), IsEmpty());
    }
}

TEST_F(EventThreadTest, FailingReadIsLoggedAndTheThreadReadsOn) {
    registerUpdater(Framework::Version::k1_0);
    ASSERT_TRUE(ModemEmulator::instance().deliverReadFailure(EIO));
    const std::string fd = std::to_string(ModemEmulator::instance().deviceFd());
    EXPECT_THAT(logLines(), ElementsAre(error("readFD fail: fd=" + fd + ", err=-1 \n"),
                                        info("handleEvent: readsize -1 \n"),
                                        info(" parsingEvent, mcode is not right  (type = 0) \n")));
    EXPECT_THAT(callbackOps(), IsEmpty());

    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    EXPECT_EQ(callbackOps(), std::vector<std::string>{"onEvent 1"});
}

// Microseconds between the read() returns recorded since the last clear.
std::vector<int64_t> gapsBetweenReads() {
    std::vector<int64_t> times;
    for (const auto& record : Recorder::instance().records()) {
        if (std::holds_alternative<ReadRecord>(record.body)) times.push_back(record.tMicros);
    }
    std::vector<int64_t> gaps;
    for (size_t i = 1; i < times.size(); ++i) gaps.push_back(times[i] - times[i - 1]);
    return gaps;
}

TEST_F(EventThreadTest, FailedReadsBackOffUpToACapAndAGoodReadResets) {
    // Eight failures in a row: without a cap the last pause would exceed the 1 s delivery wait.
    for (int i = 0; i < 8; ++i) {
        ASSERT_TRUE(ModemEmulator::instance().deliverReadFailure(EIO)) << "failure " << i;
    }
    std::vector<int64_t> gaps = gapsBetweenReads();
    ASSERT_EQ(gaps.size(), 7u);
    EXPECT_GE(gaps[0], 10000);
    EXPECT_GE(gaps[1], 20000);
    EXPECT_GE(gaps[2], 40000);
    EXPECT_GE(gaps[5], 320000);

    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    Recorder::instance().clear();
    ASSERT_TRUE(ModemEmulator::instance().deliverReadFailure(EIO));
    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    gaps = gapsBetweenReads();
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_GE(gaps[0], 10000);
    EXPECT_LT(gaps[0], 250000);  // back to the first pause, not the capped one
}

TEST_F(EventThreadTest, EventsWithoutAnUpdaterAreDropped) {
    const LogLine dropped = info(" parsingEvent, not register Timeout Callback (type = 1) \n");
    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    ASSERT_TRUE(deliver(eventRecord(9)));
    EXPECT_THAT(logLines(), Contains(dropped));
    EXPECT_THAT(logLines(),
                Contains(info(" parsingEvent, not register Timeout Callback (type = 9) \n")));

    registerUpdater(Framework::Version::k1_1);
    mHandle->unregisterTimeoutCallback(mUpdater.get());
    Recorder::instance().clear();
    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    EXPECT_THAT(logLines(), Contains(dropped));
    EXPECT_THAT(callbackOps(), IsEmpty());
}

TEST_F(EventThreadTest, RegistrationReplacesAndUnregistrationClears) {
    auto first = makeUpdater(Framework::Version::k1_0);
    auto second = makeUpdater(Framework::Version::k1_1);
    EXPECT_EQ(mHandle->registerTimeoutCallback(first.get()), 0);
    EXPECT_EQ(mHandle->registerTimeoutCallback(second.get()), 0);
    ASSERT_TRUE(deliver(eventRecord(kStarted)));
    EXPECT_EQ(callbackOps(), std::vector<std::string>{"onEvent_1_1 1"});
    // The argument is not compared: whatever is registered goes.
    EXPECT_EQ(mHandle->unregisterTimeoutCallback(first.get()), 0);
    EXPECT_EQ(mHandle->unregisterTimeoutCallback(second.get()), 0);
    EXPECT_THAT(logLines(),
                testing::IsSupersetOf(
                        {info(" registerTimeoutCallback \n"),
                         info("already have registerTimeoutCallback previously, override \n"),
                         info(" unregisterTimeoutCallback \n"),
                         info("already have unregisterTimeoutCallback previously, override \n")}));
}

struct DeadFrameworkCase {
    Framework::Version version;
    std::vector<uint8_t> record;
    const char* op;
};

TEST_F(EventThreadTest, DeadFrameworkIsLoggedAndTheThreadGoesOn) {
    const std::vector<DeadFrameworkCase> cases = {
            {Framework::Version::k1_0, eventRecord(kStarted), "onEvent"},
            {Framework::Version::k1_1, eventRecord(kStarted), "onEvent_1_1"},
            {Framework::Version::k1_1, eventRecord(VEXA_WARNING_REACHED), "onEvent_1_1"},
            {Framework::Version::k1_0, connUpdateRecord(), "updateTimeout"},
    };
    for (const DeadFrameworkCase& c : cases) {
        SCOPED_TRACE(c.op);
        registerUpdater(c.version);
        Framework::setAlive(false);
        ASSERT_TRUE(deliver(c.record));
        auto callbacks = Recorder::instance().all<CallbackRecord>();
        ASSERT_EQ(callbacks.size(), 1u);
        EXPECT_FALSE(callbacks[0].ok);
        const std::string prefix = std::string(c.op) + " to framework failed: ";
        auto errors = datapath_test::logLinesAt(ANDROID_LOG_ERROR);
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_EQ(errors[0].second.compare(0, prefix.size(), prefix), 0) << errors[0].second;

        Framework::setAlive(true);
        Recorder::instance().clear();
        ASSERT_TRUE(deliver(eventRecord(kStarted)));
        ASSERT_EQ(Recorder::instance().all<CallbackRecord>().size(), 1u);
        EXPECT_TRUE(Recorder::instance().all<CallbackRecord>()[0].ok);
    }
}

}  // namespace
