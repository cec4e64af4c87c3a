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

// The host executable as a whole: its start-up, its refusals of bad input and its exit.

#include <gtest/gtest.h>

#include "ServiceRun.h"
#include "TraceLines.h"

namespace scenariotest {
namespace {

const std::string kPinnedProc = "proc tcp \"432000\\n\"\nproc udp \"180\\n\"\n";

size_t indexOf(const std::vector<Json>& records, const std::function<bool(const Json&)>& match) {
    for (size_t i = 0; i < records.size(); ++i) {
        if (match(records[i])) return i;
    }
    return records.size();
}

TEST(StartupTest, RegistersThenOpensTheDeviceThenStartsTheEventThread) {
    TempScenario scenario(kPinnedProc);
    ServiceRun run = runService({"--trace=jsonl", scenario.path()});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<Json> records = parseTrace(run.out);
    ASSERT_GE(records.size(), 4u);

    EXPECT_EQ(records[0]["k"], "threadpool");
    EXPECT_EQ(records[0]["max"], 1);
    EXPECT_EQ(records[0]["callerWillJoin"], false);
    EXPECT_EQ(records[1]["k"], "register");
    EXPECT_EQ(records[1]["interface"], "android.hardware.tetheroffload.config@1.0::IOffloadConfig");
    EXPECT_EQ(records[1]["name"], "default");
    EXPECT_EQ(records[2]["k"], "register");
    EXPECT_EQ(records[2]["interface"],
              "android.hardware.tetheroffload.control@1.1::IOffloadControl");
    EXPECT_EQ(records[2]["name"], "default");

    size_t open = indexOf(records, [](const Json& r) { return r["k"] == "open"; });
    size_t created = indexOf(records, [](const Json& r) {
        return r["k"] == "log" && r["msg"] == "created HandleEvent thread\n";
    });
    ASSERT_LT(open, records.size());
    ASSERT_LT(created, records.size());
    EXPECT_GT(open, 2u);
    EXPECT_LT(open, created);
    EXPECT_EQ(records[open]["path"], "/dev/vexa");
    EXPECT_TRUE(records[open]["fd"].is_number_integer() && records[open]["fd"] >= 0)
            << records[open].dump();
    EXPECT_FALSE(records[open].contains("errno"));
    EXPECT_EQ(records[created]["prio"], 6);
    EXPECT_EQ(records[created]["tag"], "TetherOffload");
}

TEST(StartupTest, DeviceAbsentMakesTheOpenFail) {
    TempScenario scenario("# no modem\ndevice absent\n" + kPinnedProc);
    ServiceRun run = runService({"--trace=jsonl", scenario.path()});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<Json> records = parseTrace(run.out);
    size_t open = indexOf(records, [](const Json& r) { return r["k"] == "open"; });
    ASSERT_LT(open, records.size());
    EXPECT_EQ(records[open].dump(),
              Json({{"k", "open"}, {"t", records[open]["t"]}, {"path", "/dev/vexa"}, {"errno", 2}})
                      .dump());
}

TEST(ExitTest, EndsWithMainsStatusAfterTheLastLine) {
    // From a file and from standard input alike.
    TempScenario scenario(kPinnedProc + "initOffload 1.0\n");
    for (const ServiceRun& run : {runService({"--trace=jsonl", scenario.path()}),
                                  runService({"--trace=jsonl"}, kPinnedProc + "initOffload 1.0\n"),
                                  runService({"--trace=jsonl", "-"}, kPinnedProc)}) {
        EXPECT_EQ(run.status, 0) << run.err;
        std::vector<Json> records = parseTrace(run.out);
        ASSERT_GE(records.size(), 2u);
        EXPECT_EQ(records.back()["k"], "exit");
        EXPECT_EQ(records.back()["status"], 0);
        const Json& last = records[records.size() - 2];
        EXPECT_EQ(last["k"], "log");
        EXPECT_EQ(last["msg"], "tether offload exiting");
    }
}

TEST(ExitTest, CallsAreTracedAsCallAndReply) {
    ServiceRun run = runService({"--trace=jsonl"}, kPinnedProc + "setHandles 1 \"none\"\n");
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<Json> records = parseTrace(run.out);
    size_t call = indexOf(records, [](const Json& r) { return r["k"] == "call"; });
    ASSERT_LT(call + 1, records.size());
    EXPECT_EQ(stableForm(records[call]).dump(),
              R"({"k":"call","line":3,"op":"setHandles","args":["1","none"]})");
    EXPECT_EQ(stableForm(records[call + 1]).dump(),
              R"({"k":"reply","op":"setHandles","ok":false,"msg":"fail ,fd2 is empty"})");
}

TEST(TextTraceTest, IsForPeopleWithoutColourOffATerminal) {
    ServiceRun run = runService({}, kPinnedProc + "initOffload 1.1\nstopOffload\n");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.find('\033'), std::string::npos);
    EXPECT_EQ(run.out.find("{\"k\""), std::string::npos);
    EXPECT_NE(run.out.find("I TetherOffload: initOffload ++\\n\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("--> 3: initOffload 1.1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("<-- 3: initOffload true \"Successful\"\n"), std::string::npos);
    EXPECT_NE(run.out.find("ENABLE app=ALL len=0 -> 0  54240200ff0000000000000000000000\n"),
              std::string::npos);
    EXPECT_NE(run.out.find("exit              status 0\n"), std::string::npos);
}

TEST(BadInputTest, RefusesTheWholeScriptBeforeAnythingRuns) {
    struct Case {
        std::string script;
        std::string where;  // "LINE: what is wrong"
    };
    const Case cases[] = {
            {"initOffload 1.1\nlaunch now\n", "2: unknown command 'launch'"},
            {"\n\nsetDataLimit wanif0\n", "3: setDataLimit: expected 2 arguments, got 1"},
            {"wait 10ms\n", "1: wait: malformed number '10ms'"},
            {"modem conn ip0=300.1.1.1\n", "1: modem conn: malformed address '300.1.1.1'"},
            {"modem event 1 payload=0g\n", "1: modem event: malformed hex string '0g'"},
            {"# x\nprop ro.build.type \"userdebug\n", "2: unterminated quote"},
            {"initOffload 1.1\ndevice absent\n", "2: device absent: only before any other command"},
    };
    for (const Case& c : cases) {
        TempScenario scenario(c.script);
        ServiceRun fromFile = runService({"--trace=jsonl", scenario.path()});
        EXPECT_EQ(fromFile.status, 2) << c.script;
        EXPECT_EQ(fromFile.out, "") << c.script;
        EXPECT_EQ(fromFile.err, scenario.path() + ":" + c.where + "\n");

        ServiceRun fromStdin = runService({}, c.script);
        EXPECT_EQ(fromStdin.status, 2) << c.script;
        EXPECT_EQ(fromStdin.out, "") << c.script;
        EXPECT_EQ(fromStdin.err, "<stdin>:" + c.where + "\n");
    }
}

TEST(BadInputTest, RefusesABadCommandLine) {
    struct Case {
        std::vector<std::string> args;
        std::string firstLine;
    };
    const Case cases[] = {
            {{"--trace=xml"}, "unknown option '--trace=xml'"},
            {{"a.scenario", "b.scenario"}, "more than one scenario"},
            {{"/nonexistent/x.scenario"}, "/nonexistent/x.scenario: cannot read the scenario"},
    };
    for (const Case& c : cases) {
        ServiceRun run = runService(c.args);
        EXPECT_EQ(run.status, 2) << c.firstLine;
        EXPECT_EQ(run.out, "") << c.firstLine;
        EXPECT_EQ(run.err.substr(0, run.err.find('\n')), c.firstLine);
    }
}

}  // namespace
}  // namespace scenariotest
