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

#include "FrameworkCalls.h"

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <android/log.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "fakes/FakeFramework.h"
#include "hostplatform/Recorder.h"

namespace hostrunner {
namespace {

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback;
using android::hardware::tetheroffload::control::V1_1::IOffloadControl;

[[noreturn]] void noService(const char* descriptor) {
    __android_log_print(ANDROID_LOG_FATAL, "tetheroffload-service", "%s/default not registered",
                        descriptor);
    fflush(stdout);
    abort();
}

sp<IOffloadControl> control() {
    sp<IOffloadControl> service = IOffloadControl::getService("default");
    if (service == nullptr) noService(IOffloadControl::descriptor);
    return service;
}

hidl_vec<hidl_string> strings(const std::vector<std::string>& words) {
    hidl_vec<hidl_string> out(words.size());
    for (size_t i = 0; i < words.size(); ++i) out[i] = words[i];
    return out;
}

sp<ITetheringOffloadCallback> callbackFor(InitOffload::Callback version) {
    switch (version) {
        case InitOffload::Callback::k1_0:
            return fakes::FakeFramework::makeCallback(fakes::FakeFramework::Version::k1_0);
        case InitOffload::Callback::k1_1:
            return fakes::FakeFramework::makeCallback(fakes::FakeFramework::Version::k1_1);
        case InitOffload::Callback::kNull:
            break;
    }
    return nullptr;
}

// The framework's result callbacks record each reply as it comes. The proxy that getService
// hands out ends the process, as the service's stub would, when a call does not reply exactly
// once.
std::function<void(bool, const hidl_string&)> statusReply(const std::string& op) {
    return [op](bool ok, const hidl_string& msg) {
        hostplatform::ReplyRecord reply;
        reply.op = op;
        reply.ok = ok;
        reply.msg = std::string(msg);
        hostplatform::Recorder::instance().add(std::move(reply));
    };
}

std::function<void(uint64_t, uint64_t)> statsReply(const std::string& op) {
    return [op](uint64_t rx, uint64_t tx) {
        hostplatform::ReplyRecord reply;
        reply.op = op;
        reply.isStats = true;
        reply.rx = rx;
        reply.tx = tx;
        hostplatform::Recorder::instance().add(std::move(reply));
    };
}

// One visitor case per call; `name` is the operation as traced. A call's own Return is checked by
// the proxy, so it is OK here.
struct Caller {
    const std::string& name;

    void operator()(const SetHandles& c) const {
        sp<IOffloadConfig> config = IOffloadConfig::getService("default");
        if (config == nullptr) noService(IOffloadConfig::descriptor);
        fakes::FrameworkHandle fd1(c.fds1);
        fakes::FrameworkHandle fd2(c.fds2);
        config->setHandles(fd1.get(), fd2.get(), statusReply(name)).assertOk();
    }
    void operator()(const InitOffload& c) const {
        control()->initOffload(callbackFor(c.callback), statusReply(name)).assertOk();
    }
    void operator()(const StopOffload&) const {
        control()->stopOffload(statusReply(name)).assertOk();
    }
    void operator()(const SetLocalPrefixes& c) const {
        control()->setLocalPrefixes(strings(c.prefixes), statusReply(name)).assertOk();
    }
    void operator()(const GetForwardedStats& c) const {
        control()->getForwardedStats(c.upstream, statsReply(name)).assertOk();
    }
    void operator()(const SetDataLimit& c) const {
        control()->setDataLimit(c.upstream, c.limit, statusReply(name)).assertOk();
    }
    void operator()(const SetDataWarningAndLimit& c) const {
        control()
                ->setDataWarningAndLimit(c.upstream, c.warning, c.limit, statusReply(name))
                .assertOk();
    }
    void operator()(const SetUpstreamParameters& c) const {
        control()
                ->setUpstreamParameters(c.iface, c.v4Addr, c.v4Gw, strings(c.v6Gws),
                                        statusReply(name))
                .assertOk();
    }
    void operator()(const AddDownstream& c) const {
        control()->addDownstream(c.iface, c.prefix, statusReply(name)).assertOk();
    }
    void operator()(const RemoveDownstream& c) const {
        control()->removeDownstream(c.iface, c.prefix, statusReply(name)).assertOk();
    }
    template <typename Other>
    void operator()(const Other&) const {}
};

}  // namespace

bool isFrameworkCall(const CommandBody& body) {
    return std::holds_alternative<SetHandles>(body) || std::holds_alternative<InitOffload>(body) ||
           std::holds_alternative<StopOffload>(body) ||
           std::holds_alternative<SetLocalPrefixes>(body) ||
           std::holds_alternative<GetForwardedStats>(body) ||
           std::holds_alternative<SetDataLimit>(body) ||
           std::holds_alternative<SetDataWarningAndLimit>(body) ||
           std::holds_alternative<SetUpstreamParameters>(body) ||
           std::holds_alternative<AddDownstream>(body) ||
           std::holds_alternative<RemoveDownstream>(body);
}

void makeFrameworkCall(const Command& command) {
    hostplatform::Recorder::instance().add(
            hostplatform::CallRecord{command.line, command.name, command.args});
    std::visit(Caller{command.name}, command.body);
}

}  // namespace hostrunner
