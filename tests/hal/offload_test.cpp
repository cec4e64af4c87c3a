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

// Upstream, downstreams, quotas and local prefixes: which call starts or ends offload for which
// stored interface, what reaches the modem and the agent, what the framework is told, and the
// state the call leaves behind.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <tuple>

#include "fakes/FakeVexaDevice.h"
#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using fakes::FakeVexaDevice;
using testing::IsEmpty;
using testsupport::Lines;
using testsupport::Reply;

namespace {

constexpr char kSuccessful[] = "Successful\n";
constexpr char kInvalid[] = "Invalid input values\n";
constexpr char kNotInitialised[] = "Device has not been initialized\n";
constexpr char kDeactivated[] = "vexa de-active flow\n";
constexpr char kUsbPrefix[] = "192.168.42.0/24";
constexpr char kWifiPrefix[] = "192.168.43.0/24";

// setUpstreamParameters takes (iface, v4Addr, v4Gw, v6Gws...), setDataLimit (upstream, limit),
// setDataWarningAndLimit (upstream, warning, limit), setLocalPrefixes the prefixes.
enum class Op { kUp, kAdd, kRemove, kLimit, kWarning, kPrefixes, kStop };

struct Call {
    Op op;
    Lines args;
};

// Upstream, USB downstream, hotspot downstream, USB offloaded, hotspot offloaded.
using OffloadState = std::tuple<std::string, std::string, std::string, bool, bool>;

struct Row {
    const char* name;
    std::vector<Call> setup;  // after initOffload; each must succeed
    Call call;
    Reply reply;
    Lines requests;
    Lines agent;
    Lines logs;  // in this order, other lines in between
    OffloadState after;
    int ioctlError = 0;  // how the device answers during the call
};

// The row's name stands for it in test listings.
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

const Call kModemUp{Op::kUp, {"wanif0", "10.0.0.5"}};
const Call kAddBridge{Op::kAdd, {"mdbr0", kUsbPrefix}};
const Call kAddHotspot{Op::kAdd, {"ap0", kWifiPrefix}};
const Lines kNone;
const Lines kHotspotOn = {"ACTIVATE app=WH len=32 up=wanif0 down=ap0",
                          "SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=7440"};
const std::string kUpLine = "setUpstreamParameters() Invalid ";

// The golden traces already pin the examples' paths: USB and hotspot started by a modem
// upstream and ended one per call by a non-modem one (usb-and-wifi), a hotspot added behind a
// modem upstream (wifi-hotspot, quotas), and quotas with values beyond 32 bits (quotas).
// clang-format off
const Row kRows[] = {
    // setUpstreamParameters
    {"EmptyGatewaysPassAndStartStoredHotspot", {kAddHotspot}, kModemUp,
     {true, kSuccessful}, kHotspotOn, kNone,
     {"verifyIpAddress in.length() == 0\n", "verifyIpAddress in.size() == 0\n",
      "setUpstreamParameters active wh vexa (up wanif0)\n"},
     {"wanif0", "", "ap0", false, true}},
    {"OtherModemUpstreamLeavesRunningOffload", {kAddBridge, kAddHotspot, kModemUp},
     {Op::kUp, {"wanif1"}}, {true, kSuccessful}, kNone, kNone, {},
     {"wanif1", "mdbr0", "ap0", true, true}},
    {"EmptyUpstreamEndsUsb", {kAddBridge, kModemUp}, {Op::kUp, {"", "10.0.0.5"}},
     {false, kDeactivated}, {"DEACTIVATE app=USB len=0"}, testsupport::kBridgeDownCommands,
     {"setUpstreamParameters de-active usb vexa (up )\n"}, {"", "mdbr0", "", false, false}},
    {"EmptyUpstreamWithNothingActive", {kAddBridge}, {Op::kUp, {"", "10.0.0.5"}},
     {false, kInvalid}, kNone, kNone, {}, {"", "mdbr0", "", false, false}},
    {"AllEmptyKeepsActiveOffload", {kAddHotspot, kModemUp}, {Op::kUp, {}},
     {false, kInvalid}, kNone, kNone, {"setUpstreamParameters() All of inputs are empty\n"},
     {"wanif0", "", "ap0", false, true}},
    {"RejectedInterfaceKeepsUpstream", {{Op::kUp, {"wlan0"}}}, {Op::kUp, {"eth0", "10.0.0.5"}},
     {false, kInvalid}, kNone, kNone, {"checkInterface in: eth0\n", kUpLine + "interface\n"},
     {"wlan0", "", "", false, false}},
    {"InvalidV4AddrChangesNothing", {kAddHotspot}, {Op::kUp, {"wanif0", "300.1.1.1"}},
     {false, kInvalid}, kNone, kNone, {kUpLine + "v4Addr\n"}, {"", "", "ap0", false, false}},
    {"InvalidV4GwChangesNothing", {kAddHotspot}, {Op::kUp, {"wanif0", "", "10.0.0"}},
     {false, kInvalid}, kNone, kNone, {kUpLine + "v4Gw\n"}, {"", "", "ap0", false, false}},
    {"Ipv4AmongV6GatewaysChangesNothing", {kAddHotspot},
     {Op::kUp, {"wanif0", "", "", "fe80::1", "10.0.0.1"}}, {false, kInvalid}, kNone, kNone,
     {"verifyIpAddress Invalid Ip address\n", kUpLine + "v6Gws\n"}, {"", "", "ap0", false, false}},
    {"LongModemNameReachesModemCut", {kAddHotspot}, {Op::kUp, {"wanif0123456789abcdef"}},
     {true, kSuccessful}, {"ACTIVATE app=WH len=32 up=wanif0123456789 down=ap0", "SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=7440"},
     kNone, {}, {"wanif0123456789abcdef", "", "ap0", false, true}},
    {"FailedDeviceRequestsStillActivate", {kAddHotspot}, kModemUp, {true, kSuccessful},
     kHotspotOn, kNone, {"setUpstreamParameters active wh vexa (up wanif0)\n"},
     {"wanif0", "", "ap0", false, true}, EIO},
    // addDownstream
    {"AddMdbr1StoresMdbr0ButSendsMdbr1", {kModemUp}, {Op::kAdd, {"mdbr1", kUsbPrefix}},
     {true, kSuccessful}, {"ACTIVATE app=USB len=32 up=wanif0 down=mdbr1", "SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=7440"},
     testsupport::kBridgeUpCommands, {"active usb tehtering offload\n"},
     {"wanif0", "mdbr0", "", true, false}},
    {"AddBridgeBehindNonModemUpstream", {{Op::kUp, {"wlan0"}}}, kAddBridge,
     {true, kSuccessful}, kNone, kNone, {}, {"wlan0", "mdbr0", "", false, false}},
    {"SecondHotspotOnlyReplacesName", {kModemUp, kAddHotspot}, {Op::kAdd, {"ap1", kWifiPrefix}},
     {true, kSuccessful}, kNone, kNone, {}, {"wanif0", "", "ap1", false, true}},
    {"AddWlanStartsNothing", {kModemUp}, {Op::kAdd, {"wlan0", "fe80::/64"}},
     {true, kSuccessful}, kNone, kNone, {"No actived offload\n"}, {"wanif0", "", "", false, false}},
    {"AddRejectedName", {kModemUp}, {Op::kAdd, {"eth0", kWifiPrefix}}, {false, kInvalid}, kNone,
     kNone, {"checkInterface in: eth0\n", "addDownstream() Invalid interface\n"},
     {"wanif0", "", "", false, false}},
    {"AddWithZeroMaskStoresNothing", {kModemUp}, {Op::kAdd, {"ap0", "192.168.43.0/0"}},
     {false, kInvalid}, kNone, kNone,
     {"isValidMask Invalid input: mask = 0, fam = 0\n", "addDownstream Invalid prefix\n"},
     {"wanif0", "", "", false, false}},
    {"LongHotspotNameReachesModemCut", {kModemUp}, {Op::kAdd, {"ap0123456789abcdefgh", kWifiPrefix}},
     {true, kSuccessful}, {"ACTIVATE app=WH len=32 up=wanif0 down=ap0123456789abc", "SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=7440"},
     kNone, {}, {"wanif0", "", "ap0123456789abcdefgh", false, true}},
    // removeDownstream
    {"RemoveActiveBridgeForgetsIt", {kModemUp, kAddBridge}, {Op::kRemove, {"mdbr0", kUsbPrefix}},
     {true, kSuccessful}, {"DEACTIVATE app=USB len=0"}, testsupport::kBridgeDownCommands,
     {"removeDownstream() de-active usb vexa\n"}, {"wanif0", "", "", false, false}},
    {"RemoveInactiveBridgeKeepsName", {kAddBridge}, {Op::kRemove, {"mdbr0", kUsbPrefix}},
     {true, kSuccessful}, kNone, kNone, {"No de-active vexa\n"}, {"", "mdbr0", "", false, false}},
    {"RemoveAnyHotspotNameEndsWifi", {kModemUp, kAddHotspot}, {Op::kRemove, {"ap1", kWifiPrefix}},
     {true, kSuccessful}, {"DEACTIVATE app=WH len=0"}, kNone, {"removeDownstream() de-active wh vexa\n"},
     {"wanif0", "", "", false, false}},
    {"RemoveUnrelatedNameKeepsBoth", {kModemUp, kAddBridge, kAddHotspot},
     {Op::kRemove, {"wlan0", kWifiPrefix}}, {true, kSuccessful}, kNone, kNone,
     {"No de-active vexa\n"}, {"wanif0", "mdbr0", "ap0", true, true}},
    {"RemoveWithEmptyPrefixChangesNothing", {kModemUp, kAddHotspot}, {Op::kRemove, {"ap0", ""}},
     {false, kInvalid}, kNone, kNone, {"removeDownstream Invalid prefix\n"},
     {"wanif0", "", "ap0", false, true}},
    {"StopForgetsStateAndLeavesTheBridge", {kAddBridge, kAddHotspot, kModemUp}, {Op::kStop, {}},
     {true, "Successful"}, {"DISABLE app=ALL len=0"}, kNone, {}, {"", "", "", false, false}},
    // Quotas go to the modem for all apps under any non-empty name, cut to 15 characters.
    {"LimitNameCutTo15", {}, {Op::kLimit, {"eth0123456789abcdef", "1000"}}, {true, kSuccessful},
     {"SET_DATA_LIMIT app=ALL len=24 iface=eth0123456789ab limit=1000"}, kNone,
     {"setDataLimit() upstream:eth0123456789abcdef\n"}, {}},
    {"LimitDeviceFailureStillSucceeds", {}, {Op::kLimit, {"wanif0", "7"}}, {true, kSuccessful},
     {"SET_DATA_LIMIT app=ALL len=24 iface=wanif0 limit=7"}, kNone, {}, {}, EIO},
    {"LimitEmptyNameSendsNothing", {}, {Op::kLimit, {"", "5"}}, {false, kInvalid}, kNone, kNone,
     {"setDataLimit() upstream:\n", "setDataLimit() interface name is empty\n"}, {}},
    {"WarningNameCutTo15", {}, {Op::kWarning, {"rmnet_data0_long_name", "1", "2"}},
     {true, kSuccessful}, {"SET_WARNING_AND_LIMIT app=ALL len=32 iface=rmnet_data0_lon limit=2 warning=1"},
     kNone, {"setDataWarningAndLimit() upstream:rmnet_data0_long_name\n"}, {}},
    {"WarningDeviceFailureStillSucceeds", {}, {Op::kWarning, {"wanif0", "3", "4"}},
     {true, kSuccessful}, {"SET_WARNING_AND_LIMIT app=ALL len=32 iface=wanif0 limit=4 warning=3"}, kNone, {},
     {}, EIO},
    {"WarningEmptyNameSendsNothing", {}, {Op::kWarning, {"", "1", "2"}}, {false, kInvalid},
     kNone, kNone, {"setDataWarningAndLimit() interface name is empty\n"}, {}},
    // Local prefixes are only checked.
    {"LocalPrefixesOfBothFamilies", {}, {Op::kPrefixes, {kWifiPrefix, "fe80::/64"}},
     {true, kSuccessful}, kNone, kNone, {}, {}},
    {"LocalPrefixesEmptyList", {}, {Op::kPrefixes, {}}, {false, kInvalid}, kNone, kNone,
     {"setLocalPrefixes prefixes.size() < 0\n"}, {}},
    {"LocalPrefixesOneInvalid", {}, {Op::kPrefixes, {kWifiPrefix, "10.0.0.1/33"}},
     {false, kInvalid}, kNone, kNone,
     {"isValidMask Invalid input: mask = 33, fam = 0\n", "setLocalPrefixes Invalid prefixes \n"},
     {}},
};
// clang-format on

class OffloadTest : public testsupport::HalTest {
protected:
    Reply call(const Call& c) {
        const Lines& a = c.args;
        auto arg = [&](size_t i) { return i < a.size() ? a[i] : std::string(); };
        return testsupport::replyOf([&](testsupport::ResultCallback r) {
            switch (c.op) {
                case Op::kUp:
                    return mHal->setUpstreamParameters(
                            arg(0), arg(1), arg(2),
                            hidl_vec<hidl_string>(a.begin() + std::min<size_t>(3, a.size()),
                                                  a.end()),
                            r);
                case Op::kAdd:
                    return mHal->addDownstream(arg(0), arg(1), r);
                case Op::kRemove:
                    return mHal->removeDownstream(arg(0), arg(1), r);
                case Op::kLimit:
                    return mHal->setDataLimit(arg(0), std::stoull(arg(1)), r);
                case Op::kWarning:
                    return mHal->setDataWarningAndLimit(arg(0), std::stoull(arg(1)),
                                                        std::stoull(arg(2)), r);
                case Op::kPrefixes:
                    return mHal->setLocalPrefixes(hidl_vec<hidl_string>(a.begin(), a.end()), r);
                case Op::kStop:
                    break;
            }
            return mHal->stopOffload(r);
        });
    }

    std::pair<uint64_t, uint64_t> stats(const std::string& upstream) {
        std::pair<uint64_t, uint64_t> counters(UINT64_MAX, UINT64_MAX);
        mHal->getForwardedStats(upstream, [&](uint64_t rx, uint64_t tx) { counters = {rx, tx}; });
        return counters;
    }

    // The capture groups of the last log line that matches `re` whole.
    static Lines captured(const Lines& logs, const std::string& re) {
        std::smatch m;
        for (auto l = logs.rbegin(); l != logs.rend(); ++l) {
            if (std::regex_match(*l, m, std::regex(re))) return Lines(m.begin() + 1, m.end());
        }
        return Lines(2, "<not logged>");
    }

    // Reads the state back through calls that change nothing but the flags they report, so it
    // is the last thing a test asks. All-empty upstream parameters are refused before anything
    // changes, yet the closing line names both stored downstreams; removing a kind ends its
    // offload only when it is active, and says so.
    OffloadState probeState() {
        testsupport::observed().clear();
        call({Op::kUp, {}});
        call({Op::kRemove, {"mdbr0", kUsbPrefix}});
        call({Op::kRemove, {"ap0", kWifiPrefix}});
        const Lines logs = testsupport::logLines();
        const Lines downs =
                captured(logs, R"(setUpstreamParameters up-if:; down-if\((.*),(.*)\)\n)");
        auto logged = [&](const char* l) { return testsupport::containsInOrder(logs, {l}); };
        return {captured(logs, R"(removeDownstream\(donw-if: ap0; up-if: (.*)\)\n)")[0], downs[0],
                downs[1], logged("removeDownstream() de-active usb vexa\n"),
                logged("removeDownstream() de-active wh vexa\n")};
    }
};

class OffloadTableTest : public OffloadTest, public testing::WithParamInterface<Row> {};

TEST_P(OffloadTableTest, SendsRepliesAndLeavesWhatTheRowSays) {
    const Row& row = GetParam();
    ASSERT_EQ(Reply(true, "Successful"), init());
    for (const Call& c : row.setup) ASSERT_TRUE(call(c).first) << "setup";
    FakeVexaDevice::instance().setIoctlError(row.ioctlError);
    testsupport::observed().clear();

    EXPECT_EQ(row.reply, call(row.call));

    EXPECT_EQ(row.requests, testsupport::deviceRequests());
    EXPECT_EQ(row.agent, testsupport::agentCommands());
    EXPECT_TRUE(testsupport::containsInOrder(testsupport::logLines(), row.logs))
            << testing::PrintToString(testsupport::logLines());
    FakeVexaDevice::instance().setIoctlError(0);
    if (row.call.op == Op::kStop) init();  // the flags are read through an initialised object
    EXPECT_EQ(row.after, probeState());
}

INSTANTIATE_TEST_SUITE_P(Calls, OffloadTableTest, testing::ValuesIn(kRows),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OffloadTest, EveryCallBeforeInitIsRefusedAndSendsNothing) {
    const std::string tail = " device has not been initialized ()\n";
    const std::pair<Call, std::string> calls[] = {
            {kModemUp, "setUpstreamParameters()" + tail},
            {kAddBridge, "addDownstream()" + tail},
            {{Op::kRemove, {"mdbr0", kUsbPrefix}}, "removeDownstream()" + tail},
            {{Op::kLimit, {"wanif0", "5"}}, "setDataLimit()" + tail},
            {{Op::kWarning, {"wanif0", "1", "2"}}, "setDataWarningAndLimit()" + tail},
            {{Op::kPrefixes, {kWifiPrefix}},
             "setLocalPrefixes device has not been initialized () \n"},
    };
    for (const auto& [c, line] : calls) {
        SCOPED_TRACE(line);
        testsupport::observed().clear();
        EXPECT_EQ(Reply(false, kNotInitialised), call(c));
        EXPECT_TRUE(testsupport::containsInOrder(testsupport::logLines(), {line}));
        EXPECT_THAT(testsupport::deviceRequests(), IsEmpty());
    }
    FakeVexaDevice::instance().setStatsAnswer(1, 2);
    testsupport::observed().clear();
    EXPECT_EQ(std::make_pair(uint64_t{0}, uint64_t{0}), stats("wanif0"));
    EXPECT_EQ(Lines{"getForwardedStats()" + tail}, testsupport::logLines());
    EXPECT_THAT(testsupport::deviceRequests(), IsEmpty());
}

TEST_F(OffloadTest, StatsAskForAllAppsWhateverTheNameAndReadAWrongLengthAsZero) {
    ASSERT_EQ(Reply(true, "Successful"), init());
    testsupport::observed().clear();
    FakeVexaDevice::instance().setStatsAnswer(10, 20);
    EXPECT_EQ(std::make_pair(uint64_t{10}, uint64_t{20}), stats(""));
    FakeVexaDevice::instance().setStatsAnswer(10, 20, 64);
    EXPECT_EQ(std::make_pair(uint64_t{0}, uint64_t{0}), stats("wanif0"));
    EXPECT_EQ((Lines{"GET_DATA_USAGE app=ALL len=0", "GET_DATA_USAGE app=ALL len=0"}),
              testsupport::deviceRequests());
}

}  // namespace
