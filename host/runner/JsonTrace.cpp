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

#include "JsonWriter.h"
#include "VexaDecoder.h"

namespace hostrunner {
namespace {

using hostplatform::AddrPort;

void addrPort(JsonObject& j, const char* key, const AddrPort& ap) {
    j.object(key).string("addr", ap.addr).number("port", ap.port).close();
}

// The fields of each kind after `k` and `t`, in their order.
struct Fields {
    JsonObject& j;

    void operator()(const hostplatform::ThreadpoolRecord& r) {
        j.number("max", r.max).boolean("callerWillJoin", r.callerWillJoin);
    }
    void operator()(const hostplatform::RegisterRecord& r) {
        j.string("interface", r.interface).string("name", r.name);
    }
    void operator()(const hostplatform::LogRecord& r) {
        j.number("prio", r.prio).string("tag", r.tag).string("msg", r.msg);
        j.string("thread", r.thread);
    }
    void operator()(const hostplatform::OpenRecord& r) {
        j.string("path", r.path);
        if (r.fd >= 0) {
            j.number("fd", r.fd);
        } else {
            j.number("errno", r.errnum);
        }
    }
    void operator()(const hostplatform::IoctlRecord& r) {
        j.number("fd", r.fd).number("req", r.req).string("hex", toHex(r.bytes));
        j.number("ret", r.ret);
        if (r.ret != 0) j.number("errno", r.errnum);
    }
    void operator()(const hostplatform::ReadRecord& r) {
        j.number("ret", r.ret).string("hex", toHex(r.bytes));
        if (r.ret < 0) j.number("errno", r.errnum);
    }
    void operator()(const hostplatform::AgentRecord& r) {
        j.string("cmd", r.cmd).boolean("ok", r.ok);
    }
    void operator()(const hostplatform::CallbackRecord& r) {
        j.string("op", r.op);
        if (r.op == "updateTimeout") {
            addrPort(j, "src", r.src);
            addrPort(j, "dst", r.dst);
            j.number("proto", r.proto);
        } else {
            j.number("event", r.event);
        }
        j.boolean("ok", r.ok);
    }
    void operator()(const hostplatform::CallRecord& r) {
        j.number("line", r.line).string("op", r.op).strings("args", r.args);
    }
    void operator()(const hostplatform::ReplyRecord& r) {
        j.string("op", r.op);
        if (r.isStats) {
            j.number("rx", r.rx).number("tx", r.tx);
        } else {
            j.boolean("ok", r.ok).string("msg", r.msg);
        }
    }
    void operator()(const hostplatform::ExitRecord& r) { j.number("status", r.status); }
    void operator()(const hostplatform::ErrorRecord& r) {
        j.number("line", r.line).string("msg", r.msg);
    }
    void operator()(const hostplatform::DumpRecord& r) { j.string("text", r.text); }
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
    JsonObject j(out);
    j.string("k", std::visit(Kind{}, record.body)).number("t", record.tMicros);
    std::visit(Fields{j}, record.body);
    j.close();
}

std::string toJsonLine(const hostplatform::Record& record) {
    std::string line;
    appendJsonLine(record, &line);
    return line;
}

}  // namespace hostrunner
