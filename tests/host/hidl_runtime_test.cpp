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

// The HIDL runtime stand-in (its value types and the helpers generated headers use among them),
// the peers, and a modem that nobody opened. Single-threaded, so that the death tests may fork;
// nothing here opens the device.

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>  // also brings <memory>, which the registrar's header needs
#include <hidl/HidlLazyUtils.h>
#include <signal.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <chrono>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "hal/TetherOffloadHal.h"
#include "hostplatform/FakeAgent.h"
#include "hostplatform/Framework.h"
#include "hostplatform/ModemEmulator.h"
#include "tests/support/RetainingSink.h"

namespace hostplatform {
namespace {

using ::android::DEAD_OBJECT;
using ::android::FAILED_TRANSACTION;
using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_bitfield;
using ::android::hardware::hidl_enum_range;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::details::toHexString;
using ::android::hidl::base::V1_0::IBase;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;
using IOffloadConfig = ::android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

Return<int> failed(::android::status_t error = DEAD_OBJECT) {
    return Status::fromStatusT(error);
}

// The value of a cast that must not fail (taking it aborts otherwise).
template <typename T>
sp<T> value(Return<sp<T>> cast) {
    return cast;
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

// What generated toString and enum helpers make of the runtime's pieces.
TEST(GeneratedHelpersTest, TextOfValuesAndEveryEnumValue) {
    EXPECT_EQ("0x2a", toHexString(uint32_t{42}));
    EXPECT_EQ("0xffffffff", toHexString(int32_t{-1}));
    EXPECT_EQ("0", toHexString(uint8_t{0}, false));

    V1_0::NatTimeoutUpdate update{{"192.168.43.2", 80}, {"8.8.8.8", 53}, V1_0::NetworkProtocol::UDP};
    EXPECT_EQ(
            "{.src = {.addr = \"192.168.43.2\", .port = 80}, .dst = {.addr = \"8.8.8.8\", "
            ".port = 53}, .proto = UDP}",
            V1_0::toString(update));
    EXPECT_EQ("0x9", V1_0::toString(static_cast<V1_0::OffloadCallbackEvent>(9)));

    static_assert(std::is_same<hidl_bitfield<V1_1::OffloadCallbackEvent>, uint32_t>::value,
                  "flags of an enum are its underlying type");
    const hidl_enum_range<V1_1::OffloadCallbackEvent> range;
    std::vector<V1_1::OffloadCallbackEvent> values(range.begin(), range.end());
    ASSERT_EQ(6u, values.size());
    EXPECT_EQ(V1_1::OffloadCallbackEvent::OFFLOAD_STARTED, values.front());
    EXPECT_EQ(V1_1::OffloadCallbackEvent::OFFLOAD_WARNING_REACHED, values.back());
}

class PeersTest : public ::testing::Test {
protected:
    void SetUp() override { testsupport::recorded().clear(); }
    void TearDown() override {
        FakeAgent::setMode(FakeAgent::Mode::kUp);
        Framework::setAlive(true);
    }
    sp<V1_0::ITetheringOffloadCallback> cb10 = Framework::makeCallback(Framework::Version::k1_0);
    sp<V1_0::ITetheringOffloadCallback> cb11 = Framework::makeCallback(Framework::Version::k1_1);
};

TEST_F(PeersTest, CastFollowsTheCallbackVersionAndTheFrameworksLife) {
    EXPECT_EQ(nullptr, value(V1_1::ITetheringOffloadCallback::castFrom(cb10)));
    EXPECT_EQ(cb11, sp<V1_0::ITetheringOffloadCallback>(
                            value(V1_1::ITetheringOffloadCallback::castFrom(cb11))));
    EXPECT_EQ(cb11, value(V1_0::ITetheringOffloadCallback::castFrom(sp<IBase>(cb11))));
    EXPECT_EQ(nullptr, value(V1_1::ITetheringOffloadCallback::castFrom(sp<IBase>(), true)));

    Framework::setAlive(false);  // asking the chain is a transaction, and fails
    EXPECT_EQ(nullptr, value(V1_1::ITetheringOffloadCallback::castFrom(cb11, false)));
    EXPECT_TRUE(V1_1::ITetheringOffloadCallback::castFrom(cb11, true).isDeadObject());
    EXPECT_EQ(cb10,
              value(V1_0::ITetheringOffloadCallback::castFrom(cb10, true)));  // no transaction
}

TEST_F(PeersTest, AgentModes) {
    struct Case {
        FakeAgent::Mode mode;
        bool found;
        bool callOk;
    } const cases[] = {{FakeAgent::Mode::kAbsent, false, false},
                       {FakeAgent::Mode::kFailing, true, false},
                       {FakeAgent::Mode::kUp, true, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.mode));
        testsupport::recorded().clear();
        FakeAgent::setMode(c.mode);
        sp<IPlexd> agent = IPlexd::getService("default", false);
        ASSERT_EQ(c.found, agent != nullptr);
        if (!agent) continue;
        EXPECT_EQ(c.callOk, agent->runCmd("plexd bridge delif mdbr0 wanif-lan ").isOk());
        const std::vector<AgentRecord> records = testsupport::recorded().all<AgentRecord>();
        ASSERT_EQ(1u, records.size());
        EXPECT_EQ("plexd bridge delif mdbr0 wanif-lan ", records[0].cmd);
        EXPECT_EQ(c.callOk, records[0].ok);
    }
}

TEST_F(PeersTest, DeadFrameworkFailsEveryCallUntilAliveAgain) {
    sp<V1_1::ITetheringOffloadCallback> cb = V1_1::ITetheringOffloadCallback::castFrom(cb11);
    ASSERT_NE(nullptr, cb);
    V1_0::NatTimeoutUpdate update{{"192.168.43.2", 80}, {"8.8.8.8", 53}, V1_0::NetworkProtocol::UDP};
    for (bool alive : {false, true}) {
        Framework::setAlive(alive);
        testsupport::recorded().clear();
        Return<void> calls[] = {cb->onEvent(V1_0::OffloadCallbackEvent::OFFLOAD_STARTED),
                                cb->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_WARNING_REACHED),
                                cb->updateTimeout(update)};
        for (Return<void>& ret : calls) {
            EXPECT_EQ(!alive, ret.isDeadObject());
            EXPECT_EQ(alive, ret.isOk());
        }
        const std::vector<CallbackRecord> records = testsupport::recorded().all<CallbackRecord>();
        ASSERT_EQ(3u, records.size());
        for (const CallbackRecord& record : records) EXPECT_EQ(alive, record.ok) << record.op;
    }
}

// What the service registers; the records of it are pinned by every golden trace.
TEST(RegistryTest, OneObjectIsReachedThroughBothInterfaces) {
    sp<vendor::tetheroffload::TetherOffloadHal> hal = new vendor::tetheroffload::TetherOffloadHal();
    auto& registrar = ::android::hardware::LazyServiceRegistrar::getInstance();
    ASSERT_EQ(OK, registrar.registerService(sp<IOffloadConfig>(hal), "default"));
    ASSERT_EQ(OK, registrar.registerService(sp<V1_1::IOffloadControl>(hal), "default"));

    EXPECT_EQ(static_cast<IOffloadConfig*>(hal.get()), IOffloadConfig::getService().get());
    EXPECT_EQ(static_cast<V1_0::IOffloadControl*>(hal.get()),
              V1_0::IOffloadControl::getService().get());
    EXPECT_EQ(static_cast<V1_1::IOffloadControl*>(hal.get()),
              V1_1::IOffloadControl::getService().get());
    EXPECT_EQ(nullptr, V1_1::IOffloadControl::getService("other"));
}

TEST(ModemUnopenedTest, NoReaderIsAwaitedAndEventsAreDropped) {
    ModemEmulator& modem = ModemEmulator::instance();
    testsupport::recorded().clear();
    // Never opened: the answer comes at once. Waiting out this timeout would hang the test until
    // ctest stops it, so no clock is read here.
    EXPECT_FALSE(modem.waitReaderBlocked(std::chrono::hours(1)));
    EXPECT_FALSE(modem.deliverEvent({0x54, 0x24, 1, 0}, 16, std::chrono::milliseconds(50)));
    EXPECT_FALSE(modem.deliverReadFailure(5, std::chrono::milliseconds(50)));
    EXPECT_TRUE(testsupport::recorded().all<ReadRecord>().empty());
}

}  // namespace
}  // namespace hostplatform
