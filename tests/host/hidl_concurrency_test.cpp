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

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "hostplatform/FakeAgent.h"
#include "hostplatform/Framework.h"
#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

using ::android::sp;
using ::hostplatform::AgentRecord;
using ::hostplatform::CallbackRecord;
using ::hostplatform::FakeAgent;
using ::hostplatform::Framework;
using ::hostplatform::Recorder;
using ::hostplatform::ServiceRegistry;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace {

constexpr int kRounds = 200;

// The scenario thread switches the peers while the service's threads use them.
TEST(HidlConcurrencyTest, PeersSwitchWhileInUse) {
    Recorder::instance().clear();
    std::atomic<bool> done{false};
    std::thread switcher([&] {
        for (int i = 0; i < kRounds; ++i) {
            FakeAgent::setMode(i % 2 ? FakeAgent::Mode::kAbsent : FakeAgent::Mode::kFailing);
            Framework::setAlive(i % 2 == 0);
        }
        done = true;
    });

    int agentCalls = 0;
    std::thread binder([&] {
        while (!done) {
            sp<IPlexd> agent = IPlexd::getService("default", false);
            if (agent == nullptr) continue;
            agent->runCmd("plexd bridge clear mac mdbr0 ").isOk();
            ++agentCalls;
        }
    });

    int callbackCalls = 0;
    sp<V1_0::ITetheringOffloadCallback> cb = Framework::makeCallback(Framework::Version::k1_1);
    std::thread events([&] {
        while (!done) {
            sp<V1_1::ITetheringOffloadCallback> cb11 = V1_1::ITetheringOffloadCallback::castFrom(cb);
            if (cb11 == nullptr) continue;  // the framework died during the cast
            cb11->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_STARTED).isOk();
            ++callbackCalls;
        }
    });

    switcher.join();
    binder.join();
    events.join();
    FakeAgent::setMode(FakeAgent::Mode::kUp);
    Framework::setAlive(true);

    EXPECT_EQ(static_cast<size_t>(agentCalls), Recorder::instance().all<AgentRecord>().size());
    EXPECT_EQ(static_cast<size_t>(callbackCalls), Recorder::instance().all<CallbackRecord>().size());
    EXPECT_NE(nullptr, IPlexd::getService("default", false));
}

}  // namespace
