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

// Which relay initOffload leaves in place, seen from the modem's side: events that the event
// thread reads reach the framework through onEvent for a 1.0 callback and onEvent_1_1 for a 1.1
// one, and not at all between stopOffload and the next initOffload.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>
#include <string.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "datapath/vexa_protocol.h"
#include "hal/TetherOffloadHal.h"
#include "tests/hal/lifecycle_support.h"

using android::sp;
using hostplatform::CallbackRecord;
using hostplatform::Framework;
using hostplatform::ModemEmulator;
using hostplatform::Recorder;
using lifecycle_test::Outcome;
using lifecycle_test::ResultCallback;
using lifecycle_test::run;
using testing::ElementsAre;
using testing::IsEmpty;
using vendor::tetheroffload::TetherOffloadHal;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;

namespace {

constexpr uint32_t kStarted = 1;  // VEXA_STARTED, delivered as OFFLOAD_STARTED (1)

// The framework calls that a started event produced, as "op event".
std::vector<std::string> deliverStarted() {
    Recorder::instance().clear();
    vexa_common_hdr_t hdr{};
    hdr.mcode = VEXA_MCODE;
    hdr.status = kStarted;
    std::vector<uint8_t> record(sizeof(hdr));
    memcpy(record.data(), &hdr, sizeof(hdr));
    EXPECT_TRUE(ModemEmulator::instance().deliverEvent(record, record.size()));
    std::vector<std::string> calls;
    for (const CallbackRecord& cb : Recorder::instance().all<CallbackRecord>()) {
        calls.push_back(cb.op + " " + std::to_string(cb.event));
    }
    return calls;
}

class LifecycleEventsTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        OffloadEventHandle::createEventThread();
        ASSERT_TRUE(ModemEmulator::instance().waitReaderBlocked());
    }

    void SetUp() override { Framework::setAlive(true); }

    void TearDown() override {
        Framework::setAlive(true);
        stop();
    }

    Outcome init(const sp<V1_0::ITetheringOffloadCallback>& cb) {
        return run([&](ResultCallback r) { return mHal->initOffload(cb, r); });
    }

    Outcome stop() {
        return run([&](ResultCallback r) { return mHal->stopOffload(r); });
    }

    static sp<V1_0::ITetheringOffloadCallback> callback(Framework::Version version) {
        return Framework::makeCallback(version);
    }

    sp<TetherOffloadHal> mHal = new TetherOffloadHal();
};

TEST_F(LifecycleEventsTest, RelayUsesTheVersionTheFrameworkOffers) {
    struct Case {
        Framework::Version version;
        std::string call;
    };
    const Case cases[] = {
            {Framework::Version::k1_0, "onEvent 1"},
            {Framework::Version::k1_1, "onEvent_1_1 1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.call);
        ASSERT_TRUE(init(callback(c.version)).ok);
        EXPECT_THAT(deliverStarted(), ElementsAre(c.call));
        ASSERT_TRUE(stop().ok);
    }
}

TEST_F(LifecycleEventsTest, RefusedSecondInitKeepsTheFirstRelay) {
    ASSERT_TRUE(init(callback(Framework::Version::k1_0)).ok);
    ASSERT_EQ("already  initialized", init(callback(Framework::Version::k1_1)).msg);

    EXPECT_THAT(deliverStarted(), ElementsAre("onEvent 1"));
}

TEST_F(LifecycleEventsTest, NoEventReachesTheFrameworkAfterStopAndANewInitMakesANewRelay) {
    ASSERT_TRUE(init(callback(Framework::Version::k1_0)).ok);
    ASSERT_TRUE(stop().ok);

    EXPECT_THAT(deliverStarted(), IsEmpty());

    ASSERT_TRUE(init(callback(Framework::Version::k1_1)).ok);
    EXPECT_THAT(deliverStarted(), ElementsAre("onEvent_1_1 1"));
}

TEST_F(LifecycleEventsTest, FrameworkDeadAtInitCountsAsA10Callback) {
    Framework::setAlive(false);
    Outcome out = init(callback(Framework::Version::k1_1));
    EXPECT_EQ(1, out.replies);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ("Successful", out.msg);

    Framework::setAlive(true);
    EXPECT_THAT(deliverStarted(), ElementsAre("onEvent 1"));
}

}  // namespace
