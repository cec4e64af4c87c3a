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

// The process entry run to its end: everything is in place before the thread pool serves, and
// leaving the pool ends the service with status 0. The service's main is built into this test
// as tetheroffloadServiceMain.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ServiceRegistry.h>
#include <signal.h>

#include "fakes/FakeVexaDevice.h"
#include "tests/host/Recorded.h"
#include "tests/support/TestSupport.h"

int tetheroffloadServiceMain();

using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using testsupport::Reply;

namespace {

TEST(MainTest, RegistersAndStartsTheEventThreadBeforeServingAndExitsWhenThePoolIsLeft) {
    hosttest::Recorded::instance();
    bool sigpipeBlocked = false;
    bool readerWaiting = false;
    Reply served(false, "<not served>");
    hostplatform::Threadpool::setServer([&] {
        sigset_t mask;
        sigemptyset(&mask);
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        sigpipeBlocked = sigismember(&mask, SIGPIPE) == 1;
        readerWaiting = fakes::FakeVexaDevice::instance().waitReaderBlocked();
        android::sp<IOffloadConfig> config = IOffloadConfig::getService();
        fakes::FrameworkHandle one;
        if (config == nullptr) return;
        served = testsupport::replyOf([&](testsupport::ResultCallback r) {
            return config->setHandles(one.get(), one.get(), r);
        });
    });

    EXPECT_EQ(0, tetheroffloadServiceMain());
    hostplatform::Threadpool::setServer(nullptr);

    EXPECT_TRUE(sigpipeBlocked);
    EXPECT_TRUE(readerWaiting);
    EXPECT_EQ(Reply(true, "Successful"), served);
    // The order in which the kinds of start-up record first appear.
    std::vector<std::string> order;
    for (const auto& r : hosttest::Recorded::instance().all()) {
        const char* kind = std::holds_alternative<hostplatform::ThreadpoolRecord>(r.body) ? "pool"
                           : std::holds_alternative<hostplatform::RegisterRecord>(r.body)
                                   ? "register"
                           : std::holds_alternative<hostplatform::OpenRecord>(r.body) ? "open"
                                                                                      : nullptr;
        if (kind != nullptr && (order.empty() || order.back() != kind)) order.push_back(kind);
    }
    EXPECT_THAT(order, testing::ElementsAre("pool", "register", "open"));
}

}  // namespace
