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

#include "Executor.h"

#include <dirent.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "FrameworkCalls.h"
#include "Interrupt.h"
#include "StateDump.h"
#include "hostplatform/FakeAgent.h"
#include "hostplatform/Framework.h"
#include "hostplatform/ModemEmulator.h"
#include "hostplatform/ProcFiles.h"
#include "hostplatform/Properties.h"
#include "hostplatform/StandardError.h"

namespace hostrunner {
namespace {

using hostplatform::ModemEmulator;

constexpr const char* kEventThreadName = "HandleEvent";

// Whether a thread of this process has the name. An ended thread leaves /proc/self/task even
// while nobody has joined it.
bool threadRunning(const std::string& name) {
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return false;
    bool found = false;
    while (dirent* entry = readdir(tasks)) {
        if (entry->d_name[0] == '.') continue;
        std::ifstream comm(std::string("/proc/self/task/") + entry->d_name + "/comm");
        std::string line;
        if (std::getline(comm, line) && line == name) found = true;
    }
    closedir(tasks);
    return found;
}

hostplatform::FakeAgent::Mode agentMode(Agent::Mode mode) {
    switch (mode) {
        case Agent::Mode::kAbsent:
            return hostplatform::FakeAgent::Mode::kAbsent;
        case Agent::Mode::kFailing:
            return hostplatform::FakeAgent::Mode::kFailing;
        case Agent::Mode::kUp:
            break;
    }
    return hostplatform::FakeAgent::Mode::kUp;
}

// The world's commands; framework calls and the dump go elsewhere, console commands never get
// here.
struct WorldChange {
    void operator()(const ModemEvent& c) const {
        // A record nobody reads is dropped without a trace, as the emulator promises.
        (void)ModemEmulator::instance().deliverEvent(c.record, c.readSize);
    }
    void operator()(const ModemReadFail& c) const {
        (void)ModemEmulator::instance().deliverReadFailure(c.errnum);
    }
    void operator()(const ModemStats& c) const {
        ModemEmulator::instance().setStatsAnswer(c.rx, c.tx, c.dataLen);
    }
    void operator()(const ModemIoctl& c) const {
        ModemEmulator::instance().setIoctlError(c.errnum);
    }
    void operator()(const Agent& c) const { hostplatform::FakeAgent::setMode(agentMode(c.mode)); }
    void operator()(const FrameworkState& c) const { hostplatform::Framework::setAlive(c.alive); }
    void operator()(const Prop& c) const { hostplatform::Properties::set(c.name, c.value); }
    void operator()(const Proc& c) const {
        auto proto = c.file == Proc::File::kTcp ? hostplatform::ProcFiles::Proto::kTcp
                                                : hostplatform::ProcFiles::Proto::kUdp;
        if (c.absent) {
            hostplatform::ProcFiles::instance().setAbsent(proto);
        } else {
            hostplatform::ProcFiles::instance().setContent(proto, c.content);
        }
    }
    void operator()(const Stderr& c) const { hostplatform::StandardError::setClosed(c.closed); }
    void operator()(const Wait& c) const {
        interruptibleSleep(std::chrono::milliseconds(c.millis));
    }
    // Applied before main started.
    void operator()(const DeviceAbsent&) const {}
    template <typename Other>
    void operator()(const Other&) const {}
};

}  // namespace

void waitForEventThread() {
    if (ModemEmulator::instance().waitReaderBlocked()) return;
    // No reader: without a device the thread ends at once, and its last log lines must not
    // mingle with those of the first command.
    const auto deadline = std::chrono::steady_clock::now() + ModemEmulator::kDeliveryTimeout;
    while (threadRunning(kEventThreadName) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void execute(const Command& command) {
    if (isFrameworkCall(command.body)) {
        makeFrameworkCall(command);
    } else if (std::holds_alternative<Dump>(command.body)) {
        dumpServiceState();
    } else {
        std::visit(WorldChange{}, command.body);
    }
}

void ScriptRunner::run(const Command& command) {
    if (queue(command)) return;
    finish();
    execute(command);
}

void ScriptRunner::finish() {
    if (!mQueued) return;
    // Records nobody read are dropped without a trace, as the emulator promises.
    (void)ModemEmulator::instance().waitQueueDrained();
    mQueued = false;
}

bool ScriptRunner::queue(const Command& command) {
    if (const auto* event = std::get_if<ModemEvent>(&command.body)) {
        (void)ModemEmulator::instance().queueEvent(event->record, event->readSize);
    } else if (const auto* failure = std::get_if<ModemReadFail>(&command.body)) {
        (void)ModemEmulator::instance().queueReadFailure(failure->errnum);
    } else {
        return false;
    }
    mQueued = true;
    return true;
}

}  // namespace hostrunner
