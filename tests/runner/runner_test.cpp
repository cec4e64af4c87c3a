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

// The host executable's pieces that the example traces do not show: the word and number rules of
// a scenario line, the text trace and the console.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstdio>
#include <deque>

#include "Console.h"
#include "LogcatTrace.h"
#include "ScenarioParser.h"
#include "TextTrace.h"
#include "VexaDecoder.h"
#include "datapath/vexa_protocol.h"
#include "tests/host/Recorded.h"

namespace hostrunner {
namespace {

using namespace hostplatform;
using Bytes = std::vector<uint8_t>;

// What a script line reads as: the error, "blank", or the command and its words joined by '|',
// then the number of a setDataLimit or whether a proc line means absence.
std::string reading(const std::string& line) {
    const LineResult r = parseLine(line, 1, Source::kScript);
    if (!r.error.empty()) return "error: " + r.error;
    if (r.blank) return "blank";
    std::string out = r.command.name;
    for (const std::string& arg : r.command.args) out += "|" + arg;
    if (auto* cmd = std::get_if<SetDataLimit>(&r.command.body))
        out += " =" + std::to_string(cmd->limit);
    if (auto* cmd = std::get_if<Proc>(&r.command.body)) out += cmd->absent ? " =absent" : " =text";
    return out;
}

TEST(ScenarioLineTest, WordsQuotesEscapesNumbersAndComments) {
    const std::pair<std::string, std::string> cases[] = {
            {"", "blank"},
            {" \t ", "blank"},
            {"# only a comment", "blank"},
            {"  prop  a\tb  # comment", "prop|a|b"},
            {"prop a b#tight", "prop|a|b"},
            {"prop a \"# not a comment\"", "prop|a|# not a comment"},
            {"setUpstreamParameters wanif0 \"10.0.0.2\" \"\" fe80::1",
             "setUpstreamParameters|wanif0|10.0.0.2||fe80::1"},
            {"prop a \"say \\\"hi\\\" \\\\ \\t\\n\\x41\\x7a\"", "prop|a|say \"hi\" \\ \t\nAz"},
            {"prop a b\\c\r", "prop|a|b\\c"},
            {"proc udp absent", "proc|udp|absent =absent"},
            {"proc udp \"absent\"", "proc|udp|absent =text"},
            {"prop a \"open", "error: unterminated quote"},
            {"prop a \"ends in escape\\", "error: unterminated quote"},
            {"prop a \"b\"c", "error: text after a closing quote"},
            {"prop a b\"c\"", "error: unexpected quote inside a word"},
            {"prop a \"\\q\"", "error: unknown escape \\q"},
            {"prop a \"\\x4\"", "error: \\x needs two hex digits"},
            {"setDataLimit wanif0 42", "setDataLimit|wanif0|42 =42"},
            {"setDataLimit wanif0 0XfF", "setDataLimit|wanif0|0XfF =255"},
            {"setDataLimit wanif0 18446744073709551615",
             "setDataLimit|wanif0|18446744073709551615 =18446744073709551615"},
            {"setDataLimit wanif0 0xffffffffffffffff",
             "setDataLimit|wanif0|0xffffffffffffffff =18446744073709551615"},
    };
    for (const auto& [line, expected] : cases) EXPECT_EQ(expected, reading(line)) << line;
    for (const char* bad : {"0x", "-1", "12a", "0x1g", " 1", "1.5", "99999999999999999999x"}) {
        EXPECT_EQ("error: setDataLimit: malformed number '" + std::string(bad) + "'",
                  reading("setDataLimit wanif0 \"" + std::string(bad) + "\""));
    }
    for (const char* tooLarge : {"18446744073709551616", "0x10000000000000000"}) {
        EXPECT_EQ("error: setDataLimit: number " + std::string(tooLarge) +
                          " out of range (at most 18446744073709551615)",
                  reading("setDataLimit wanif0 " + std::string(tooLarge)));
    }
    EXPECT_EQ("error: setHandles: number 3 out of range (at most 2)", reading("setHandles 1 3"));
    EXPECT_EQ("error: modem readfail: errno 4096 out of range (1 to 4095)",
              reading("modem readfail 4096"));
}

TEST(ScenarioLineTest, MessagesShowAShortExcerptOfTheWordWithOddBytesEscaped) {
    const std::string digits(100, '9');
    EXPECT_EQ("error: wait: number " + digits.substr(0, 40) + "... out of range (at most 3600000)",
              reading("wait " + digits));
    EXPECT_EQ("error: wait: malformed number '1\\x01\\x7F'", reading("wait 1\x01\x7f"));
    EXPECT_EQ("error: unknown command '\\xEF\\xBB\\xBFwait'", reading("\xEF\xBB\xBFwait 1"));
    EXPECT_EQ("error: unknown escape \\\\x00", reading(std::string("prop a \"\\\0\"", 11)));
    const std::string longest = "prop a " + std::string(kMaxLineBytes - 7, 'x');
    EXPECT_EQ("prop|a|" + longest.substr(7), reading(longest));
    EXPECT_EQ("error: line too long (more than 65536 bytes)", reading(longest + "x"));
    EXPECT_EQ("error: help: only in the console", reading("help"));
    EXPECT_EQ("dump", reading("dump  # the state"));
    EXPECT_EQ("error: dump: expected 0 arguments, got 1", reading("dump all"));
}

TEST(ScenarioScriptTest, LinesNumberedAndDeviceAbsentOnlyFirst) {
    const ScriptResult good = parseScript("device absent\n\n# c\ndevice absent\nwait 1", "s");
    ASSERT_EQ("", good.error);
    ASSERT_EQ(3u, good.commands.size());
    EXPECT_EQ(4, good.commands[1].line);
    EXPECT_EQ(5, good.commands[2].line) << "the last line needs no newline";
    const ScriptResult late = parseScript("device absent\nwait 1\n\ndevice absent\n", "s");
    EXPECT_EQ("s:4: device absent: only before any other command", late.error);
    EXPECT_TRUE(late.commands.empty());
    EXPECT_EQ("s:2: unknown command 'x'", parseScript("wait 1\nx\n", "s").error);
}

Record at(int64_t t, RecordBody body) {
    return Record{t, std::move(body)};
}

TEST(TextTraceTest, ShowsEachRecordAsPeopleReadIt) {
    CallbackRecord timeout{"updateTimeout", 0, {"192.168.43.2", 80}, {"8.8.8.8", 53}, 6, false};
    ReplyRecord stats{"getForwardedStats", true, "", true, 1, 2};
    const Bytes enable = {0x54, 0x24, 2, 0, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    Bytes event(16, 0);
    event[0] = 0x54, event[1] = 0x24, event[2] = 7;
    const std::pair<RecordBody, std::string> cases[] = {
            {RegisterRecord{"a@1.0::I", "default"}, "register          a@1.0::I as \"default\""},
            {LogRecord{6, "TetherOffload", "created\tthread\x1b\n", "HandleEvent"},
             "[HandleEvent]     E TetherOffload: created\tthread\\x1b"},
            {LogRecord{4, "T", "wan\nif0 \n", "main"},
             "[main]            I T: wan\n   1.234567 [main]            I T: if0 "},
            {OpenRecord{"/dev/vexa", -1, ENOENT}, "open              /dev/vexa -> ENOENT"},
            {IoctlRecord{3, 0, enable, -1, EIO},
             "ioctl             fd 3 req 0 ENABLE app=ALL len=0 -> -1 EIO  "
             "54240200ff0000000000000000000000"},
            {ReadRecord{16, event, 0},
             "read              16 bytes WARNING_REACHED app=0 msg=0 len=0  "
             "54240700000000000000000000000000"},
            {ReadRecord{-1, {}, 4000}, "read              -1 errno 4000"},
            {AgentRecord{"plexd bridge addif mdbr0 rndis0", false},
             "agent             \"plexd bridge addif mdbr0 rndis0\" failed in transport"},
            {timeout,
             "callback          updateTimeout(src 192.168.43.2:80 dst 8.8.8.8:53 proto TCP) "
             "failed in transport"},
            {CallRecord{12, "addDownstream", {"mdbr0", "a b", ""}},
             "call              --> 12: addDownstream mdbr0 \"a b\" \"\""},
            {ReplyRecord{"addDownstream", true, "Successful\n", false, 0, 0},
             "reply             <-- 12: addDownstream true \"Successful\\n\""},
            {stats, "reply             <-- 12: getForwardedStats rx=1 tx=2"},
            {ExitRecord{0}, "exit              status 0"},
            {DumpRecord{"Hal\n  a: \"\"\n"},
             "dump              Hal\n                                a: \"\""},
    };
    TextTrace trace(false);
    for (const auto& [body, text] : cases) {
        EXPECT_EQ("   1.234567 " + text, trace.format(at(1234567, body)));
    }
    EXPECT_EQ("", trace.format(at(0, ErrorRecord{3, "oops"}))) << "the console shows it";
    const std::string coloured = TextTrace(true).format(at(0, LogRecord{6, "T", "x", "main"}));
    EXPECT_NE(std::string::npos, coloured.find("\033[31mE T: x\033[0m")) << coloured;
}

LogRecord logAt(int prio, const std::string& msg, int64_t wallSec, int32_t wallNsec) {
    LogRecord log{prio, "TetherOffload", msg, "HandleEvent"};
    log.wallSec = wallSec;
    log.wallNsec = wallNsec;
    log.pid = 123;
    log.tid = 4567;
    return log;
}

TEST(LogcatTraceTest, ShowsOnlyLogLinesOneOutputLineForEachLineOfAMessage) {
    setenv("TZ", "UTC", 1);
    tzset();
    LogcatTrace trace;
    const std::string head = "11-14 22:13:20.005   123  4567 ";
    EXPECT_EQ(
            head + "I TetherOffload:  recv VEXA_STARTED msg from MD",
            trace.format(at(0, logAt(4, " recv VEXA_STARTED msg from MD\n", 1700000000, 5000000))));
    EXPECT_EQ(head + "E TetherOffload: wan\n" + head + "E TetherOffload: if0 ",
              trace.format(at(0, logAt(6, "wan\nif0 ", 1700000000, 5999999))));
    EXPECT_EQ(head + "W TetherOffload: ", trace.format(at(0, logAt(5, "", 1700000000, 5000000))));
    EXPECT_EQ("", trace.format(at(0, ExitRecord{0})));
    EXPECT_EQ("", trace.format(at(0, CallRecord{3, "stopOffload", {}})));
}

TEST(HexTest, ARunOfZerosAtTheEndIsShortened) {
    Bytes stats(256, 0);
    stats[0] = 0x54;
    EXPECT_EQ("54000000000000000000000000000000...+240 zero bytes", toShortHex(stats));
    EXPECT_EQ("5400000000000000", toShortHex(Bytes{0x54, 0, 0, 0, 0, 0, 0, 0}));
}

// Lines as typed; "^C" stands for a line abandoned by Ctrl-C.
class ScriptedLines : public LineReader {
public:
    explicit ScriptedLines(std::deque<std::string> lines) : mLines(std::move(lines)) {}
    Input readLine(std::string* line) override {
        if (mLines.empty()) return Input::kEnd;
        *line = mLines.front();
        mLines.pop_front();
        return *line == "^C" ? Input::kInterrupted : Input::kLine;
    }
    std::deque<std::string> mLines;
};

std::string contents(FILE* f) {
    std::string out(4096, '\0');
    rewind(f);
    out.resize(fread(&out[0], 1, out.size(), f));
    fclose(f);
    return out;
}

TEST(ConsoleTest, ReportsBadLinesAndGoesOnUntilQuit) {
    const size_t before = hosttest::Recorded::instance().of<ErrorRecord>().size();
    FILE* out = tmpfile();
    FILE* err = tmpfile();
    ScriptedLines lines(
            {"# comment", "^C", "launch", "help", "device absent", "wait 0", "quit", "wait 0"});
    Console(&lines, out, err).run();
    EXPECT_EQ(1u, lines.mLines.size()) << "read on after quit";
    EXPECT_EQ(std::string("Type help for the commands; quit or Ctrl-D ends the session.\n") +
                      helpText(),
              contents(out));
    EXPECT_EQ(
            "<stdin>:2: unknown command 'launch'\n"
            "<stdin>:4: device absent: only at the start of a script\n",
            contents(err))
            << "an abandoned line has no number";
    const std::vector<ErrorRecord> errors = hosttest::Recorded::instance().of<ErrorRecord>();
    ASSERT_EQ(before + 2, errors.size());
    EXPECT_EQ(4, errors.back().line);
    EXPECT_EQ("device absent: only at the start of a script", errors.back().msg);
}

}  // namespace
}  // namespace hostrunner
