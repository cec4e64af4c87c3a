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

// The HIDL runtime stand-in: its value types and the helpers generated headers use among them,
// the checked Return, and what a client gets from the registry. Single-threaded, so that the death
// tests may fork.

#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <functional>
#include <string>
#include <vector>

namespace hostplatform {
namespace {

using ::android::DEAD_OBJECT;
using ::android::FAILED_TRANSACTION;
using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

Return<int> failed(::android::status_t error = DEAD_OBJECT) {
    return Status::fromStatusT(error);
}

TEST(ReturnDeathTest, UncheckedErrorAbortsWhereverItIsLost) {
    const std::pair<const char*, std::function<void()>> cases[] = {
            {"destroyed", [] { Return<void> ret = Status::fromStatusT(DEAD_OBJECT); }},
            {"temporary", [] { failed(); }},
            {"only read as text or probed unchecked",
             [] {
                 Return<int> ret = failed();
                 ret.description();
                 ret.isOkUnchecked();
             }},
            {"isDeadObject answered no", [] { (void)failed(FAILED_TRANSACTION).isDeadObject(); }},
            {"value taken", [] { (void)static_cast<int>(failed()); }},
            {"asserted ok", [] { failed().assertOk(); }},
            {"overwritten",
             [] {
                 Return<int> ret = failed();
                 ret = Return<int>(1);
             }},
            {"moved on",
             [] {
                 Return<int> source = failed();
                 Return<int> target = std::move(source);
             }},
    };
    for (const auto& [name, body] : cases) {
        EXPECT_EXIT(body(), ::testing::KilledBySignal(SIGABRT), "") << name;
    }
}

TEST(ReturnTest, CheckedErrorsAndOkValuesPassQuietly) {
    EXPECT_FALSE(failed().isOk());
    EXPECT_EQ(7, failed().withDefault(7));
    EXPECT_TRUE(failed(DEAD_OBJECT).isDeadObject());
    Return<int> target = 1;
    target = failed();  // the moved-from temporary no longer answers for the error
    EXPECT_FALSE(target.isOk());
    Return<int> overwritten = 1;
    overwritten = Return<int>(2);
    EXPECT_EQ(2, static_cast<int>(overwritten));
}

// A generated types.h checks the offsets of every struct that holds one of these.
static_assert(sizeof(hidl_vec<hidl_string>) == 16 && alignof(hidl_vec<hidl_string>) == 8,
              "hidl_vec layout");

TEST(HidlStringTest, CopiesOwnTheirTextAndExternalTextIsOnlyPointedAt) {
    char text[] = "rndis0";
    hidl_string copied(text);
    hidl_string external;
    external.setToExternal(text, 6);
    text[0] = 'X';
    EXPECT_EQ("rndis0", std::string(copied));
    EXPECT_EQ(text, external.c_str());

    hidl_string copyOfExternal(external);
    text[1] = 'Y';
    EXPECT_EQ("Xndis0", std::string(copyOfExternal));
    copied = external;
    EXPECT_NE(text, copied.c_str());
    copied = copied.c_str() + 1;  // from its own text
    EXPECT_EQ("Ydis0", std::string(copied));
}

TEST(HidlStringTest, LengthsNullsMovesAndOrder) {
    const char bytes[] = {'a', '\0', 'b'};
    hidl_string withNul(bytes, sizeof(bytes));
    EXPECT_EQ(3u, withNul.size());
    EXPECT_EQ(std::string(bytes, sizeof(bytes)), std::string(withNul));

    hidl_string fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(fromNull.empty());
    EXPECT_STREQ("", fromNull.c_str());

    hidl_string source("wanif-lan");
    const char* text = source.c_str();
    hidl_string moved(std::move(source));
    EXPECT_EQ(text, moved.c_str());
    EXPECT_STREQ("", source.c_str());
    source = std::move(moved);
    EXPECT_EQ(text, source.c_str());

    EXPECT_TRUE(hidl_string("rndis0") == std::string("rndis0"));
    EXPECT_TRUE("mdbr0" < hidl_string("rndis0"));
    EXPECT_TRUE(hidl_string("wlan0") >= "wlan0");
    EXPECT_TRUE(hidl_string() != "x");
}

TEST(HidlVecTest, SizedVectorsAreValueInitialisedAndResizeKeepsThePrefix) {
    hidl_vec<uint64_t> v = 3;
    EXPECT_EQ((std::vector<uint64_t>{0, 0, 0}), std::vector<uint64_t>(v));
    v[0] = 7;
    v[2] = 9;
    v.resize(5);
    EXPECT_EQ((std::vector<uint64_t>{7, 0, 9, 0, 0}), std::vector<uint64_t>(v));
    v.resize(1);
    EXPECT_EQ((std::vector<uint64_t>{7}), std::vector<uint64_t>(v));
    v.resize(0);
    EXPECT_EQ(v.begin(), v.end());
}

TEST(HidlVecTest, CopiesAreDeepAndMovesHandTheElementsOver) {
    hidl_vec<hidl_string> original = {"a", "b"};
    hidl_vec<hidl_string> copy = original;
    copy[0] = "changed";
    EXPECT_EQ("a", original[0]);

    const hidl_string* elements = original.data();
    hidl_vec<hidl_string> moved = std::move(original);
    EXPECT_EQ(elements, moved.data());
    EXPECT_EQ(0u, original.size());

    copy = std::vector<hidl_string>(moved);
    EXPECT_EQ(moved, copy);
    EXPECT_NE(copy, hidl_vec<hidl_string>({"a"}));
}

TEST(HidlVecTest, ConvertsEachElementOfARange) {
    const std::vector<std::string> prefixes = {"2001:db8::/64", "fe80::/64"};
    hidl_vec<hidl_string> v(prefixes.begin(), prefixes.end());
    EXPECT_TRUE(v.contains("fe80::/64"));
    EXPECT_FALSE(v.contains("fe80::"));
    EXPECT_EQ(prefixes, std::vector<std::string>(v.begin(), v.end()));
}

TEST(HidlSizeDeathTest, SizesBeyond32BitsEndTheProcess) {
    const size_t tooLarge = size_t{1} << 32;
    EXPECT_EXIT((void)hidl_string("x", tooLarge), ::testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT((void)hidl_vec<uint8_t>(tooLarge), ::testing::KilledBySignal(SIGABRT), "");
}

// A 1.1 control that breaks the stub's rules in the way `mode` says.
class MisbehavingControl : public V1_1::IOffloadControl {
public:
    enum class Mode { kReplies, kSilent, kTwice, kError };
    explicit MisbehavingControl(Mode mode) : mMode(mode) {}

    Return<void> stopOffload(stopOffload_cb cb) override {
        if (mMode == Mode::kError) return Status::fromStatusT(::android::UNKNOWN_ERROR);
        if (mMode != Mode::kSilent) cb(true, "Successful");
        if (mMode == Mode::kTwice) cb(true, "Successful");
        return ::android::hardware::Void();
    }
    Return<void> getForwardedStats(const hidl_string&, getForwardedStats_cb cb) override {
        if (mMode != Mode::kSilent) cb(1, 2);
        return ::android::hardware::Void();
    }
    // Not called here.
    Return<void> initOffload(const sp<V1_0::ITetheringOffloadCallback>&, initOffload_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> setLocalPrefixes(const hidl_vec<hidl_string>&, setLocalPrefixes_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> setDataLimit(const hidl_string&, uint64_t, setDataLimit_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> setUpstreamParameters(const hidl_string&, const hidl_string&, const hidl_string&,
                                       const hidl_vec<hidl_string>&,
                                       setUpstreamParameters_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> addDownstream(const hidl_string&, const hidl_string&, addDownstream_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> removeDownstream(const hidl_string&, const hidl_string&,
                                  removeDownstream_cb) override {
        return ::android::hardware::Void();
    }
    Return<void> setDataWarningAndLimit(const hidl_string&, uint64_t, uint64_t,
                                        setDataWarningAndLimit_cb) override {
        return ::android::hardware::Void();
    }

private:
    const Mode mMode;
};

// A client that gets the service from the registry gets what a client of another process gets:
// each call runs through the stub's checks, which end the service with the device's message.
TEST(ClientProxyDeathTest, AMethodThatDoesNotReplyExactlyOnceEndsTheService) {
    using Mode = MisbehavingControl::Mode;
    const std::pair<Mode, const char*> cases[] = {
            {Mode::kSilent, "stopOffload: _hidl_cb not called, but must be called once."},
            {Mode::kTwice, "stopOffload: _hidl_cb called a second time, but must be called once."},
            {Mode::kError, "stopOffload: the call returned a transport error."},
    };
    for (const auto& [mode, message] : cases) {
        ASSERT_EQ(OK, sp<V1_1::IOffloadControl>(new MisbehavingControl(mode))
                              ->registerAsService("misbehaving"));
        sp<V1_1::IOffloadControl> client = V1_1::IOffloadControl::getService("misbehaving");
        ASSERT_NE(nullptr, client);
        EXPECT_DEATH(client->stopOffload([](bool, const hidl_string&) {}).isOk(), message);
    }
    ASSERT_EQ(OK, sp<V1_1::IOffloadControl>(new MisbehavingControl(Mode::kSilent))
                          ->registerAsService("misbehaving"));
    EXPECT_DEATH(V1_0::IOffloadControl::getService("misbehaving")
                         ->getForwardedStats("wanif0", [](uint64_t, uint64_t) {})
                         .isOk(),
                 "getForwardedStats: _hidl_cb not called, but must be called once.");

    ASSERT_EQ(OK, sp<V1_1::IOffloadControl>(new MisbehavingControl(Mode::kReplies))
                          ->registerAsService("misbehaving"));
    int replies = 0;
    EXPECT_TRUE(V1_1::IOffloadControl::getService("misbehaving")
                        ->stopOffload([&](bool, const hidl_string&) { ++replies; })
                        .isOk());
    EXPECT_EQ(1, replies);
}

}  // namespace
}  // namespace hostplatform
