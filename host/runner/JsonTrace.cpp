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

#include "JsonTrace.h"

#include <nlohmann/json.hpp>

#include "VexaDecoder.h"

namespace hostrunner {
namespace {

using hostplatform::AddrPort;
using Json = nlohmann::ordered_json;  // keeps the fields in the order they are set

Json addrPort(const AddrPort& ap) {
    Json j = Json::object();
    j["addr"] = ap.addr, j["port"] = ap.port;
    return j;
}

// The fields of each kind after `k` and `t`, in their order.
struct Fields {
    Json& j;

    void operator()(const hostplatform::ThreadpoolRecord& r) {
        j["max"] = r.max, j["callerWillJoin"] = r.callerWillJoin;
    }
    void operator()(const hostplatform::RegisterRecord& r) {
        j["interface"] = r.interface, j["name"] = r.name;
    }
    void operator()(const hostplatform::LogRecord& r) {
        j["prio"] = r.prio, j["tag"] = r.tag, j["msg"] = r.msg, j["thread"] = r.thread;
    }
    void operator()(const hostplatform::OpenRecord& r) {
        j["path"] = r.path;
        if (r.fd >= 0) {
            j["fd"] = r.fd;
        } else {
            j["errno"] = r.errnum;
        }
    }
    void operator()(const hostplatform::IoctlRecord& r) {
        j["fd"] = r.fd, j["req"] = r.req, j["hex"] = toHex(r.bytes), j["ret"] = r.ret;
        if (r.ret != 0) j["errno"] = r.errnum;
    }
    void operator()(const hostplatform::ReadRecord& r) {
        j["ret"] = r.ret, j["hex"] = toHex(r.bytes);
        if (r.ret < 0) j["errno"] = r.errnum;
    }
    void operator()(const hostplatform::AgentRecord& r) { j["cmd"] = r.cmd, j["ok"] = r.ok; }
    void operator()(const hostplatform::CallbackRecord& r) {
        j["op"] = r.op;
        if (r.op == "updateTimeout") {
            j["src"] = addrPort(r.src), j["dst"] = addrPort(r.dst), j["proto"] = r.proto;
        } else {
            j["event"] = r.event;
        }
        j["ok"] = r.ok;
    }
    void operator()(const hostplatform::CallRecord& r) {
        j["line"] = r.line, j["op"] = r.op, j["args"] = r.args;
    }
    void operator()(const hostplatform::ReplyRecord& r) {
        j["op"] = r.op;
        if (r.isStats) {
            j["rx"] = r.rx, j["tx"] = r.tx;
        } else {
            j["ok"] = r.ok, j["msg"] = r.msg;
        }
    }
    void operator()(const hostplatform::ExitRecord& r) { j["status"] = r.status; }
    void operator()(const hostplatform::ErrorRecord& r) { j["line"] = r.line, j["msg"] = r.msg; }
    void operator()(const hostplatform::DumpRecord& r) { j["text"] = r.text; }
};

struct Kind {
    const char* operator()(const hostplatform::ThreadpoolRecord&) const { return "threadpool"; }
    const char* operator()(const hostplatform::RegisterRecord&) const { return "register"; }
    const char* operator()(const hostplatform::LogRecord&) const { return "log"; }
    const char* operator()(const hostplatform::OpenRecord&) const { return "open"; }
    const char* operator()(const hostplatform::IoctlRecord&) const { return "ioctl"; }
    const char* operator()(const hostplatform::ReadRecord&) const { return "read"; }
    const char* operator()(const hostplatform::AgentRecord&) const { return "agent"; }
    const char* operator()(const hostplatform::CallbackRecord&) const { return "callback"; }
    const char* operator()(const hostplatform::CallRecord&) const { return "call"; }
    const char* operator()(const hostplatform::ReplyRecord&) const { return "reply"; }
    const char* operator()(const hostplatform::ExitRecord&) const { return "exit"; }
    const char* operator()(const hostplatform::ErrorRecord&) const { return "error"; }
    const char* operator()(const hostplatform::DumpRecord&) const { return "dump"; }
};

}  // namespace

void appendJsonLine(const hostplatform::Record& record, std::string* out) {
    Json j = Json::object();
    j.get_ref<Json::object_t&>().reserve(8);  // no kind has more fields: one allocation
    j["k"] = std::visit(Kind{}, record.body), j["t"] = record.tMicros;
    std::visit(Fields{j}, record.body);
    // Bytes that are not UTF-8 become U+FFFD: the trace stays valid JSON whatever crossed.
    out->append(j.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string toJsonLine(const hostplatform::Record& record) {
    std::string line;
    appendJsonLine(record, &line);
    return line;
}

}  // namespace hostrunner
