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

// The pieces of tetheroffload-replay below the scenario: printf formats matched against logged
// text, logcat lines in both formats, the service's messages told apart, the selection of one
// process's lines, and UTF-16 read. (Messages that logcat split over several lines are put back
// together in the round trip of tests/scenarios/replay/names.scenario.)

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "FormatPattern.h"
#include "LogInput.h"
#include "LogcatLine.h"
#include "ServiceLog.h"
#include "ServiceMessages.h"

namespace hostreplay {
namespace {

using Fields = std::optional<std::vector<std::string>>;

TEST(FormatPatternTest, GivesTheValuesOfWhatTheFormatWrote) {
    struct Case {
        const char* format;
        std::string text;
        Fields fields;
    };
    const std::string longText(FormatPattern::kMaxText + 1, 'a');
    const Case cases[] = {
            {"checkInterface in: %s", "checkInterface in: wanif0", Fields({"wanif0"})},
            {"checkInterface in: %s", "checkInterface in: wan\nif0", Fields({"wan\nif0"})},
            {"checkInterface in: %s", "checkInterface in: ", Fields({""})},
            // A capture tool lost the blank at the end.
            {"checkInterface in: %s", "checkInterface in:", Fields({""})},
            {"setUpstreamParameters iface:%s  v4Addr:%s  v4Gw:%s",
             "setUpstreamParameters iface:  v4Addr:10.0.0.2  v4Gw:", Fields({"", "10.0.0.2", ""})},
            {"%s() Invalid %s", "setUpstreamParameters() Invalid v4Gw",
             Fields({"setUpstreamParameters", "v4Gw"})},
            {"open dev ++ g-fd =%d", "open dev ++ g-fd =-1", Fields({"-1"})},
            {"open dev ++ g-fd =%d", "open dev ++ g-fd =x", std::nullopt},
            {"handleEvent: readsize %d ", "handleEvent: readsize ", std::nullopt},
            {"isValidMask Invalid input: mask = %d, fam = %d",
             "isValidMask Invalid input: mask = 129, fam = 1", Fields({"129", "1"})},
            {"dst nat is not set  src (port)=0x%x (0x%x) dst =0x%x(0x%x)  ",
             "dst nat is not set  src (port)=0x22aa8c0 (0x9c40) dst =0x8080808(0x35)  ",
             Fields({"22aa8c0", "9c40", "8080808", "35"})},
            {" GetInstance p=%p", " GetInstance p=0x5620", Fields({"0x5620"})},
            {" GetInstance p=%p", "GetInstance p=0x5620", Fields({"0x5620"})},
            {"stopOffload ", "stopOffload", Fields(std::vector<std::string>{})},
            {"No de-active vexa", "No de-active vexa!", std::nullopt},
            {"%s (app: %d ) ok ", "activeVexa (app: 0 ) ok ", Fields({"activeVexa", "0"})},
            {"%s", longText, std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.fields, FormatPattern(c.format).match(c.text)) << c.text;
}

TEST(LogcatLineTest, ReadsThreadtimeAndBriefAndNothingElse) {
    auto line =
            parseLogcatLine("11-23 13:35:40.622 16576 16578 I TetherOffload:  GetInstance p=0x1");
    ASSERT_TRUE(line);
    EXPECT_EQ(16576, line->pid);
    EXPECT_EQ(16578, line->tid);
    EXPECT_EQ('I', line->level);
    EXPECT_EQ("TetherOffload", line->tag);
    EXPECT_EQ(" GetInstance p=0x1", line->message);
    EXPECT_EQ("11-23 13:35:40.622", line->stamp);

    line = parseLogcatLine("2026-11-23 13:35:40.622123   761   800 E vold    : a: b");
    ASSERT_TRUE(line);
    EXPECT_EQ("vold", line->tag);
    EXPECT_EQ("a: b", line->message);
    line = parseLogcatLine("11-23 13:35:40.622   761   761 F android.hardware.x@1.0::Y: abort");
    ASSERT_TRUE(line);
    EXPECT_EQ("android.hardware.x@1.0::Y", line->tag);
    line = parseLogcatLine("11-23 13:35:40.622   761   761 I TetherOffload:");
    ASSERT_TRUE(line);
    EXPECT_EQ("", line->message);

    line = parseLogcatLine("W/TetherOffload(  761): WARNING: SIGPIPE not blocked");
    ASSERT_TRUE(line);
    EXPECT_EQ(761, line->pid);
    EXPECT_EQ(-1, line->tid);
    EXPECT_EQ("TetherOffload", line->tag);
    EXPECT_EQ("WARNING: SIGPIPE not blocked", line->message);
    line = parseLogcatLine("I/vold    (  761): (x): y");
    ASSERT_TRUE(line);
    EXPECT_EQ("vold", line->tag);
    EXPECT_EQ("(x): y", line->message);

    for (const char* bad :
         {"", "hello", "11-23 13:35:40.622 16576 16578 I TetherOff", "11-23 13:35:40 1 1 I T: m",
          "X/Tag( 1): m", "I/Tag(x): m", "--------- beginning of main"}) {
        EXPECT_FALSE(parseLogcatLine(bad)) << bad;
    }
    EXPECT_TRUE(isLogcatBanner("--------- beginning of crash"));
}

TEST(ServiceMessagesTest, TellsLinesThatLookAlikeApart) {
    struct Case {
        const char* text;
        Msg id;
        Context context;
    };
    const Case cases[] = {
            {"bridge addSlave fail", Msg::kBridgeStepFail, Context::kCall},
            {"bridge addSlave rndis0", Msg::kBridgeAdd, Context::kCall},
            {"addSlave sprintf cmd fail ", Msg::kBridgeFormatFail, Context::kCall},
            {"setLocalPrefixes Invalid prefixes ", Msg::kPrefixesInvalid, Context::kCall},
            {"addDownstream Invalid prefix", Msg::kInvalidPrefix, Context::kCall},
            {"addDownstream() Invalid interface", Msg::kInvalidArgument, Context::kCall},
            {"setLocalPrefixes device has not been initialized () ", Msg::kPrefixesNotInit,
             Context::kCall},
            {"stopOffload() device has not been initialized () ", Msg::kNotInitialised,
             Context::kCall},
            {"getForwardedStats() device has not been initialized ()", Msg::kNotInitialised,
             Context::kCallEntry},
            {"open /dev/vexa fail ", Msg::kOpenDevFail, Context::kStartup},
            {"open proc (tcp) item fail err: 2", Msg::kProcOpenFail, Context::kCall},
            {"sendCmd2MD: fail to open vexa device ", Msg::kNoDevice, Context::kCall},
            {"handleEvent: fail to open vexa device ", Msg::kNoDevice, Context::kStartup},
            {"get vendor.korvan.hardware.plexd@1.0::IPlexd service failed", Msg::kAgentMissing,
             Context::kCall},
            {"get tetherOffloadHal service failed(Out of memory)", Msg::kHalNotMade,
             Context::kStartup},
            {"setUpstreamParameters de-active usb vexa (up wlan0)", Msg::kUpstreamDeactivated,
             Context::kCall},
            {"recv unknown msg from MD (type = 9)", Msg::kDispatchedUnknown, Context::kEvent},
            {" recv VEXA_STARTED msg from MD", Msg::kDispatched, Context::kEvent},
            {"onEvent_1_1 to framework failed: DEAD_OBJECT", Msg::kCallbackFailed, Context::kEvent},
            {"handleEvent: readsize -1 ", Msg::kReadSize, Context::kEventStart},
            {"stopOffload ", Msg::kStopStart, Context::kCallEntry},
            {"stopOffload() ", Msg::kStopDone, Context::kCall},
    };
    for (const Case& c : cases) {
        std::optional<ServiceMessage> m = matchServiceMessage(c.text);
        ASSERT_TRUE(m) << c.text;
        EXPECT_EQ(static_cast<int>(c.id), static_cast<int>(m->id)) << c.text;
        EXPECT_EQ(static_cast<int>(c.context), static_cast<int>(contextOf(*m))) << c.text;
    }
    EXPECT_FALSE(matchServiceMessage("a line of a later version"));
    EXPECT_FALSE(canBeReplayed(*matchServiceMessage("WARNING: SIGPIPE not blocked")));
    EXPECT_TRUE(canBeReplayed(*matchServiceMessage("handleEvent: fail to open vexa device ")));
}

std::string at(int pid, int tid, const std::string& tag, const std::string& message) {
    return "11-23 13:35:40.622 " + std::to_string(pid) + " " + std::to_string(tid) + " I " + tag +
           ": " + message + "\n";
}

// What the reader keeps of a text, read as the tool reads it.
struct Kept : LineSink {
    std::vector<ServiceLine> lines;
    std::vector<Note> notes;
    LogCounts counts;
    void serviceLine(ServiceLine line) override { lines.push_back(std::move(line)); }
    void note(Note note) override { notes.push_back(std::move(note)); }
};

Kept read(const std::string& text, std::optional<int> pid = std::nullopt) {
    Kept kept;
    LogInput input;
    EXPECT_TRUE(input.open(textSource(text), "test.log")) << input.error();
    ServiceLogReader reader(pid, &kept);
    InputLine line;
    while (input.next(&line)) reader.take(line);
    EXPECT_EQ("", input.error());
    reader.finish();
    kept.counts = reader.counts();
    return kept;
}

TEST(ServiceLogTest, KeepsOneProcessOfTheTagAndCountsOrNotesTheRest) {
    const std::string input =
            "--------- beginning of main\n" + at(10, 10, "vold", "mounted") +
            at(20, 20, kServiceTag, "stopOffload ") + at(30, 30, kServiceTag, "stopOffload ") +
            "\r\n" + "not a log line\r\n" + at(20, 21, kServiceTag, "a later line") +
            at(20, 20, "chatty", "uid=1000(system) /vendor/bin/hw/x identical 3 lines") +
            at(30, 30, "chatty", "uid=1000(system) /vendor/bin/hw/x identical 2 lines");
    Kept first = read(input);
    EXPECT_EQ(20, first.counts.pid);
    ASSERT_EQ(2u, first.lines.size());
    EXPECT_EQ(3, first.lines[0].lineNo);
    EXPECT_TRUE(first.lines[0].message);
    EXPECT_EQ("a later line", first.lines[1].text);
    EXPECT_FALSE(first.lines[1].message);
    ASSERT_EQ(2u, first.notes.size());
    EXPECT_EQ(6, first.notes[0].lineNo);
    EXPECT_EQ("not a log line: \"not a log line\"", first.notes[0].text);
    // The chatty line of the process is placed; the other process's is another tag's.
    EXPECT_EQ(8, first.notes[1].lineNo);
    EXPECT_NE(std::string::npos, first.notes[1].text.find("identical 3 lines"))
            << first.notes[1].text;
    EXPECT_EQ(2u, first.counts.otherTagLines);
    EXPECT_EQ(1u, first.counts.banners);
    EXPECT_EQ((std::map<int, size_t>{{30, 1}}), first.counts.otherProcesses);

    Kept chosen = read(input, 30);
    EXPECT_EQ(30, chosen.counts.pid);
    ASSERT_EQ(1u, chosen.lines.size());
    EXPECT_EQ(4, chosen.lines[0].lineNo);
    EXPECT_EQ(0u, read(input, 99).lines.size());

    // However many processes log under the tag, only so many are listed; the rest are counted.
    std::string many = at(20, 20, kServiceTag, "stopOffload ");
    const size_t listed = hostreplay::LogCounts::kListedProcesses;
    for (size_t pid = 100; pid < 100 + listed + 5; ++pid) {
        many += at(static_cast<int>(pid), static_cast<int>(pid), kServiceTag, "stopOffload ");
    }
    const LogCounts crowd = read(many).counts;
    EXPECT_EQ(listed, crowd.otherProcesses.size());
    EXPECT_EQ(5u, crowd.unlistedProcessLines);
}

// The bug report's section and a line past the bound are with the command line's tests.
TEST(LogInputTest, ReadsUtf16WithOrWithoutAByteOrderMark) {
    const std::string text = at(20, 20, kServiceTag, "checkInterface in: wl\xc3\xa4n0");
    for (bool bigEndian : {false, true}) {
        for (bool mark : {false, true}) {
            std::string utf16 = mark ? (bigEndian ? "\xfe\xff" : "\xff\xfe") : "";
            for (char c : std::string(text.begin(), text.end() - 1)) {
                if (static_cast<unsigned char>(c) == 0xc3) continue;
                const char unit = static_cast<unsigned char>(c) == 0xa4 ? '\xe4' : c;
                utf16 += bigEndian ? std::string{'\0', unit} : std::string{unit, '\0'};
            }
            const Kept kept = read(utf16);
            ASSERT_EQ(1u, kept.lines.size()) << bigEndian << mark;
            EXPECT_EQ("checkInterface in: wl\xc3\xa4n0", kept.lines[0].text);
        }
    }
}

}  // namespace
}  // namespace hostreplay
