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
#include <utility>

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
    Json::object_t& fields;

    template <typename Value>
    Fields& add(const char* key, Value&& value) {
        fields.emplace_back(key, std::forward<Value>(value));
        return *this;
    }

    void operator()(const hostplatform::ThreadpoolRecord& r) {
        add("max", r.max).add("callerWillJoin", r.callerWillJoin);
    }
    void operator()(const hostplatform::RegisterRecord& r) {
        add("interface", r.interface).add("name", r.name);
    }
    void operator()(const hostplatform::LogRecord& r) {
        add("prio", r.prio).add("tag", r.tag).add("msg", r.msg).add("thread", r.thread);
    }
    void operator()(const hostplatform::OpenRecord& r) {
        add("path", r.path);
        if (r.fd >= 0) {
            add("fd", r.fd);
        } else {
            add("errno", r.errnum);
        }
    }
    void operator()(const hostplatform::IoctlRecord& r) {
        add("fd", r.fd).add("req", r.req).add("hex", toHex(r.bytes)).add("ret", r.ret);
        if (r.ret != 0) add("errno", r.errnum);
    }
    void operator()(const hostplatform::ReadRecord& r) {
        add("ret", r.ret).add("hex", toHex(r.bytes));
        if (r.ret < 0) add("errno", r.errnum);
    }
    void operator()(const hostplatform::AgentRecord& r) { add("cmd", r.cmd).add("ok", r.ok); }
    void operator()(const hostplatform::CallbackRecord& r) {
        add("op", r.op);
        if (r.op == "updateTimeout") {
            add("src", addrPort(r.src)).add("dst", addrPort(r.dst)).add("proto", r.proto);
        } else {
            add("event", r.event);
        }
        add("ok", r.ok);
    }
    void operator()(const hostplatform::CallRecord& r) {
        add("line", r.line).add("op", r.op).add("args", r.args);
    }
    void operator()(const hostplatform::ReplyRecord& r) {
        add("op", r.op);
        if (r.isStats) {
            add("rx", r.rx).add("tx", r.tx);
        } else {
            add("ok", r.ok).add("msg", r.msg);
        }
    }
    void operator()(const hostplatform::ExitRecord& r) { add("status", r.status); }
    void operator()(const hostplatform::ErrorRecord& r) { add("line", r.line).add("msg", r.msg); }
    void operator()(const hostplatform::DumpRecord& r) { add("text", r.text); }
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
    // An ordered_json object is a vector of its fields: appending them skips the search for a
    // field of the same name that operator[] makes, and their room is taken once.
    Json::object_t fields;
    fields.reserve(8);  // no kind has more
    Fields{fields}.add("k", std::visit(Kind{}, record.body)).add("t", record.tMicros);
    std::visit(Fields{fields}, record.body);
    // Bytes that are not UTF-8 become U+FFFD: the trace stays valid JSON whatever crossed.
    out->append(Json(std::move(fields)).dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string toJsonLine(const hostplatform::Record& record) {
    std::string line;
    appendJsonLine(record, &line);
    return line;
}

}  // namespace hostrunner
