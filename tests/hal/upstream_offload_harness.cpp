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

#include "tests/hal/upstream_offload_harness.h"

#include <hidl/HidlSupport.h>
#include <hostplatform/FakeAgent.h>
#include <hostplatform/Framework.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/ProcFiles.h>
#include <hostplatform/StandardError.h>
#include <string.h>

#include <algorithm>

#include "datapath/vexa_protocol.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using hostplatform::FakeAgent;
using hostplatform::Framework;
using hostplatform::IoctlRecord;
using hostplatform::ModemEmulator;
using hostplatform::ProcFiles;
using hostplatform::Recorder;
using hostplatform::StandardError;
using vendor::tetheroffload::TetherOffloadHal;

namespace offloadtest {

bool OffloadState::operator==(const OffloadState& o) const {
    return upstream == o.upstream && usbDownstream == o.usbDownstream &&
           wifiDownstream == o.wifiDownstream && usbActive == o.usbActive &&
           wifiActive == o.wifiActive;
}

std::ostream& operator<<(std::ostream& os, const OffloadState& s) {
    return os << "{up '" << s.upstream << "', usb '" << s.usbDownstream << "' "
              << (s.usbActive ? "active" : "inactive") << ", wifi '" << s.wifiDownstream << "' "
              << (s.wifiActive ? "active" : "inactive") << "}";
}

namespace {

template <typename T>
T readAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

// A name field must hold at most 15 characters and end in NUL within its 16 bytes.
std::string nameAt(const std::vector<uint8_t>& bytes, size_t offset) {
    if (offset + VEXA_IFNAME_SIZE > bytes.size()) return "<missing>";
    if (bytes[offset + VEXA_IFNAME_SIZE - 1] != 0) return "<unterminated>";
    return std::string(reinterpret_cast<const char*>(bytes.data() + offset));
}

const char* messageName(uint32_t msg) {
    switch (msg) {
        case VEXA_CMSG_ENABLE:
            return "enable";
        case VEXA_CMSG_DISABLE:
            return "disable";
        case VEXA_CMSG_ACTIVATE:
            return "activate";
        case VEXA_CMSG_DEACTIVATE:
            return "deactivate";
        case VEXA_CMSG_GET_DATA_USAGE:
            return "stats";
        case VEXA_CMSG_SET_DATA_LIMIT:
            return "limit";
        case VEXA_CMSG_SET_CT_TIMEOUT:
            return "timeouts";
        case VEXA_CMSG_SET_WARNING_AND_LIMIT:
            return "warning+limit";
        default:
            return "unknown";
    }
}

// The text between `head` and `tail` in the last line that has both, or "<not logged>".
std::string lastBetween(const std::vector<std::string>& lines, const std::string& head,
                        const std::string& tail) {
    for (auto it = lines.rbegin(); it != lines.rend(); ++it) {
        const std::string& l = *it;
        if (l.size() < head.size() + tail.size()) continue;
        if (l.compare(0, head.size(), head) != 0) continue;
        if (l.compare(l.size() - tail.size(), tail.size(), tail) != 0) continue;
        return l.substr(head.size(), l.size() - head.size() - tail.size());
    }
    return "<not logged>";
}

}  // namespace

std::string describeRequest(const IoctlRecord& record) {
    const std::vector<uint8_t>& b = record.bytes;
    uint32_t msg = readAt<uint32_t>(b, offsetof(vexa_common_hdr_t, msg));
    std::string out = std::string(messageName(msg)) + " app=" +
                      std::to_string(readAt<uint32_t>(b, offsetof(vexa_common_hdr_t, app_type)));
    switch (msg) {
        case VEXA_CMSG_ACTIVATE:
            out += " up=" + nameAt(b, offsetof(vexa_activate_req_t, up_iface)) +
                   " down=" + nameAt(b, offsetof(vexa_activate_req_t, down_iface));
            break;
        case VEXA_CMSG_SET_DATA_LIMIT:
            out += " iface=" + nameAt(b, offsetof(vexa_data_limit_req_t, iface)) + " limit=" +
                   std::to_string(readAt<uint64_t>(b, offsetof(vexa_data_limit_req_t, limit_bytes)));
            break;
        case VEXA_CMSG_SET_WARNING_AND_LIMIT:
            out += " iface=" + nameAt(b, offsetof(vexa_warning_limit_req_t, iface)) + " warning=" +
                   std::to_string(
                           readAt<uint64_t>(b, offsetof(vexa_warning_limit_req_t, warning_bytes))) +
                   " limit=" +
                   std::to_string(
                           readAt<uint64_t>(b, offsetof(vexa_warning_limit_req_t, limit_bytes)));
            break;
        default:
            break;
    }
    return out;
}

std::vector<std::string> deviceRequests() {
    std::vector<std::string> out;
    for (const IoctlRecord& r : Recorder::instance().all<IoctlRecord>()) {
        out.push_back(describeRequest(r));
    }
    return out;
}

std::vector<std::string> agentCommands() {
    std::vector<std::string> out;
    for (const auto& r : Recorder::instance().all<hostplatform::AgentRecord>()) {
        out.push_back(r.cmd);
    }
    return out;
}

std::vector<std::string> logLines() {
    std::vector<std::string> out;
    for (const auto& r : Recorder::instance().all<hostplatform::LogRecord>()) {
        if (r.tag == "TetherOffload") out.push_back(r.msg);
    }
    return out;
}

bool containsInOrder(const std::vector<std::string>& lines,
                     const std::vector<std::string>& expected) {
    auto at = lines.begin();
    for (const std::string& want : expected) {
        at = std::find(at, lines.end(), want);
        if (at == lines.end()) return false;
        ++at;
    }
    return true;
}

bool contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

void OffloadHalTest::SetUp() {
    FakeAgent::setMode(FakeAgent::Mode::kUp);
    StandardError::setClosed(false);
    Framework::setAlive(true);
    ModemEmulator::instance().setIoctlError(0);
    ModemEmulator::instance().setStatsAnswer(0, 0);
    // Fixed timeouts: the test machine may have no conntrack module loaded.
    ProcFiles::instance().setContent(ProcFiles::Proto::kTcp, "7440\n");
    ProcFiles::instance().setContent(ProcFiles::Proto::kUdp, "180\n");
    mHal = new TetherOffloadHal();
    Recorder::instance().clear();
}

void OffloadHalTest::TearDown() {
    ModemEmulator::instance().setIoctlError(0);
    mHal->stopOffload([](bool, const hidl_string&) {});
    mHal.clear();
    ProcFiles::instance().reset();
    Recorder::instance().clear();
}

void OffloadHalTest::initialise() {
    Reply reply;
    mHal->initOffload(Framework::makeCallback(Framework::Version::k1_1),
                      [&](bool ok, const hidl_string& msg) {
                          reply = {ok, msg};
                      });
    ASSERT_EQ(reply, Reply(true, "Successful"));
    Recorder::instance().clear();
}

Reply OffloadHalTest::upstream(const std::string& iface, const std::string& v4Addr,
                               const std::string& v4Gw, const std::vector<std::string>& v6Gws) {
    hidl_vec<hidl_string> gateways(v6Gws.size());
    std::copy(v6Gws.begin(), v6Gws.end(), gateways.begin());
    Reply reply(false, "<no reply>");
    mHal->setUpstreamParameters(iface, v4Addr, v4Gw, gateways, [&](bool ok, const hidl_string& msg) {
        reply = {ok, msg};
    });
    return reply;
}

Reply OffloadHalTest::add(const std::string& iface, const std::string& prefix) {
    Reply reply(false, "<no reply>");
    mHal->addDownstream(iface, prefix, [&](bool ok, const hidl_string& msg) { reply = {ok, msg}; });
    return reply;
}

Reply OffloadHalTest::remove(const std::string& iface, const std::string& prefix) {
    Reply reply(false, "<no reply>");
    mHal->removeDownstream(iface, prefix, [&](bool ok, const hidl_string& msg) {
        reply = {ok, msg};
    });
    return reply;
}

OffloadState OffloadHalTest::probeState() {
    OffloadState state;
    Recorder::instance().clear();

    // All-empty parameters are refused before anything changes, yet the closing line names
    // both stored downstreams.
    upstream("");
    std::string downIfs = lastBetween(logLines(), "setUpstreamParameters up-if:; down-if(", ")\n");
    size_t comma = downIfs.find(',');
    state.usbDownstream = downIfs.substr(0, comma);
    state.wifiDownstream = comma == std::string::npos ? "<not logged>" : downIfs.substr(comma + 1);

    // Removing a kind ends its offload only when it is active, and says which it did.
    remove("mdbr0", kUsbPrefix);
    state.usbActive = contains(logLines(), "removeDownstream() de-active usb vexa\n");
    remove("ap0", kWifiPrefix);
    state.wifiActive = contains(logLines(), "removeDownstream() de-active wh vexa\n");

    state.upstream = lastBetween(logLines(), "removeDownstream(donw-if: ap0; up-if: ", ")\n");
    return state;
}

}  // namespace offloadtest
