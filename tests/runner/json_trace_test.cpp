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

// The JSON Lines trace is written by hand for speed; programs read it, so it must stay exactly
// what a JSON library makes of the same record: key order, numbers, escapes, and U+FFFD for
// bytes that are not UTF-8. The reference here is nlohmann's document and compact dump.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>

#include "JsonTrace.h"
#include "JsonWriter.h"
#include "VexaDecoder.h"

namespace hostrunner {
namespace {

using namespace hostplatform;
using Json = nlohmann::ordered_json;
using Bytes = std::vector<uint8_t>;

std::string dump(const Json& j) {
    return j.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json addrPort(const AddrPort& ap) {
    return Json{{"addr", ap.addr}, {"port", ap.port}};
}

// The fields of each kind as a JSON document would hold them.
struct ReferenceFields {
    Json& j;

    void operator()(const ThreadpoolRecord& r) {
        j["k"] = "threadpool", j["max"] = r.max, j["callerWillJoin"] = r.callerWillJoin;
    }
    void operator()(const RegisterRecord& r) {
        j["k"] = "register", j["interface"] = r.interface, j["name"] = r.name;
    }
    void operator()(const LogRecord& r) {
        j["k"] = "log", j["prio"] = r.prio, j["tag"] = r.tag, j["msg"] = r.msg;
        j["thread"] = r.thread;
    }
    void operator()(const OpenRecord& r) {
        j["k"] = "open", j["path"] = r.path;
        if (r.fd >= 0) j["fd"] = r.fd;
        if (r.fd < 0) j["errno"] = r.errnum;
    }
    void operator()(const IoctlRecord& r) {
        j["k"] = "ioctl", j["fd"] = r.fd, j["req"] = r.req, j["hex"] = toHex(r.bytes);
        j["ret"] = r.ret;
        if (r.ret != 0) j["errno"] = r.errnum;
    }
    void operator()(const ReadRecord& r) {
        j["k"] = "read", j["ret"] = r.ret, j["hex"] = toHex(r.bytes);
        if (r.ret < 0) j["errno"] = r.errnum;
    }
    void operator()(const AgentRecord& r) { j["k"] = "agent", j["cmd"] = r.cmd, j["ok"] = r.ok; }
    void operator()(const CallbackRecord& r) {
        j["k"] = "callback", j["op"] = r.op;
        if (r.op == "updateTimeout") {
            j["src"] = addrPort(r.src), j["dst"] = addrPort(r.dst), j["proto"] = r.proto;
        } else {
            j["event"] = r.event;
        }
        j["ok"] = r.ok;
    }
    void operator()(const CallRecord& r) {
        j["k"] = "call", j["line"] = r.line, j["op"] = r.op, j["args"] = r.args;
    }
    void operator()(const ReplyRecord& r) {
        j["k"] = "reply", j["op"] = r.op;
        if (r.isStats) {
            j["rx"] = r.rx, j["tx"] = r.tx;
        } else {
            j["ok"] = r.ok, j["msg"] = r.msg;
        }
    }
    void operator()(const ExitRecord& r) { j["k"] = "exit", j["status"] = r.status; }
    void operator()(const ErrorRecord& r) {
        j["k"] = "error", j["line"] = r.line, j["msg"] = r.msg;
    }
    void operator()(const DumpRecord& r) { j["k"] = "dump", j["text"] = r.text; }
};

std::string reference(const Record& record) {
    Json j = Json::object();
    j["k"] = nullptr;  // keeps `k` first
    j["t"] = record.tMicros;
    std::visit(ReferenceFields{j}, record.body);
    return dump(j);
}

std::string written(const std::string& text) {
    std::string out;
    appendJsonString(text, &out);
    return out;
}

TEST(JsonTraceTest, EveryKindAndBranchAsTheReferenceWritesIt) {
    using Limits = std::numeric_limits<int64_t>;
    const char kAwkward[] = "tab\t nl\n \"q\" \\ nul\0 \x01\x1f\x7f \xc3\xa9 \xff \xe2\x82 end";
    const std::string awkward(kAwkward, sizeof(kAwkward) - 1);
    const Bytes request = {0x54, 0x24, 2, 0, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const RecordBody bodies[] = {
            ThreadpoolRecord{std::numeric_limits<size_t>::max(), true},
            ThreadpoolRecord{1, false},
            RegisterRecord{"a@1.0::I", awkward},
            LogRecord{6, "TetherOffload", awkward, "HandleEvent"},
            LogRecord{-3, "", "", ""},
            OpenRecord{"/dev/vexa", 3, 0},
            OpenRecord{"/dev/vexa", -1, ENOENT},
            IoctlRecord{3, std::numeric_limits<unsigned long>::max(), request, 0, 0},
            IoctlRecord{3, 0, {}, -1, EIO},
            ReadRecord{16, request, 0},
            ReadRecord{-1, {}, EIO},
            AgentRecord{awkward, true},
            AgentRecord{"", false},
            CallbackRecord{"onEvent_1_1", 6, {}, {}, 0, true},
            CallbackRecord{"updateTimeout", 0, {"192.168.43.2", 80}, {awkward, 65535}, 17, false},
            CallRecord{12, "addDownstream", {"mdbr0", awkward, ""}},
            CallRecord{-1, "stopOffload", {}},
            ReplyRecord{"initOffload", true, awkward, false, 0, 0},
            ReplyRecord{"getForwardedStats", true, "", true, 0, UINT64_MAX},
            ExitRecord{-2},
            ErrorRecord{3, awkward},
            DumpRecord{awkward},
            DumpRecord{""},
    };
    for (int64_t t : {int64_t{0}, int64_t{1234567}, Limits::max(), Limits::min()}) {
        for (const RecordBody& body : bodies) {
            const Record record{t, body};
            EXPECT_EQ(reference(record), toJsonLine(record));
        }
    }
    std::string appended = "prefix ";
    appendJsonLine(Record{5, ExitRecord{0}}, &appended);
    EXPECT_EQ(R"(prefix {"k":"exit","t":5,"status":0})", appended);
}

TEST(JsonTraceTest, StringsAsTheReferenceEscapesThem) {
    // Every one- and two-byte string: each control character, quote, backslash, and every lead
    // and continuation byte alone, paired, or cut off.
    for (int a = 0; a < 256; ++a) {
        const std::string one(1, static_cast<char>(a));
        ASSERT_EQ(dump(Json(one)), written(one)) << a;
        for (int b = 0; b < 256; ++b) {
            const std::string two = one + static_cast<char>(b);
            ASSERT_EQ(dump(Json(two)), written(two)) << a << " " << b;
        }
    }
    // Longer mixes of the bytes where UTF-8 decoding turns: overlong forms, surrogates, code
    // points past U+10FFFF, sequences cut short by another lead or by the end.
    const uint8_t edges[] = {0x00, 0x0a, 0x22, 0x41, 0x5c, 0x7f, 0x80, 0x8f, 0x90, 0x9f,
                             0xa0, 0xbf, 0xc0, 0xc1, 0xc2, 0xdf, 0xe0, 0xe1, 0xec, 0xed,
                             0xee, 0xef, 0xf0, 0xf1, 0xf3, 0xf4, 0xf5, 0xff};
    std::mt19937 random(9);  // fixed: the same strings every run
    std::uniform_int_distribution<size_t> pick(0, sizeof(edges) - 1), length(0, 12);
    for (int i = 0; i < 50000; ++i) {
        std::string text(length(random), '\0');
        for (char& c : text) c = static_cast<char>(edges[pick(random)]);
        ASSERT_EQ(dump(Json(text)), written(text)) << toHex(Bytes(text.begin(), text.end()));
    }
}

}  // namespace
}  // namespace hostrunner
