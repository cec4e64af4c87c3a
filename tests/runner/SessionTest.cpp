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

#include <cstdio>
#include <deque>

#include "Arguments.h"
#include "Console.h"
#include "ReplyCheck.h"
#include "hostplatform/Recorder.h"

namespace hostrunner {
namespace {

using android::hardware::Return;
using android::hardware::Status;
using android::hardware::Void;
using hostplatform::Recorder;

TEST(ArgumentsTest, ReadsTraceFormatAndScenario) {
    struct Case {
        std::vector<const char*> argv;
        TraceFormat trace;
        std::string scenario;
        std::string error;
    };
    const Case cases[] = {
            {{"svc"}, TraceFormat::kText, "", ""},
            {{"svc", "a.scenario"}, TraceFormat::kText, "a.scenario", ""},
            {{"svc", "--trace=jsonl", "a"}, TraceFormat::kJsonl, "a", ""},
            {{"svc", "a", "--trace=text"}, TraceFormat::kText, "a", ""},
            {{"svc", "-"}, TraceFormat::kText, "", ""},
            {{"svc", "--trace=xml"}, TraceFormat::kText, "", "unknown option '--trace=xml'"},
            {{"svc", "-v"}, TraceFormat::kText, "", "unknown option '-v'"},
            {{"svc", "a", "b"}, TraceFormat::kText, "a", "more than one scenario"},
    };
    for (const Case& c : cases) {
        Arguments args = parseArguments(static_cast<int>(c.argv.size()), c.argv.data());
        EXPECT_EQ(args.error, c.error) << c.argv.back();
        if (!c.error.empty()) continue;
        EXPECT_EQ(args.trace, c.trace) << c.argv.back();
        EXPECT_EQ(args.scenario, c.scenario) << c.argv.back();
    }
}

std::vector<hostplatform::ReplyRecord> replies() {
    return Recorder::instance().all<hostplatform::ReplyRecord>();
}

TEST(ReplyCheckTest, RecordsTheOneReply) {
    Recorder::instance().clear();
    ReplyCheck status("tag", "initOffload");
    status.statusCallback()(true, "Successful");
    status.finish(Void());
    ReplyCheck stats("tag", "getForwardedStats");
    stats.statsCallback()(10, 20);
    stats.finish(Void());
    auto got = replies();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].op, "initOffload");
    EXPECT_TRUE(got[0].ok);
    EXPECT_EQ(got[0].msg, "Successful");
    EXPECT_FALSE(got[0].isStats);
    EXPECT_EQ(got[1].op, "getForwardedStats");
    EXPECT_TRUE(got[1].isStats);
    EXPECT_EQ(got[1].rx, 10u);
    EXPECT_EQ(got[1].tx, 20u);
}

using ReplyCheckDeathTest = ::testing::Test;

TEST(ReplyCheckDeathTest, EndsTheProcessWhenTheStubRulesAreBroken) {
    EXPECT_DEATH(
            {
                ReplyCheck check("tag", "stopOffload");
                check.finish(Void());
            },
            "stopOffload: _hidl_cb not called, but must be called once");
    EXPECT_DEATH(
            {
                ReplyCheck check("tag", "stopOffload");
                auto cb = check.statusCallback();
                cb(true, "");
                cb(true, "");
            },
            "stopOffload: _hidl_cb called a second time, but must be called once");
    EXPECT_DEATH(
            {
                ReplyCheck check("tag", "stopOffload");
                auto cb = check.statusCallback();
                cb(true, "");
                check.finish(Void());
                cb(true, "");
            },
            "stopOffload: _hidl_cb called after the call returned");
    EXPECT_DEATH(
            {
                ReplyCheck check("tag", "stopOffload");
                check.statusCallback()(true, "");
                Return<void> failed(Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED));
                check.finish(failed);
            },
            "stopOffload: the call returned a transport error");
}

class ScriptedLines : public LineReader {
public:
    explicit ScriptedLines(std::deque<std::string> lines) : mLines(std::move(lines)) {}
    bool readLine(std::string* line) override {
        if (mLines.empty()) return false;
        *line = mLines.front();
        mLines.pop_front();
        return true;
    }
    size_t left() const { return mLines.size(); }

private:
    std::deque<std::string> mLines;
};

std::string contents(FILE* f) {
    fflush(f);
    rewind(f);
    std::string out;
    char buf[256];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0) out.append(buf, n);
    return out;
}

TEST(ConsoleTest, ReportsBadLinesAndGoesOnUntilQuit) {
    Recorder::instance().clear();
    FILE* out = tmpfile();
    FILE* err = tmpfile();
    ASSERT_NE(out, nullptr);
    ASSERT_NE(err, nullptr);
    ScriptedLines lines({"# comment", "", "launch", "help", "device absent", "wait x", "wait 0",
                         "quit", "wait 0"});
    Console(&lines, out, err).run();

    EXPECT_EQ(lines.left(), 1u);  // nothing read after quit
    auto errors = Recorder::instance().all<hostplatform::ErrorRecord>();
    ASSERT_EQ(errors.size(), 3u);
    EXPECT_EQ(errors[0].line, 3);
    EXPECT_EQ(errors[0].msg, "unknown command 'launch'");
    EXPECT_EQ(errors[1].line, 5);
    EXPECT_EQ(errors[1].msg, "device absent: only at the start of a script");
    EXPECT_EQ(errors[2].line, 6);
    EXPECT_EQ(errors[2].msg, "wait: malformed number 'x'");
    EXPECT_EQ(contents(err),
              "<stdin>:3: unknown command 'launch'\n"
              "<stdin>:5: device absent: only at the start of a script\n"
              "<stdin>:6: wait: malformed number 'x'\n");
    EXPECT_EQ(contents(out), helpText());
    fclose(out);
    fclose(err);
}

TEST(ConsoleTest, HelpNamesEveryCommand) {
    for (const char* command : {"setHandles",
                                "initOffload",
                                "stopOffload",
                                "setLocalPrefixes",
                                "getForwardedStats",
                                "setDataLimit",
                                "setDataWarningAndLimit",
                                "setUpstreamParameters",
                                "addDownstream",
                                "removeDownstream",
                                "modem event",
                                "modem conn",
                                "modem readfail",
                                "modem stats",
                                "modem ioctl",
                                "agent",
                                "framework",
                                "prop",
                                "proc",
                                "stderr",
                                "wait",
                                "quit"}) {
        EXPECT_NE(std::string(helpText()).find(command), std::string::npos) << command;
    }
}

}  // namespace
}  // namespace hostrunner
