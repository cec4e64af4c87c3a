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

// The process entry, run to its end: everything is in place before the thread pool serves, and
// leaving the pool ends the service with status 0. The service's main is built into this test
// as tetheroffloadServiceMain.

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/log.h>
#include <cutils/native_handle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>
#include <hostplatform/ServiceRegistry.h>
#include <signal.h>

#include <string>
#include <vector>

int tetheroffloadServiceMain();

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using hostplatform::IoctlRecord;
using hostplatform::LogRecord;
using hostplatform::ModemEmulator;
using hostplatform::OpenRecord;
using hostplatform::Recorder;
using hostplatform::RegisterRecord;
using hostplatform::Threadpool;
using hostplatform::ThreadpoolRecord;
using testing::ElementsAre;

namespace {

// The order in which kinds of record first appear, as short names.
std::vector<std::string> startOrder() {
    std::vector<std::string> order;
    auto note = [&](const std::string& kind) {
        if (order.empty() || order.back() != kind) order.push_back(kind);
    };
    for (const auto& r : Recorder::instance().records()) {
        if (std::holds_alternative<ThreadpoolRecord>(r.body)) note("threadpool");
        if (std::holds_alternative<RegisterRecord>(r.body)) note("register");
        if (std::holds_alternative<OpenRecord>(r.body)) note("open");
    }
    return order;
}

TEST(MainTest, StartsEverythingBeforeServingAndExitsWhenThePoolIsLeft) {
    Recorder::instance().clear();
    bool served = false;
    bool sigpipeBlocked = false;
    bool readerWaiting = false;
    std::string reply;
    Threadpool::setServer([&] {
        served = true;
        sigset_t mask;
        sigemptyset(&mask);
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        sigpipeBlocked = sigismember(&mask, SIGPIPE) == 1;
        readerWaiting = ModemEmulator::instance().waitReaderBlocked();
        sp<IOffloadConfig> config = IOffloadConfig::getService();
        if (config == nullptr) return;
        native_handle_t* one = native_handle_create(1, 0);
        one->data[0] = 0;
        config->setHandles(hidl_handle(one), hidl_handle(one),
                           [&](bool, const hidl_string& msg) { reply = msg; });
        native_handle_delete(one);
    });

    EXPECT_EQ(0, tetheroffloadServiceMain());
    Threadpool::setServer(nullptr);

    EXPECT_TRUE(served);
    EXPECT_TRUE(sigpipeBlocked);
    EXPECT_TRUE(readerWaiting);
    EXPECT_EQ("Successful", reply);
    EXPECT_THAT(startOrder(), ElementsAre("threadpool", "register", "open"));

    // The call served inside the pool comes before the last line of the process.
    std::vector<LogRecord> logs = Recorder::instance().all<LogRecord>();
    ASSERT_GE(logs.size(), 2u);
    EXPECT_EQ("setHandles() \n", logs[logs.size() - 2].msg);
    EXPECT_EQ("tether offload exiting", logs.back().msg);
    EXPECT_EQ(ANDROID_LOG_INFO, logs.back().prio);
}

}  // namespace
