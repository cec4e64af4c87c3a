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

// setUpstreamParameters: which upstream starts or ends offload for which stored downstream, what
// reaches the modem and the agent, and what the call leaves behind.

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

enum class Step { kUp, kAdd };

struct SetupCall {
    Step step;
    std::string iface;
};

struct UpstreamRow {
    std::string name;
    std::vector<SetupCall> setup;
    std::string iface;
    std::string v4Addr;
    std::string v4Gw;
    std::vector<std::string> v6Gws;
    int ioctlError;
    Reply reply;
    std::vector<std::string> requests;
    std::vector<std::string> agent;
    std::vector<std::string> logs;  // in this order, others in between
    OffloadState after;
};

void PrintTo(const UpstreamRow& row, std::ostream* os) {
    *os << row.name;
}

const std::vector<std::string> kNone;
const SetupCall kAddBridge{Step::kAdd, "mdbr0"};
const SetupCall kAddHotspot{Step::kAdd, "ap0"};
const SetupCall kModemUp{Step::kUp, "wanif0"};

std::string closingLine(const std::string& iface, const OffloadState& after) {
    return "setUpstreamParameters up-if:" + iface + "; down-if(" + after.usbDownstream + "," +
           after.wifiDownstream + ")\n";
}

// clang-format off
const std::vector<UpstreamRow> kRows = {
    {"ModemUpstreamStartsUsbThenWifi", {kAddBridge, kAddHotspot},
     "wanif0", "10.0.0.5", "10.0.0.1", {"fe80::1"}, 0,
     {true, kSuccessful},
     {"activate app=0 up=wanif0 down=mdbr0", "timeouts app=255",
      "activate app=1 up=wanif0 down=ap0", "timeouts app=255"},
     kBridgeUp,
     {"setUpstreamParameters active usb vexa (up wanif0)\n",
      "setUpstreamParameters active wh vexa (up wanif0)\n"},
     {"wanif0", "mdbr0", "ap0", true, true}},
    {"ModemUpstreamWithoutDownstreams", {},
     "wanif0", "10.0.0.5", "10.0.0.1", {}, 0,
     {true, kSuccessful}, kNone, kNone, {},
     {"wanif0", "", "", false, false}},
    {"EmptyGatewaysPassAndStartStoredHotspot", {kAddHotspot},
     "wanif0", "10.0.0.5", "", {}, 0,
     {true, kSuccessful},
     {"activate app=1 up=wanif0 down=ap0", "timeouts app=255"}, kNone,
     {"verifyIpAddress in.length() == 0\n", "verifyIpAddress in.size() == 0\n",
      "setUpstreamParameters active wh vexa (up wanif0)\n"},
     {"wanif0", "", "ap0", false, true}},
    {"OtherModemUpstreamLeavesRunningOffload", {kAddBridge, kAddHotspot, kModemUp},
     "wanif1", "10.0.0.6", "", {}, 0,
     {true, kSuccessful}, kNone, kNone, {},
     {"wanif1", "mdbr0", "ap0", true, true}},
    {"EmptyUpstreamEndsUsb", {kAddBridge, kModemUp},
     "", "10.0.0.5", "", {}, 0,
     {false, kDeactivated}, {"deactivate app=0"}, kBridgeDown,
     {"setUpstreamParameters de-active usb vexa (up )\n"},
     {"", "mdbr0", "", false, false}},
    {"NonModemUpstreamEndsWifi", {kAddHotspot, kModemUp},
     "wlan0", "192.168.1.5", "", {}, 0,
     {false, kDeactivated}, {"deactivate app=1"}, kNone,
     {"setUpstreamParameters de-active wh vexa (up wlan0)\n"},
     {"wlan0", "", "ap0", false, false}},
    {"EmptyUpstreamWithNothingActive", {kAddBridge},
     "", "10.0.0.5", "", {}, 0,
     {false, kInvalid}, kNone, kNone, {},
     {"", "mdbr0", "", false, false}},
    {"NonModemUpstreamWithNothingActive", {},
     "wlan0", "", "", {}, 0,
     {true, kSuccessful}, kNone, kNone, {},
     {"wlan0", "", "", false, false}},
    {"AllEmptyKeepsActiveOffload", {kAddHotspot, kModemUp},
     "", "", "", {}, 0,
     {false, kInvalid}, kNone, kNone,
     {"setUpstreamParameters() All of inputs are empty\n"},
     {"wanif0", "", "ap0", false, true}},
    {"RejectedInterfaceKeepsUpstream", {{Step::kUp, "wlan0"}},
     "eth0", "10.0.0.5", "", {}, 0,
     {false, kInvalid}, kNone, kNone,
     {"checkInterface in: eth0\n", "setUpstreamParameters() Invalid interface\n"},
     {"wlan0", "", "", false, false}},
    {"InvalidV4AddrChangesNothing", {kAddHotspot},
     "wanif0", "300.1.1.1", "", {}, 0,
     {false, kInvalid}, kNone, kNone,
     {"verifyIpAddress Invalid Ip address\n", "setUpstreamParameters() Invalid v4Addr\n"},
     {"", "", "ap0", false, false}},
    {"InvalidV4GwChangesNothing", {kAddHotspot},
     "wanif0", "10.0.0.5", "10.0.0", {}, 0,
     {false, kInvalid}, kNone, kNone,
     {"setUpstreamParameters() Invalid v4Gw\n"},
     {"", "", "ap0", false, false}},
    {"Ipv4AmongV6GatewaysChangesNothing", {kAddHotspot},
     "wanif0", "10.0.0.5", "10.0.0.1", {"fe80::1", "10.0.0.1"}, 0,
     {false, kInvalid}, kNone, kNone,
     {"verifyIpAddress Invalid Ip address\n", "setUpstreamParameters() Invalid v6Gws\n"},
     {"", "", "ap0", false, false}},
    {"LongModemNameReachesModemCut", {kAddHotspot},
     "wanif0123456789abcdef", "10.0.0.5", "", {}, 0,
     {true, kSuccessful},
     {"activate app=1 up=wanif0123456789 down=ap0", "timeouts app=255"}, kNone,
     {"setUpstreamParameters active wh vexa (up wanif0123456789abcdef)\n"},
     {"wanif0123456789abcdef", "", "ap0", false, true}},
    {"FailedDeviceCommandStillActivates", {kAddHotspot},
     "wanif0", "10.0.0.5", "", {}, EIO,
     {true, kSuccessful},
     {"activate app=1 up=wanif0 down=ap0", "timeouts app=255"}, kNone,
     {"setUpstreamParameters active wh vexa (up wanif0)\n"},
     {"wanif0", "", "ap0", false, true}},
};
// clang-format on

class UpstreamTableTest : public OffloadHalTest, public ::testing::WithParamInterface<UpstreamRow> {
protected:
    void runSetup(const std::vector<SetupCall>& setup) {
        for (const SetupCall& call : setup) {
            Reply reply =
                    call.step == Step::kUp
                            ? upstream(call.iface, "10.0.0.5")
                            : add(call.iface, call.iface == "mdbr0" ? kUsbPrefix : kWifiPrefix);
            ASSERT_EQ(reply, Reply(true, kSuccessful)) << "setup call on " << call.iface;
        }
    }
};

TEST_P(UpstreamTableTest, MovesStateAndSendsWhatTheRowSays) {
    const UpstreamRow& row = GetParam();
    initialise();
    runSetup(row.setup);
    ModemEmulator::instance().setIoctlError(row.ioctlError);
    Recorder::instance().clear();

    EXPECT_EQ(upstream(row.iface, row.v4Addr, row.v4Gw, row.v6Gws), row.reply);

    EXPECT_EQ(deviceRequests(), row.requests);
    EXPECT_EQ(agentCommands(), row.agent);
    std::vector<std::string> logs = logLines();
    EXPECT_TRUE(containsInOrder(logs, row.logs)) << ::testing::PrintToString(logs);
    ASSERT_FALSE(logs.empty());
    EXPECT_EQ(logs.back(), closingLine(row.iface, row.after));

    ModemEmulator::instance().setIoctlError(0);
    EXPECT_EQ(probeState(), row.after);
}

INSTANTIATE_TEST_SUITE_P(States, UpstreamTableTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<UpstreamRow>& info) {
                             return info.param.name;
                         });

using UpstreamTest = OffloadHalTest;

TEST_F(UpstreamTest, NotInitialisedRefusesAndSendsNothing) {
    EXPECT_EQ(upstream("wanif0", "10.0.0.5"), Reply(false, kNotInitialised));

    EXPECT_EQ(deviceRequests(), kNone);
    EXPECT_EQ(agentCommands(), kNone);
    EXPECT_EQ(logLines(), std::vector<std::string>({
                                  "setUpstreamParameters iface:wanif0  v4Addr:10.0.0.5  v4Gw:\n",
                                  "setUpstreamParameters() device has not been initialized ()\n",
                                  "setUpstreamParameters up-if:wanif0; down-if(,)\n",
                          }));
}

// With both kinds offloaded, leaving the modem ends USB in one call and the hotspot in the next.
TEST_F(UpstreamTest, NonModemUpstreamEndsUsbThenWifiThenSucceeds) {
    initialise();
    ASSERT_EQ(add("mdbr0", kUsbPrefix), Reply(true, kSuccessful));
    ASSERT_EQ(add("ap0", kWifiPrefix), Reply(true, kSuccessful));
    ASSERT_EQ(upstream("wanif0", "10.0.0.5"), Reply(true, kSuccessful));

    Recorder::instance().clear();
    EXPECT_EQ(upstream("wlan0"), Reply(false, kDeactivated));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>{"deactivate app=0"});
    EXPECT_EQ(agentCommands(), kBridgeDown);

    Recorder::instance().clear();
    EXPECT_EQ(upstream("wlan0"), Reply(false, kDeactivated));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>{"deactivate app=1"});
    EXPECT_EQ(agentCommands(), kNone);

    Recorder::instance().clear();
    EXPECT_EQ(upstream("wlan0"), Reply(true, kSuccessful));
    EXPECT_EQ(deviceRequests(), kNone);
    EXPECT_EQ(agentCommands(), kNone);

    EXPECT_EQ(probeState(), (OffloadState{"wlan0", "mdbr0", "ap0", false, false}));
}

}  // namespace
}  // namespace offloadtest
