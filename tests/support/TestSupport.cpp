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

#include "tests/support/TestSupport.h"

#include <stdio.h>

#include <algorithm>

#include "datapath/vexa_protocol.h"
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeAgent.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/StandardError.h"

using fakes::ConntrackFiles;
using fakes::FakeFramework;
using fakes::FakeVexaDevice;

namespace testsupport {

Lines deviceRequests() {
    Lines out;
    for (const auto& r : observed().of<fakes::IoctlRecord>()) {
        out.push_back(describeVexaRequest(r.bytes.data(), r.bytes.size()));
    }
    return out;
}

Lines agentCommands() {
    Lines out;
    for (const auto& r : observed().of<fakes::AgentRecord>()) out.push_back(r.cmd);
    return out;
}

std::vector<LogLine> logEntries(int prio) {
    std::vector<LogLine> out;
    for (const auto& r : observed().of<fakes::LogRecord>()) {
        if (r.tag == "TetherOffload" && (prio == 0 || r.prio == prio)) {
            out.emplace_back(r.prio, r.msg);
        }
    }
    return out;
}

Lines logLines() {
    Lines out;
    for (const LogLine& line : logEntries()) out.push_back(line.second);
    return out;
}

LogLine lookupLine(const void* client) {
    char text[48];
    snprintf(text, sizeof(text), " GetInstance p=%p\n", client);
    return info(text);
}

bool deliver(const std::vector<uint8_t>& record) {
    FakeVexaDevice& device = FakeVexaDevice::instance();
    return device.queueRecord(record, record.size()) && device.waitUntilDrained();
}

bool deliverReadFailure(int errnum) {
    FakeVexaDevice& device = FakeVexaDevice::instance();
    return device.queueReadFailure(errnum) && device.waitUntilDrained();
}

bool containsInOrder(const Lines& lines, const Lines& expected) {
    auto at = lines.begin();
    for (const std::string& want : expected) {
        at = std::find(at, lines.end(), want);
        if (at == lines.end()) return false;
        ++at;
    }
    return true;
}

void HalTest::SetUp() {
    fakes::FakeAgent::setMode(fakes::FakeAgent::Mode::kUp);
    fakes::StandardError::setClosed(false);
    FakeFramework::setAlive(true);
    FakeVexaDevice::instance().restoreDefaults();
    // The machine may have no conntrack module loaded.
    ConntrackFiles::setContent(ConntrackFiles::Proto::kTcp, "7440\n");
    ConntrackFiles::setContent(ConntrackFiles::Proto::kUdp, "180\n");
    mHal = new vendor::tetheroffload::TetherOffloadHal();
    observed().clear();
}

void HalTest::TearDown() {
    FakeVexaDevice::instance().restoreDefaults();
    FakeFramework::setAlive(true);
    mHal->stopOffload([](bool, const android::hardware::hidl_string&) {});
    mHal.clear();
    ConntrackFiles::reset();
    observed().clear();
}

Reply HalTest::init(FakeFramework::Version version) {
    return init(FakeFramework::makeCallback(version));
}

Reply HalTest::init(const android::sp<
                    android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb) {
    return replyOf([&](ResultCallback r) { return mHal->initOffload(cb, r); });
}

Reply HalTest::stop() {
    return replyOf([&](ResultCallback r) { return mHal->stopOffload(r); });
}

}  // namespace testsupport
