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

#include <nlohmann/json.hpp>

#include "JsonTrace.h"
#include "TextTrace.h"
#include "VexaDecoder.h"
#include "datapath/vexa_protocol.h"

namespace hostrunner {
namespace {

using namespace hostplatform;

Record at(int64_t t, RecordBody body) {
    return Record{t, std::move(body)};
}

std::vector<uint8_t> fromHex(const std::string& hex) {
    EXPECT_EQ(hex.size() % 2, 0u) << hex;
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        out.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return out;
}

TEST(JsonTraceTest, WritesExactlyTheFieldsOfEachKind) {
    CallbackRecord timeout;
    timeout.op = "updateTimeout";
    timeout.src = {"192.168.43.2", 80};
    timeout.dst = {"8.8.8.8", 53};
    timeout.proto = 17;
    CallbackRecord event;
    event.op = "onEvent_1_1";
    event.event = 6;
    event.ok = false;
    ReplyRecord stats;
    stats.op = "getForwardedStats";
    stats.isStats = true;
    stats.rx = 10;
    stats.tx = 20;
    ReplyRecord reply{"initOffload", true, "", false, 0, 0};

    struct Case {
        RecordBody body;
        std::string json;
    };
    const Case cases[] = {
            {ThreadpoolRecord{1, false},
             R"({"k":"threadpool","t":5,"max":1,"callerWillJoin":false})"},
            {RegisterRecord{"a@1.0::I", "default"},
             R"({"k":"register","t":5,"interface":"a@1.0::I","name":"default"})"},
            {LogRecord{4, "TetherOffload", "initOffload ++\n", "main"},
             R"({"k":"log","t":5,"prio":4,"tag":"TetherOffload","msg":"initOffload ++\n","thread":"main"})"},
            {OpenRecord{"/dev/vexa", 3, 0}, R"({"k":"open","t":5,"path":"/dev/vexa","fd":3})"},
            {OpenRecord{"/dev/vexa", -1, ENOENT},
             R"({"k":"open","t":5,"path":"/dev/vexa","errno":2})"},
            {IoctlRecord{3, 0, {0x54, 0x24, 0xab}, 0, 0},
             R"({"k":"ioctl","t":5,"fd":3,"req":0,"hex":"5424ab","ret":0})"},
            {IoctlRecord{3, 0, {0x00}, -1, EIO},
             R"({"k":"ioctl","t":5,"fd":3,"req":0,"hex":"00","ret":-1,"errno":5})"},
            {ReadRecord{2, {0x0f, 0xf0}, 0}, R"({"k":"read","t":5,"ret":2,"hex":"0ff0"})"},
            {ReadRecord{-1, {}, EBADF}, R"({"k":"read","t":5,"ret":-1,"hex":"","errno":9})"},
            {AgentRecord{"plexd bridge addif mdbr0 rndis0", true},
             R"({"k":"agent","t":5,"cmd":"plexd bridge addif mdbr0 rndis0","ok":true})"},
            {event, R"({"k":"callback","t":5,"op":"onEvent_1_1","event":6,"ok":false})"},
            {timeout,
             R"({"k":"callback","t":5,"op":"updateTimeout","src":{"addr":"192.168.43.2","port":80},)"
             R"("dst":{"addr":"8.8.8.8","port":53},"proto":17,"ok":true})"},
            {CallRecord{4, "addDownstream", {"mdbr0", ""}},
             R"({"k":"call","t":5,"line":4,"op":"addDownstream","args":["mdbr0",""]})"},
            {CallRecord{2, "stopOffload", {}},
             R"({"k":"call","t":5,"line":2,"op":"stopOffload","args":[]})"},
            {reply, R"({"k":"reply","t":5,"op":"initOffload","ok":true,"msg":""})"},
            {stats, R"({"k":"reply","t":5,"op":"getForwardedStats","rx":10,"tx":20})"},
            {ExitRecord{0}, R"({"k":"exit","t":5,"status":0})"},
            {ErrorRecord{3, "wait: malformed number 'x'"},
             R"({"k":"error","t":5,"line":3,"msg":"wait: malformed number 'x'"})"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toJsonLine(at(5, c.body)), c.json);
    }
}

TEST(JsonTraceTest, StaysValidJsonWhateverTheBytes) {
    LogRecord log{6, "TetherOffload", std::string("bad \xff\xfe \"q\" \x01 end\n", 17), "x"};
    std::string line = toJsonLine(at(1, log));
    EXPECT_EQ(line.find('\n'), std::string::npos);
    auto parsed = nlohmann::json::parse(line);
    EXPECT_EQ(parsed["msg"].get<std::string>().substr(0, 4), "bad ");
    EXPECT_NE(parsed["msg"].get<std::string>().find("\"q\" \x01 end\n"), std::string::npos);
}

template <typename T>
std::vector<uint8_t> bytesOf(const T& record) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(&record);
    return std::vector<uint8_t>(p, p + sizeof(record));
}

vexa_common_hdr_t header(uint32_t app, uint32_t msg, uint32_t dataLen) {
    return vexa_common_hdr_t{VEXA_MCODE, VEXA_REQ_STATUS, app, msg, dataLen};
}

TEST(VexaDecoderTest, DecodesEveryRequest) {
    vexa_activate_req_t activate{header(VEXA_APP_TYPE_USB, VEXA_CMSG_ACTIVATE, 32), "wanif0",
                                 "mdbr0"};
    vexa_data_usage_req_t usage{};
    usage.hdr = header(VEXA_APP_TYPE_ALL, VEXA_CMSG_GET_DATA_USAGE, 0);
    vexa_data_limit_req_t limit{header(VEXA_APP_TYPE_ALL, VEXA_CMSG_SET_DATA_LIMIT, 24), "wanif0",
                                1000};
    vexa_ct_timeout_req_t timeout{header(VEXA_APP_TYPE_ALL, VEXA_CMSG_SET_CT_TIMEOUT, 8), 180,
                                  432000};
    vexa_warning_limit_req_t both{header(VEXA_APP_TYPE_ALL, VEXA_CMSG_SET_WARNING_AND_LIMIT, 32),
                                  "wanif0", 200, 100};
    vexa_common_hdr_t odd{0, 3, 7, 9, 0};
    struct Case {
        std::vector<uint8_t> bytes;
        std::string text;
    };
    const Case cases[] = {
            {std::vector<uint8_t>(15, 0), "short request"},
            {bytesOf(header(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE, 0)), "ENABLE app=ALL len=0"},
            {bytesOf(header(VEXA_APP_TYPE_ALL, VEXA_CMSG_DISABLE, 0)), "DISABLE app=ALL len=0"},
            {bytesOf(activate), "ACTIVATE app=USB len=32 up=wanif0 down=mdbr0"},
            {bytesOf(header(VEXA_APP_TYPE_WH, VEXA_CMSG_DEACTIVATE, 0)), "DEACTIVATE app=WH len=0"},
            {bytesOf(usage), "GET_DATA_USAGE app=ALL len=0"},
            {bytesOf(limit), "SET_DATA_LIMIT app=ALL len=24 iface=wanif0 limit=1000"},
            {bytesOf(timeout), "SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=432000"},
            {bytesOf(both),
             "SET_WARNING_AND_LIMIT app=ALL len=32 iface=wanif0 limit=200 warning=100"},
            {bytesOf(odd), "msg 9 app=7 len=0 mcode=0x0 status=3"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(describeRequest(c.bytes), c.text) << toHex(c.bytes);
    }
}

TEST(VexaDecoderTest, DecodesEveryEvent) {
    EXPECT_EQ(describeEvent(10, fromHex("54240100000000000000")), "short record");
    EXPECT_EQ(describeEvent(16, fromHex("54240100000000000200000000000000")),
              "STARTED app=0 msg=2 len=0");
    EXPECT_EQ(describeEvent(16, fromHex("00000700010000000000000000000000")),
              "WARNING_REACHED app=1 msg=0 len=0 bad mcode=0x0");
    EXPECT_EQ(describeEvent(16, fromHex("54240900000000000000000000000000")),
              "unknown(9) app=0 msg=0 len=0");
    std::string conn =
            "5424060000000000000000001c000000"
            "c0a82b02080808080a00000150003500500011000000000001000000";
    EXPECT_EQ(describeEvent(44, fromHex(conn)),
              "CONNECT_UPDATE app=0 msg=0 len=28 192.168.43.2:80 8.8.8.8:53 10.0.0.1:80 proto=17 "
              "dst_nat=1");
    EXPECT_EQ(callbackEventName(1), "OFFLOAD_STARTED");
    EXPECT_EQ(callbackEventName(6), "OFFLOAD_WARNING_REACHED");
    EXPECT_EQ(callbackEventName(0), "0");
}

TEST(VexaDecoderTest, ShortensOnlyLongRunsOfTrailingZeros) {
    std::vector<uint8_t> stats(256, 0);
    stats[0] = 0x54;
    EXPECT_EQ(toShortHex(stats), "54000000000000000000000000000000...+240 zero bytes");
    std::vector<uint8_t> few(20, 0);
    EXPECT_EQ(toShortHex(few), toHex(few));
}

TEST(TextTraceTest, WritesOneReadableLinePerRecord) {
    TextTrace trace(false);
    struct Case {
        RecordBody body;
        std::string text;
    };
    CallbackRecord started;
    started.op = "onEvent";
    started.event = 1;
    CallbackRecord timeout;
    timeout.op = "updateTimeout";
    timeout.src = {"192.168.43.2", 80};
    timeout.dst = {"8.8.8.8", 53};
    timeout.proto = 6;
    timeout.ok = false;
    ReplyRecord stats;
    stats.op = "getForwardedStats";
    stats.isStats = true;
    stats.rx = 1;
    stats.tx = 2;
    // In order: the reply after a call carries the call's line.
    const Case cases[] = {
            {ThreadpoolRecord{1, false}, "threadpool        max=1 callerWillJoin=false"},
            {RegisterRecord{"a@1.0::I", "default"}, "register          a@1.0::I as \"default\""},
            {LogRecord{4, "TetherOffload", "initOffload ++\n", "main"},
             "[main]            I TetherOffload: initOffload ++\\n"},
            {LogRecord{6, "TetherOffload", "created HandleEvent thread\n", "main"},
             "[main]            E TetherOffload: created HandleEvent thread\\n"},
            {OpenRecord{"/dev/vexa", -1, ENOENT}, "open              /dev/vexa -> ENOENT"},
            {IoctlRecord{3, 0, fromHex("54240200ff0000000000000000000000"), -1, EIO},
             "ioctl             fd 3 req 0 ENABLE app=ALL len=0 -> -1 EIO  "
             "54240200ff0000000000000000000000"},
            {ReadRecord{-1, {}, EIO}, "read              -1 EIO"},
            {AgentRecord{"plexd bridge addif mdbr0 rndis0", false},
             "agent             \"plexd bridge addif mdbr0 rndis0\" failed in transport"},
            {started, "callback          onEvent(OFFLOAD_STARTED) ok"},
            {timeout,
             "callback          updateTimeout(src 192.168.43.2:80 dst 8.8.8.8:53 proto TCP) failed "
             "in "
             "transport"},
            {CallRecord{12, "addDownstream", {"mdbr0", "a b", ""}},
             "call              --> 12: addDownstream mdbr0 \"a b\" \"\""},
            {ReplyRecord{"addDownstream", true, "Successful\n", false, 0, 0},
             "reply             <-- 12: addDownstream true \"Successful\\n\""},
            {CallRecord{13, "getForwardedStats", {"wanif0"}},
             "call              --> 13: getForwardedStats wanif0"},
            {stats, "reply             <-- 13: getForwardedStats rx=1 tx=2"},
            {ExitRecord{0}, "exit              status 0"},
            {ErrorRecord{3, "oops"}, "error             line 3: oops"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(trace.format(at(1234567, c.body)), "   1.234567 " + c.text);
    }
}

TEST(TextTraceTest, ColoursOnlyWhenAsked) {
    LogRecord error{6, "TetherOffload", "x", "main"};
    EXPECT_EQ(TextTrace(false).format(at(0, error)).find('\033'), std::string::npos);
    std::string coloured = TextTrace(true).format(at(0, error));
    EXPECT_NE(coloured.find("\033[31mE TetherOffload: x\033[0m"), std::string::npos);
}

TEST(TextTraceTest, EscapesWhatWouldBreakTheLine) {
    EXPECT_EQ(escapeText("a\nb\tc\\d\"e\x01\x7f"), "a\\nb\\tc\\\\d\\\"e\\x01\\x7f");
    EXPECT_EQ(escapeText("plain text"), "plain text");
}

}  // namespace
}  // namespace hostrunner
