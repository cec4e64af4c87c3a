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

#include "fuzz/support/FuzzWorld.h"

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>

#include <utility>
#include <variant>

#include "fakes/Crossings.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/LogTap.h"
#include "fakes/Pauses.h"
#include "fuzz/support/Finding.h"

using fakes::FakeFramework;
using fakes::FakeVexaDevice;

namespace fuzzsupport {
namespace {

std::string words(const fakes::CallbackRecord& r) {
    if (r.op != "updateTimeout") return r.op + " " + std::to_string(r.event);
    return r.op + " " + r.src.addr + ":" + std::to_string(r.src.port) + " " + r.dst.addr + ":" +
           std::to_string(r.dst.port) + " " + std::to_string(r.proto);
}

}  // namespace

void prepareWorld() {
    fakes::skipPauses(true);
    fakes::LogTap::setPassThrough(false);
    CrossingLog::instance();
}

android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback> makeCallback(
        CallbackVersion version) {
    switch (version) {
        case CallbackVersion::k1_0:
            return FakeFramework::makeCallback(FakeFramework::Version::k1_0);
        case CallbackVersion::k1_1:
            return FakeFramework::makeCallback(FakeFramework::Version::k1_1);
        case CallbackVersion::kNone:
            break;
    }
    return nullptr;
}

void feed(const std::vector<ModemRead>& reads) {
    FakeVexaDevice& device = FakeVexaDevice::instance();
    bool taken = true;
    for (const ModemRead& read : reads) {
        taken = taken && (read.errnum != 0 ? device.queueReadFailure(read.errnum)
                                           : device.queueRecord(read.bytes, read.bytes.size()));
    }
    if (!taken || !device.waitUntilDrained()) finding("the event thread stopped taking records");
}

CrossingLog& CrossingLog::instance() {
    // Never destroyed: the event thread may still cross while the process exits.
    static CrossingLog* log = [] {
        auto* created = new CrossingLog();
        fakes::Observers::add([created](const fakes::Crossing& c) {
            std::lock_guard<std::mutex> lock(created->mLock);
            Crossed& out = created->mCrossed;
            if (const auto* r = std::get_if<fakes::CallbackRecord>(&c)) {
                out.callbacks.push_back(words(*r));
            } else if (const auto* r = std::get_if<fakes::IoctlRecord>(&c)) {
                out.requests.push_back(r->bytes);
            } else if (const auto* r = std::get_if<fakes::AgentRecord>(&c)) {
                out.agentLines.push_back(r->cmd);
            } else if (const auto* r = std::get_if<fakes::LogRecord>(&c)) {
                if (r->tag == "TetherOffload") out.logs.emplace_back(r->prio, r->msg);
            }
        });
        return created;
    }();
    return *log;
}

Crossed CrossingLog::take() {
    std::lock_guard<std::mutex> lock(mLock);
    return std::exchange(mCrossed, Crossed());
}

}  // namespace fuzzsupport
