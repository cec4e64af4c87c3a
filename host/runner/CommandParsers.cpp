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

#include "CommandParsers.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>

#include "Checker.h"
#include "EventRecords.h"

namespace hostrunner {
namespace {

using Words = std::vector<Word>;
using Parser = std::function<CommandBody(const Words&, Checker*)>;

constexpr uint64_t kU8 = std::numeric_limits<uint8_t>::max();
constexpr uint64_t kU16 = std::numeric_limits<uint16_t>::max();
constexpr uint64_t kU32 = std::numeric_limits<uint32_t>::max();
constexpr uint64_t kU64 = std::numeric_limits<uint64_t>::max();

std::vector<std::string> texts(const Words& words, size_t from) {
    std::vector<std::string> out;
    for (size_t i = from; i < words.size(); ++i) out.push_back(words[i].text);
    return out;
}

// ---- framework calls

int handleFds(const Word& word, Checker* c) {
    if (word.text == "none") return SetHandles::kNoHandle;
    return static_cast<int>(c->number(word.text, 2));
}

CommandBody setHandles(const Words& w, Checker* c) {
    SetHandles cmd;
    if (!c->count(w, 2, 2)) return cmd;
    cmd.fds1 = handleFds(w[0], c);
    cmd.fds2 = handleFds(w[1], c);
    return cmd;
}

CommandBody initOffload(const Words& w, Checker* c) {
    InitOffload cmd;
    if (!c->count(w, 1, 1)) return cmd;
    const InitOffload::Callback callbacks[] = {
            InitOffload::Callback::k1_0, InitOffload::Callback::k1_1, InitOffload::Callback::kNull};
    cmd.callback = callbacks[c->choice(w[0].text, {"1.0", "1.1", "null"})];
    return cmd;
}

CommandBody stopOffload(const Words& w, Checker* c) {
    c->count(w, 0, 0);
    return StopOffload{};
}

CommandBody setLocalPrefixes(const Words& w, Checker*) {
    return SetLocalPrefixes{texts(w, 0)};
}

CommandBody getForwardedStats(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return GetForwardedStats{};
    return GetForwardedStats{w[0].text};
}

CommandBody setDataLimit(const Words& w, Checker* c) {
    if (!c->count(w, 2, 2)) return SetDataLimit{};
    return SetDataLimit{w[0].text, c->number(w[1].text, kU64)};
}

CommandBody setDataWarningAndLimit(const Words& w, Checker* c) {
    if (!c->count(w, 3, 3)) return SetDataWarningAndLimit{};
    SetDataWarningAndLimit cmd;
    cmd.upstream = w[0].text;
    cmd.warning = c->number(w[1].text, kU64);
    cmd.limit = c->number(w[2].text, kU64);
    return cmd;
}

CommandBody setUpstreamParameters(const Words& w, Checker* c) {
    if (!c->count(w, 3, Checker::kAny)) return SetUpstreamParameters{};
    return SetUpstreamParameters{w[0].text, w[1].text, w[2].text, texts(w, 3)};
}

CommandBody addDownstream(const Words& w, Checker* c) {
    if (!c->count(w, 2, 2)) return AddDownstream{};
    return AddDownstream{w[0].text, w[1].text};
}

CommandBody removeDownstream(const Words& w, Checker* c) {
    if (!c->count(w, 2, 2)) return RemoveDownstream{};
    return RemoveDownstream{w[0].text, w[1].text};
}

CommandBody dump(const Words& w, Checker* c) {
    c->count(w, 0, 0);
    return Dump{};
}

// ---- the modem

struct EventName {
    const char* name;
    uint16_t status;
};

constexpr EventName kEventNames[] = {
        {"STARTED", 1},           {"STOPPED_ERROR", 2},         {"STOPPED_UNSUPPORTED", 3},
        {"SUPPORT_AVAILABLE", 4}, {"STOPPED_LIMIT_REACHED", 5}, {"CONNECT_UPDATE", 6},
        {"WARNING_REACHED", 7},
};

// A number, or an event name with or without its VEXA_ prefix.
uint16_t eventStatus(const std::string& text, Checker* c) {
    std::string name = text.compare(0, 5, "VEXA_") == 0 ? text.substr(5) : text;
    for (const EventName& e : kEventNames) {
        if (name == e.name) return e.status;
    }
    return static_cast<uint16_t>(c->number(text, kU16));
}

size_t readSize(const std::map<std::string, std::string>& opts, const std::vector<uint8_t>& record,
                Checker* c) {
    auto it = opts.find("read");
    if (it == opts.end()) return defaultReadSize(record);
    return static_cast<size_t>(c->number(it->second, kMaxEventRead));
}

CommandBody modemEvent(const Words& w, Checker* c) {
    if (!c->count(w, 1, 7)) return ModemEvent{};
    EventFields fields;
    fields.status = eventStatus(w[0].text, c);
    auto opts = c->options(w, 1, {"mcode", "msg", "app", "len", "payload", "read"});
    if (opts.count("mcode")) fields.mcode = static_cast<uint16_t>(c->number(opts["mcode"], kU16));
    if (opts.count("msg")) fields.msg = static_cast<uint32_t>(c->number(opts["msg"], kU32));
    if (opts.count("app")) fields.app = static_cast<uint32_t>(c->number(opts["app"], kU32));
    if (opts.count("len")) fields.dataLen = static_cast<uint32_t>(c->number(opts["len"], kU32));
    if (opts.count("payload")) fields.payload = c->hex(opts["payload"]);
    if (fields.payload.size() > kMaxEventPayload) c->fail("payload longer than 256 bytes");
    ModemEvent cmd;
    cmd.record = buildEventRecord(fields);
    cmd.readSize = readSize(opts, cmd.record, c);
    return cmd;
}

CommandBody modemConn(const Words& w, Checker* c) {
    ConnFields conn;
    auto opts = c->options(
            w, 0, {"dst_nat", "ip0", "ip1", "ip2", "port0", "port1", "port2", "proto", "len"});
    if (opts.count("dst_nat")) conn.dstNat = static_cast<uint8_t>(c->number(opts["dst_nat"], kU8));
    if (opts.count("ip0")) conn.ip0 = c->ipv4(opts["ip0"]);
    if (opts.count("ip1")) conn.ip1 = c->ipv4(opts["ip1"]);
    if (opts.count("ip2")) conn.ip2 = c->ipv4(opts["ip2"]);
    if (opts.count("port0")) conn.port0 = static_cast<uint16_t>(c->number(opts["port0"], kU16));
    if (opts.count("port1")) conn.port1 = static_cast<uint16_t>(c->number(opts["port1"], kU16));
    if (opts.count("port2")) conn.port2 = static_cast<uint16_t>(c->number(opts["port2"], kU16));
    if (opts.count("proto")) conn.proto = static_cast<uint8_t>(c->number(opts["proto"], kU8));
    EventFields fields;
    fields.status = VEXA_CONNECT_UPDATE;
    fields.payload = buildConnPayload(conn);
    if (opts.count("len")) fields.dataLen = static_cast<uint32_t>(c->number(opts["len"], kU32));
    ModemEvent cmd;
    cmd.record = buildEventRecord(fields);
    cmd.readSize = defaultReadSize(cmd.record);
    return cmd;
}

CommandBody modemReadFail(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return ModemReadFail{};
    return ModemReadFail{c->errnum(w[0].text)};
}

CommandBody modemStats(const Words& w, Checker* c) {
    ModemStats cmd;
    if (!c->count(w, 2, 3)) return cmd;
    cmd.rx = c->number(w[0].text, kU64);
    cmd.tx = c->number(w[1].text, kU64);
    auto opts = c->options(w, 2, {"len"});
    if (opts.count("len")) cmd.dataLen = static_cast<uint32_t>(c->number(opts["len"], kU32));
    return cmd;
}

CommandBody modemIoctl(const Words& w, Checker* c) {
    if (!c->count(w, 1, 2)) return ModemIoctl{};
    if (c->choice(w[0].text, {"ok", "fail"}) == 0) {
        c->count(w, 1, 1);
        return ModemIoctl{0};
    }
    if (!c->count(w, 2, 2)) return ModemIoctl{};
    return ModemIoctl{c->errnum(w[1].text)};
}

CommandBody modem(const Words& w, Checker* c) {
    if (w.empty()) {
        c->fail("expected event, conn, readfail, stats or ioctl");
        return ModemIoctl{};
    }
    const Parser parsers[] = {modemEvent, modemConn, modemReadFail, modemStats, modemIoctl};
    size_t which = c->choice(w[0].text, {"event", "conn", "readfail", "stats", "ioctl"});
    if (!c->ok()) return ModemIoctl{};
    Checker sub("modem " + w[0].text);
    CommandBody body = parsers[which](Words(w.begin() + 1, w.end()), &sub);
    c->take(sub);
    return body;
}

// ---- the rest of the world

CommandBody agent(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return Agent{};
    const Agent::Mode modes[] = {Agent::Mode::kUp, Agent::Mode::kAbsent, Agent::Mode::kFailing};
    return Agent{modes[c->choice(w[0].text, {"up", "absent", "failing"})]};
}

CommandBody framework(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return FrameworkState{};
    return FrameworkState{c->choice(w[0].text, {"alive", "dead"}) == 0};
}

CommandBody prop(const Words& w, Checker* c) {
    if (!c->count(w, 2, 2)) return Prop{};
    if (w[0].text.empty()) c->fail("empty property name");
    return Prop{w[0].text, w[1].text};
}

CommandBody proc(const Words& w, Checker* c) {
    Proc cmd;
    if (!c->count(w, 2, 2)) return cmd;
    cmd.file = c->choice(w[0].text, {"tcp", "udp"}) == 0 ? Proc::File::kTcp : Proc::File::kUdp;
    cmd.absent = !w[1].quoted && w[1].text == "absent";
    if (!cmd.absent) cmd.content = w[1].text;
    return cmd;
}

CommandBody standardError(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return Stderr{};
    return Stderr{c->choice(w[0].text, {"closed", "open"}) == 0};
}

CommandBody wait(const Words& w, Checker* c) {
    if (!c->count(w, 1, 1)) return Wait{};
    return Wait{c->number(w[0].text, 3600 * 1000)};
}

CommandBody device(const Words& w, Checker* c) {
    if (c->count(w, 1, 1)) c->choice(w[0].text, {"absent"});
    return DeviceAbsent{};
}

CommandBody help(const Words& w, Checker* c) {
    c->count(w, 0, 0);
    return Help{};
}

CommandBody quit(const Words& w, Checker* c) {
    c->count(w, 0, 0);
    return Quit{};
}

const std::map<std::string, Parser>& parsers() {
    static const auto* table = new std::map<std::string, Parser>{
            {"setHandles", setHandles},
            {"initOffload", initOffload},
            {"stopOffload", stopOffload},
            {"setLocalPrefixes", setLocalPrefixes},
            {"getForwardedStats", getForwardedStats},
            {"setDataLimit", setDataLimit},
            {"setDataWarningAndLimit", setDataWarningAndLimit},
            {"setUpstreamParameters", setUpstreamParameters},
            {"addDownstream", addDownstream},
            {"removeDownstream", removeDownstream},
            {"dump", dump},
            {"modem", modem},
            {"agent", agent},
            {"framework", framework},
            {"prop", prop},
            {"proc", proc},
            {"stderr", standardError},
            {"wait", wait},
            {"device", device},
            {"help", help},
            {"quit", quit},
    };
    return *table;
}

}  // namespace

std::string parseCommand(const Word& name, const std::vector<Word>& args, CommandBody* out) {
    auto it = name.quoted ? parsers().end() : parsers().find(name.text);
    if (it == parsers().end()) return "unknown command '" + excerpt(name.text) + "'";
    Checker checker(name.text);
    CommandBody body = it->second(args, &checker);
    if (!checker.ok()) return checker.error();
    *out = body;
    return "";
}

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const auto& entry : parsers()) names.push_back(entry.first);
    return names;
}

std::vector<std::string> eventStatusNames() {
    std::vector<std::string> names;
    for (const EventName& e : kEventNames) names.push_back(e.name);
    return names;
}

}  // namespace hostrunner
