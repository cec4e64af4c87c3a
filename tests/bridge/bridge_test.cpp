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

// The bridge sequences as the network agent sees them: the command lines, their echo on standard
// error, the pause between the two setcfg commands, failing steps, and the command length bound.

#include <android/log.h>
#include <gtest/gtest.h>

#include <chrono>

#include "bridge/VexaBridge.h"
#include "fakes/FakeAgent.h"
#include "fakes/StandardError.h"
#include "tests/support/Observed.h"
#include "tests/support/TestSupport.h"

namespace {

using fakes::FakeAgent;
using fakes::StandardError;
using testsupport::Lines;
using testsupport::LogLine;

constexpr int64_t kPauseMicros = 500000;
// What an activation may cost beyond its pause: short of a second pause, so that one shows, but
// wide for a loaded machine.
constexpr int64_t kSlackMicros = 450000;

class BridgeTest : public testing::Test {
protected:
    void SetUp() override { TearDown(); }
    void TearDown() override {
        FakeAgent::setMode(FakeAgent::Mode::kUp);
        StandardError::setClosed(false);
        testsupport::observed().clear();
    }
};

TEST_F(BridgeTest, ActivationPausesOnlyBetweenTheTwoSetcfgCommandsAndEchoesEachLine) {
    testing::internal::CaptureStderr();
    const auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(0, activeVexaonBridge());

    const int64_t elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
                                    std::chrono::steady_clock::now() - start)
                                    .count();
    std::string expectedEcho;
    for (const std::string& cmd : testsupport::kBridgeUpCommands) expectedEcho += cmd + "\n";
    EXPECT_EQ(expectedEcho, testing::internal::GetCapturedStderr());
    EXPECT_EQ(testsupport::kBridgeUpCommands, testsupport::agentCommands());
    std::vector<int64_t> t;
    for (const testsupport::Observation& r : testsupport::observed().all()) {
        if (std::holds_alternative<fakes::AgentRecord>(r.crossing)) t.push_back(r.tMicros);
    }
    ASSERT_EQ(5u, t.size());
    EXPECT_GE(t[4] - t[3], kPauseMicros);
    EXPECT_LT(t[3] - t[0], kSlackMicros);
    EXPECT_GE(elapsed, kPauseMicros);
    EXPECT_LT(elapsed, kPauseMicros + kSlackMicros);
}

// Each step logs its own failure at ERROR and the sequence goes on.
TEST_F(BridgeTest, FailingStepsAreLoggedInPairsAndTheSequenceGoesOn) {
    struct Case {
        FakeAgent::Mode mode;
        bool stderrClosed;
        std::string cause;
        bool reachesAgent;
    };
    const Case cases[] = {
            {FakeAgent::Mode::kAbsent, false,
             "get vendor.korvan.hardware.plexd@1.0::IPlexd service failed\n", false},
            {FakeAgent::Mode::kFailing, false,
             "PlexdCmd runCmd failed: Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT'\n", true},
            {FakeAgent::Mode::kUp, true, "PlexdCmd fprintf stderr failed\n", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cause);
        FakeAgent::setMode(c.mode);
        StandardError::setClosed(c.stderrClosed);
        testsupport::observed().clear();

        EXPECT_EQ(0, activeVexaonBridge());
        EXPECT_EQ(0, deactiveVexaonBridge());

        StandardError::setClosed(false);
        std::vector<LogLine> expected;
        for (const char* step : {"clearMac", "addSlave", "addSlave", "setInterface", "setInterface",
                                 "clearMac", "delSlave"}) {
            expected.emplace_back(ANDROID_LOG_ERROR, c.cause);
            expected.emplace_back(ANDROID_LOG_ERROR, std::string("bridge ") + step + " fail\n");
        }
        EXPECT_EQ(expected, testsupport::logEntries());
        const auto sent = testsupport::observed().of<fakes::AgentRecord>();
        EXPECT_EQ(c.reachesAgent ? 7u : 0u, sent.size());
        for (const auto& r : sent) EXPECT_FALSE(r.ok) << r.cmd;
    }
}

// "plexd bridge addif mdbr0 " takes 25 of the 127 characters a command may hold; a command cut
// short must never reach the agent.
TEST_F(BridgeTest, CommandsAreBoundTo127CharactersAndNeedAnInterface) {
    std::string fits(102, 'x');
    std::string tooLong(103, 'x');
    testing::internal::CaptureStderr();

    EXPECT_EQ(0, addSlave(fits.data()));
    EXPECT_EQ(-1, addSlave(tooLong.data()));
    EXPECT_EQ(-1, delSlave(tooLong.data()));
    EXPECT_EQ(-1, addSlave(nullptr));
    EXPECT_EQ(-1, delSlave(nullptr));

    const std::string sent = "plexd bridge addif mdbr0 " + fits + " ";
    EXPECT_EQ(sent + "\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(Lines{sent}, testsupport::agentCommands());
    const LogLine addFail(ANDROID_LOG_ERROR, "addSlave sprintf cmd fail \n");
    const LogLine delFail(ANDROID_LOG_ERROR, "delSlave sprintf cmd fail\n");
    EXPECT_EQ((std::vector<LogLine>{{ANDROID_LOG_INFO, "bridge addSlave " + fits + "\n"},
                                    addFail,
                                    delFail,
                                    addFail,
                                    delFail}),
              testsupport::logEntries());
}

}  // namespace
