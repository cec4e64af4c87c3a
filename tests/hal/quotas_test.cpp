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

// Local prefixes, forwarded statistics and data quotas: what is checked, what reaches the modem
// (always for all apps at once) and what the framework is told.

#include <errno.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/hal/upstream_offload_harness.h"

namespace offloadtest {
namespace {

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using hostplatform::ModemEmulator;
using hostplatform::Recorder;

using Counters = std::pair<uint64_t, uint64_t>;

const std::vector<std::string> kNone;

enum class QuotaOp { kLimit, kWarningAndLimit };

struct QuotaRow {
    std::string name;
    QuotaOp op;
    bool initialised;
    std::string upstream;
    uint64_t warning;  // kWarningAndLimit only
    uint64_t limit;
    int ioctlError;
    Reply reply;
    std::vector<std::string> requests;
    std::vector<std::string> logs;  // the HAL's own lines, in order
};

void PrintTo(const QuotaRow& row, std::ostream* os) {
    *os << row.name;
}

// clang-format off
const std::vector<QuotaRow> kQuotaRows = {
    {"LimitNameCutTo15", QuotaOp::kLimit, true, "wanif0123456789abcdef", 0, 1000, 0,
     {true, kSuccessful}, {"limit app=255 iface=wanif0123456789 limit=1000"},
     {"setDataLimit() upstream:wanif0123456789abcdef\n"}},
    {"LimitZeroPassedOn", QuotaOp::kLimit, true, "wanif0", 0, 0, 0,
     {true, kSuccessful}, {"limit app=255 iface=wanif0 limit=0"},
     {"setDataLimit() upstream:wanif0\n"}},
    {"LimitLargestPassedOn", QuotaOp::kLimit, true, "wanif0", 0, UINT64_MAX, 0,
     {true, kSuccessful}, {"limit app=255 iface=wanif0 limit=18446744073709551615"},
     {"setDataLimit() upstream:wanif0\n"}},
    {"LimitNameNotCheckedBeyondEmpty", QuotaOp::kLimit, true, "eth9", 0, 5, 0,
     {true, kSuccessful}, {"limit app=255 iface=eth9 limit=5"},
     {"setDataLimit() upstream:eth9\n"}},
    {"LimitEmptyNameSendsNothing", QuotaOp::kLimit, true, "", 0, 5, 0,
     {false, kInvalid}, kNone,
     {"setDataLimit() upstream:\n", "setDataLimit() interface name is empty\n"}},
    {"LimitNotInitialised", QuotaOp::kLimit, false, "wanif0", 0, 5, 0,
     {false, kNotInitialised}, kNone,
     {"setDataLimit() upstream:wanif0\n",
      "setDataLimit() device has not been initialized ()\n"}},
    {"LimitDeviceFailureStillSucceeds", QuotaOp::kLimit, true, "wanif0", 0, 7, EIO,
     {true, kSuccessful}, {"limit app=255 iface=wanif0 limit=7"},
     {"setDataLimit() upstream:wanif0\n"}},
    {"WarningBeforeLimitInCall", QuotaOp::kWarningAndLimit, true, "wanif0", 100, 200, 0,
     {true, kSuccessful}, {"warning+limit app=255 iface=wanif0 warning=100 limit=200"},
     {"setDataWarningAndLimit() upstream:wanif0\n"}},
    {"WarningAboveLimitPassedOn", QuotaOp::kWarningAndLimit, true, "wanif0", 500, 10, 0,
     {true, kSuccessful}, {"warning+limit app=255 iface=wanif0 warning=500 limit=10"},
     {"setDataWarningAndLimit() upstream:wanif0\n"}},
    {"WarningNameCutTo15", QuotaOp::kWarningAndLimit, true, "rmnet_data0_long_name", 1, 2, 0,
     {true, kSuccessful}, {"warning+limit app=255 iface=rmnet_data0_lon warning=1 limit=2"},
     {"setDataWarningAndLimit() upstream:rmnet_data0_long_name\n"}},
    {"WarningEmptyNameSendsNothing", QuotaOp::kWarningAndLimit, true, "", 1, 2, 0,
     {false, kInvalid}, kNone,
     {"setDataWarningAndLimit() upstream:\n",
      "setDataWarningAndLimit() interface name is empty\n"}},
    {"WarningNotInitialised", QuotaOp::kWarningAndLimit, false, "wanif0", 1, 2, 0,
     {false, kNotInitialised}, kNone,
     {"setDataWarningAndLimit() upstream:wanif0\n",
      "setDataWarningAndLimit() device has not been initialized ()\n"}},
    {"WarningDeviceFailureStillSucceeds", QuotaOp::kWarningAndLimit, true, "wanif0", 3, 4, EIO,
     {true, kSuccessful}, {"warning+limit app=255 iface=wanif0 warning=3 limit=4"},
     {"setDataWarningAndLimit() upstream:wanif0\n"}},
};
// clang-format on

class QuotaTest : public OffloadHalTest, public ::testing::WithParamInterface<QuotaRow> {};

TEST_P(QuotaTest, SendsQuotaForAllAppsAndReplies) {
    const QuotaRow& row = GetParam();
    if (row.initialised) initialise();
    ModemEmulator::instance().setIoctlError(row.ioctlError);

    Reply reply(false, "<no reply>");
    auto cb = [&](bool ok, const hidl_string& msg) { reply = {ok, msg}; };
    if (row.op == QuotaOp::kLimit) {
        mHal->setDataLimit(row.upstream, row.limit, cb);
    } else {
        mHal->setDataWarningAndLimit(row.upstream, row.warning, row.limit, cb);
    }

    EXPECT_EQ(reply, row.reply);
    EXPECT_EQ(deviceRequests(), row.requests);
    EXPECT_EQ(agentCommands(), kNone);
    // The data-path client adds lines of its own whenever a request goes out.
    std::vector<std::string> logs = logLines();
    EXPECT_TRUE(containsInOrder(logs, row.logs)) << ::testing::PrintToString(logs);
    if (row.requests.empty()) {
        EXPECT_EQ(logs, row.logs);
    }
}

INSTANTIATE_TEST_SUITE_P(Quotas, QuotaTest, ::testing::ValuesIn(kQuotaRows),
                         [](const ::testing::TestParamInfo<QuotaRow>& info) {
                             return info.param.name;
                         });

class ForwardedStatsTest : public OffloadHalTest {
protected:
    Counters stats(const std::string& upstream) {
        Counters counters(UINT64_MAX, UINT64_MAX);
        mHal->getForwardedStats(upstream, [&](uint64_t rx, uint64_t tx) { counters = {rx, tx}; });
        return counters;
    }
};

TEST_F(ForwardedStatsTest, ReportsModemCountersForAllApps) {
    initialise();
    ModemEmulator::instance().setStatsAnswer(1234, 5678);

    EXPECT_EQ(stats("wanif0"), Counters(1234, 5678));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>{"stats app=255"});
    EXPECT_EQ(logLines().front(), "getForwardedStats() upstream:wanif0\n");
}

// The name is only logged: neither the current upstream nor a non-empty name is required.
TEST_F(ForwardedStatsTest, AnyUpstreamNameGetsTheSameCounters) {
    initialise();
    ASSERT_EQ(upstream("wanif0", "10.0.0.5"), Reply(true, kSuccessful));
    ModemEmulator::instance().setStatsAnswer(10, 20);
    Recorder::instance().clear();

    EXPECT_EQ(stats("rmnet_data7"), Counters(10, 20));
    EXPECT_EQ(stats(""), Counters(10, 20));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>({"stats app=255", "stats app=255"}));
}

TEST_F(ForwardedStatsTest, WrongLengthAnswerReadsZero) {
    initialise();
    ModemEmulator::instance().setStatsAnswer(1234, 5678, 64);

    EXPECT_EQ(stats("wanif0"), Counters(0, 0));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>{"stats app=255"});
}

TEST_F(ForwardedStatsTest, FailedQueryReadsZero) {
    initialise();
    ModemEmulator::instance().setStatsAnswer(1234, 5678);
    ModemEmulator::instance().setIoctlError(EIO);

    EXPECT_EQ(stats("wanif0"), Counters(0, 0));
    EXPECT_EQ(deviceRequests(), std::vector<std::string>{"stats app=255"});
}

TEST_F(ForwardedStatsTest, BeforeInitialisationSendsNothing) {
    ModemEmulator::instance().setStatsAnswer(1234, 5678);

    EXPECT_EQ(stats("wanif0"), Counters(0, 0));
    EXPECT_EQ(deviceRequests(), kNone);
    EXPECT_EQ(logLines(),
              std::vector<std::string>{"getForwardedStats() device has not been initialized ()\n"});
}

struct PrefixRow {
    std::string name;
    bool initialised;
    std::vector<std::string> prefixes;
    Reply reply;
    std::vector<std::string> logs;     // in this order, others in between
    std::vector<std::string> notLogs;  // lines that must not appear
};

void PrintTo(const PrefixRow& row, std::ostream* os) {
    *os << row.name;
}

// clang-format off
const std::vector<PrefixRow> kPrefixRows = {
    {"BothFamiliesAccepted", true, {"192.168.43.0/24", "fe80::/64"},
     {true, kSuccessful}, {"setLocalPrefixes() \n"}, {"setLocalPrefixes Invalid prefixes \n"}},
    {"EmptyListRefusedBeforeChecks", true, {},
     {false, kInvalid}, {"setLocalPrefixes prefixes.size() < 0\n"},
     {"checkPrefix in.size() == 0\n"}},
    {"InvalidSecondPrefixRefused", true, {"192.168.43.0/24", "10.0.0.1/33"},
     {false, kInvalid},
     {"isValidMask Invalid input: mask = 33, fam = 0\n", "setLocalPrefixes Invalid prefixes \n"},
     {}},
    {"InvalidFirstPrefixStopsCheck", true, {"/24", "10.0.0.1/33"},
     {false, kInvalid},
     {"findAddrAndMask Invalid input: /24\n", "setLocalPrefixes Invalid prefixes \n"},
     {"isValidMask Invalid input: mask = 33, fam = 0\n"}},
    {"NotInitialisedRefusesValidList", false, {"192.168.43.0/24"},
     {false, kNotInitialised},
     {"setLocalPrefixes() \n", "setLocalPrefixes device has not been initialized () \n"}, {}},
    {"NotInitialisedRefusesEmptyList", false, {},
     {false, kNotInitialised},
     {"setLocalPrefixes device has not been initialized () \n"},
     {"setLocalPrefixes prefixes.size() < 0\n"}},
};
// clang-format on

class LocalPrefixesTest : public OffloadHalTest, public ::testing::WithParamInterface<PrefixRow> {};

TEST_P(LocalPrefixesTest, ChecksListAndKeepsItFromTheModem) {
    const PrefixRow& row = GetParam();
    if (row.initialised) initialise();

    hidl_vec<hidl_string> prefixes(row.prefixes.size());
    std::copy(row.prefixes.begin(), row.prefixes.end(), prefixes.begin());
    Reply reply(false, "<no reply>");
    mHal->setLocalPrefixes(prefixes, [&](bool ok, const hidl_string& msg) { reply = {ok, msg}; });

    EXPECT_EQ(reply, row.reply);
    EXPECT_EQ(deviceRequests(), kNone);
    std::vector<std::string> logs = logLines();
    EXPECT_TRUE(containsInOrder(logs, row.logs)) << ::testing::PrintToString(logs);
    for (const std::string& line : row.notLogs) EXPECT_FALSE(contains(logs, line)) << line;
}

INSTANTIATE_TEST_SUITE_P(Prefixes, LocalPrefixesTest, ::testing::ValuesIn(kPrefixRows),
                         [](const ::testing::TestParamInfo<PrefixRow>& info) {
                             return info.param.name;
                         });

}  // namespace
}  // namespace offloadtest
