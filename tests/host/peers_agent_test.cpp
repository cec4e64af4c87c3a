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

#include <gtest/gtest.h>
#include <signal.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <vector>

#include "hostplatform/FakeAgent.h"
#include "hostplatform/Recorder.h"

using ::android::sp;
using ::android::hardware::Return;
using ::hostplatform::AgentRecord;
using ::hostplatform::FakeAgent;
using ::hostplatform::Recorder;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;

namespace {

// The runtime ends the process with abort(), not with any other crash.
#define EXPECT_ABORTS(statement) EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), "")

class PeersAgentTest : public ::testing::Test {
protected:
    void SetUp() override { Recorder::instance().clear(); }
    void TearDown() override { FakeAgent::setMode(FakeAgent::Mode::kUp); }
};

// Runs before any test changes the mode: the agent is there from process start.
TEST_F(PeersAgentTest, UpFromStartAndRecordsEveryLine) {
    sp<IPlexd> agent = IPlexd::getService("default", false);
    ASSERT_NE(nullptr, agent);
    EXPECT_TRUE(agent->runCmd("plexd bridge clear mac mdbr0 ").isOk());
    EXPECT_TRUE(agent->runCmd("").isOk());

    std::vector<AgentRecord> records = Recorder::instance().all<AgentRecord>();
    ASSERT_EQ(2u, records.size());
    EXPECT_EQ("plexd bridge clear mac mdbr0 ", records[0].cmd);
    EXPECT_TRUE(records[0].ok);
    EXPECT_EQ("", records[1].cmd);
}

TEST_F(PeersAgentTest, AbsentAgentIsNotFoundUntilUpAgain) {
    FakeAgent::setMode(FakeAgent::Mode::kAbsent);
    EXPECT_EQ(nullptr, IPlexd::getService("default", false));
    FakeAgent::setMode(FakeAgent::Mode::kUp);
    EXPECT_NE(nullptr, IPlexd::getService("default", false));
}

TEST_F(PeersAgentTest, FailingAgentIsFoundButEveryCallFailsInTransport) {
    FakeAgent::setMode(FakeAgent::Mode::kFailing);
    sp<IPlexd> agent = IPlexd::getService("default", false);
    ASSERT_NE(nullptr, agent);
    Return<void> ret = agent->runCmd("plexd bridge delif mdbr0 wanif-lan ");
    EXPECT_FALSE(ret.isOk());

    std::vector<AgentRecord> records = Recorder::instance().all<AgentRecord>();
    ASSERT_EQ(1u, records.size());
    EXPECT_FALSE(records[0].ok);
}

TEST_F(PeersAgentTest, FailedCallLeftUncheckedAborts) {
    FakeAgent::setMode(FakeAgent::Mode::kFailing);
    sp<IPlexd> agent = IPlexd::getService("default", false);
    ASSERT_NE(nullptr, agent);
    EXPECT_ABORTS(agent->runCmd("plexd bridge addif mdbr0 rndis0 "));
}

}  // namespace
