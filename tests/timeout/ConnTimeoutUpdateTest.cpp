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

// The connection-update relay: which slots name the connection, the length check, and the
// build-type guard on address logging.

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "fakes/FakeFramework.h"
#include "fakes/Properties.h"
#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"
#include "timeout/ConnTimeoutUpdate.h"

using fakes::FakeFramework;
using testsupport::error;
using testsupport::info;
using testsupport::logEntries;
using testsupport::LogLine;
using Lines = std::vector<std::string>;

namespace {

// 192.168.43.2:80 in the first slot, 8.8.8.8:53 in the second, 255.255.255.255:443 in the third.
vexa_dev_rsp_common_t connRecord(uint8_t proto, uint8_t dstNat, uint32_t dataLen = 28) {
    vexa_dev_rsp_common_t rsp = {VEXA_MCODE, VEXA_CONNECT_UPDATE, 0, 0, dataLen, {}};
    // clang-format off
    vexa_conn_update_t conn = {{192, 168, 43, 2}, {8, 8, 8, 8}, {255, 255, 255, 255}, 80, 53, 443,
                               proto, {}, dstNat, {}};
    // clang-format on
    memcpy(rsp.data, &conn, sizeof(conn));
    return rsp;
}

// Relays one record through a framework of the given version; returns what the relay answered.
int relay(vexa_dev_rsp_common_t rsp, FakeFramework::Version version = FakeFramework::Version::k1_0) {
    namespace V1_1 = android::hardware::tetheroffload::control::V1_1;
    android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback> cb =
            FakeFramework::makeCallback(version);
    if (version == FakeFramework::Version::k1_0)
        return ConnTimeoutUpdate(cb).connTimeoutUpdater(&rsp);
    return ConnTimeoutUpdate(V1_1::ITetheringOffloadCallback::castFrom(cb)).connTimeoutUpdater(&rsp);
}

// "updateTimeout SRC:PORT DST:PORT PROTO" for each call the framework heard.
Lines updates() {
    Lines out;
    for (const auto& u : testsupport::observed().of<fakes::CallbackRecord>()) {
        out.push_back(u.op + " " + u.src.addr + ":" + std::to_string(u.src.port) + " " +
                      u.dst.addr + ":" + std::to_string(u.dst.port) + " " + std::to_string(u.proto));
    }
    return out;
}

TEST(ConnTimeoutUpdateTest, SlotsProtocolAndDestinationNat) {
    // clang-format off
    const std::tuple<uint8_t, uint8_t, const char*> cases[] = {
        {17, 0, "updateTimeout 192.168.43.2:80 8.8.8.8:53 17"},
        {6, 1, "updateTimeout 8.8.8.8:53 255.255.255.255:443 6"},
        {1, 0, "updateTimeout 192.168.43.2:80 8.8.8.8:53 17"},  // only 6 is TCP
    };
    // clang-format on
    for (auto version : {FakeFramework::Version::k1_0, FakeFramework::Version::k1_1}) {
        for (const auto& [proto, dstNat, update] : cases) {
            SCOPED_TRACE(update);
            testsupport::observed().clear();
            EXPECT_EQ(relay(connRecord(proto, dstNat), version), 0);
            EXPECT_EQ(updates(), Lines{update});
        }
    }
}

TEST(ConnTimeoutUpdateTest, PayloadOfTheWrongLengthIsRejected) {
    for (uint32_t len : {27u, 29u}) {
        SCOPED_TRACE(len);
        testsupport::observed().clear();
        EXPECT_EQ(relay(connRecord(17, 0, len), FakeFramework::Version::k1_1), -1);
        EXPECT_EQ(logEntries(),
                  std::vector<LogLine>{error("a wrong format event for udp timeout update \n")});
        EXPECT_EQ(updates(), Lines{});
    }
}

TEST(ConnTimeoutUpdateTest, AddressesAreLoggedOnDebugBuildsOnly) {
    const std::vector<LogLine> plain = {
            info("TimeoutUpdate : addr =192.168.43.2 \n"), info("TimeoutUpdate : addr =8.8.8.8 \n"),
            info("dst nat is not set  src (port)=0x22ba8c0 (0x50) dst =0x8080808(0x35)  \n")};
    const std::vector<LogLine> natted = {
            info("TimeoutUpdate : addr =8.8.8.8 \n"),
            info("TimeoutUpdate : addr =255.255.255.255 \n"),
            info("dst nat is  set  src (port)=0x8080808 (0x35) dst =0xffffffff(0x1bb)  \n")};
    const std::pair<const char*, bool> cases[] = {
            {nullptr, false}, {"user", false}, {"userdebug", true}, {"eng", true}};
    for (const auto& [buildType, debug] : cases) {
        for (uint8_t dstNat : {0, 1}) {
            SCOPED_TRACE(std::string(buildType ? buildType : "(unset)") + " nat " +
                         std::to_string(dstNat));
            fakes::Properties::clear();
            if (buildType != nullptr) fakes::Properties::set("ro.build.type", buildType);
            testsupport::observed().clear();
            ASSERT_EQ(relay(connRecord(17, dstNat)), 0);
            EXPECT_EQ(logEntries(), debug ? (dstNat ? natted : plain) : std::vector<LogLine>{});
        }
    }
}

}  // namespace
