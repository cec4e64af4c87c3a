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

// The offload lifecycle: setHandles, initOffload and stopOffload, their replies and device
// requests, and which relay carries modem events to the framework.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>

#include "datapath/OffloadEventHandle.h"
#include "fakes/FakeVexaDevice.h"
#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"

using fakes::FakeFramework;
using fakes::FakeVexaDevice;
using fakes::FrameworkHandle;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::Lines;
using testsupport::Reply;

namespace {

enum class Action { kInit10, kInit11, kInitNull, kStop };

struct Step {
    Action action;
    Reply reply;
    Lines requests;
    int ioctlError = 0;  // how the device answers during the step
};

struct LifecycleRow {
    const char* name;
    std::vector<Step> steps;
};

// The row's name stands for it in test listings.
void PrintTo(const LifecycleRow& row, std::ostream* out) {
    *out << row.name;
}

const Lines kEnable = {"ENABLE app=ALL len=0"};
const Lines kDisable = {"DISABLE app=ALL len=0"};
const Reply kOk(true, "Successful");
const Reply kAlready(false, "already  initialized");
const Reply kNotInitialised(false, "not been  initialized");

// clang-format off
const LifecycleRow kRows[] = {
    {"InitTwiceRefusesTheSecond",
     {{Action::kInit11, kOk, kEnable}, {Action::kInit10, kAlready, {}}}},
    {"NullCallbackThenARealOne",
     {{Action::kInitNull, {false, "initialized again"}, {}}, {Action::kStop, kNotInitialised, {}},
      {Action::kInit10, kOk, kEnable}}},
    {"FailedEnableStillInitialises",
     {{Action::kInit11, {true, "sendCmd2MD  fail"}, kEnable, EIO},
      {Action::kInit11, kAlready, {}}, {Action::kStop, kOk, kDisable}}},
    {"StopWhenNotInitialisedSendsNothing", {{Action::kStop, kNotInitialised, {}}}},
    {"InitStopInit",
     {{Action::kInit11, kOk, kEnable}, {Action::kStop, kOk, kDisable},
      {Action::kStop, kNotInitialised, {}}, {Action::kInit10, kOk, kEnable}}},
    {"FailedDisableStillStops",
     {{Action::kInit11, kOk, kEnable}, {Action::kStop, kOk, kDisable, EBUSY},
      {Action::kStop, kNotInitialised, {}}}},
};
// clang-format on

class LifecycleTest : public testsupport::HalTest,
                      public testing::WithParamInterface<LifecycleRow> {};

TEST_P(LifecycleTest, RepliesAndDeviceRequestsFollowTheRow) {
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE("step " + std::to_string(&step - GetParam().steps.data()));
        FakeVexaDevice::instance().setIoctlError(step.ioctlError);
        testsupport::observed().clear();
        Reply reply = step.action == Action::kStop       ? stop()
                      : step.action == Action::kInitNull ? init(nullptr)
                      : step.action == Action::kInit10   ? init(FakeFramework::Version::k1_0)
                                                         : init(FakeFramework::Version::k1_1);
        EXPECT_EQ(step.reply, reply);
        EXPECT_EQ(step.requests, testsupport::deviceRequests());
    }
}

INSTANTIATE_TEST_SUITE_P(Sequences, LifecycleTest, testing::ValuesIn(kRows),
                         [](const auto& info) { return std::string(info.param.name); });

using SetHandlesTest = testsupport::HalTest;

TEST_F(SetHandlesTest, WantsOneDescriptorInEachHandleAndLooksAtFd1First) {
    constexpr int kNone = FrameworkHandle::kNoHandle;
    struct Case {
        int fd1;
        int fd2;
        int empty;  // the handle reported empty, 0 for none
    };
    const Case cases[] = {{1, 1, 0}, {0, 1, 1},         {2, 1, 1}, {kNone, 1, 1}, {0, 0, 1},
                          {2, 2, 1}, {kNone, kNone, 1}, {1, 0, 2}, {1, 2, 2},     {1, kNone, 2}};
    for (const Case& c : cases) {
        SCOPED_TRACE("fd1 " + std::to_string(c.fd1) + ", fd2 " + std::to_string(c.fd2));
        testsupport::observed().clear();
        FrameworkHandle fd1(c.fd1);
        FrameworkHandle fd2(c.fd2);
        const std::string fd = "fd" + std::to_string(c.empty) + " is empty";
        EXPECT_EQ(c.empty == 0 ? kOk : Reply(false, "fail ," + fd),
                  testsupport::replyOf([&](testsupport::ResultCallback r) {
                      return mHal->setHandles(fd1.get(), fd2.get(), r);
                  }));
        EXPECT_THAT(testsupport::logLines(),
                    ElementsAre(c.empty == 0 ? "setHandles() \n" : "setHandles(), " + fd + "\n"));
        EXPECT_THAT(testsupport::deviceRequests(), IsEmpty());
        // The descriptors stay the framework's.
        EXPECT_TRUE(fd1.descriptorsOpen() && fd2.descriptorsOpen());
    }
}

// Events read by the event thread reach the framework through the relay that initOffload made.
class LifecycleEventsTest : public testsupport::HalTest {
protected:
    static void SetUpTestSuite() {
        OffloadEventHandle::createEventThread();
        ASSERT_TRUE(FakeVexaDevice::instance().waitReaderBlocked());
    }

    // The framework calls that a started event produced, as "op event".
    static Lines deliverStarted() {
        testsupport::observed().clear();
        vexa_common_hdr_t hdr{};
        hdr.mcode = VEXA_MCODE;
        hdr.status = VEXA_STARTED;
        std::vector<uint8_t> record(sizeof(hdr));
        memcpy(record.data(), &hdr, sizeof(hdr));
        EXPECT_TRUE(testsupport::deliver(record));
        Lines calls;
        for (const auto& cb : testsupport::observed().of<fakes::CallbackRecord>()) {
            calls.push_back(cb.op + " " + std::to_string(cb.event));
        }
        return calls;
    }
};

TEST_F(LifecycleEventsTest, RelayUsesTheVersionTheFrameworkOffersAndADeadOneCountsAs10) {
    struct Case {
        FakeFramework::Version version;
        bool aliveAtInit;
        std::string call;
    };
    const Case cases[] = {
            {FakeFramework::Version::k1_0, true, "onEvent 1"},
            {FakeFramework::Version::k1_1, true, "onEvent_1_1 1"},
            {FakeFramework::Version::k1_1, false, "onEvent 1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.call + (c.aliveAtInit ? "" : ", framework dead at init"));
        FakeFramework::setAlive(c.aliveAtInit);
        ASSERT_EQ(kOk, init(c.version));
        FakeFramework::setAlive(true);
        EXPECT_THAT(deliverStarted(), ElementsAre(c.call));
        ASSERT_EQ(kOk, stop());
    }
}

TEST_F(LifecycleEventsTest, RefusedInitKeepsTheRelayAndStopEndsItUntilANewInit) {
    ASSERT_EQ(kOk, init(FakeFramework::Version::k1_0));
    ASSERT_EQ(kAlready, init(FakeFramework::Version::k1_1));
    EXPECT_THAT(deliverStarted(), ElementsAre("onEvent 1"));

    ASSERT_EQ(kOk, stop());
    EXPECT_THAT(deliverStarted(), IsEmpty());

    ASSERT_EQ(kOk, init(FakeFramework::Version::k1_1));
    EXPECT_THAT(deliverStarted(), ElementsAre("onEvent_1_1 1"));
}

}  // namespace
