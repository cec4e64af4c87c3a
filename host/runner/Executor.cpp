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
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeAgent.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/Properties.h"
#include "fakes/StandardError.h"

namespace hostrunner {
namespace {

using fakes::FakeVexaDevice;

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

fakes::FakeAgent::Mode agentMode(Agent::Mode mode) {
    switch (mode) {
        case Agent::Mode::kAbsent:
            return fakes::FakeAgent::Mode::kAbsent;
        case Agent::Mode::kFailing:
            return fakes::FakeAgent::Mode::kFailing;
        case Agent::Mode::kUp:
            break;
    }
    return fakes::FakeAgent::Mode::kUp;
}

// The world's commands; framework calls and the dump go elsewhere, console commands never get
// here.
struct WorldChange {
    // A record nobody reads is dropped without a trace, as the device would drop it.
    void operator()(const ModemEvent& c) const {
        FakeVexaDevice& device = FakeVexaDevice::instance();
        (void)(device.queueRecord(c.record, c.readSize) && device.waitUntilDrained());
    }
    void operator()(const ModemReadFail& c) const {
        FakeVexaDevice& device = FakeVexaDevice::instance();
        (void)(device.queueReadFailure(c.errnum) && device.waitUntilDrained());
    }
    void operator()(const ModemStats& c) const {
        FakeVexaDevice::instance().setStatsAnswer(c.rx, c.tx, c.dataLen);
    }
    void operator()(const ModemIoctl& c) const {
        FakeVexaDevice::instance().setIoctlError(c.errnum);
    }
    void operator()(const Agent& c) const { fakes::FakeAgent::setMode(agentMode(c.mode)); }
    void operator()(const FrameworkState& c) const { fakes::FakeFramework::setAlive(c.alive); }
    void operator()(const Prop& c) const { fakes::Properties::set(c.name, c.value); }
    void operator()(const Proc& c) const {
        auto proto = c.file == Proc::File::kTcp ? fakes::ConntrackFiles::Proto::kTcp
                                                : fakes::ConntrackFiles::Proto::kUdp;
        if (c.absent) {
            fakes::ConntrackFiles::setAbsent(proto);
        } else {
            fakes::ConntrackFiles::setContent(proto, c.content);
        }
    }
    void operator()(const Stderr& c) const { fakes::StandardError::setClosed(c.closed); }
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
    if (FakeVexaDevice::instance().waitReaderBlocked()) return;
    // No reader: without a device the thread ends at once, and its last log lines must not
    // mingle with those of the first command.
    const auto deadline = std::chrono::steady_clock::now() + FakeVexaDevice::kTimeout;
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
    // Records nobody read are dropped without a trace, as the device would drop them.
    (void)FakeVexaDevice::instance().waitUntilDrained();
    mQueued = false;
}

bool ScriptRunner::queue(const Command& command) {
    if (const auto* event = std::get_if<ModemEvent>(&command.body)) {
        (void)FakeVexaDevice::instance().queueRecord(event->record, event->readSize);
    } else if (const auto* failure = std::get_if<ModemReadFail>(&command.body)) {
        (void)FakeVexaDevice::instance().queueReadFailure(failure->errnum);
    } else {
        return false;
    }
    mQueued = true;
    return true;
}

}  // namespace hostrunner
