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
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Recorder.h>

#include <string>
#include <vector>

#include "hal/TetherOffloadHal.h"

using hostplatform::LogRecord;
using hostplatform::Recorder;
using testing::ElementsAreArray;
using vendor::tetheroffload::TetherOffloadHal;

namespace {

using Lines = std::vector<std::string>;

constexpr auto V4 = TetherOffloadHal::FAMILY_IPV4;
constexpr auto V6 = TetherOffloadHal::FAMILY_IPV6;
constexpr auto ANY = TetherOffloadHal::FAMILY_ANY;
const auto kBadFamily = static_cast<TetherOffloadHal::FAMILY>(3);

class ValidationTest : public testing::Test {
protected:
    void SetUp() override { Recorder::instance().clear(); }

    // Every line of the checks is INFO with the service's tag; the texts are returned in order.
    static Lines infoLines() {
        Lines lines;
        for (const LogRecord& log : Recorder::instance().all<LogRecord>()) {
            EXPECT_EQ(ANDROID_LOG_INFO, log.prio) << log.msg;
            EXPECT_EQ("TetherOffload", log.tag) << log.msg;
            lines.push_back(log.msg);
        }
        return lines;
    }

    android::sp<TetherOffloadHal> mHal = new TetherOffloadHal();
};

TEST_F(ValidationTest, CheckInterfaceMatchesLeadingCharactersAndLogsEveryName) {
    struct Case {
        std::string name;
        bool accepted;
    };
    const Case cases[] = {
            {"wanif0", true},  {"wanif-lan", true}, {"rmnet0", true}, {"dummy9", true},
            {"wlan1", true},   {"mdbr1", true},     {"ap", true},     {"ap7", true},
            {"apple", true},   {"wla", false},      {"eth0", false},  {"usb0", false},
            {"rndis0", false}, {"wanI0", false},    {"a", false},     {"", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("name '" + c.name + "'");
        Recorder::instance().clear();
        EXPECT_EQ(c.accepted, mHal->checkInterface(c.name));
        EXPECT_THAT(infoLines(), ElementsAreArray({"checkInterface in: " + c.name + "\n"}));
    }
}

TEST_F(ValidationTest, VerifyIpAddressTriesTheFamilyItIsGiven) {
    const std::string kInvalid = "verifyIpAddress Invalid Ip address\n";
    struct Case {
        std::string in;
        TetherOffloadHal::FAMILY fam;
        bool valid;
        Lines lines;
    };
    const Case cases[] = {
            {"127.0.0.1", ANY, true, {}},
            {"::1", ANY, true, {}},
            {"127.0.0.1", V4, true, {}},
            {"::1", V4, false, {kInvalid}},
            {"::1", V6, true, {}},
            {"127.0.0.1", V6, false, {kInvalid}},
            {"::ffff:10.0.0.1", V6, true, {}},
            {"1.2.3", V4, false, {kInvalid}},
            {"256.1.1.1", ANY, false, {kInvalid}},
            {"10.0.0.1 ", V4, false, {kInvalid}},
            {"fe80::1%wlan0", ANY, false, {kInvalid}},
            {"", V4, false, {"verifyIpAddress in.length() == 0\n"}},
            {"", kBadFamily, false, {"verifyIpAddress in.length() == 0\n"}},
            {"127.0.0.1", kBadFamily, false, {"verifyIpAddress Invalid family\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("'" + c.in + "' family " + std::to_string(c.fam));
        Recorder::instance().clear();
        EXPECT_EQ(c.valid, mHal->verifyIpAddress(c.in, c.fam));
        EXPECT_THAT(infoLines(), ElementsAreArray(c.lines));
    }
}

TEST_F(ValidationTest, CheckPrefixSplitsAtTheFirstSlashAndTestsMaskThenAddress) {
    const std::string kBadMask = "checkPrefix Invalid mask\n";
    auto maskLine = [](int mask, int fam) {
        return "isValidMask Invalid input: mask = " + std::to_string(mask) +
               ", fam = " + std::to_string(fam) + "\n";
    };
    struct Case {
        std::string in;
        TetherOffloadHal::FAMILY fam;
        bool valid;
        Lines lines;
    };
    const Case cases[] = {
            {"192.168.42.1/24", ANY, true, {}},
            {"fe80::1/64", ANY, true, {}},
            {"fe80::/129", ANY, false, {maskLine(129, 1), kBadMask}},
            {"2001:db8::/128", ANY, true, {}},
            {"10.0.0.1/33", ANY, false, {maskLine(33, 0), kBadMask}},
            {"10.0.0.1/32", ANY, true, {}},
            {"10.0.0.1/1", ANY, true, {}},
            // No mask, or an empty one, takes the family's full length.
            {"192.168.42.0", ANY, true, {}},
            {"192.168.42.0/", ANY, true, {}},
            {"fe80::1", ANY, true, {}},
            {"/24",
             ANY,
             false,
             {"findAddrAndMask Invalid input: /24\n",
              "checkPrefix Faied to find address and mask\n"}},
            {"", ANY, false, {"checkPrefix string in is empty\n"}},
            // The mask is read like atoi: a sign and leading blanks count, reading stops at the
            // first non-digit, and no digits at all read as 0.
            {"10.0.0.1/0", ANY, false, {maskLine(0, 0), kBadMask}},
            {"10.0.0.1/-8", ANY, false, {maskLine(-8, 0), kBadMask}},
            {"10.0.0.1/x", ANY, false, {maskLine(0, 0), kBadMask}},
            {"10.0.0.1/24abc", ANY, true, {}},
            {"10.0.0.1/24/8", ANY, true, {}},
            {"10.0.0.1/ +24", ANY, true, {}},
            // Any ':' makes the prefix IPv6, even one after the address.
            {"10.0.0.1:80/24", ANY, false, {"verifyIpAddress Invalid Ip address\n"}},
            {"10.0.0.1/24:", ANY, false, {"verifyIpAddress Invalid Ip address\n"}},
            {"300.0.0.1/24", ANY, false, {"verifyIpAddress Invalid Ip address\n"}},
            // A given family is kept as it is.
            {"fe80::1/64", V4, false, {maskLine(64, 0), kBadMask}},
            {"10.0.0.1", V6, false, {"verifyIpAddress Invalid Ip address\n"}},
            {"fe80::1/128", V6, true, {}},
            // Another family value bounds only the low end of the mask, then fails the address.
            {"10.0.0.1/200", kBadFamily, false, {"verifyIpAddress Invalid family\n"}},
            {"10.0.0.1/0", kBadFamily, false, {maskLine(0, 3), kBadMask}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("'" + c.in + "' family " + std::to_string(c.fam));
        Recorder::instance().clear();
        EXPECT_EQ(c.valid, mHal->checkPrefix(c.in, c.fam));
        EXPECT_THAT(infoLines(), ElementsAreArray(c.lines));
    }
}

TEST_F(ValidationTest, FindAddrAndMaskReplacesOutputsOnlyOnSuccess) {
    struct Case {
        std::string in;
        bool found;
        std::string addr;  // the outputs afterwards; they start as "old"
        std::string mask;
        Lines lines;
    };
    const Case cases[] = {
            {"10.0.0.1/24", true, "10.0.0.1", "24", {}},
            {"10.0.0.1", true, "10.0.0.1", "", {}},
            {"10.0.0.1/", true, "10.0.0.1", "", {}},
            {"a/b/c", true, "a", "b/c", {}},
            {"/24", false, "old", "old", {"findAddrAndMask Invalid input: /24\n"}},
            {"", false, "old", "old", {"findAddrAndMask string in is empty\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("'" + c.in + "'");
        Recorder::instance().clear();
        std::string addr = "old";
        std::string mask = "old";
        EXPECT_EQ(c.found, mHal->findAddrAndMask(c.in, addr, mask));
        EXPECT_EQ(c.addr, addr);
        EXPECT_EQ(c.mask, mask);
        EXPECT_THAT(infoLines(), ElementsAreArray(c.lines));
    }
}

TEST_F(ValidationTest, AddressListPassesOnlyWhenNonEmptyAndEveryElementPasses) {
    const std::string kInvalid = "verifyIpAddress Invalid Ip address\n";
    struct Case {
        std::vector<std::string> in;
        TetherOffloadHal::FAMILY fam;
        bool valid;
        Lines lines;
    };
    const Case cases[] = {
            {{}, V6, false, {"verifyIpAddress in.size() == 0\n"}},
            {{"fe80::1", "2001:db8::1"}, V6, true, {}},
            {{"fe80::1", "10.0.0.1"}, V6, false, {kInvalid}},
            {{"fe80::1", "10.0.0.1"}, ANY, true, {}},
            // The first failure ends the test: the later bad element is not looked at.
            {{"bad", "", "also-bad"}, V6, false, {kInvalid}},
            {{"fe80::1", ""}, V6, false, {"verifyIpAddress in.length() == 0\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.in));
        Recorder::instance().clear();
        EXPECT_EQ(c.valid, mHal->verifyIpAddress(c.in, c.fam));
        EXPECT_THAT(infoLines(), ElementsAreArray(c.lines));
    }
}

TEST_F(ValidationTest, PrefixListDecidesTheFamilyOfEachElement) {
    struct Case {
        std::vector<std::string> in;
        bool valid;
        Lines lines;
    };
    const Case cases[] = {
            {{}, false, {"checkPrefix in.size() == 0\n"}},
            {{"192.168.42.0/24", "fe80::/64", "10.0.0.1"}, true, {}},
            {{"10.0.0.1/33", "/24"},
             false,
             {"isValidMask Invalid input: mask = 33, fam = 0\n", "checkPrefix Invalid mask\n"}},
            {{"fe80::/64", ""}, false, {"checkPrefix string in is empty\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.in));
        Recorder::instance().clear();
        EXPECT_EQ(c.valid, mHal->checkPrefix(c.in, ANY));
        EXPECT_THAT(infoLines(), ElementsAreArray(c.lines));
    }
}

}  // namespace
