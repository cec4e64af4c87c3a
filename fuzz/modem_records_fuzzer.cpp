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

// Modem records: arbitrary bytes become what successive read()s on "/dev/vexa" return (content
// and size, and failed reads), consumed by the service's own event thread with a 1.0 callback, a
// 1.1 callback or none registered. Every input must leave the sanitizers silent and make the
// framework hear exactly what the device protocol and the event thread's rules say (EventModel):
// nothing decided on bytes the read did not return, only values the framework defines, and
// updateTimeout only for a 28-byte connection update with its slots mapped as the service defines
// them. Every line the records cause must have its level (LogLevels).
//
// Input: one set-up byte (callback version = b % 3: none, 1.0, 1.1; (b / 3) % 2: the framework
// is dead; (b / 6) % 2: a userdebug build, which logs addresses), then reads as ByteReader.h
// describes them.

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/Properties.h"
#include "fuzz/support/ByteReader.h"
#include "fuzz/support/EventModel.h"
#include "fuzz/support/Finding.h"
#include "fuzz/support/FuzzWorld.h"
#include "fuzz/support/LogLevels.h"
#include "timeout/ConnTimeoutUpdate.h"

using fuzzsupport::CallbackVersion;
using fuzzsupport::CrossingLog;
using fuzzsupport::ModemRead;

namespace {

namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

constexpr size_t kMaxReads = 64;

// The relay as initOffload makes it for a callback of this version.
ConnTimeoutUpdate* makeRelay(CallbackVersion version) {
    auto cb = fuzzsupport::makeCallback(version);
    if (cb == nullptr) return nullptr;
    android::sp<V1_1::ITetheringOffloadCallback> cb11 =
            V1_1::ITetheringOffloadCallback::castFrom(cb).withDefault(nullptr);
    if (cb11 != nullptr) return new ConnTimeoutUpdate(cb11);
    return new ConnTimeoutUpdate(cb);
}

std::string listed(const std::vector<std::string>& entries) {
    std::string out;
    for (const std::string& e : entries) out += "\n    " + e;
    return entries.empty() ? "\n    (nothing)" : out;
}

void check(const std::vector<ModemRead>& reads, CallbackVersion version) {
    std::vector<std::string> expected;
    for (const ModemRead& read : reads) {
        for (std::string& e : fuzzsupport::expectedCallbacks(read, version)) {
            expected.push_back(std::move(e));
        }
    }
    const fuzzsupport::Crossed crossed = CrossingLog::instance().take();
    const std::string level = fuzzsupport::levelProblem(crossed.logs);
    if (!level.empty()) fuzzsupport::finding(level);
    const std::vector<std::string>& heard = crossed.callbacks;
    std::string why;
    for (const std::string& entry : heard) {
        if (!fuzzsupport::definedByFramework(entry, version, &why)) {
            fuzzsupport::finding("the framework got " + entry + ": " + why);
        }
    }
    if (heard != expected) {
        fuzzsupport::finding("the framework heard:" + listed(heard) +
                             "\nbut the records say:" + listed(expected));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    fuzzsupport::prepareWorld();
    // Opens the fake device and starts the one event thread of the process.
    if (OffloadEventHandle::createEventThread() != 0 ||
        !fakes::FakeVexaDevice::instance().waitReaderBlocked(fuzzsupport::kStartLimit)) {
        fuzzsupport::finding("the event thread did not start reading the device");
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::ByteReader in(data, size);
    const uint8_t setup = in.u8();
    const auto version = static_cast<CallbackVersion>(setup % 3);
    fakes::Properties::set("ro.build.type", (setup / 6) % 2 == 0 ? "user" : "userdebug");

    std::vector<ModemRead> reads;
    while (!in.empty() && reads.size() < kMaxReads) reads.push_back(fuzzsupport::takeModemRead(in));

    OffloadEventHandle* handle = OffloadEventHandle::getInstance();
    // Made while the framework lives, as initOffload made it; the framework may die after.
    fakes::FakeFramework::setAlive(true);
    ConnTimeoutUpdate* relay = makeRelay(version);
    fakes::FakeFramework::setAlive((setup / 3) % 2 == 0);
    if (relay != nullptr) handle->registerTimeoutCallback(relay);
    CrossingLog::instance().take();
    fuzzsupport::feed(reads);
    handle->unregisterTimeoutCallback(relay);
    delete relay;

    check(reads, version);
    return 0;
}
