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

// The offload lifecycle without the event thread: setHandles, initOffload and stopOffload, their
// replies and log lines, and the requests they send to the device.

#include <cutils/native_handle.h>
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "hal/TetherOffloadHal.h"
#include "tests/hal/lifecycle_support.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using hostplatform::AgentRecord;
using hostplatform::Framework;
using hostplatform::IoctlRecord;
using hostplatform::LogRecord;
using hostplatform::ModemEmulator;
using hostplatform::Recorder;
using lifecycle_test::kDisableAll;
using lifecycle_test::kEnableAll;
using lifecycle_test::Outcome;
using lifecycle_test::Request;
using lifecycle_test::ResultCallback;
using lifecycle_test::run;
using testing::ElementsAre;
using testing::IsEmpty;
using vendor::tetheroffload::TetherOffloadHal;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;

namespace {

class LifecycleTest : public testing::Test {
protected:
    void SetUp() override {
        ModemEmulator::instance().setIoctlError(0);
        Framework::setAlive(true);
    }

    // The relay belongs to the object until stopOffload; stop so that none outlives the test.
    void TearDown() override {
        ModemEmulator::instance().setIoctlError(0);
        stop();
    }

    Outcome init(const sp<V1_0::ITetheringOffloadCallback>& cb) {
        return run([&](ResultCallback r) { return mHal->initOffload(cb, r); });
    }

    Outcome stop() {
        return run([&](ResultCallback r) { return mHal->stopOffload(r); });
    }

    static sp<V1_0::ITetheringOffloadCallback> callback() {
        return Framework::makeCallback(Framework::Version::k1_0);
    }

    sp<TetherOffloadHal> mHal = new TetherOffloadHal();
};

TEST_F(LifecycleTest, InitOffloadRegistersTheRelayThenEnablesAllApps) {
    Outcome out = init(callback());

    EXPECT_EQ(1, out.replies);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ("Successful", out.msg);
    const std::string client = lifecycle_test::pointerText(OffloadEventHandle::getInstance());
    EXPECT_THAT(out.before,
                ElementsAre("initOffload ++\n",
                            "initOffload(): create event thread : mCbEvent=" + client + "  \n"));
    EXPECT_THAT(out.after, ElementsAre("initOffload() --\n"));
    EXPECT_THAT(out.requests, ElementsAre(kEnableAll));

    // The relay is in place before the modem can answer the start command.
    bool registered = false;
    bool enabledAfterRegistration = false;
    for (const auto& record : Recorder::instance().records()) {
        if (const auto* log = std::get_if<LogRecord>(&record.body)) {
            if (log->msg == " registerTimeoutCallback \n") registered = true;
        } else if (std::holds_alternative<IoctlRecord>(record.body)) {
            enabledAfterRegistration = registered;
        }
    }
    EXPECT_TRUE(enabledAfterRegistration);
}

TEST_F(LifecycleTest, SecondInitOffloadIsRefusedAndSendsNothing) {
    ASSERT_TRUE(init(callback()).ok);

    Outcome out = init(callback());

    EXPECT_EQ(1, out.replies);
    EXPECT_FALSE(out.ok);
    EXPECT_EQ("already  initialized", out.msg);
    EXPECT_THAT(out.before, ElementsAre("initOffload ++\n", "already  initialized\n"));
    EXPECT_THAT(out.after, ElementsAre("initOffload() --\n"));
    EXPECT_THAT(out.requests, IsEmpty());
}

TEST_F(LifecycleTest, NullCallbackLeavesTheObjectUninitialised) {
    Outcome refused = init(nullptr);

    EXPECT_EQ(1, refused.replies);
    EXPECT_FALSE(refused.ok);
    EXPECT_EQ("initialized again", refused.msg);
    EXPECT_THAT(refused.before,
                ElementsAre("initOffload ++\n", "initOffload()warning: initialized again \n"));
    EXPECT_THAT(refused.after, ElementsAre("initOffload() --\n"));
    EXPECT_THAT(refused.requests, IsEmpty());

    EXPECT_EQ("not been  initialized", stop().msg);

    Outcome accepted = init(callback());
    EXPECT_TRUE(accepted.ok);
    EXPECT_EQ("Successful", accepted.msg);
    EXPECT_THAT(accepted.requests, ElementsAre(kEnableAll));
}

TEST_F(LifecycleTest, FailedEnableStillReportsSuccessAndInitialises) {
    ModemEmulator::instance().setIoctlError(EIO);

    Outcome out = init(callback());

    EXPECT_EQ(1, out.replies);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ("sendCmd2MD  fail", out.msg);
    EXPECT_THAT(out.after, ElementsAre("initOffload() --\n"));
    EXPECT_THAT(out.requests, ElementsAre(kEnableAll));

    ModemEmulator::instance().setIoctlError(0);
    EXPECT_EQ("already  initialized", init(callback()).msg);
    Outcome stopped = stop();
    EXPECT_TRUE(stopped.ok);
    EXPECT_THAT(stopped.requests, ElementsAre(kDisableAll));
}

TEST_F(LifecycleTest, StopWithoutInitIsRefusedAndSendsNothing) {
    Outcome out = stop();

    EXPECT_EQ(1, out.replies);
    EXPECT_FALSE(out.ok);
    EXPECT_EQ("not been  initialized", out.msg);
    EXPECT_THAT(out.before,
                ElementsAre("stopOffload ", "stopOffload() device has not been initialized () \n"));
    EXPECT_THAT(out.after, IsEmpty());
    EXPECT_THAT(out.requests, IsEmpty());
}

TEST_F(LifecycleTest, StopDisablesAllAppsAndAllowsANewInit) {
    ASSERT_TRUE(init(callback()).ok);

    Outcome stopped = stop();
    EXPECT_EQ(1, stopped.replies);
    EXPECT_TRUE(stopped.ok);
    EXPECT_EQ("Successful", stopped.msg);
    EXPECT_THAT(stopped.before, ElementsAre("stopOffload "));
    EXPECT_THAT(stopped.after, ElementsAre("stopOffload() \n"));
    EXPECT_THAT(stopped.requests, ElementsAre(kDisableAll));

    EXPECT_EQ("not been  initialized", stop().msg);

    Outcome again = init(callback());
    EXPECT_TRUE(again.ok);
    EXPECT_EQ("Successful", again.msg);
    EXPECT_THAT(again.requests, ElementsAre(kEnableAll));
}

TEST_F(LifecycleTest, FailedDisableStillStops) {
    ASSERT_TRUE(init(callback()).ok);
    ModemEmulator::instance().setIoctlError(EBUSY);

    Outcome stopped = stop();

    EXPECT_TRUE(stopped.ok);
    EXPECT_EQ("Successful", stopped.msg);
    EXPECT_THAT(stopped.requests, ElementsAre(kDisableAll));
    EXPECT_EQ("not been  initialized", stop().msg);
}

std::vector<Request> activations(std::vector<Request> requests) {
    requests.erase(std::remove_if(requests.begin(), requests.end(),
                                  [](const Request& r) { return r.msg != VEXA_CMSG_ACTIVATE; }),
                   requests.end());
    return requests;
}

TEST_F(LifecycleTest, StopForgetsInterfacesAndFlagsButLeavesTheBridge) {
    ASSERT_TRUE(init(callback()).ok);
    hidl_vec<hidl_string> noV6Gateways;
    auto upstream = [&](ResultCallback r) {
        return mHal->setUpstreamParameters("wanif0", "10.0.0.2", "10.0.0.1", noV6Gateways, r);
    };
    auto usb = [&](ResultCallback r) { return mHal->addDownstream("mdbr0", "192.168.42.0/24", r); };
    auto wifi = [&](ResultCallback r) { return mHal->addDownstream("ap0", "192.168.43.0/24", r); };
    ASSERT_TRUE(run(usb).ok);
    ASSERT_TRUE(run(wifi).ok);
    const Request usbOn{VEXA_APP_TYPE_USB, VEXA_CMSG_ACTIVATE};
    const Request wifiOn{VEXA_APP_TYPE_WH, VEXA_CMSG_ACTIVATE};
    ASSERT_THAT(activations(run(upstream).requests), ElementsAre(usbOn, wifiOn));

    Outcome stopped = stop();
    EXPECT_TRUE(stopped.ok);
    EXPECT_THAT(stopped.requests, ElementsAre(kDisableAll));
    EXPECT_THAT(Recorder::instance().all<AgentRecord>(), IsEmpty());

    // A new session knows no downstream, so the upstream alone activates nothing; both
    // downstreams then activate again, which they would not if the flags had survived.
    ASSERT_TRUE(init(callback()).ok);
    Outcome up = run(upstream);
    EXPECT_TRUE(up.ok);
    EXPECT_THAT(up.requests, IsEmpty());
    std::vector<Request> sent = run(usb).requests;
    for (const Request& r : run(wifi).requests) sent.push_back(r);
    EXPECT_THAT(activations(sent), ElementsAre(usbOn, wifiOn));
}

// Descriptor counts a test handle can carry; kNone is a hidl_handle without a native handle.
constexpr int kNone = -1;

class Handle {
public:
    explicit Handle(int fds) {
        if (fds == kNone) return;
        mNative = native_handle_create(fds, 0);
        for (int i = 0; i < fds; ++i) mNative->data[i] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    ~Handle() {
        if (mNative == nullptr) return;
        native_handle_close(mNative);
        native_handle_delete(mNative);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    hidl_handle get() const { return hidl_handle(mNative); }

    // setHandles must leave the descriptors to the framework.
    bool descriptorsOpen() const {
        if (mNative == nullptr) return true;
        for (int i = 0; i < mNative->numFds; ++i) {
            if (fcntl(mNative->data[i], F_GETFD) == -1) return false;
        }
        return true;
    }

private:
    native_handle_t* mNative = nullptr;
};

TEST_F(LifecycleTest, SetHandlesWantsOneDescriptorInEachHandleFd1First) {
    struct Case {
        int fd1;
        int fd2;
        bool ok;
        std::string msg;
        std::string line;
    };
    const Case fd1Empty = {0, 0, false, "fail ,fd1 is empty", "setHandles(), fd1 is empty\n"};
    const Case fd2Empty = {0, 0, false, "fail ,fd2 is empty", "setHandles(), fd2 is empty\n"};
    auto with = [](Case c, int fd1, int fd2) {
        c.fd1 = fd1;
        c.fd2 = fd2;
        return c;
    };
    const Case cases[] = {
            {1, 1, true, "Successful", "setHandles() \n"},
            with(fd1Empty, 0, 1),
            with(fd1Empty, 2, 1),
            with(fd1Empty, kNone, 1),
            with(fd1Empty, 0, 0),
            with(fd1Empty, kNone, kNone),
            with(fd1Empty, 2, 2),
            with(fd2Empty, 1, 0),
            with(fd2Empty, 1, 2),
            with(fd2Empty, 1, kNone),
    };
    // The answer does not depend on initialisation.
    for (bool initialised : {false, true}) {
        if (initialised) {
            ASSERT_TRUE(init(callback()).ok);
        }
        for (const Case& c : cases) {
            SCOPED_TRACE("fd1 " + std::to_string(c.fd1) + ", fd2 " + std::to_string(c.fd2) +
                         (initialised ? ", initialised" : ""));
            Handle fd1(c.fd1);
            Handle fd2(c.fd2);
            Outcome out =
                    run([&](ResultCallback r) { return mHal->setHandles(fd1.get(), fd2.get(), r); });
            EXPECT_EQ(1, out.replies);
            EXPECT_EQ(c.ok, out.ok);
            EXPECT_EQ(c.msg, out.msg);
            EXPECT_THAT(out.before, IsEmpty());
            EXPECT_THAT(out.after, ElementsAre(c.line));
            EXPECT_THAT(out.requests, IsEmpty());
            EXPECT_TRUE(fd1.descriptorsOpen());
            EXPECT_TRUE(fd2.descriptorsOpen());
        }
    }
    // setHandles changed nothing: the session is still the one initOffload opened.
    EXPECT_EQ("already  initialized", init(callback()).msg);
}

}  // namespace
