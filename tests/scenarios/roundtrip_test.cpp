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

// From a log back to a run: every example and each scenario of tests/scenarios/replay/ is run
// with --trace=logcat, its log replayed by tetheroffload-replay, and the replayed scenario run
// again. Both runs must log the same lines: levels, tags and texts, with pointers and
// descriptors aside, and the start-up lines (two threads write them at once) as a set. The
// replay's command line is tested here too: a messy capture and input that is no log.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "ProgramRun.h"

namespace {

using Lines = std::vector<std::string>;

using namespace scenariotest;

ProgramRun replay(const std::string& log, const std::string& args = "") {
    return runProgram(TETHEROFFLOAD_REPLAY, args, log);
}

const std::regex& threadtime() {
    static const std::regex* line = new std::regex(
            "[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]{3} +[0-9]+ +[0-9]+ ([VDIWEF]) (.*)");
    return *line;
}

// Said by main and the event thread while they start, in an order that varies.
bool isStartupLine(const std::string& text) {
    static const std::set<std::string> kStartup = {
            "I TetherOffload:  GetInstance p=0x<ptr>",
            "E TetherOffload: open dev ++ g-fd =<fd>",
            "I TetherOffload: open /dev/vexa done, fd=<fd>",
            "E TetherOffload: open /dev/vexa fail ",
            "E TetherOffload: created HandleEvent thread",
            "E TetherOffload: fail to change HandleEvent thread name",
            "E TetherOffload: handleEvent: fail to open vexa device ",
    };
    return kStartup.count(text) != 0;
}

// "L TAG: MESSAGE" of every line, masked, the start-up lines sorted; the naming of an event
// thread that already ended (no device) fails or not by chance, so it is left out.
Lines comparableLog(const std::string& logcat) {
    static const std::regex fd("(fd\\s*=\\s*)-?[0-9]+"), pointer("0x[0-9a-fA-F]{9,}");
    Lines lines;
    for (const std::string& line : splitLines(logcat)) {
        std::smatch m;
        EXPECT_TRUE(std::regex_match(line, m, threadtime())) << "not a threadtime line: " << line;
        const std::string text = m.size() > 2 ? m[1].str() + " " + m[2].str() : line;
        lines.push_back(
                std::regex_replace(std::regex_replace(text, fd, "$1<fd>"), pointer, "0x<ptr>"));
    }
    const auto startupEnd = std::find_if_not(lines.begin(), lines.end(), isStartupLine);
    std::sort(lines.begin(), startupEnd);
    lines.erase(std::remove(lines.begin(), startupEnd,
                            "E TetherOffload: fail to change HandleEvent thread name"),
                startupEnd);
    return lines;
}

class RoundTripTest : public ::testing::TestWithParam<std::string> {};

TEST_P(RoundTripTest, TheReplayedScenarioLogsTheSameLines) {
    const ProgramRun first = runProgram(TETHEROFFLOAD_SERVICE, "--trace=logcat " + GetParam());
    ASSERT_EQ(0, first.status) << first.err;
    const ProgramRun replayed = replay(first.out);
    ASSERT_EQ(0, replayed.status) << replayed.err;
    EXPECT_EQ("", replayed.err);
    const ProgramRun second = runProgram(TETHEROFFLOAD_SERVICE, "--trace=logcat -", replayed.out);
    ASSERT_EQ(0, second.status) << second.err << replayed.out;

    const Lines want = comparableLog(first.out), got = comparableLog(second.out);
    ASSERT_FALSE(want.empty());
    for (size_t i = 0; i < std::max(want.size(), got.size()); ++i) {
        ASSERT_EQ(i < want.size() ? want[i] : "<end>", i < got.size() ? got[i] : "<end>")
                << "log line " << i + 1 << "; the replayed scenario:\n"
                << replayed.out;
    }
}

Lines scenarios() {
    Lines paths;
    for (const char* dir : {TETHEROFFLOAD_EXAMPLES, TETHEROFFLOAD_REPLAY_SCENARIOS}) {
        for (const auto& entry : std::filesystem::directory_iterator(dir)) {
            if (entry.path().extension() == ".scenario") paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, RoundTripTest, ::testing::ValuesIn(scenarios()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = std::filesystem::path(info.param).stem();
                             for (char& c : name)
                                 c = isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

// The scenario's commands without comments.
Lines commands(const std::string& scenario) {
    Lines out;
    for (const std::string& line : splitLines(scenario)) {
        const std::string command = line.substr(0, line.find("  #"));
        if (!command.empty() && command[0] != '#') out.push_back(command);
    }
    return out;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(ReplayCommandTest, PlacesTheServiceLinesOfAMessyLogAndNotesTheRest) {
    const ProgramRun clean = runProgram(
            TETHEROFFLOAD_SERVICE,
            std::string("--trace=logcat ") + TETHEROFFLOAD_EXAMPLES + "/usb-tethering.scenario");
    ASSERT_EQ(0, clean.status) << clean.err;
    // The same service lines among other tags, with a second process that logs them again, cut
    // lines and garbage.
    std::string messy = "--------- beginning of main\n";
    size_t garbage = 0;
    const Lines lines = splitLines(clean.out);
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        messy += line + "\n";
        messy += "11-23 13:35:40.622  1000  1017 I ActivityManager: Start proc 4242\n";
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, threadtime()));
        messy += line.substr(0, 19) + " 4242  4242 " + m[1].str() + " " + m[2].str() + "\n";
        if (i % 7 == 3) {
            messy += line.substr(0, 30) + "\n" + "\x01garbage \xff\n";
            garbage += 2;
        }
    }
    const ProgramRun replayed = replay(messy);
    ASSERT_EQ(0, replayed.status) << replayed.err;
    const ProgramRun reference = replay(clean.out);
    EXPECT_EQ(commands(reference.out), commands(replayed.out)) << replayed.out;
    EXPECT_EQ(garbage, count(replayed.out, ": not a log line: ")) << replayed.out;
    EXPECT_NE(std::string::npos,
              replayed.out.find(std::to_string(lines.size()) +
                                " lines from process 4242 (--pid 4242 replays them)"))
            << replayed.out;
    EXPECT_NE(std::string::npos, replayed.out.find(std::to_string(lines.size()) +
                                                   " lines of other tags, 1 logcat banner"));

    const ProgramRun second = replay(messy, "--pid 4242");
    ASSERT_EQ(0, second.status) << second.err;
    EXPECT_EQ(commands(reference.out), commands(second.out));
}

TEST(ReplayCommandTest, ReadsTheBriefFormatAsWell) {
    const ProgramRun threadtimeRun = runProgram(
            TETHEROFFLOAD_SERVICE,
            std::string("--trace=logcat ") + TETHEROFFLOAD_REPLAY_SCENARIOS + "/names.scenario");
    ASSERT_EQ(0, threadtimeRun.status) << threadtimeRun.err;
    // "L/TAG(  PID): MESSAGE", as `adb logcat -v brief` writes the same lines.
    static const std::regex fields("\\S+ \\S+ +([0-9]+) +[0-9]+ ([VDIWEF]) ([^:]+): (.*)");
    std::string brief;
    for (const std::string& line : splitLines(threadtimeRun.out)) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, fields)) << line;
        brief += m[2].str() + "/" + m[3].str() + "(" + m[1].str() + "): " + m[4].str() + "\n";
    }
    const ProgramRun fromThreadtime = replay(threadtimeRun.out);
    const ProgramRun fromBrief = replay(brief);
    ASSERT_EQ(0, fromBrief.status) << fromBrief.err;
    EXPECT_EQ(commands(fromThreadtime.out), commands(fromBrief.out)) << fromBrief.out;
}

TEST(ReplayCommandTest, RefusesWhatIsNotALogWithStatus2) {
    std::ofstream(scratch("binary"), std::ios::binary) << std::string(
            "\x7f"
            "ELF\0\x02\x01",
            7);
    const std::pair<std::string, std::string> cases[] = {
            {scratch("binary"),
             "tetheroffload-replay: " + scratch("binary") +
                     " is not a log: it holds binary data (a NUL byte at offset 4)"},
            {"", "tetheroffload-replay: <stdin> is not a log: it is empty"},
            {"/nonexistent/capture.txt",
             "tetheroffload-replay: /nonexistent/capture.txt: cannot read the log"},
            {"--pid x", "tetheroffload-replay: --pid needs a process id, got 'x'"},
            {"--since 1", "tetheroffload-replay: unknown option '--since'"},
            {"a.txt b.txt", "tetheroffload-replay: more than one log"},
    };
    for (const auto& [args, message] : cases) {
        const ProgramRun refused = runProgram(TETHEROFFLOAD_REPLAY, args);
        EXPECT_EQ(2, refused.status) << args;
        EXPECT_EQ("", refused.out) << args;
        EXPECT_EQ(message, splitLines(refused.err).at(0)) << args;
    }
    const ProgramRun prose = replay("Dear team,\nthe phone does not tether.\n");
    EXPECT_EQ(2, prose.status);
    EXPECT_NE(std::string::npos, prose.err.find("no line of it is a logcat line")) << prose.err;

    const ProgramRun otherTags = replay("11-23 13:35:40.622  1000  1017 I vold: mounted\n");
    EXPECT_EQ(0, otherTags.status);
    EXPECT_EQ("tetheroffload-replay: <stdin>: no line of tag TetherOffload to replay\n",
              otherTags.err);
    EXPECT_TRUE(commands(otherTags.out).empty()) << otherTags.out;
}

}  // namespace
