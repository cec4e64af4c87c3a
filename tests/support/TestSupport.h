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

// Shared test helpers: a fresh HAL object in a world of fakes in its default state, result
// callbacks captured as replies, and what crossed the boundaries (device requests in the words
// the traces use, agent command lines, log lines).

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/FakeFramework.h"
#include "hal/TetherOffloadHal.h"
#include "tests/support/Observed.h"

namespace testsupport {

using Lines = std::vector<std::string>;
using Reply = std::pair<bool, std::string>;
using ResultCallback = std::function<void(bool, const android::hardware::hidl_string&)>;
using LogLine = std::pair<int, std::string>;  // priority, text

// Runs `op` with a result callback and returns what the callback was handed. The call must
// succeed in transport and answer exactly once.
template <typename Op>
Reply replyOf(Op op) {
    Reply reply(false, "<no reply>");
    int calls = 0;
    ResultCallback cb = [&](bool ok, const android::hardware::hidl_string& msg) {
        reply = {ok, msg};
        ++calls;
    };
    EXPECT_TRUE(op(cb).isOk());
    EXPECT_EQ(1, calls) << "result callbacks";
    return reply;
}

// Each device request in the words of the traces, e.g. "ACTIVATE app=USB len=32 up=wanif0
// down=mdbr0".
Lines deviceRequests();
Lines agentCommands();
Lines logLines();  // texts of the service's own tag
// The same with their priority; with a priority, only the lines at it.
std::vector<LogLine> logEntries(int prio = 0);

inline LogLine info(const std::string& msg) {
    return {ANDROID_LOG_INFO, msg};
}
inline LogLine error(const std::string& msg) {
    return {ANDROID_LOG_ERROR, msg};
}

// The line every lookup of the data-path client logs.
LogLine lookupLine(const void* client);

// What the agent receives for one bridge activation and one deactivation.
inline const Lines kBridgeUpCommands = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge addif mdbr0 rndis0 ",
        "plexd bridge addif mdbr0 wanif-lan ",
        "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
        "plexd interface setcfg rndis0 0.0.0.0 0 up ",
};
inline const Lines kBridgeDownCommands = {"plexd bridge clear mac mdbr0 ",
                                          "plexd bridge delif mdbr0 wanif-lan "};

// Hands the event thread one record, read whole, or a failed read, and returns once it has been
// dispatched and the thread is back in read(); false when nothing read it.
bool deliver(const std::vector<uint8_t>& record);
bool deliverReadFailure(int errnum);

// True when `expected` occurs in `lines` in this order, other lines in between allowed.
bool containsInOrder(const Lines& lines, const Lines& expected);

class HalTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    Reply init(fakes::FakeFramework::Version version = fakes::FakeFramework::Version::k1_1);
    Reply init(const android::sp<
               android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb);
    Reply stop();

    android::sp<vendor::tetheroffload::TetherOffloadHal> mHal;
};

}  // namespace testsupport
