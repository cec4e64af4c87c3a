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

// The argument checks: which names, addresses and prefixes pass, and the lines that explain a
// rejection.

#include <android/log.h>
#include <gtest/gtest.h>

#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"

using testsupport::Lines;
using vendor::tetheroffload::TetherOffloadHal;

namespace {

constexpr auto V4 = TetherOffloadHal::FAMILY_IPV4;
constexpr auto V6 = TetherOffloadHal::FAMILY_IPV6;
constexpr auto ANY = TetherOffloadHal::FAMILY_ANY;
const auto kBadFamily = static_cast<TetherOffloadHal::FAMILY>(3);

enum class Check { kIface, kAddress, kPrefix, kAddressList, kPrefixList };

struct Row {
    Check check;
    std::vector<std::string> in;  // one element for the single-value checks
    TetherOffloadHal::FAMILY fam;
    bool accepted;
    Lines lines;  // every line the check logs, all INFO
};

const std::string kBadAddress = "verifyIpAddress Invalid Ip address\n";
const std::string kBadMask = "checkPrefix Invalid mask\n";
const std::string kEmptyAddress = "verifyIpAddress in.length() == 0\n";

std::string maskLine(int mask, int fam) {
    return "isValidMask Invalid input: mask = " + std::to_string(mask) +
           ", fam = " + std::to_string(fam) + "\n";
}

// clang-format off
const Row kRows[] = {
    // Names: only the leading characters of each known kind count; every name is logged.
    {Check::kIface, {"rmnet0"}, ANY, true, {"checkInterface in: rmnet0\n"}},
    {Check::kIface, {"dummy9"}, ANY, true, {"checkInterface in: dummy9\n"}},
    {Check::kIface, {"wlan1"}, ANY, true, {"checkInterface in: wlan1\n"}},
    {Check::kIface, {"apple"}, ANY, true, {"checkInterface in: apple\n"}},
    {Check::kIface, {"wla"}, ANY, false, {"checkInterface in: wla\n"}},
    {Check::kIface, {"wanI0"}, ANY, false, {"checkInterface in: wanI0\n"}},
    {Check::kIface, {"rndis0"}, ANY, false, {"checkInterface in: rndis0\n"}},
    {Check::kIface, {""}, ANY, false, {"checkInterface in: \n"}},
    // Addresses: the family given, or either.
    {Check::kAddress, {"::1"}, ANY, true, {}},
    {Check::kAddress, {"127.0.0.1"}, ANY, true, {}},
    {Check::kAddress, {"::1"}, V4, false, {kBadAddress}},
    {Check::kAddress, {"127.0.0.1"}, V6, false, {kBadAddress}},
    {Check::kAddress, {"::ffff:10.0.0.1"}, V6, true, {}},
    {Check::kAddress, {"1.2.3"}, V4, false, {kBadAddress}},
    {Check::kAddress, {"fe80::1%wlan0"}, ANY, false, {kBadAddress}},
    {Check::kAddress, {""}, V4, false, {kEmptyAddress}},
    {Check::kAddress, {"127.0.0.1"}, kBadFamily, false, {"verifyIpAddress Invalid family\n"}},
    // Prefixes: split at the first slash, the mask read like atoi and checked before the address;
    // with ANY any ':' in the text makes it IPv6.
    {Check::kPrefix, {"192.168.42.1/24"}, ANY, true, {}},
    {Check::kPrefix, {"fe80::/128"}, ANY, true, {}},
    {Check::kPrefix, {"fe80::/129"}, ANY, false, {maskLine(129, 1), kBadMask}},
    {Check::kPrefix, {"10.0.0.1/32"}, ANY, true, {}},
    {Check::kPrefix, {"10.0.0.1/33"}, ANY, false, {maskLine(33, 0), kBadMask}},
    {Check::kPrefix, {"10.0.0.1/1"}, ANY, true, {}},
    {Check::kPrefix, {"10.0.0.1/0"}, ANY, false, {maskLine(0, 0), kBadMask}},
    {Check::kPrefix, {"10.0.0.1/24/8"}, ANY, true, {}},
    {Check::kPrefix, {"192.168.42.0"}, ANY, true, {}},
    {Check::kPrefix, {"192.168.42.0/"}, ANY, true, {}},
    {Check::kPrefix, {"10.0.0.1/24:"}, ANY, false, {kBadAddress}},
    {Check::kPrefix, {"300.0.0.1/24"}, ANY, false, {kBadAddress}},
    {Check::kPrefix, {"fe80::1/64"}, V4, false, {maskLine(64, 0), kBadMask}},
    {Check::kPrefix, {"10.0.0.1"}, V6, false, {kBadAddress}},
    {Check::kPrefix, {"/24"}, ANY, false,
     {"findAddrAndMask Invalid input: /24\n", "checkPrefix Faied to find address and mask\n"}},
    {Check::kPrefix, {""}, ANY, false, {"checkPrefix string in is empty\n"}},
    {Check::kPrefix, {"10.0.0.1/200"}, kBadFamily, false, {"verifyIpAddress Invalid family\n"}},
    {Check::kPrefix, {"10.0.0.1/0"}, kBadFamily, false, {maskLine(0, 3), kBadMask}},
    // Lists: not empty, and every element passes; the first failure ends the check.
    {Check::kAddressList, {}, V6, false, {"verifyIpAddress in.size() == 0\n"}},
    {Check::kAddressList, {"fe80::1", "10.0.0.1"}, ANY, true, {}},
    {Check::kAddressList, {"fe80::1", "10.0.0.1"}, V6, false, {kBadAddress}},
    {Check::kAddressList, {"bad", ""}, V6, false, {kBadAddress}},
    {Check::kPrefixList, {}, ANY, false, {"checkPrefix in.size() == 0\n"}},
    {Check::kPrefixList, {"192.168.42.0/24", "fe80::/64"}, ANY, true, {}},
    {Check::kPrefixList, {"10.0.0.1/33", "/24"}, ANY, false, {maskLine(33, 0), kBadMask}},
};
// clang-format on

TEST(ValidationTest, AcceptsAndRejectsAsTheRowSaysAndLogsWhy) {
    android::sp<TetherOffloadHal> hal = new TetherOffloadHal();
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::PrintToString(row.in) + " family " + std::to_string(row.fam));
        testsupport::observed().clear();
        const std::string first = row.in.empty() ? "" : row.in[0];
        const bool accepted = row.check == Check::kIface     ? hal->checkInterface(first)
                              : row.check == Check::kAddress ? hal->verifyIpAddress(first, row.fam)
                              : row.check == Check::kPrefix  ? hal->checkPrefix(first, row.fam)
                              : row.check == Check::kAddressList
                                      ? hal->verifyIpAddress(row.in, row.fam)
                                      : hal->checkPrefix(row.in, row.fam);
        EXPECT_EQ(row.accepted, accepted);
        std::vector<testsupport::LogLine> expected;
        for (const std::string& line : row.lines) expected.emplace_back(ANDROID_LOG_INFO, line);
        EXPECT_EQ(expected, testsupport::logEntries());
    }
}

}  // namespace
