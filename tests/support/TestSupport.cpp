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

#include <fcntl.h>
#include <hostplatform/FakeAgent.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/ProcFiles.h>
#include <hostplatform/StandardError.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>

#include "datapath/vexa_protocol.h"
#include "tests/support/RetainingSink.h"

using hostplatform::Framework;
using hostplatform::ModemEmulator;
using hostplatform::ProcFiles;

namespace testsupport {

namespace {

template <typename T>
T readAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

// A name field holds at most 15 characters and ends in NUL within its 16 bytes.
std::string nameAt(const std::vector<uint8_t>& bytes, size_t offset) {
    if (offset + VEXA_IFNAME_SIZE > bytes.size()) return "<missing>";
    if (bytes[offset + VEXA_IFNAME_SIZE - 1] != 0) return "<unterminated>";
    return reinterpret_cast<const char*>(bytes.data() + offset);
}

std::string describeRequest(const std::vector<uint8_t>& b) {
    static const char* const kNames[] = {"enable", "disable", "activate", "deactivate",
                                         "stats",  "limit",   "timeouts", "warning+limit"};
    const uint32_t msg = readAt<uint32_t>(b, offsetof(vexa_common_hdr_t, msg));
    std::string out = msg < 8 ? kNames[msg] : "unknown";
    out += " app=" + std::to_string(readAt<uint32_t>(b, offsetof(vexa_common_hdr_t, app_type)));
    if (msg == VEXA_CMSG_ACTIVATE) {
        out += " up=" + nameAt(b, offsetof(vexa_activate_req_t, up_iface)) +
               " down=" + nameAt(b, offsetof(vexa_activate_req_t, down_iface));
    } else if (msg == VEXA_CMSG_SET_DATA_LIMIT || msg == VEXA_CMSG_SET_WARNING_AND_LIMIT) {
        out += " iface=" + nameAt(b, offsetof(vexa_data_limit_req_t, iface));
        if (msg == VEXA_CMSG_SET_WARNING_AND_LIMIT) {
            out += " warning=" + std::to_string(readAt<uint64_t>(
                                         b, offsetof(vexa_warning_limit_req_t, warning_bytes)));
        }
        out += " limit=" +
               std::to_string(readAt<uint64_t>(b, offsetof(vexa_data_limit_req_t, limit_bytes)));
    }
    return out;
}

}  // namespace

Lines deviceRequests() {
    Lines out;
    for (const auto& r : testsupport::recorded().all<hostplatform::IoctlRecord>()) {
        out.push_back(describeRequest(r.bytes));
    }
    return out;
}

Lines agentCommands() {
    Lines out;
    for (const auto& r : testsupport::recorded().all<hostplatform::AgentRecord>())
        out.push_back(r.cmd);
    return out;
}

std::vector<LogLine> logEntries() {
    std::vector<LogLine> out;
    for (const auto& r : testsupport::recorded().all<hostplatform::LogRecord>()) {
        if (r.tag == "TetherOffload") out.emplace_back(r.prio, r.msg);
    }
    return out;
}

Lines logLines() {
    Lines out;
    for (const LogLine& line : logEntries()) out.push_back(line.second);
    return out;
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

TestHandle::TestHandle(int fds) {
    if (fds == kNoHandle) return;
    mNative = native_handle_create(fds, 0);
    for (int i = 0; i < fds; ++i) mNative->data[i] = open("/dev/null", O_RDONLY | O_CLOEXEC);
}

TestHandle::~TestHandle() {
    if (mNative == nullptr) return;
    native_handle_close(mNative);
    native_handle_delete(mNative);
}

bool TestHandle::descriptorsOpen() const {
    for (int i = 0; mNative != nullptr && i < mNative->numFds; ++i) {
        if (fcntl(mNative->data[i], F_GETFD) == -1) return false;
    }
    return true;
}

void HalTest::SetUp() {
    hostplatform::FakeAgent::setMode(hostplatform::FakeAgent::Mode::kUp);
    hostplatform::StandardError::setClosed(false);
    Framework::setAlive(true);
    ModemEmulator::instance().restoreDefaults();
    // The test machine may have no conntrack module loaded.
    ProcFiles::instance().setContent(ProcFiles::Proto::kTcp, "7440\n");
    ProcFiles::instance().setContent(ProcFiles::Proto::kUdp, "180\n");
    mHal = new vendor::tetheroffload::TetherOffloadHal();
    testsupport::recorded().clear();
}

void HalTest::TearDown() {
    ModemEmulator::instance().restoreDefaults();
    Framework::setAlive(true);
    mHal->stopOffload([](bool, const android::hardware::hidl_string&) {});
    mHal.clear();
    ProcFiles::instance().reset();
    testsupport::recorded().clear();
}

Reply HalTest::init(Framework::Version version) {
    return init(Framework::makeCallback(version));
}

Reply HalTest::init(const android::sp<
                    android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb) {
    return replyOf([&](ResultCallback r) { return mHal->initOffload(cb, r); });
}

Reply HalTest::stop() {
    return replyOf([&](ResultCallback r) { return mHal->stopOffload(r); });
}

}  // namespace testsupport
