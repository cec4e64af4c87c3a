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

// What tetheroffload-replay makes of the service's lines: the call and the arguments they tell,
// values chosen where they tell none (and said so), the world each step needs, the callback's
// version from later failures, and every line it cannot place kept as a comment at its place.
// Every scenario must read back as a script.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Replay.h"
#include "ScenarioParser.h"

namespace hostreplay {
namespace {

using Lines = std::vector<std::string>;

constexpr int kPid = 100;
constexpr int kEventThread = 101;
constexpr size_t kHeaderLines = 3;

// A threadtime log of the service; "@" before a message puts it on the event thread.
std::string serviceLog(const Lines& messages) {
    std::string log;
    for (const std::string& m : messages) {
        const bool event = !m.empty() && m[0] == '@';
        log += "11-23 13:35:40.622   " + std::to_string(kPid) + "   " +
               std::to_string(event ? kEventThread : kPid) +
               " I TetherOffload: " + (event ? m.substr(1) : m) + "\n";
    }
    return log;
}

// The scenario's lines after its header.
Lines replayed(const std::string& log) {
    LogInput input;
    EXPECT_TRUE(input.open(textSource(log), "test.log"));
    std::string scenario, message;
    EXPECT_EQ(kReplayed, replayLog(
                                 input, std::nullopt,
                                 [&](const std::string& text) { scenario += text; }, &message));
    EXPECT_EQ("", message);
    EXPECT_EQ("", hostrunner::parseScript(scenario, "replayed").error) << scenario;
    Lines out;
    size_t start = 0;
    for (size_t n = 0; start < scenario.size(); ++n) {
        size_t end = scenario.find('\n', start);
        if (n >= kHeaderLines) out.push_back(scenario.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

Lines replayed(const Lines& messages) {
    return replayed(serviceLog(messages));
}

const Lines kInit = {"initOffload ++", " registerTimeoutCallback ",
                     "initOffload(): create event thread : mCbEvent=0x5620  ",
                     "sendCmd2MD (app: 255 cmd: 0) ok ", "initOffload() --"};

Lines after(const Lines& first, const Lines& then) {
    Lines all = first;
    all.insert(all.end(), then.begin(), then.end());
    return all;
}

TEST(ReplayCallsTest, TheIpv6GatewaysFromTheChecksThatRan) {
    const Lines log =
            after(kInit, {"setUpstreamParameters iface:wlan0  v4Addr:10.0.0.2  v4Gw:",
                          "checkInterface in: wlan0",
                          "verifyIpAddress in.length() == 0",
                          "verifyIpAddress in.size() == 0",
                          "setUpstreamParameters up-if:wlan0; down-if(,)",
                          "setUpstreamParameters iface:wanif0  v4Addr:10.0.0.2  v4Gw:10.0.0.1",
                          "checkInterface in: wanif0",
                          "setUpstreamParameters up-if:wanif0; down-if(,)",
                          "setUpstreamParameters iface:wanif0  v4Addr:  v4Gw:",
                          "checkInterface in: wanif0",
                          "verifyIpAddress in.length() == 0",
                          "verifyIpAddress in.length() == 0",
                          "verifyIpAddress in.length() == 0",
                          "setUpstreamParameters() Invalid v6Gws",
                          "setUpstreamParameters up-if:wanif0; down-if(,)",
                          "setUpstreamParameters iface:wanif0  v4Addr:  v4Gw:",
                          "checkInterface in: wanif0",
                          "verifyIpAddress in.length() == 0",
                          "verifyIpAddress in.length() == 0",
                          "verifyIpAddress Invalid Ip address",
                          "setUpstreamParameters() Invalid v6Gws",
                          "setUpstreamParameters up-if:wanif0; down-if(,)",
                          "setUpstreamParameters iface:eth0  v4Addr:  v4Gw:",
                          "checkInterface in: eth0",
                          "setUpstreamParameters() Invalid interface",
                          "setUpstreamParameters up-if:eth0; down-if(,)",
                          "setUpstreamParameters iface:  v4Addr:  v4Gw:",
                          "setUpstreamParameters() All of inputs are empty",
                          "setUpstreamParameters up-if:; down-if(,)"});
    EXPECT_EQ((Lines{
                      "initOffload 1.1  # the callback's version is not logged",
                      "setUpstreamParameters wlan0 10.0.0.2 \"\"",
                      "setUpstreamParameters wanif0 10.0.0.2 10.0.0.1 fe80::1  # the IPv6 "
                      "gateways are not logged",
                      "setUpstreamParameters wanif0 \"\" \"\" \"\"  # gateways before the failing "
                      "one are not logged",
                      "setUpstreamParameters wanif0 \"\" \"\" 192.0.2.1  # gateways before the "
                      "failing one are not logged; the failing gateway is not logged; an IPv4 "
                      "text fails alike",
                      "setUpstreamParameters eth0 \"\" \"\"  # the IPv6 gateways are not logged "
                      "(never checked)",
                      "setUpstreamParameters \"\" \"\" \"\"",
              }),
              replayed(log));
}

TEST(ReplayCallsTest, HandlesPrefixesAndLimitsFromWhatTheLinesTell) {
    const Lines log =
            after({"setHandles(), fd1 is empty", "setHandles(), fd2 is empty", "setHandles() ",
                   "setLocalPrefixes() ", "setLocalPrefixes device has not been initialized () ",
                   "getForwardedStats() device has not been initialized ()"},
                  after(kInit, {"setLocalPrefixes() ",
                                "setLocalPrefixes prefixes.size() < 0",
                                "setLocalPrefixes() ",
                                "setLocalPrefixes() ",
                                "isValidMask Invalid input: mask = 129, fam = 1",
                                "checkPrefix Invalid mask",
                                "setLocalPrefixes Invalid prefixes ",
                                "setLocalPrefixes() ",
                                "findAddrAndMask Invalid input: /24",
                                "checkPrefix Faied to find address and mask",
                                "setLocalPrefixes Invalid prefixes ",
                                "setDataLimit() upstream:wan if0",
                                "setDataLimit (app: 255 ) ok ",
                                "setDataWarningAndLimit() upstream:",
                                "setDataWarningAndLimit() interface name is empty",
                                "addDownstream iface:mdbr0 prefix:",
                                "checkInterface in: mdbr0",
                                "checkPrefix string in is empty",
                                "addDownstream Invalid prefix",
                                "addDownstream(down-if:mdbr0; up-if:)"}));
    EXPECT_EQ((Lines{
                      "setHandles 0 1  # fd1 held 0, 2 or no descriptors; the log does not tell "
                      "which",
                      "setHandles 1 0  # fd2 held 0, 2 or no descriptors; the log does not tell "
                      "which",
                      "setHandles 1 1",
                      "setLocalPrefixes  # the prefixes are not logged",
                      "getForwardedStats wanif0  # the upstream is not logged before initOffload",
                      "initOffload 1.1  # the callback's version is not logged",
                      "setLocalPrefixes",
                      "setLocalPrefixes 192.168.42.0/24  # the prefixes are not logged",
                      "setLocalPrefixes fe80::/129  # the address of the failing prefix is not "
                      "logged; prefixes before the failing one are not logged",
                      "setLocalPrefixes /24  # prefixes before the failing one are not logged",
                      "setDataLimit \"wan if0\" 0  # the limit is not logged",
                      "setDataWarningAndLimit \"\" 0 0  # the warning and the limit are not logged",
                      "addDownstream mdbr0 \"\"",
              }),
              replayed(log));
}

TEST(ReplayCallsTest, ACaptureFromTheMiddleOfASessionBeginsWithItsInitOffload) {
    const Lines started = {"@handleEvent: readsize 16 ",
                           "@ parsingEvent : recv a msg from MD: status:1 ,msg: 0",
                           "@ recv VEXA_STARTED msg from MD"};
    const Lines stats = {"getForwardedStats() upstream:wanif0", "getDataUsage (app: 255 ) ok "};
    EXPECT_EQ((Lines{"initOffload 1.1  # the log begins after the service was initialised; the "
                     "callback's version is not logged",
                     "modem event STARTED", "getForwardedStats wanif0"}),
              replayed(after(started, stats)));
    // Refused before initOffload: nothing to open.
    const Lines refused = {"@handleEvent: readsize 16 ",
                           "@ parsingEvent, not register Timeout Callback (type = 1) "};
    EXPECT_EQ((Lines{"modem event STARTED", "getForwardedStats wanif0"}),
              replayed(after(refused, stats)));
}

TEST(ReplayWorldTest, SetsTheWorldBeforeTheStepThatMetIt) {
    const Lines log = after(kInit, {"getForwardedStats() upstream:wanif0",
                                    "getDataUsage (app: 255 )  fail errno: 19 ",
                                    "getForwardedStats() upstream:wanif0",
                                    "getDataUsage : response length is not right ",
                                    "getForwardedStats() upstream:wanif0",
                                    "getDataUsage (app: 255 ) ok ",
                                    "getForwardedStats() upstream:wanif0",
                                    "getDataUsage (app: 255 ) ok ",
                                    "addDownstream iface:ap0 prefix:192.168.43.0/24",
                                    "checkInterface in: ap0",
                                    "activeVexa (app: 1 ) ok ",
                                    "open proc (tcp) item fail err: 13",
                                    " udp timeout atoi fail ,ret = 0",
                                    "sendTimeoutValue: timeout tcp 432000 ,udp 180 ",
                                    "sendTimeoutValue (app: 255 )  fail errno: 5 ",
                                    "active wifi tehtering offload",
                                    "addDownstream(down-if:ap0; up-if:wanif0)",
                                    "removeDownstream iface:mdbr0 prefix:192.168.42.0/24",
                                    "checkInterface in: mdbr0",
                                    "PlexdCmd runCmd failed: DEAD_OBJECT",
                                    "bridge clearMac fail",
                                    "PlexdCmd fprintf stderr failed",
                                    "bridge delSlave fail",
                                    "sendCmd2MD (app: 0 cmd: 3) ok ",
                                    "removeDownstream() de-active usb vexa",
                                    "removeDownstream(donw-if: mdbr0; up-if: wanif0)",
                                    "removeDownstream iface:mdbr0 prefix:192.168.42.0/24",
                                    "checkInterface in: mdbr0",
                                    "bridge clearMac",
                                    "bridge delSlave wanif-lan",
                                    "sendCmd2MD: fail to open vexa device ",
                                    "removeDownstream() de-active usb vexa",
                                    "removeDownstream(donw-if: mdbr0; up-if: wanif0)"});
    EXPECT_EQ((Lines{
                      "device absent",
                      "initOffload 1.1  # the callback's version is not logged",
                      "modem ioctl fail ENODEV",
                      "getForwardedStats wanif0",
                      "modem ioctl ok",
                      "modem stats 0 0 len=0  # the answer's data_len is not logged, only that it "
                      "was not 128",
                      "getForwardedStats wanif0",
                      "modem stats 0 0  # the forwarded byte counts are not logged",
                      "getForwardedStats wanif0",
                      "getForwardedStats wanif0",
                      "proc tcp absent  # the log's errno 13 becomes ENOENT here",
                      "proc udp \"0\\n\"",
                      "addDownstream ap0 192.168.43.0/24  # the log also needs `modem ioctl fail "
                      "EIO` within this step, which a scenario cannot change mid-step",
                      "agent failing",
                      "removeDownstream mdbr0 192.168.42.0/24  # the log also needs `stderr "
                      "closed` within this step, which a scenario cannot change mid-step",
                      "agent up",
                      "removeDownstream mdbr0 192.168.42.0/24",
              }),
              replayed(log));
}

TEST(ReplayEventsTest, RecordsFromWhatThePassLoggedAndTheWorldItMet) {
    const Lines log = after(
            kInit,
            {"@handleEvent: readsize 44 ", "@ parsingEvent : recv a msg from MD: status:6 ,msg: 0",
             "@recv VEXA_CONNECT_UPDATE msg from MD", "@TimeoutUpdate : addr =8.8.8.8 ",
             "@TimeoutUpdate : addr =10.0.0.1 ",
             "@dst nat is  set  src (port)=0x8080808 (0x35) dst =0x100000a(0x50)  ",
             "@updateTimeout to framework failed: DEAD_OBJECT", "@handleEvent: readsize 48 ",
             "@ parsingEvent : recv a msg from MD: status:6 ,msg: -1",
             "@recv VEXA_CONNECT_UPDATE msg from MD", "@handleEvent: readsize 16 ",
             "@ parsingEvent, mcode is not right  (type = 7) ", "@handleEvent: readsize 300 ",
             "@ parsingEvent : recv a msg from MD: status:70000 ,msg: 0",
             "@recv unknown msg from MD (type = 70000)", "@readFD fail: fd=3, err=-1 ",
             "@handleEvent: readsize -1 ", "@ parsingEvent, mcode is not right  (type = 0) ",
             "@handleEvent: readsize 20 "});
    EXPECT_EQ((Lines{
                      "initOffload 1.1  # the callback's version is not logged",
                      "framework dead",
                      "prop ro.build.type userdebug  # or eng: the log shows a debug build",
                      "modem conn dst_nat=1 ip1=8.8.8.8 port1=53 ip2=10.0.0.1 port2=80  # ip0, "
                      "port0 and the protocol are not logged",
                      "framework alive",
                      "prop ro.build.type user",
                      "modem event CONNECT_UPDATE msg=4294967295 "
                      "payload=00000000000000000000000000000000000000000000000000000000 read=48  # "
                      "a user build logs no address, port or protocol",
                      "modem event WARNING_REACHED mcode=0",
                      "modem event 0 read=272  # the logged size 300 is more than a read "
                      "returns; the logged status 70000 cannot be sent; the payload is not logged",
                      "modem readfail EIO  # the errno is not logged",
                      "# log line 24: how this read ended is not in the log",
              }),
              replayed(log));
}

TEST(ReplayEventsTest, TheCallbackVersionFromTheFailureLinesOfItsSession) {
    const Lines started = {"@handleEvent: readsize 16 ",
                           "@ parsingEvent : recv a msg from MD: status:1 ,msg: 0",
                           "@ recv VEXA_STARTED msg from MD"};
    const Lines stop = {"stopOffload ", " unregisterTimeoutCallback ",
                        "sendCmd2MD (app: 255 cmd: 1) ok ", "stopOffload() "};
    Lines log = after(kInit, started);
    log.push_back("@onEvent to framework failed: DEAD_OBJECT");
    log = after(after(log, stop), after(kInit, started));
    log.push_back("@onEvent_1_1 to framework failed: DEAD_OBJECT");
    log = after(after(log, stop), kInit);
    EXPECT_EQ((Lines{"initOffload 1.0", "framework dead", "modem event STARTED", "stopOffload",
                     "framework alive", "initOffload 1.1", "framework dead", "modem event STARTED",
                     "stopOffload", "framework alive",
                     "initOffload 1.1  # the callback's version is not logged"}),
              replayed(log));
}

TEST(ReplayNotesTest, KeepsEveryLineItCannotPlaceAtItsPlace) {
    const std::string log =
            "garbage before the log\n" +
            serviceLog({"checkInterface in: wanif0", "open dev ++ g-fd =-1", "open /dev/vexa fail ",
                        "WARNING: SIGPIPE not blocked", "@handleEvent: fail to open vexa device "}) +
            "11-23 13:35:40.622   100   100 I TetherOff\n" +
            serviceLog({"stopOffload ", "a line of a later version",
                        "stopOffload() device has not been initialized () ",
                        "@recv VEXA_STARTED msg from MD", "initOffload ++",
                        "initOffload()warning: initialized again ", "initOffload() --",
                        "No de-active vexa", "tether offload exiting"});
    EXPECT_EQ((Lines{
                      "device absent",
                      "# log line 1: not a log line: \"garbage before the log\"",
                      "# log line 2: outside any call: I \"checkInterface in: wanif0\"",
                      "# log line 5: cannot be made to happen here: I \"WARNING: SIGPIPE not "
                      "blocked\"",
                      "# log line 7: not a log line: \"11-23 13:35:40.622   100   100 I "
                      "TetherOff\"",
                      "stopOffload",
                      "# log line 9: not a line of this service's: I \"a line of a later "
                      "version\"",
                      "# log line 11: part of an event whose read is not in the log: I \"recv "
                      "VEXA_STARTED msg from MD\"",
                      "initOffload null",
                      "# log line 15: outside any call: I \"No de-active vexa\"",
              }),
              replayed(log));
}

TEST(ReplayNotesTest, ALineCutShortRebuildsItsCallOrNamesTheCallsItMayHaveBegun) {
    Lines got = replayed(after(kInit, {"setDat", "setDataLimit (app: 255 ) ok ", "set",
                                       "checkInterface in: x", "@handleEvent: reads",
                                       "@ parsingEvent : recv a msg from MD: status:1 ,msg: 0"}));
    got.erase(got.begin());  // initOffload
    EXPECT_EQ(
            (Lines{
                    "setDataLimit wanif0 0  # log line 6 was cut short: \"setDat\"; the upstream "
                    "is not in the log; the limit is not logged",
                    "# log line 8: cut short: I \"set\": the call it began (setHandles, "
                    "setLocalPrefixes, setDataLimit, setDataWarningAndLimit, "
                    "setUpstreamParameters) "
                    "is lost, with the line after it; the steps after it may take another path, "
                    "as the service's state may differ",
                    "# log line 10: cut short, its rest lost (it began \"handleEvent: readsize %d "
                    "\"); the lines after it may show another path: I \"handleEvent: reads\"",
                    "# log line 11: part of an event whose read is not in the log: I \" "
                    "parsingEvent : recv a msg from MD: status:1 ,msg: 0\"",
            }),
            got);
}

}  // namespace
}  // namespace hostreplay
