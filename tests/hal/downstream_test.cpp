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

// addDownstream and removeDownstream: which downstream starts or ends offload behind which
// upstream, what reaches the modem and the agent, and what the call leaves behind.

#include <errno.h>
#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>

#include <string>
#include <vector>

#include "tests/hal/upstream_offload_harness.h"

namespace offloadtest {
namespace {

using hostplatform::ModemEmulator;
using hostplatform::Recorder;

enum class Op { kUp, kAdd, kRemove };

struct SetupCall {
    Op op;
    std::string iface;
};

struct DownstreamRow {
    std::string name;
    std::vector<SetupCall> setup;
    Op op;  // kAdd or kRemove
    std::string iface;
    std::string prefix;
    int ioctlError;
    Reply reply;
    std::vector<std::string> requests;
    std::vector<std::string> agent;
    std::vector<std::string> logs;     // in this order, others in between
    std::vector<std::string> notLogs;  // lines that must not appear
    OffloadState after;
};

void PrintTo(const DownstreamRow& row, std::ostream* os) {
    *os << row.name;
}

const std::vector<std::string> kNone;
const SetupCall kModemUp{Op::kUp, "wanif0"};
const SetupCall kAddBridge{Op::kAdd, "mdbr0"};
const SetupCall kAddHotspot{Op::kAdd, "ap0"};

std::string closingLine(Op op, const std::string& iface, const std::string& upstream) {
    if (op == Op::kAdd) return "addDownstream(down-if:" + iface + "; up-if:" + upstream + ")\n";
    return "removeDownstream(donw-if: " + iface + "; up-if: " + upstream + ")\n";
}

// clang-format off
const std::vector<DownstreamRow> kRows = {
    // addDownstream
    {"AddMdbr1StoresMdbr0ButSendsMdbr1", {kModemUp},
     Op::kAdd, "mdbr1", kUsbPrefix, 0,
     {true, kSuccessful},
     {"activate app=0 up=wanif0 down=mdbr1", "timeouts app=255"}, kBridgeUp,
     {"active usb tehtering offload\n"}, {},
     {"wanif0", "mdbr0", "", true, false}},
    {"AddBridgeBehindNonModemUpstream", {{Op::kUp, "wlan0"}},
     Op::kAdd, "mdbr0", kUsbPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {}, {"active usb tehtering offload\n"},
     {"wlan0", "mdbr0", "", false, false}},
    {"AddBridgeWithoutUpstream", {},
     Op::kAdd, "mdbr0", kUsbPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {}, {},
     {"", "mdbr0", "", false, false}},
    {"AddHotspotBehindModemUpstream", {kModemUp},
     Op::kAdd, "ap0", "fe80::/64", 0,
     {true, kSuccessful},
     {"activate app=1 up=wanif0 down=ap0", "timeouts app=255"}, kNone,
     {"active wifi tehtering offload\n"}, {},
     {"wanif0", "", "ap0", false, true}},
    {"SecondHotspotOnlyReplacesName", {kModemUp, kAddHotspot},
     Op::kAdd, "ap1", kWifiPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {}, {},
     {"wanif0", "", "ap1", false, true}},
    {"AddWlanStartsNothing", {kModemUp},
     Op::kAdd, "wlan0", kWifiPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {"No actived offload\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddRmnetStartsNothing", {kModemUp},
     Op::kAdd, "rmnet_data0", kWifiPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {"No actived offload\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddDummyStartsNothing", {kModemUp},
     Op::kAdd, "dummy0", "fe80::/64", 0,
     {true, kSuccessful}, kNone, kNone, {"No actived offload\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddRejectedName", {kModemUp},
     Op::kAdd, "eth0", kWifiPrefix, 0,
     {false, kInvalid}, kNone, kNone,
     {"checkInterface in: eth0\n", "addDownstream() Invalid interface\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddEmptyNameAndPrefixSkipsNameCheck", {kModemUp},
     Op::kAdd, "", "", 0,
     {false, kInvalid}, kNone, kNone,
     {"addDownstream() Invalid interface\n"}, {"checkInterface in: \n"},
     {"wanif0", "", "", false, false}},
    {"AddEmptyNameWithPrefix", {kModemUp},
     Op::kAdd, "", kUsbPrefix, 0,
     {false, kInvalid}, kNone, kNone,
     {"checkInterface in: \n", "addDownstream() Invalid interface\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddWithEmptyPrefixStoresNothing", {kModemUp},
     Op::kAdd, "mdbr0", "", 0,
     {false, kInvalid}, kNone, kNone,
     {"checkPrefix string in is empty\n", "addDownstream Invalid prefix\n"}, {},
     {"wanif0", "", "", false, false}},
    {"AddWithZeroMaskStoresNothing", {kModemUp},
     Op::kAdd, "ap0", "192.168.43.0/0", 0,
     {false, kInvalid}, kNone, kNone,
     {"isValidMask Invalid input: mask = 0, fam = 0\n", "addDownstream Invalid prefix\n"}, {},
     {"wanif0", "", "", false, false}},
    {"LongHotspotNameReachesModemCut", {kModemUp},
     Op::kAdd, "ap0123456789abcdefgh", kWifiPrefix, 0,
     {true, kSuccessful},
     {"activate app=1 up=wanif0 down=ap0123456789abc", "timeouts app=255"}, kNone, {}, {},
     {"wanif0", "", "ap0123456789abcdefgh", false, true}},
    {"LongModemNameReachesModemCut", {{Op::kUp, "wanif_0123456789xyz"}},
     Op::kAdd, "ap0", kWifiPrefix, 0,
     {true, kSuccessful},
     {"activate app=1 up=wanif_012345678 down=ap0", "timeouts app=255"}, kNone, {}, {},
     {"wanif_0123456789xyz", "", "ap0", false, true}},
    {"FailedDeviceCommandStillActivates", {kModemUp},
     Op::kAdd, "ap0", kWifiPrefix, EIO,
     {true, kSuccessful},
     {"activate app=1 up=wanif0 down=ap0", "timeouts app=255"}, kNone,
     {"active wifi tehtering offload\n"}, {},
     {"wanif0", "", "ap0", false, true}},

    // removeDownstream
    {"RemoveActiveBridge", {kModemUp, kAddBridge},
     Op::kRemove, "mdbr0", kUsbPrefix, 0,
     {true, kSuccessful}, {"deactivate app=0"}, kBridgeDown,
     {"removeDownstream() de-active usb vexa\n"}, {},
     {"wanif0", "", "", false, false}},
    {"RemoveInactiveBridgeKeepsName", {kAddBridge},
     Op::kRemove, "mdbr0", kUsbPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {"No de-active vexa\n"}, {},
     {"", "mdbr0", "", false, false}},
    {"RemoveAnyHotspotNameEndsWifi", {kModemUp, kAddHotspot},
     Op::kRemove, "ap1", kWifiPrefix, 0,
     {true, kSuccessful}, {"deactivate app=1"}, kNone,
     {"removeDownstream() de-active wh vexa\n"}, {},
     {"wanif0", "", "", false, false}},
    {"RemoveInactiveHotspotKeepsName", {kAddHotspot},
     Op::kRemove, "ap0", kWifiPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {"No de-active vexa\n"}, {},
     {"", "", "ap0", false, false}},
    {"RemoveUnrelatedNameKeepsBoth", {kModemUp, kAddBridge, kAddHotspot},
     Op::kRemove, "wlan0", kWifiPrefix, 0,
     {true, kSuccessful}, kNone, kNone, {"No de-active vexa\n"}, {},
     {"wanif0", "mdbr0", "ap0", true, true}},
    {"RemoveWithEmptyPrefixChangesNothing", {kModemUp, kAddHotspot},
     Op::kRemove, "ap0", "", 0,
     {false, kInvalid}, kNone, kNone, {"removeDownstream Invalid prefix\n"}, {},
     {"wanif0", "", "ap0", false, true}},
    {"RemoveRejectedName", {kModemUp, kAddHotspot},
     Op::kRemove, "eth0", kWifiPrefix, 0,
     {false, kInvalid}, kNone, kNone, {"removeDownstream() Invalid interface\n"}, {},
     {"wanif0", "", "ap0", false, true}},
};
// clang-format on

class DownstreamTableTest : public OffloadHalTest,
                            public ::testing::WithParamInterface<DownstreamRow> {
protected:
    Reply call(Op op, const std::string& iface, const std::string& prefix) {
        if (op == Op::kUp) return upstream(iface, "10.0.0.5");
        if (op == Op::kAdd) return add(iface, prefix);
        return remove(iface, prefix);
    }

    void runSetup(const std::vector<SetupCall>& setup) {
        for (const SetupCall& c : setup) {
            const char* prefix = c.iface == "mdbr0" ? kUsbPrefix : kWifiPrefix;
            ASSERT_EQ(call(c.op, c.iface, prefix), Reply(true, kSuccessful))
                    << "setup call on " << c.iface;
        }
    }
};

TEST_P(DownstreamTableTest, MovesStateAndSendsWhatTheRowSays) {
    const DownstreamRow& row = GetParam();
    initialise();
    runSetup(row.setup);
    ModemEmulator::instance().setIoctlError(row.ioctlError);
    Recorder::instance().clear();

    EXPECT_EQ(call(row.op, row.iface, row.prefix), row.reply);

    EXPECT_EQ(deviceRequests(), row.requests);
    EXPECT_EQ(agentCommands(), row.agent);
    std::vector<std::string> logs = logLines();
    EXPECT_TRUE(containsInOrder(logs, row.logs)) << ::testing::PrintToString(logs);
    for (const std::string& line : row.notLogs) EXPECT_FALSE(contains(logs, line)) << line;
    ASSERT_FALSE(logs.empty());
    EXPECT_EQ(logs.back(), closingLine(row.op, row.iface, row.after.upstream));

    ModemEmulator::instance().setIoctlError(0);
    EXPECT_EQ(probeState(), row.after);
}

INSTANTIATE_TEST_SUITE_P(States, DownstreamTableTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<DownstreamRow>& info) {
                             return info.param.name;
                         });

using DownstreamTest = OffloadHalTest;

TEST_F(DownstreamTest, NotInitialisedRefusesBothAndSendsNothing) {
    EXPECT_EQ(add("mdbr0", kUsbPrefix), Reply(false, kNotInitialised));
    EXPECT_EQ(remove("mdbr0", kUsbPrefix), Reply(false, kNotInitialised));

    EXPECT_EQ(deviceRequests(), kNone);
    EXPECT_EQ(agentCommands(), kNone);
    EXPECT_EQ(logLines(), std::vector<std::string>({
                                  "addDownstream iface:mdbr0 prefix:192.168.42.0/24\n",
                                  "addDownstream() device has not been initialized ()\n",
                                  "addDownstream(down-if:mdbr0; up-if:)\n",
                                  "removeDownstream iface:mdbr0 prefix:192.168.42.0/24\n",
                                  "removeDownstream() device has not been initialized ()\n",
                                  "removeDownstream(donw-if: mdbr0; up-if: )\n",
                          }));
}

}  // namespace
}  // namespace offloadtest
