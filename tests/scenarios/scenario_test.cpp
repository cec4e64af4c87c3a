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

// The host executable run as a person runs it: every example's JSONL trace against its golden
// file (tests/scenarios/README.md; TETHEROFFLOAD_UPDATE_GOLDEN=1 rewrites them instead), the
// start-up order, the refusal of bad input and the exit.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "ProgramRun.h"

namespace {

using Json = nlohmann::ordered_json;

using namespace scenariotest;

// Runs the service with `args` (shell words) and `input` on standard input.
ProgramRun runService(const std::string& args, const std::string& input = "",
                      Stdin from = Stdin::kFile) {
    return runProgram(TETHEROFFLOAD_SERVICE, args, input, from);
}

// One record a line; a line that is not a JSON object fails the test.
std::vector<Json> parseTrace(const std::string& text) {
    std::vector<Json> records;
    for (const std::string& line : splitLines(text)) {
        Json record = Json::parse(line, nullptr, /*allow_exceptions=*/false);
        EXPECT_TRUE(record.is_object()) << line;
        if (record.is_object()) records.push_back(record);
    }
    return records;
}

// The record without what varies from run to run: the time, descriptors, pointers in log text.
Json stableForm(Json record) {
    static const std::regex fd("(fd\\s*=\\s*)-?[0-9]+"), pointer("0x[0-9a-fA-F]{9,}");
    record.erase("t");
    record.erase("fd");
    if (record.value("k", "") == "log" && record["msg"].is_string()) {
        const std::string msg = record["msg"];
        record["msg"] =
                std::regex_replace(std::regex_replace(msg, fd, "$1<fd>"), pointer, "0x<ptr>");
    }
    return record;
}

// Start-up runs on two threads at once, so its records (up to the first one a scenario line
// caused) are put in a fixed order without thread names: threadpool, register, open, then the
// log lines by text. A failed naming of an event thread that already ended is left out.
std::string stableTrace(const std::vector<Json>& records) {
    auto kind = [](const Json& r) { return r.value("k", ""); };
    auto rank = [&](const Json& r) {
        const char* order[] = {"threadpool", "register", "open", "log"};
        return std::find(std::begin(order), std::end(order), kind(r)) - std::begin(order);
    };
    size_t end = 0;
    while (end < records.size() && kind(records[end]) != "call" && kind(records[end]) != "read" &&
           records[end].value("msg", "") != "tether offload exiting") {
        ++end;
    }
    std::vector<Json> startup;
    for (size_t i = 0; i < end; ++i) {
        if (records[i].value("msg", "") == "fail to change HandleEvent thread name\n") continue;
        startup.push_back(stableForm(records[i]));
        startup.back().erase("thread");
    }
    std::stable_sort(startup.begin(), startup.end(), [&](const Json& a, const Json& b) {
        if (rank(a) != rank(b)) return rank(a) < rank(b);
        return kind(a) == "log" && a.value("msg", "") < b.value("msg", "");
    });
    std::string out;
    for (const Json& record : startup) out += record.dump() + "\n";
    for (size_t i = end; i < records.size(); ++i) out += stableForm(records[i]).dump() + "\n";
    return out;
}

class GoldenTest : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenTest, TraceMatchesTheExpectation) {
    const std::string golden = std::string(TETHEROFFLOAD_GOLDEN) + "/" + GetParam() + ".jsonl";
    const ProgramRun run = runService(std::string("--trace=jsonl ") + TETHEROFFLOAD_EXAMPLES + "/" +
                                      GetParam() + ".scenario");
    ASSERT_EQ(0, run.status) << run.err;
    const std::vector<Json> records = parseTrace(run.out);
    for (size_t i = 1; i < records.size(); ++i) {
        ASSERT_LE(records[i - 1].value("t", INT64_MAX), records[i].value("t", int64_t{-1})) << i;
    }
    const std::string actual = stableTrace(records);
    const char* update = getenv("TETHEROFFLOAD_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") return writeFile(golden, actual);

    const std::vector<std::string> want = splitLines(readFile(golden)), got = splitLines(actual);
    ASSERT_FALSE(want.empty()) << golden << " is missing: see tests/scenarios/README.md";
    for (size_t i = 0; i < std::max(want.size(), got.size()); ++i) {
        ASSERT_EQ(i < want.size() ? want[i] : "<end>", i < got.size() ? got[i] : "<end>")
                << "record " << i + 1 << " of " << want.size();
    }
}

std::vector<std::string> exampleNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(TETHEROFFLOAD_EXAMPLES)) {
        if (entry.path().extension() == ".scenario") names.push_back(entry.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The test name is what CMake's MAKE_C_IDENTIFIER makes of the file name, for the ctest filter.
INSTANTIATE_TEST_SUITE_P(Examples, GoldenTest, ::testing::ValuesIn(exampleNames()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             for (char& c : name)
                                 c = isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

// The log texts from the first framework call on, pointers and descriptors masked.
std::vector<std::string> logTextsFromFirstCall(const std::vector<Json>& records) {
    std::vector<std::string> out;
    bool called = false;
    for (const Json& r : records) {
        called = called || r.value("k", "") == "call";
        if (called && r.value("k", "") == "log") out.push_back(stableForm(r).value("msg", ""));
    }
    return out;
}

TEST(DumpTest, AfterEachStepOfTheUsbExampleShowsTheStateTheLogTells) {
    const std::string example = std::string(TETHEROFFLOAD_EXAMPLES) + "/usb-tethering.scenario";
    std::string script;
    for (const std::string& line : splitLines(readFile(example))) {
        script += line + "\n";
        const size_t start = line.find_first_not_of(" \t");
        if (start != std::string::npos && line[start] != '#') script += "dump\n";
    }
    const ProgramRun withDumps = runService("--trace=jsonl", script);
    const ProgramRun plain = runService("--trace=jsonl " + example);
    ASSERT_EQ(0, withDumps.status) << withDumps.err;
    ASSERT_EQ(0, plain.status) << plain.err;
    const std::vector<Json> records = parseTrace(withDumps.out);
    EXPECT_EQ(logTextsFromFirstCall(parseTrace(plain.out)), logTextsFromFirstCall(records))
            << "a dump logged something";

    auto state = [](const char* init, const char* up, const char* usb, const char* usbOffload) {
        return std::string("TetherOffloadHal\n  initialised: ") + init + "\n  upstream: \"" + up +
               "\"\n  USB downstream: \"" + usb +
               "\"\n  Wi-Fi downstream: \"\"\n  USB offload: " + usbOffload +
               "\n  Wi-Fi offload: inactive\n  data-path device: open\n  event thread: started\n";
    };
    const std::string idle = state("no", "", "", "inactive");
    const std::string active = state("yes, callback 1.1", "wanif0", "mdbr0", "active");
    // clang-format off
    const std::vector<std::string> expected = {
            idle, idle, idle,                                      // proc, proc, prop
            state("yes, callback 1.1", "", "", "inactive"),        // initOffload ++ ... --
            state("yes, callback 1.1", "", "mdbr0", "inactive"),   // down-if:mdbr0; up-if:
            active,                                                // active usb vexa (up wanif0)
            active, active, active,                                // the modem's three events
            state("yes, callback 1.1", "wanif0", "", "inactive"),  // de-active usb vexa
            idle,                                                  // stopOffload()
    };
    // clang-format on
    std::vector<std::string> dumps;
    for (const Json& r : records) {
        if (r.value("k", "") == "dump") dumps.push_back(r.value("text", ""));
    }
    ASSERT_EQ(expected.size(), dumps.size());
    for (size_t i = 0; i < dumps.size(); ++i) EXPECT_EQ(expected[i], dumps[i]) << "dump " << i + 1;
}

const std::string kPinnedProc = "proc tcp \"432000\\n\"\nproc udp \"180\\n\"\n";

TEST(StartupTest, ThreadpoolThenRegistersThenOpenThenTheEventThread) {
    const ProgramRun run = runService("--trace=jsonl", kPinnedProc);
    ASSERT_EQ(0, run.status) << run.err;
    std::vector<std::string> order;  // the raw order, before any sorting
    for (const Json& r : parseTrace(run.out)) {
        const std::string kind = r.value("k", ""), msg = r.value("msg", "");
        if (kind == "threadpool" || kind == "open") order.push_back(kind);
        if (kind == "register") order.push_back(r.value("interface", ""));
        if (msg == "created HandleEvent thread\n") order.push_back(msg);
    }
    EXPECT_EQ((std::vector<std::string>{
                      "threadpool", "android.hardware.tetheroffload.config@1.0::IOffloadConfig",
                      "android.hardware.tetheroffload.control@1.1::IOffloadControl", "open",
                      "created HandleEvent thread\n"}),
              order);
}

TEST(ExitTest, EndsWithMainsStatusAfterTheLastLineWhateverTheInput) {
    const ProgramRun text =
            runService("", kPinnedProc + "initOffload 1.1\n");  // text trace by default
    EXPECT_EQ(0, text.status) << text.err;
    EXPECT_EQ(std::string::npos, text.out.find('\033')) << "coloured off a terminal";
    EXPECT_NE(std::string::npos, text.out.find("--> 3: initOffload 1.1\n")) << text.out;
    EXPECT_EQ("exit              status 0", splitLines(text.out).back().substr(12));

    const ProgramRun dash = runService("--trace=jsonl -", kPinnedProc);
    EXPECT_EQ(0, dash.status) << dash.err;
    const std::vector<Json> records = parseTrace(dash.out);
    ASSERT_GE(records.size(), 2u);
    EXPECT_EQ("tether offload exiting", records[records.size() - 2].value("msg", ""));
    EXPECT_EQ(R"({"k":"exit","status":0})", stableForm(records.back()).dump());
}

TEST(ExitTest, ReaderSlowerThanTheServiceStillGetsEveryRecordWithTheExitLast) {
    std::string script = kPinnedProc + "initOffload 1.1\n";
    // Many times what the trace holds back; the reader sleeps longer than a delivery may wait.
    constexpr int kEvents = 3000;
    for (int i = 0; i < kEvents; ++i) script += i % 2 ? "modem event STARTED\n" : "modem conn\n";
    writeFile(scratch("in"), script);
    const std::string command = std::string("'") + TETHEROFFLOAD_SERVICE + "' --trace=jsonl <" +
                                scratch("in") + " | (sleep 2; cat) >" + scratch("out");
    ASSERT_EQ(0, system(command.c_str()));
    const std::vector<Json> records = parseTrace(readFile(scratch("out")));
    unlink(scratch("in").c_str());
    unlink(scratch("out").c_str());
    int reads = 0, callbacks = 0;
    for (const Json& r : records) {
        reads += r.value("k", "") == "read";
        callbacks += r.value("k", "") == "callback";
    }
    EXPECT_EQ(kEvents, reads);
    EXPECT_EQ(kEvents, callbacks);
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(R"({"k":"exit","status":0})", stableForm(records.back()).dump());
}

// A script is checked whole before it runs, also when standard input is a pipe.
TEST(InputTest, ScriptFromAPipeRunsAsFromAFile) {
    const std::string script =
            "device absent\n" + kPinnedProc + "initOffload 1.1\n# a comment\n\nstopOffload";
    const ProgramRun fromFile = runService("--trace=jsonl", script);
    const ProgramRun fromPipe = runService("--trace=jsonl", script, Stdin::kPipe);
    ASSERT_EQ(0, fromPipe.status) << fromPipe.err;
    EXPECT_EQ(stableTrace(parseTrace(fromFile.out)), stableTrace(parseTrace(fromPipe.out)));
    EXPECT_NE(std::string::npos, fromPipe.out.find(R"("errno":2)")) << "device absent applied";
    EXPECT_NE(std::string::npos, fromPipe.out.find(R"("line":7,"op":"stopOffload")"))
            << "the last line, without its newline";
}

TEST(BadInputTest, RefusedWithFileAndLineBeforeAnythingRuns) {
    const std::pair<std::string, std::string> scripts[] = {
            {"initOffload 1.1\nlaunch now\n", "2: unknown command 'launch'"},
            {"\n\nsetDataLimit wanif0\n", "3: setDataLimit: expected 2 arguments, got 1"},
            {"wait 10ms\n", "1: wait: malformed number '10ms'"},
            {"modem conn ip0=300.1.1.1\n", "1: modem conn: malformed address '300.1.1.1'"},
            {"modem event 1 payload=0g\n", "1: modem event: malformed hex string '0g'"},
            {"# x\nprop ro.build.type \"userdebug\n", "2: unterminated quote"},
            {"initOffload 1.1\ndevice absent\n", "2: device absent: only before any other command"},
            {"wait 1\nprop a " + std::string(1 << 20, 'x') + "\nwait 1\n",
             "2: line too long (more than 65536 bytes)"},
    };
    for (const auto& [script, where] : scripts) {
        writeFile(scratch("bad.scenario"), script);
        const ProgramRun fromFile = runService(scratch("bad.scenario"));
        const ProgramRun fromStdin = runService("--trace=jsonl", script);
        const ProgramRun fromPipe = runService("--trace=jsonl", script, Stdin::kPipe);
        for (const ProgramRun& run : {fromFile, fromStdin, fromPipe}) {
            EXPECT_EQ(2, run.status) << script;
            EXPECT_EQ("", run.out) << script;
        }
        EXPECT_EQ(scratch("bad.scenario") + ":" + where + "\n", fromFile.err);
        EXPECT_EQ("<stdin>:" + where + "\n", fromStdin.err);
        EXPECT_EQ("<stdin>:" + where + "\n", fromPipe.err);
    }
    unlink(scratch("bad.scenario").c_str());
    const std::pair<std::string, std::string> commandLines[] = {
            {"--trace=xml", "unknown option '--trace=xml'"},
            {"a.scenario b.scenario", "more than one scenario"},
            {"/nonexistent/x.scenario",
             "/nonexistent/x.scenario: cannot read the scenario: No such file or directory"},
            {TETHEROFFLOAD_EXAMPLES,
             TETHEROFFLOAD_EXAMPLES ": cannot read the scenario: Is a directory"},
    };
    for (const auto& [args, firstLine] : commandLines) {
        const ProgramRun run = runService(args);
        EXPECT_EQ(2, run.status) << args;
        EXPECT_EQ("", run.out) << args;
        EXPECT_EQ(firstLine, splitLines(run.err).at(0));
    }
}

// Input of any size: a line longer than the memory the process may have, which never ends, and a
// copy of piped input that cannot be written.
TEST(BadInputTest, InputBeyondWhatTheProcessCanHoldOrWriteEndsWithAShortMessage) {
    const std::string service = std::string("'") + TETHEROFFLOAD_SERVICE + "'";
    const std::string streams = " >" + scratch("out") + " 2>" + scratch("err");
    auto run = [&](const std::string& command) {
        const int status = system(command.c_str());
        return ProgramRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(scratch("out")),
                          readFile(scratch("err"))};
    };
    // Sanitizers reserve more address space than a small limit allows.
    const std::string memoryLimit = TETHEROFFLOAD_SANITIZED ? "" : "ulimit -v 262144; ";
    const ProgramRun endless = run("head -c 300000000 /dev/zero | tr '\\0' x | (" + memoryLimit +
                                   "exec " + service + ")" + streams);
    EXPECT_EQ(2, endless.status);
    EXPECT_EQ("<stdin>:1: line too long (more than 65536 bytes)\n", endless.err);

    std::string script;
    for (int i = 0; i < 1000; ++i) script += "wait 0\n";
    writeFile(scratch("in"), script);
    // Files of at most 2 KiB, and a write beyond fails instead of ending the process.
    const ProgramRun unkept =
            run("trap '' XFSZ; ulimit -f 4; cat " + scratch("in") + " | " + service + streams);
    EXPECT_EQ(2, unkept.status);
    EXPECT_EQ("<stdin>: cannot keep the scenario to run it: File too large\n", unkept.err);
    EXPECT_EQ("", unkept.out);
    for (const char* name : {"in", "out", "err"}) unlink(scratch(name).c_str());
}

}  // namespace
