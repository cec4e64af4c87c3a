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

// The bridge sequences as the network agent sees them: the exact command lines, their order and
// timing, their echo to standard error, and what happens when the agent or standard error fails.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <hostplatform/FakeAgent.h>
#include <hostplatform/Recorder.h>
#include <hostplatform/StandardError.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "bridge/VexaBridge.h"

namespace {

using hostplatform::AgentRecord;
using hostplatform::FakeAgent;
using hostplatform::LogRecord;
using hostplatform::Recorder;
using hostplatform::StandardError;

constexpr int kInfo = 4;
constexpr int kError = 6;
constexpr char kNoAgent[] = "get vendor.korvan.hardware.plexd@1.0::IPlexd service failed\n";
constexpr int64_t kPauseMicros = 500000;
// What an activation may cost beyond its pause: five lookups and calls in process.
constexpr int64_t kSlackMicros = 300000;

const std::vector<std::string> kActivation = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge addif mdbr0 rndis0 ",
        "plexd bridge addif mdbr0 wanif-lan ",
        "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
        "plexd interface setcfg rndis0 0.0.0.0 0 up ",
};

const std::vector<std::string> kDeactivation = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge delif mdbr0 wanif-lan ",
};

using Line = std::pair<int, std::string>;  // priority, message

std::vector<Line> logLines() {
    std::vector<Line> out;
    for (const LogRecord& r : Recorder::instance().all<LogRecord>()) {
        if (r.tag == "TetherOffload") out.emplace_back(r.prio, r.msg);
    }
    return out;
}

std::vector<AgentRecord> agentRecords() {
    return Recorder::instance().all<AgentRecord>();
}

std::vector<std::string> agentCommands() {
    std::vector<std::string> out;
    for (const AgentRecord& r : agentRecords()) out.push_back(r.cmd);
    return out;
}

std::vector<int64_t> agentTimes() {
    std::vector<int64_t> out;
    for (const hostplatform::Record& r : Recorder::instance().records()) {
        if (std::holds_alternative<AgentRecord>(r.body)) out.push_back(r.tMicros);
    }
    return out;
}

int64_t microsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 start)
            .count();
}

// Sends what the process writes to standard error into a file for the length of a test.
class StderrCapture {
public:
    StderrCapture() {
        fflush(stderr);
        mSaved = dup(STDERR_FILENO);
        mFile = tmpfile();
        dup2(fileno(mFile), STDERR_FILENO);
    }

    ~StderrCapture() { restore(); }

    std::string text() {
        fflush(stderr);
        std::string out;
        char buf[512];
        ssize_t n;
        lseek(fileno(mFile), 0, SEEK_SET);
        while ((n = read(fileno(mFile), buf, sizeof(buf))) > 0) out.append(buf, n);
        return out;
    }

    void restore() {
        if (mSaved < 0) return;
        fflush(stderr);
        dup2(mSaved, STDERR_FILENO);
        close(mSaved);
        fclose(mFile);
        mSaved = -1;
    }

private:
    int mSaved = -1;
    FILE* mFile = nullptr;
};

std::string echoOf(const std::vector<std::string>& commands) {
    std::string out;
    for (const std::string& c : commands) out += c + "\n";
    return out;
}

class BridgeTest : public ::testing::Test {
protected:
    void SetUp() override {
        FakeAgent::setMode(FakeAgent::Mode::kUp);
        StandardError::setClosed(false);
        Recorder::instance().clear();
    }

    void TearDown() override {
        FakeAgent::setMode(FakeAgent::Mode::kUp);
        StandardError::setClosed(false);
        Recorder::instance().clear();
    }
};

TEST_F(BridgeTest, ActivationSendsFiveCommandsWithPauseBeforeLastSetcfg) {
    StderrCapture echo;
    auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(activeVexaonBridge(), 0);

    int64_t elapsed = microsSince(start);
    std::string echoed = echo.text();
    echo.restore();

    EXPECT_EQ(agentCommands(), kActivation);
    for (const AgentRecord& r : agentRecords()) EXPECT_TRUE(r.ok) << r.cmd;
    EXPECT_EQ(echoed, echoOf(kActivation));
    EXPECT_EQ(logLines(), (std::vector<Line>{
                                  {kInfo, "bridge clearMac\n"},
                                  {kInfo, "bridge addSlave rndis0\n"},
                                  {kInfo, "bridge addSlave wanif-lan\n"},
                                  {kInfo, "bridge setInterface \n"},
                                  {kInfo, "bridge setInterface \n"},
                          }));

    // The one pause sits between the two setcfg commands, and nowhere else.
    std::vector<int64_t> t = agentTimes();
    ASSERT_EQ(t.size(), 5u);
    EXPECT_GE(t[4] - t[3], kPauseMicros);
    EXPECT_LT(t[3] - t[0], kSlackMicros);
    EXPECT_GE(elapsed, kPauseMicros);
    EXPECT_LT(elapsed, kPauseMicros + kSlackMicros);
}

TEST_F(BridgeTest, DeactivationTakesOnlyTheModemSideOut) {
    StderrCapture echo;
    auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(deactiveVexaonBridge(), 0);

    int64_t elapsed = microsSince(start);
    std::string echoed = echo.text();
    echo.restore();

    EXPECT_EQ(agentCommands(), kDeactivation);
    EXPECT_EQ(echoed, echoOf(kDeactivation));
    EXPECT_EQ(logLines(), (std::vector<Line>{
                                  {kInfo, "bridge clearMac\n"},
                                  {kInfo, "bridge delSlave wanif-lan\n"},
                          }));
    EXPECT_LT(elapsed, kPauseMicros);
}

TEST_F(BridgeTest, AbsentAgentFailsEveryStepButActivationGoesOn) {
    FakeAgent::setMode(FakeAgent::Mode::kAbsent);
    auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(activeVexaonBridge(), 0);

    EXPECT_GE(microsSince(start), kPauseMicros);
    EXPECT_TRUE(agentCommands().empty());
    EXPECT_EQ(logLines(), (std::vector<Line>{
                                  {kError, kNoAgent},
                                  {kError, "bridge clearMac fail\n"},
                                  {kError, kNoAgent},
                                  {kError, "bridge addSlave fail\n"},
                                  {kError, kNoAgent},
                                  {kError, "bridge addSlave fail\n"},
                                  {kError, kNoAgent},
                                  {kError, "bridge setInterface fail\n"},
                                  {kError, kNoAgent},
                                  {kError, "bridge setInterface fail\n"},
                          }));
}

TEST_F(BridgeTest, AbsentAgentFailsDeactivationWithoutPause) {
    FakeAgent::setMode(FakeAgent::Mode::kAbsent);

    EXPECT_EQ(deactiveVexaonBridge(), 0);

    EXPECT_EQ(logLines(), (std::vector<Line>{
                                  {kError, kNoAgent},
                                  {kError, "bridge clearMac fail\n"},
                                  {kError, kNoAgent},
                                  {kError, "bridge delSlave fail\n"},
                          }));
}

// One command function, called alone: what it sends and what it logs on success and failure.
struct CommandCase {
    const char* name;
    std::function<int()> run;
    std::string cmd;
    std::string success;  // INFO line
    std::string failure;  // ERROR line after the channel's own
};

void PrintTo(const CommandCase& c, std::ostream* os) {
    *os << c.name;
}

char gRndis[] = "rndis0";
char gLan[] = "wanif-lan";

const std::vector<CommandCase> kCommands = {
        {"AddSlave", [] { return addSlave(gRndis); }, "plexd bridge addif mdbr0 rndis0 ",
         "bridge addSlave rndis0\n", "bridge addSlave fail\n"},
        {"DelSlave", [] { return delSlave(gLan); }, "plexd bridge delif mdbr0 wanif-lan ",
         "bridge delSlave wanif-lan\n", "bridge delSlave fail\n"},
        {"ClearMac", [] { return clearMac(); }, "plexd bridge clear mac mdbr0 ",
         "bridge clearMac\n", "bridge clearMac fail\n"},
};

class BridgeCommandTest : public BridgeTest, public ::testing::WithParamInterface<CommandCase> {};

TEST_P(BridgeCommandTest, AgentUpSendsLineWithOneTrailingBlank) {
    const CommandCase& c = GetParam();

    EXPECT_EQ(c.run(), 0);

    EXPECT_EQ(agentCommands(), std::vector<std::string>{c.cmd});
    EXPECT_EQ(logLines(), std::vector<Line>{Line(kInfo, c.success)});
}

// A transport failure counts as a failed command and must not abort the process.
TEST_P(BridgeCommandTest, FailingAgentIsLoggedAndFails) {
    const CommandCase& c = GetParam();
    FakeAgent::setMode(FakeAgent::Mode::kFailing);

    EXPECT_EQ(c.run(), -1);

    std::vector<AgentRecord> calls = agentRecords();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].cmd, c.cmd);
    EXPECT_FALSE(calls[0].ok);
    std::vector<Line> logs = logLines();
    ASSERT_EQ(logs.size(), 2u);
    const std::string prefix = "PlexdCmd runCmd failed: ";
    EXPECT_EQ(logs[0].first, kError);
    EXPECT_EQ(logs[0].second.compare(0, prefix.size(), prefix), 0) << logs[0].second;
    EXPECT_GT(logs[0].second.size(), prefix.size() + 1) << "no description";
    EXPECT_EQ(logs[0].second.back(), '\n');
    EXPECT_EQ(logs[1], Line(kError, c.failure));
}

TEST_P(BridgeCommandTest, UnwritableStandardErrorKeepsLineFromAgent) {
    const CommandCase& c = GetParam();
    StandardError::setClosed(true);

    int result = c.run();
    StandardError::setClosed(false);

    EXPECT_EQ(result, -1);
    EXPECT_TRUE(agentCommands().empty());
    EXPECT_EQ(logLines(), (std::vector<Line>{{kError, "PlexdCmd fprintf stderr failed\n"},
                                             {kError, c.failure}}));
}

INSTANTIATE_TEST_SUITE_P(Commands, BridgeCommandTest, ::testing::ValuesIn(kCommands),
                         [](const ::testing::TestParamInfo<CommandCase>& info) {
                             return std::string(info.param.name);
                         });

// "plexd bridge addif mdbr0 " takes 25 of the 127 characters a command may hold.
TEST_F(BridgeTest, CommandOfExactly127CharactersIsSent) {
    std::string name(102, 'x');

    EXPECT_EQ(addSlave(name.data()), 0);

    EXPECT_EQ(agentCommands(), std::vector<std::string>{"plexd bridge addif mdbr0 " + name + " "});
}

TEST_F(BridgeTest, CommandTooLongForBufferIsRefused) {
    std::string name(103, 'x');
    StderrCapture echo;

    EXPECT_EQ(addSlave(name.data()), -1);
    EXPECT_EQ(delSlave(name.data()), -1);

    std::string echoed = echo.text();
    echo.restore();
    EXPECT_EQ(echoed, "");
    EXPECT_TRUE(agentCommands().empty());
    EXPECT_EQ(logLines(), (std::vector<Line>{{kError, "addSlave sprintf cmd fail \n"},
                                             {kError, "delSlave sprintf cmd fail\n"}}));
}

TEST_F(BridgeTest, NullInterfaceIsRefused) {
    EXPECT_EQ(addSlave(nullptr), -1);
    EXPECT_EQ(delSlave(nullptr), -1);

    EXPECT_TRUE(agentCommands().empty());
    EXPECT_EQ(logLines(), (std::vector<Line>{{kError, "addSlave sprintf cmd fail \n"},
                                             {kError, "delSlave sprintf cmd fail\n"}}));
}

}  // namespace
