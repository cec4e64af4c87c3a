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

// The HIDL runtime stand-in, the peers, and a modem that nobody opened. Single-threaded, so that
// the death tests may fork; nothing here opens the device.

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>  // also brings <memory>, which the registrar's header needs
#include <hidl/HidlLazyUtils.h>
#include <signal.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <chrono>
#include <functional>

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
using ::android::hardware::Return;
using ::android::hardware::Status;
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
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(modem.waitReaderBlocked(std::chrono::milliseconds(2000)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
    EXPECT_FALSE(modem.deliverEvent({0x54, 0x24, 1, 0}, 16, std::chrono::milliseconds(50)));
    EXPECT_FALSE(modem.deliverReadFailure(5, std::chrono::milliseconds(50)));
    EXPECT_TRUE(testsupport::recorded().all<ReadRecord>().empty());
}

}  // namespace
}  // namespace hostplatform
