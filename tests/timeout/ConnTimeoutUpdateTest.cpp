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

// The connection-update relay: payload decoding, the length check, the build-type guard on
// address logging, and a framework that has gone away.

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/Properties.h>
#include <hostplatform/Recorder.h>
#include <string.h>

#include <string>
#include <vector>

#include "timeout/ConnTimeoutUpdate.h"

using android::sp;
using hostplatform::CallbackRecord;
using hostplatform::Framework;
using hostplatform::LogRecord;
using hostplatform::Properties;
using hostplatform::Recorder;
using testing::IsEmpty;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

struct Conn {
    uint8_t ip0[4];
    uint8_t ip1[4];
    uint8_t ip2[4];
    uint16_t port0;
    uint16_t port1;
    uint16_t port2;
    uint8_t proto;
    uint8_t dstNat;
};

// 192.168.43.2:0x50 -> 8.8.8.8:0x35 over UDP, with 10.0.0.1:80 in the third slot.
const Conn kExample = {
        {0xC0, 0xA8, 0x2B, 0x02}, {8, 8, 8, 8}, {0x0A, 0, 0, 1}, 0x50, 0x35, 80, 17, 0};

vexa_dev_rsp_common_t connRecord(const Conn& c, uint32_t dataLen = sizeof(vexa_conn_update_t)) {
    vexa_dev_rsp_common_t rsp = {};
    rsp.mcode = VEXA_MCODE;
    rsp.status = VEXA_CONNECT_UPDATE;
    rsp.data_len = dataLen;
    vexa_conn_update_t conn = {};
    memcpy(conn.ip0, c.ip0, 4);
    memcpy(conn.ip1, c.ip1, 4);
    memcpy(conn.ip2, c.ip2, 4);
    conn.port0 = c.port0;
    conn.port1 = c.port1;
    conn.port2 = c.port2;
    conn.proto = c.proto;
    conn.dst_nat = c.dstNat;
    memcpy(rsp.data, &conn, sizeof(conn));
    return rsp;
}

ConnTimeoutUpdate makeUpdater(Framework::Version version) {
    sp<V1_0::ITetheringOffloadCallback> cb = Framework::makeCallback(version);
    if (version == Framework::Version::k1_0) return ConnTimeoutUpdate(cb);
    sp<V1_1::ITetheringOffloadCallback> cb11 = V1_1::ITetheringOffloadCallback::castFrom(cb);
    return ConnTimeoutUpdate(cb11);
}

std::vector<std::string> logsAt(int prio) {
    std::vector<std::string> lines;
    for (const LogRecord& log : Recorder::instance().all<LogRecord>()) {
        if (log.prio == prio) lines.push_back(log.msg);
    }
    return lines;
}

class ConnTimeoutUpdateTest : public testing::Test {
protected:
    void SetUp() override {
        Properties::clear();
        Framework::setAlive(true);
        Recorder::instance().clear();
    }
    void TearDown() override {
        Properties::clear();
        Framework::setAlive(true);
    }

    // The one updateTimeout the relay made.
    CallbackRecord relay(const Conn& conn, Framework::Version version = Framework::Version::k1_0) {
        ConnTimeoutUpdate updater = makeUpdater(version);
        vexa_dev_rsp_common_t rsp = connRecord(conn);
        EXPECT_EQ(updater.connTimeoutUpdater(&rsp), 0);
        auto calls = Recorder::instance().all<CallbackRecord>();
        EXPECT_EQ(calls.size(), 1u);
        return calls.empty() ? CallbackRecord{} : calls.back();
    }
};

TEST_F(ConnTimeoutUpdateTest, WithoutDestinationNatTheFirstTwoSlotsAreUsed) {
    for (auto version : {Framework::Version::k1_0, Framework::Version::k1_1}) {
        Recorder::instance().clear();
        CallbackRecord call = relay(kExample, version);
        EXPECT_EQ(call.op, "updateTimeout");
        EXPECT_EQ(call.src.addr, "192.168.43.2");
        EXPECT_EQ(call.src.port, 0x50);
        EXPECT_EQ(call.dst.addr, "8.8.8.8");
        EXPECT_EQ(call.dst.port, 0x35);
        EXPECT_EQ(call.proto, 17u);
    }
}

TEST_F(ConnTimeoutUpdateTest, WithDestinationNatTheLastTwoSlotsAreUsed) {
    Conn conn = kExample;
    conn.dstNat = 1;
    CallbackRecord call = relay(conn);
    EXPECT_EQ(call.src.addr, "8.8.8.8");
    EXPECT_EQ(call.src.port, 0x35);
    EXPECT_EQ(call.dst.addr, "10.0.0.1");
    EXPECT_EQ(call.dst.port, 80);
}

TEST_F(ConnTimeoutUpdateTest, OnlyProtocolSixIsTcp) {
    const std::pair<uint8_t, uint32_t> cases[] = {{6, 6}, {17, 17}, {1, 17}, {0, 17}};
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.first));
        Recorder::instance().clear();
        Conn conn = kExample;
        conn.proto = c.first;
        EXPECT_EQ(relay(conn).proto, c.second);
    }
}

TEST_F(ConnTimeoutUpdateTest, LongestAddressKeepsAllFifteenCharacters) {
    Conn conn = kExample;
    memset(conn.ip0, 0xff, 4);
    EXPECT_EQ(relay(conn).src.addr, "255.255.255.255");
}

TEST_F(ConnTimeoutUpdateTest, PayloadOfTheWrongLengthIsRejected) {
    for (uint32_t len : {0u, 27u, 29u, 256u}) {
        SCOPED_TRACE(len);
        Recorder::instance().clear();
        ConnTimeoutUpdate updater = makeUpdater(Framework::Version::k1_1);
        vexa_dev_rsp_common_t rsp = connRecord(kExample, len);
        EXPECT_EQ(updater.connTimeoutUpdater(&rsp), -1);
        EXPECT_EQ(logsAt(ANDROID_LOG_ERROR),
                  std::vector<std::string>{"a wrong format event for udp timeout update \n"});
        EXPECT_THAT(Recorder::instance().all<CallbackRecord>(), IsEmpty());
    }
}

TEST_F(ConnTimeoutUpdateTest, NoCallbackMeansNothingIsSent) {
    ConnTimeoutUpdate updater{sp<V1_0::ITetheringOffloadCallback>()};
    vexa_dev_rsp_common_t rsp = connRecord(kExample);
    EXPECT_EQ(updater.connTimeoutUpdater(&rsp), -2);
    EXPECT_EQ(logsAt(ANDROID_LOG_INFO),
              std::vector<std::string>{" UDPTimeoutUpdate : not register callback \n"});
    EXPECT_THAT(Recorder::instance().all<CallbackRecord>(), IsEmpty());
}

TEST_F(ConnTimeoutUpdateTest, AddressesAreLoggedOnDebugBuildsOnly) {
    const std::vector<std::string> plain = {
            "TimeoutUpdate : addr =192.168.43.2 \n", "TimeoutUpdate : addr =8.8.8.8 \n",
            "dst nat is not set  src (port)=0x22ba8c0 (0x50) dst =0x8080808(0x35)  \n"};
    const std::vector<std::string> natted = {
            "TimeoutUpdate : addr =8.8.8.8 \n", "TimeoutUpdate : addr =10.0.0.1 \n",
            "dst nat is  set  src (port)=0x8080808 (0x35) dst =0x100000a(0x50)  \n"};
    struct Case {
        const char* buildType;  // null: property unset
        bool logs;
    };
    const Case cases[] = {{nullptr, false},    {"user", false},    {"userdebug", true},
                          {"eng", true},       {"engineer", true}, {"userdebugx", true},
                          {"userdebu", false}, {"en", false}};
    for (const Case& c : cases) {
        for (uint8_t dstNat : {0, 1}) {
            SCOPED_TRACE(std::string(c.buildType ? c.buildType : "(unset)") + " nat " +
                         std::to_string(dstNat));
            Properties::clear();
            if (c.buildType != nullptr) Properties::set("ro.build.type", c.buildType);
            Recorder::instance().clear();
            Conn conn = kExample;
            conn.dstNat = dstNat;
            conn.port2 = 0x50;
            relay(conn);
            std::vector<std::string> expected;
            if (c.logs) expected = dstNat ? natted : plain;
            EXPECT_EQ(logsAt(ANDROID_LOG_INFO), expected);
        }
    }
}

TEST_F(ConnTimeoutUpdateTest, DeadFrameworkLosesTheUpdateWithALogLine) {
    ConnTimeoutUpdate updater = makeUpdater(Framework::Version::k1_1);
    Framework::setAlive(false);
    vexa_dev_rsp_common_t rsp = connRecord(kExample);
    EXPECT_EQ(updater.connTimeoutUpdater(&rsp), 0);
    auto calls = Recorder::instance().all<CallbackRecord>();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_FALSE(calls[0].ok);
    auto errors = logsAt(ANDROID_LOG_ERROR);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].rfind("updateTimeout to framework failed: ", 0), 0u) << errors[0];
}

}  // namespace
