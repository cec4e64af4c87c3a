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

#include <errno.h>
#include <gtest/gtest.h>

#include "EventRecords.h"
#include "ScenarioParser.h"
#include "VexaDecoder.h"

namespace hostrunner {
namespace {

template <typename T>
T parseAs(const std::string& line, Source source = Source::kScript) {
    LineResult r = parseLine(line, 1, source);
    EXPECT_EQ(r.error, "") << line;
    EXPECT_FALSE(r.blank) << line;
    const T* body = std::get_if<T>(&r.command.body);
    EXPECT_NE(body, nullptr) << line;
    return body ? *body : T{};
}

TEST(ScenarioParserTest, KeepsNameAndUnquotedArgumentsForTheTrace) {
    LineResult r =
            parseLine("setUpstreamParameters wanif0 \"10.0.0.2\" \"\" fe80::1", 7, Source::kScript);
    ASSERT_EQ(r.error, "");
    EXPECT_EQ(r.command.line, 7);
    EXPECT_EQ(r.command.name, "setUpstreamParameters");
    EXPECT_EQ(r.command.args, (std::vector<std::string>{"wanif0", "10.0.0.2", "", "fe80::1"}));
    auto cmd = std::get<SetUpstreamParameters>(r.command.body);
    EXPECT_EQ(cmd.iface, "wanif0");
    EXPECT_EQ(cmd.v4Addr, "10.0.0.2");
    EXPECT_EQ(cmd.v4Gw, "");
    EXPECT_EQ(cmd.v6Gws, std::vector<std::string>{"fe80::1"});
}

// The examples run every command; these are the readings that the traces do not show.
TEST(ScenarioParserTest, ReadsKeywordsAndNumbers) {
    auto handles = parseAs<SetHandles>("setHandles 2 none");
    EXPECT_EQ(handles.fds1, 2);
    EXPECT_EQ(handles.fds2, SetHandles::kNoHandle);
    EXPECT_EQ(parseAs<InitOffload>("initOffload 1.0").callback, InitOffload::Callback::k1_0);
    EXPECT_EQ(parseAs<InitOffload>("initOffload null").callback, InitOffload::Callback::kNull);
    EXPECT_TRUE(parseAs<SetLocalPrefixes>("setLocalPrefixes").prefixes.empty());
    EXPECT_EQ(parseAs<SetDataLimit>("setDataLimit wanif0 0xffffffffffffffff").limit, UINT64_MAX);
    auto both = parseAs<SetDataWarningAndLimit>("setDataWarningAndLimit wanif0 100 200");
    EXPECT_EQ(both.warning, 100u);
    EXPECT_EQ(both.limit, 200u);
    EXPECT_EQ(parseAs<Agent>("agent failing").mode, Agent::Mode::kFailing);
    EXPECT_FALSE(parseAs<FrameworkState>("framework dead").alive);
    EXPECT_TRUE(parseAs<Proc>("proc udp absent").absent);
    auto quoted = parseAs<Proc>("proc udp \"absent\"");
    EXPECT_FALSE(quoted.absent);
    EXPECT_EQ(quoted.content, "absent");
    EXPECT_EQ(parseAs<Wait>("wait 0x10").millis, 16u);
    parseAs<Help>("help", Source::kConsole);
    parseAs<Quit>("quit", Source::kConsole);
}

TEST(ScenarioParserTest, ReadsModemSettings) {
    EXPECT_EQ(parseAs<ModemReadFail>("modem readfail EIO").errnum, EIO);
    EXPECT_EQ(parseAs<ModemReadFail>("modem readfail 9").errnum, 9);
    EXPECT_EQ(parseAs<ModemIoctl>("modem ioctl ok").errnum, 0);
    EXPECT_EQ(parseAs<ModemIoctl>("modem ioctl fail EBADF").errnum, EBADF);
    auto stats = parseAs<ModemStats>("modem stats 1000 0x20");
    EXPECT_EQ(stats.rx, 1000u);
    EXPECT_EQ(stats.tx, 32u);
    EXPECT_EQ(stats.dataLen, 128u);
    EXPECT_EQ(parseAs<ModemStats>("modem stats 1 2 len=120").dataLen, 120u);
}

TEST(ScenarioParserTest, BuildsEventRecords) {
    struct Case {
        std::string line;
        std::string hex;
        size_t readSize;
    };
    const Case cases[] = {
            {"modem event 1", "54240100000000000000000000000000", 16},
            {"modem event STARTED", "54240100000000000000000000000000", 16},
            {"modem event VEXA_WARNING_REACHED", "54240700000000000000000000000000", 16},
            {"modem event 9 app=1 msg=0x102 mcode=0", "00000900010000000201000000000000", 16},
            {"modem event 2 payload=a0b1", "54240200000000000000000002000000a0b1", 18},
            {"modem event 2 payload=a0b1 len=300 read=272", "5424020000000000000000002c010000a0b1",
             272},
            {"modem event 1 read=10", "54240100000000000000000000000000", 10},
    };
    for (const Case& c : cases) {
        auto event = parseAs<ModemEvent>(c.line);
        EXPECT_EQ(toHex(event.record), c.hex) << c.line;
        EXPECT_EQ(event.readSize, c.readSize) << c.line;
    }
}

TEST(ScenarioParserTest, BuildsConnectionUpdates) {
    auto event = parseAs<ModemEvent>(
            "modem conn ip0=192.168.43.2 port0=0x50 ip1=8.8.8.8 port1=53 ip2=10.0.0.1 port2=80 "
            "proto=17 dst_nat=1");
    ASSERT_EQ(event.record.size(), 16u + 28u);
    EXPECT_EQ(event.readSize, 44u);
    EXPECT_EQ(toHex(event.record),
              "5424060000000000000000001c000000"  // header: status 6, data_len 28
              "c0a82b02"
              "08080808"
              "0a000001"
              "5000"
              "3500"
              "5000"
              "11"
              "0000000000"
              "01"
              "000000");
    auto empty = parseAs<ModemEvent>("modem conn len=27");
    EXPECT_EQ(toHex(empty.record).substr(0, 32), "5424060000000000000000001b000000");
    EXPECT_EQ(empty.record.size(), 44u);
}

TEST(ScenarioParserTest, SaysWhatIsWrong) {
    struct Case {
        std::string line;
        std::string error;
    };
    const Case cases[] = {
            {"launch", "unknown command 'launch'"},
            {"\"stopOffload\"", "unknown command 'stopOffload'"},
            {"stopOffload now", "stopOffload: expected 0 arguments, got 1"},
            {"setHandles 1", "setHandles: expected 2 arguments, got 1"},
            {"setHandles 1 3", "setHandles: number 3 out of range (at most 2)"},
            {"setHandles x 1", "setHandles: malformed number 'x'"},
            {"initOffload 1.2", "initOffload: expected 1.0, 1.1 or null, got '1.2'"},
            {"setDataLimit wanif0 12kB", "setDataLimit: malformed number '12kB'"},
            {"setDataLimit wanif0 18446744073709551616",
             "setDataLimit: malformed number '18446744073709551616'"},
            {"setDataWarningAndLimit wanif0 1",
             "setDataWarningAndLimit: expected 3 arguments, got 2"},
            {"setUpstreamParameters wanif0 1.2.3.4",
             "setUpstreamParameters: expected at least 3 arguments, got 2"},
            {"addDownstream mdbr0", "addDownstream: expected 2 arguments, got 1"},
            {"modem", "modem: expected event, conn, readfail, stats or ioctl"},
            {"modem reboot", "modem: expected event, conn, readfail, stats or ioctl, got 'reboot'"},
            {"modem event", "modem event: expected 1 to 7 arguments, got 0"},
            {"modem event 70000", "modem event: number 70000 out of range (at most 65535)"},
            {"modem event 1 payload=abc", "modem event: malformed hex string 'abc'"},
            {"modem event 1 colour=red", "modem event: unknown option 'colour=red'"},
            {"modem event 1 len", "modem event: unknown option 'len'"},
            {"modem event 1 len=1 len=2", "modem event: option len= given twice"},
            {"modem event 1 read=273", "modem event: number 273 out of range (at most 272)"},
            {"modem event 1 payload=" + std::string(514, '0'),
             "modem event: payload longer than 256 bytes"},
            {"modem conn ip0=1.2.3", "modem conn: malformed address '1.2.3'"},
            {"modem conn port0=65536", "modem conn: number 65536 out of range (at most 65535)"},
            {"modem conn proto=256", "modem conn: number 256 out of range (at most 255)"},
            {"modem conn read=16", "modem conn: unknown option 'read=16'"},
            {"modem readfail", "modem readfail: expected 1 argument, got 0"},
            {"modem readfail EWHAT", "modem readfail: malformed errno 'EWHAT'"},
            {"modem ioctl fail", "modem ioctl: expected 2 arguments, got 1"},
            {"modem ioctl ok EIO", "modem ioctl: expected 1 argument, got 2"},
            {"modem ioctl maybe", "modem ioctl: expected ok or fail, got 'maybe'"},
            {"modem stats 1", "modem stats: expected 2 to 3 arguments, got 1"},
            {"modem stats 1 2 rx=3", "modem stats: unknown option 'rx=3'"},
            {"agent down", "agent: expected up, absent or failing, got 'down'"},
            {"framework", "framework: expected 1 argument, got 0"},
            {"prop ro.build.type", "prop: expected 2 arguments, got 1"},
            {"prop \"\" x", "prop: empty property name"},
            {"proc icmp 5", "proc: expected tcp or udp, got 'icmp'"},
            {"stderr shut", "stderr: expected closed or open, got 'shut'"},
            {"wait soon", "wait: malformed number 'soon'"},
            {"device present", "device: expected absent, got 'present'"},
            {"help", "help: only in the console"},
            {"quit", "quit: only in the console"},
            {"prop a \"b", "unterminated quote"},
    };
    for (const Case& c : cases) {
        LineResult r = parseLine(c.line, 3, Source::kScript);
        EXPECT_FALSE(r.blank) << c.line;
        EXPECT_EQ(r.error, c.error) << c.line;
    }
}

TEST(ScenarioParserTest, ChecksAWholeScriptBeforeAnythingRuns) {
    ScriptResult good = parseScript(
            "# start without a device\n"
            "device absent\n"
            "\n"
            "initOffload 1.1   # comment\n"
            "stopOffload",
            "s.scenario");
    EXPECT_EQ(good.error, "");
    ASSERT_EQ(good.commands.size(), 3u);
    EXPECT_EQ(good.commands[1].line, 4);
    EXPECT_EQ(good.commands[2].line, 5);

    ScriptResult bad = parseScript("initOffload 1.1\n\nmodem event x\n", "s.scenario");
    EXPECT_EQ(bad.error, "s.scenario:3: modem event: malformed number 'x'");
    EXPECT_TRUE(bad.commands.empty());
}

TEST(ScenarioParserTest, TakesTheDeviceSettingOnlyAtTheStart) {
    EXPECT_EQ(parseScript("device absent\ndevice absent\nstopOffload\n", "<stdin>").error, "");
    EXPECT_EQ(parseScript("wait 1\ndevice absent\n", "<stdin>").error,
              "<stdin>:2: device absent: only before any other command");
}

}  // namespace
}  // namespace hostrunner
