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
using Json = nlohmann::ordered_json;

Json addrPort(const AddrPort& ap) {
    return Json{{"addr", ap.addr}, {"port", ap.port}};
}

struct Fields {
    Json* j;

    void operator()(const hostplatform::ThreadpoolRecord& r) {
        (*j)["k"] = "threadpool";
        (*j)["max"] = r.max;
        (*j)["callerWillJoin"] = r.callerWillJoin;
    }
    void operator()(const hostplatform::RegisterRecord& r) {
        (*j)["k"] = "register";
        (*j)["interface"] = r.interface;
        (*j)["name"] = r.name;
    }
    void operator()(const hostplatform::LogRecord& r) {
        (*j)["k"] = "log";
        (*j)["prio"] = r.prio;
        (*j)["tag"] = r.tag;
        (*j)["msg"] = r.msg;
        (*j)["thread"] = r.thread;
    }
    void operator()(const hostplatform::OpenRecord& r) {
        (*j)["k"] = "open";
        (*j)["path"] = r.path;
        if (r.fd >= 0) {
            (*j)["fd"] = r.fd;
        } else {
            (*j)["errno"] = r.errnum;
        }
    }
    void operator()(const hostplatform::IoctlRecord& r) {
        (*j)["k"] = "ioctl";
        (*j)["fd"] = r.fd;
        (*j)["req"] = r.req;
        (*j)["hex"] = toHex(r.bytes);
        (*j)["ret"] = r.ret;
        if (r.ret != 0) (*j)["errno"] = r.errnum;
    }
    void operator()(const hostplatform::ReadRecord& r) {
        (*j)["k"] = "read";
        (*j)["ret"] = r.ret;
        (*j)["hex"] = toHex(r.bytes);
        if (r.ret < 0) (*j)["errno"] = r.errnum;
    }
    void operator()(const hostplatform::AgentRecord& r) {
        (*j)["k"] = "agent";
        (*j)["cmd"] = r.cmd;
        (*j)["ok"] = r.ok;
    }
    void operator()(const hostplatform::CallbackRecord& r) {
        (*j)["k"] = "callback";
        (*j)["op"] = r.op;
        if (r.op == "updateTimeout") {
            (*j)["src"] = addrPort(r.src);
            (*j)["dst"] = addrPort(r.dst);
            (*j)["proto"] = r.proto;
        } else {
            (*j)["event"] = r.event;
        }
        (*j)["ok"] = r.ok;
    }
    void operator()(const hostplatform::CallRecord& r) {
        (*j)["k"] = "call";
        (*j)["line"] = r.line;
        (*j)["op"] = r.op;
        (*j)["args"] = r.args;
    }
    void operator()(const hostplatform::ReplyRecord& r) {
        (*j)["k"] = "reply";
        (*j)["op"] = r.op;
        if (r.isStats) {
            (*j)["rx"] = r.rx;
            (*j)["tx"] = r.tx;
        } else {
            (*j)["ok"] = r.ok;
            (*j)["msg"] = r.msg;
        }
    }
    void operator()(const hostplatform::ExitRecord& r) {
        (*j)["k"] = "exit";
        (*j)["status"] = r.status;
    }
    void operator()(const hostplatform::ErrorRecord& r) {
        (*j)["k"] = "error";
        (*j)["line"] = r.line;
        (*j)["msg"] = r.msg;
    }
    void operator()(const hostplatform::DumpRecord& r) {
        (*j)["k"] = "dump";
        (*j)["text"] = r.text;
    }
};

}  // namespace

std::string toJsonLine(const hostplatform::Record& record) {
    Json j = Json::object();
    j["k"] = nullptr;  // keeps `k` first
    j["t"] = record.tMicros;
    std::visit(Fields{&j}, record.body);
    // Bytes that are not UTF-8 cannot stand in JSON; they become U+FFFD instead of an exception.
    return j.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace hostrunner
