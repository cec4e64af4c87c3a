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
// descriptors aside, and the start-up lines (two threads write them at once) as a set. So must a
// log with a line cut short, and the log as a bug report (zip and text) holds it. The replay's
// command line is tested here too: a messy capture, UTF-16, a capture far larger than the machine
// would hold three times with a line of megabytes in it, and input that is no log.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zip.h>

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

ProgramRun logOf(const std::string& scenario) {
    const ProgramRun run = runProgram(TETHEROFFLOAD_SERVICE, "--trace=logcat " + scenario);
    EXPECT_EQ(0, run.status) << run.err;
    return run;
}

// Runs the scenario the replay wrote and compares its log with `want`; `except`: a line of `want`
// that may differ.
void expectSameLog(const std::string& want, const ProgramRun& replayed, size_t except = SIZE_MAX) {
    ASSERT_EQ(0, replayed.status) << replayed.err;
    const ProgramRun second = runProgram(TETHEROFFLOAD_SERVICE, "--trace=logcat -", replayed.out);
    ASSERT_EQ(0, second.status) << second.err << replayed.out;
    Lines wanted = comparableLog(want), got = comparableLog(second.out);
    ASSERT_FALSE(wanted.empty());
    if (except < wanted.size() && except < got.size()) got[except] = wanted[except];
    for (size_t i = 0; i < std::max(wanted.size(), got.size()); ++i) {
        ASSERT_EQ(i < wanted.size() ? wanted[i] : "<end>", i < got.size() ? got[i] : "<end>")
                << "log line " << i + 1 << "; the replayed scenario:\n"
                << replayed.out;
    }
}

class RoundTripTest : public ::testing::TestWithParam<std::string> {};

TEST_P(RoundTripTest, TheReplayedScenarioLogsTheSameLines) {
    const ProgramRun first = logOf(GetParam());
    const ProgramRun replayed = replay(first.out);
    EXPECT_EQ("", replayed.err);
    expectSameLog(first.out, replayed);
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

// A call whose first line the capture cut short: the lines after it name the upstream, and the
// addresses the replay picks take the same path.
TEST(ReplayCutTest, RebuildsACallFromTheLinesAfterItsCutFirstLine) {
    const ProgramRun first = logOf(std::string(TETHEROFFLOAD_EXAMPLES) + "/usb-tethering.scenario");
    Lines lines = splitLines(first.out);
    const auto call = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("setUpstreamParameters iface:wanif0") != std::string::npos;
    });
    ASSERT_NE(lines.end(), call);
    call->erase(call->find("iface:wa") + 8);
    std::string cut;
    for (const std::string& line : lines) cut += line + "\n";
    const ProgramRun replayed = replay(cut);
    EXPECT_NE(std::string::npos,
              replayed.out.find("setUpstreamParameters wanif0 192.0.2.2 192.0.2.1 fe80::1  # log "
                                "line " +
                                std::to_string(call - lines.begin() + 1) + " was cut short"))
            << replayed.out;
    expectSameLog(first.out, replayed, call - lines.begin());
}

// A bug report, as `adb bugreport` writes it: the log in the SYSTEM LOG section of the main text
// file, with a uid column and `-v printable` escapes, and that file in a zip that names it.
std::string bugReportText(const std::string& logcat) {
    static const std::regex line("(\\S+ \\S+) +([0-9]+ +[0-9]+ [VDIWEF] [^:]+: )(.*)");
    std::string text =
            "========================================================\n"
            "== dumpstate: 2026-11-23 13:40:00\n"
            "========================================================\n"
            "------ UPTIME (uptime) ------\n 13:40:00 up 2 days\n"
            "------ SYSTEM LOG (logcat -v threadtime -v printable -v uid -d *:v) ------\n"
            "--------- beginning of main\n"
            "11-23 13:35:40.600  root   761   761 I vold    : mounted\n"
            "11-23 13:35:40.601  1000  1017  1017 I chatty  : uid=1000(system) identical 2 lines\n";
    for (const std::string& l : splitLines(logcat)) {
        std::smatch m;
        EXPECT_TRUE(std::regex_match(l, m, line)) << l;
        std::string printable;
        for (unsigned char c : m[3].str()) {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02x", c);
            printable += c == '\\' ? "\\\\" : (c < 0x20 || c == 0x7f) ? hex : std::string(1, c);
        }
        text += m[1].str() + "  1000  " + m[2].str() + printable + "\n";
    }
    return text +
           "------ 0.214s was the duration of 'SYSTEM LOG' ------\n"
           "------ EVENT LOG (logcat -b events -v threadtime -d *:v) ------\n"
           "11-23 13:35:40.622  1000  16576 16576 I TetherOffload: not the system log\n";
}

void zipBugReport(const std::string& path, const std::string& entry, const std::string& text) {
    int error = 0;
    zip_t* zip = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(nullptr, zip) << error;
    for (const auto& [name, data] :
         {std::pair<std::string, const std::string*>{"main_entry.txt", &entry},
          {entry, &text},
          {"bugreport-other-2026.txt", &entry}}) {
        zip_source_t* source = zip_source_buffer(zip, data->data(), data->size(), 0);
        ASSERT_GE(zip_file_add(zip, name.c_str(), source, 0), 0) << zip_strerror(zip);
    }
    ASSERT_EQ(0, zip_close(zip));
}

TEST(ReplayBugReportTest, AZipAndItsTextReplayAsTheRunTheyWereTakenFrom) {
    const ProgramRun first = logOf(std::string(TETHEROFFLOAD_REPLAY_SCENARIOS) + "/names.scenario");
    const std::string text = bugReportText(first.out);
    writeFile(scratch("bugreport-x-2026.txt"), text);
    zipBugReport(scratch("bugreport.zip"), "bugreport-x-2026.txt", text);
    for (const char* file : {"bugreport.zip", "bugreport-x-2026.txt"}) {
        const ProgramRun replayed = runProgram(TETHEROFFLOAD_REPLAY, scratch(file));
        EXPECT_EQ("", replayed.err);
        const std::string origin = std::string(file) == "bugreport.zip"
                                           ? " (bugreport-x-2026.txt, SYSTEM LOG):"
                                           : " (SYSTEM LOG):";
        EXPECT_EQ("# Replayed by tetheroffload-replay from " + scratch(file) + origin,
                  splitLines(replayed.out).at(0));
        EXPECT_EQ("# Left out: 2 lines of other tags, 1 logcat banner.",
                  splitLines(replayed.out).at(2));
        expectSameLog(first.out, replayed);
    }
}

// Run as a child, for its peak memory from wait4: the status and the peak in KiB.
std::pair<int, long> replayMeasured(const std::string& input, const std::string& output) {
    const pid_t child = fork();
    if (child == 0) {
        const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, STDOUT_FILENO);
        execl(TETHEROFFLOAD_REPLAY, "tetheroffload-replay", input.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    struct rusage usage = {};
    wait4(child, &status, 0, &usage);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, usage.ru_maxrss};
}

TEST(ReplayCommandTest, KeepsItsMemoryFlatAndSkipsALineTooLongToRead) {
    const ProgramRun run = logOf(std::string(TETHEROFFLOAD_EXAMPLES) + "/usb-tethering.scenario");
    std::string session;
    for (const std::string& line : splitLines(run.out)) {
        session += line + "\n11-23 13:35:40.622  1000  1017 I ActivityManager: Start proc 4242\n";
    }
    constexpr int kTimes = 400;
    {
        std::ofstream large(scratch("large.txt"), std::ios::binary);
        for (int i = 0; i < kTimes; ++i) {
            large << session;
            if (i == kTimes / 2) large << "11-23 " << std::string(6 << 20, 'x') << "\n";
        }
    }
    writeFile(scratch("small.txt"), session);
    const auto [smallStatus, smallPeak] =
            replayMeasured(scratch("small.txt"), scratch("small.out"));
    const auto [largeStatus, largePeak] =
            replayMeasured(scratch("large.txt"), scratch("large.out"));
    ASSERT_EQ(0, smallStatus);
    ASSERT_EQ(0, largeStatus);
    const std::string small = readFile(scratch("small.out")),
                      large = readFile(scratch("large.out"));
    EXPECT_EQ(kTimes * count(small, "\ninitOffload"), count(large, "\ninitOffload"));
    EXPECT_EQ(1u,
              count(large, " bytes, longer than the 65536 a replay reads, skipped: \"11-23 xxx"));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && \
        !defined(TETHEROFFLOAD_SANITIZED)
    // A sanitizer keeps freed memory for a while: the measure holds for the plain build.
    EXPECT_LT(largePeak, smallPeak + 4 * 1024) << "KiB, for a capture " << kTimes << " times larger";
#endif
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

    // As a Windows shell's redirection saves it: UTF-16LE with a byte-order mark, CRLF.
    std::string utf16 = "\xff\xfe";
    for (char c : threadtimeRun.out) {
        if (c == '\n') utf16 += std::string("\r\0", 2);
        utf16 += std::string{c, '\0'};
    }
    const ProgramRun fromUtf16 = replay(utf16);
    ASSERT_EQ(0, fromUtf16.status) << fromUtf16.err;
    EXPECT_EQ(commands(fromThreadtime.out), commands(fromUtf16.out)) << fromUtf16.out;
    EXPECT_NE(std::string::npos, fromUtf16.out.find("from <stdin> (UTF-16LE):"));
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

    const ProgramRun unknownPid =
            replay("11-23 13:35:40.622  1000  1017 I TetherOffload: stopOffload \n", "--pid 99");
    EXPECT_EQ(2, unknownPid.status);
    EXPECT_EQ(
            "tetheroffload-replay: <stdin>: process 99 logs no line of tag TetherOffload "
            "(processes that do: 1000)\n",
            unknownPid.err);

    const ProgramRun otherTags = replay("11-23 13:35:40.622  1000  1017 I vold: mounted\n");
    EXPECT_EQ(0, otherTags.status);
    EXPECT_EQ("tetheroffload-replay: <stdin>: no line of tag TetherOffload to replay\n",
              otherTags.err);
    EXPECT_TRUE(commands(otherTags.out).empty()) << otherTags.out;
}

}  // namespace
