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

// Framework call sequences: arbitrary bytes become a sequence of the ten framework calls with
// arbitrary arguments (empty, long, non-ASCII, with embedded NUL; any numbers; null, 1.0 and 1.1
// callbacks; handles with 0, 1, 2 or no descriptors), interleaved with modem events and with
// device, agent, framework, standard-error and conntrack-file changes, run on a fresh HAL object
// for each input. Checked on every call, besides the sanitizers, against the HAL as the rules
// describe it (support/CallModel):
// - it answers exactly once, with the reply the rules give: flag and exact message, or counters;
// - the device gets exactly the requests the rules call for, byte for byte and in order;
// - the network agent gets exactly the bridge's command lines, in their order;
// - the closing log line names the upstream and the stored downstreams as the rules leave them;
// - the framework hears nothing during a call, and from events what support/EventModel says;
// - every log line has its level (support/LogLevels);
// - after a stopOffload that reports success, a fixed probe of calls finds nothing left behind.
//
// Input: a sequence of operations, each a byte (b % 16, table in runOp) and its arguments.
// Strings are a byte s: below 0xC0 one of kWords; 0xC0-0xFE that many minus 0xC0 raw bytes;
// 0xFF a 16-bit length (up to 1023) and that many raw bytes.

#include <stddef.h>
#include <stdint.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeAgent.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/StandardError.h"
#include "fuzz/support/ByteReader.h"
#include "fuzz/support/CallModel.h"
#include "fuzz/support/EventModel.h"
#include "fuzz/support/Finding.h"
#include "fuzz/support/FuzzWorld.h"
#include "fuzz/support/LogLevels.h"
#include "hal/TetherOffloadHal.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using fakes::ConntrackFiles;
using fakes::FakeAgent;
using fuzzsupport::CallbackVersion;
using fuzzsupport::CrossingLog;
using fuzzsupport::Expected;
using fuzzsupport::finding;
using vendor::tetheroffload::TetherOffloadHal;

namespace {

constexpr size_t kMaxOps = 48;
constexpr size_t kMaxLongString = 1023;
constexpr size_t kLogBufferText = 1023;

const char* const kWords[] = {
        "",
        "wanif0",
        "wanif-lan",
        "wanif0123456789abcdef",
        "mdbr0",
        "mdbr1",
        "ap0",
        "ap1",
        "apple",
        "wlan0",
        "rmnet_data0",
        "dummy0",
        "eth0",
        "rndis0",
        "192.168.42.0/24",
        "192.168.43.0/24",
        "fe80::/64",
        "10.0.0.1",
        "10.0.0.5",
        "fe80::1",
        "::1",
        "/24",
        "192.168.42.0/",
        "10.0.0.1/33",
        "fe80::/129",
        "300.1.1.1",
        "1.2.3.4/0",
        "10.0.0.1:80/24",
};

// The conntrack files (null: absent) and the seconds the timeout request must carry for them.
struct Conntrack {
    const char* tcp;
    const char* udp;
    int32_t tcpSeconds;
    int32_t udpSeconds;
};

const Conntrack kConntrack[] = {
        {"7200\n", "120\n", 7200, 120},
        {nullptr, nullptr, 432000, 180},
        {"0\n", "-5", 432000, 180},
        {" 600x", "+60\n", 600, 60},
};

struct World {
    int ioctlError = 0;
    uint64_t rx = 0;
    uint64_t tx = 0;
    uint32_t statsLen = 128;
    FakeAgent::Mode agent = FakeAgent::Mode::kUp;
    bool frameworkAlive = true;
    bool stderrClosed = false;
    size_t conntrack = 0;
};

World gWorld;
fuzzsupport::CallModel gModel;
bool gProbing = false;

void setFile(ConntrackFiles::Proto proto, const char* content) {
    if (content == nullptr) {
        ConntrackFiles::setAbsent(proto);
    } else {
        ConntrackFiles::setContent(proto, content);
    }
}

// Hands gWorld to the fakes, and to the model what it changes in the rules' outcome.
void applyWorld() {
    const World& w = gWorld;
    fakes::FakeVexaDevice::instance().setIoctlError(w.ioctlError);
    fakes::FakeVexaDevice::instance().setStatsAnswer(w.rx, w.tx, w.statsLen);
    FakeAgent::setMode(w.agent);
    fakes::FakeFramework::setAlive(w.frameworkAlive);
    fakes::StandardError::setClosed(w.stderrClosed);
    const Conntrack& files = kConntrack[w.conntrack];
    setFile(ConntrackFiles::Proto::kTcp, files.tcp);
    setFile(ConntrackFiles::Proto::kUdp, files.udp);

    fuzzsupport::Surroundings& s = gModel.world;
    s.ioctlError = w.ioctlError;
    s.rx = w.rx;
    s.tx = w.tx;
    s.statsLen = w.statsLen;
    s.agentHears = w.agent != FakeAgent::Mode::kAbsent && !w.stderrClosed;
    s.frameworkAlive = w.frameworkAlive;
    s.udpTimeout = files.udpSeconds;
    s.tcpTimeout = files.tcpSeconds;
}

// ---- the calls and their check

struct Reply {
    int answers = 0;
    bool ok = false;
    std::string msg;
    uint64_t rx = 0;
    uint64_t tx = 0;
};

std::string hex(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (uint8_t b : bytes) {
        out += kDigits[b >> 4];
        out += kDigits[b & 15];
    }
    return out;
}

std::string listed(const std::vector<std::string>& entries) {
    std::string out;
    for (const std::string& e : entries) out += "\n      " + e;
    return entries.empty() ? "\n      (nothing)" : out;
}

std::string listed(const std::vector<std::vector<uint8_t>>& requests) {
    std::vector<std::string> texts;
    for (const auto& r : requests) texts.push_back(hex(r));
    return listed(texts);
}

// What crossed during the call against what the rules expect of it.
void check(const char* op, const Reply& got, const Expected& want, bool stats) {
    if (got.answers != 1) finding(std::string(op) + " answered " + std::to_string(got.answers));
    const fuzzsupport::Crossed crossed = CrossingLog::instance().take();
    std::string wrong;
    if (stats && (got.rx != want.rx || got.tx != want.tx)) {
        wrong += "\n  counters " + std::to_string(got.rx) + "/" + std::to_string(got.tx) +
                 ", the rules: " + std::to_string(want.rx) + "/" + std::to_string(want.tx);
    }
    if (!stats && (got.ok != want.ok || got.msg != want.msg)) {
        wrong += "\n  reply " + std::to_string(got.ok) + " \"" + got.msg +
                 "\", the rules: " + std::to_string(want.ok) + " \"" + want.msg + "\"";
    }
    if (crossed.requests != want.requests) {
        wrong += "\n  requests:" + listed(crossed.requests) +
                 "\n    the rules:" + listed(want.requests);
    }
    if (crossed.agentLines != want.agentLines) {
        wrong += "\n  agent lines:" + listed(crossed.agentLines) +
                 "\n    the rules:" + listed(want.agentLines);
    }
    if (!crossed.callbacks.empty()) wrong += "\n  the framework heard:" + listed(crossed.callbacks);
    // liblog cuts a longer line at its buffer.
    const std::string last = crossed.logs.empty() ? "" : crossed.logs.back().second;
    if (!want.closingLine.empty() && want.closingLine.size() < kLogBufferText &&
        last != want.closingLine) {
        wrong += "\n  closing line \"" + last + "\", the rules: \"" + want.closingLine + "\"";
    }
    const std::string level = fuzzsupport::levelProblem(crossed.logs);
    if (!level.empty()) wrong += "\n  " + level;
    if (!wrong.empty()) finding(std::string(op) + ":" + wrong);
}

template <typename Call>
Reply statusCall(Call call) {
    Reply r;
    Return<void> ret = call([&](bool ok, const hidl_string& msg) {
        ++r.answers;
        r.ok = ok;
        r.msg = msg;
    });
    if (!ret.isOk()) finding("a call failed in transport");
    return r;
}

// A handle of 0 to 2 descriptors, or (3) no native handle.
int takeHandleSize(fuzzsupport::ByteReader& in) {
    const int fds = in.u8() % 4;
    return fds > 2 ? fakes::FrameworkHandle::kNoHandle : fds;
}

hidl_string takeString(fuzzsupport::ByteReader& in) {
    const uint8_t s = in.u8();
    if (s < 0xC0) return kWords[s % (sizeof(kWords) / sizeof(kWords[0]))];
    const size_t length = s == 0xFF ? in.u16() % (kMaxLongString + 1) : s - 0xC0u;
    const std::string raw = in.bytes(length);
    return hidl_string(raw.data(), raw.size());
}

hidl_vec<hidl_string> takeStrings(fuzzsupport::ByteReader& in, size_t max) {
    hidl_vec<hidl_string> out(in.u8() % (max + 1));
    for (size_t i = 0; i < out.size(); ++i) out[i] = takeString(in);
    return out;
}

std::vector<std::string> strings(const hidl_vec<hidl_string>& list) {
    return std::vector<std::string>(list.begin(), list.end());
}

void feedEvent(fuzzsupport::ByteReader& in) {
    const fuzzsupport::ModemRead read = fuzzsupport::takeModemRead(in);
    CrossingLog::instance().take();
    fuzzsupport::feed({read});
    const fuzzsupport::Crossed crossed = CrossingLog::instance().take();
    if (crossed.callbacks != fuzzsupport::expectedCallbacks(read, gModel.relay())) {
        finding("an event reached the framework other than the records say:" +
                listed(crossed.callbacks));
    }
    const std::string level = fuzzsupport::levelProblem(crossed.logs);
    if (!level.empty()) finding("event: " + level);
}

void probe(TetherOffloadHal& hal);

// ---- one operation of the input

void runOp(TetherOffloadHal& hal, fuzzsupport::ByteReader& in) {
    CrossingLog::instance().take();
    const int op = in.u8() % 16;
    switch (op) {
        case 0: {
            const int fds1 = takeHandleSize(in);
            const int fds2 = takeHandleSize(in);
            fakes::FrameworkHandle fd1(fds1), fd2(fds2);
            const Expected want = gModel.setHandles(fds1, fds2);
            check("setHandles",
                  statusCall([&](auto cb) { return hal.setHandles(fd1.get(), fd2.get(), cb); }),
                  want, false);
            if (!fd1.descriptorsOpen() || !fd2.descriptorsOpen()) {
                finding("setHandles closed a descriptor it only borrowed");
            }
            break;
        }
        case 1: {
            const auto version = static_cast<CallbackVersion>(in.u8() % 3);
            const Expected want = gModel.initOffload(version);
            check("initOffload", statusCall([&](auto cb) {
                      return hal.initOffload(fuzzsupport::makeCallback(version), cb);
                  }),
                  want, false);
            break;
        }
        case 2: {
            const Expected want = gModel.stopOffload();
            check("stopOffload", statusCall([&](auto cb) { return hal.stopOffload(cb); }), want,
                  false);
            if (want.ok && !gProbing) probe(hal);
            break;
        }
        case 3: {
            const hidl_vec<hidl_string> prefixes = takeStrings(in, 4);
            const Expected want = gModel.setLocalPrefixes(strings(prefixes));
            check("setLocalPrefixes",
                  statusCall([&](auto cb) { return hal.setLocalPrefixes(prefixes, cb); }), want,
                  false);
            break;
        }
        case 4: {
            const hidl_string upstream = takeString(in);
            Reply r;
            Return<void> ret = hal.getForwardedStats(upstream, [&](uint64_t rx, uint64_t tx) {
                ++r.answers;
                r.rx = rx;
                r.tx = tx;
            });
            if (!ret.isOk()) finding("getForwardedStats failed in transport");
            check("getForwardedStats", r, gModel.getForwardedStats(), true);
            break;
        }
        case 5: {
            const hidl_string upstream = takeString(in);
            const uint64_t limit = in.u64();
            check("setDataLimit",
                  statusCall([&](auto cb) { return hal.setDataLimit(upstream, limit, cb); }),
                  gModel.setDataLimit(upstream, limit), false);
            break;
        }
        case 6: {
            const hidl_string upstream = takeString(in);
            const uint64_t warning = in.u64();
            const uint64_t limit = in.u64();
            check("setDataWarningAndLimit", statusCall([&](auto cb) {
                      return hal.setDataWarningAndLimit(upstream, warning, limit, cb);
                  }),
                  gModel.setDataWarningAndLimit(upstream, warning, limit), false);
            break;
        }
        case 7: {
            const hidl_string iface = takeString(in);
            const hidl_string v4Addr = takeString(in);
            const hidl_string v4Gw = takeString(in);
            const hidl_vec<hidl_string> v6Gws = takeStrings(in, 3);
            const Expected want = gModel.setUpstreamParameters(iface, v4Addr, v4Gw, strings(v6Gws));
            check("setUpstreamParameters", statusCall([&](auto cb) {
                      return hal.setUpstreamParameters(iface, v4Addr, v4Gw, v6Gws, cb);
                  }),
                  want, false);
            break;
        }
        case 8: {
            const hidl_string iface = takeString(in);
            const hidl_string prefix = takeString(in);
            const Expected want = gModel.addDownstream(iface, prefix);
            check("addDownstream",
                  statusCall([&](auto cb) { return hal.addDownstream(iface, prefix, cb); }), want,
                  false);
            break;
        }
        case 9: {
            const hidl_string iface = takeString(in);
            const hidl_string prefix = takeString(in);
            const Expected want = gModel.removeDownstream(iface, prefix);
            check("removeDownstream",
                  statusCall([&](auto cb) { return hal.removeDownstream(iface, prefix, cb); }),
                  want, false);
            break;
        }
        case 10:
            feedEvent(in);
            break;
        case 11:
            gWorld.ioctlError = in.u8() % 3 == 0 ? 0 : (in.u8() % 40) + 1;
            applyWorld();
            break;
        case 12:
            gWorld.rx = in.u64();
            gWorld.tx = in.u64();
            gWorld.statsLen = in.u8() % 2 == 0 ? 128 : in.u32();
            applyWorld();
            break;
        case 13:
            gWorld.agent = static_cast<FakeAgent::Mode>(in.u8() % 3);
            applyWorld();
            break;
        case 14:
            gWorld.frameworkAlive = in.u8() % 2 == 0;
            applyWorld();
            break;
        case 15: {
            // Bit 0: standard error closed; the next two: the conntrack files.
            const uint8_t b = in.u8();
            gWorld.stderrClosed = (b & 1) != 0;
            gWorld.conntrack = (b >> 1) % (sizeof(kConntrack) / sizeof(kConntrack[0]));
            applyWorld();
            break;
        }
    }
}

// A stopped object must be as new. In a plain world these calls show every field: the closing
// lines name the upstream and downstreams, a non-modem upstream ends whatever offload is flagged,
// and a modem upstream then starts both downstreams unless a flag was left set.
void probe(TetherOffloadHal& hal) {
    static const uint8_t kProbe[] = {
            4, 1,             // getForwardedStats wanif0
            1, 2,             // initOffload with a 1.1 callback
            8, 9,  15,        // addDownstream wlan0 192.168.43.0/24
            7, 10, 0,  0, 0,  // setUpstreamParameters rmnet_data0
            8, 4,  14,        // addDownstream mdbr0 192.168.42.0/24
            8, 6,  16,        // addDownstream ap0 fe80::/64
            7, 1,  0,  0, 0,  // setUpstreamParameters wanif0
            2,                // stopOffload
    };
    const World saved = gWorld;
    gWorld = World();
    applyWorld();
    gProbing = true;
    fuzzsupport::ByteReader in(kProbe, sizeof(kProbe));
    while (!in.empty()) runOp(hal, in);
    gProbing = false;
    gWorld = saved;
    applyWorld();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    fuzzsupport::prepareWorld();
    if (OffloadEventHandle::createEventThread() != 0 ||
        !fakes::FakeVexaDevice::instance().waitReaderBlocked(fuzzsupport::kStartLimit)) {
        finding("the event thread did not start reading the device");
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    gWorld = World();
    gModel = fuzzsupport::CallModel();
    applyWorld();
    CrossingLog::instance().take();

    sp<TetherOffloadHal> hal = new TetherOffloadHal();
    fuzzsupport::ByteReader in(data, size);
    for (size_t ops = 0; !in.empty() && ops < kMaxOps; ++ops) runOp(*hal, in);

    // The framework going away: the relay must not outlive the object.
    gWorld = World();
    applyWorld();
    hal->stopOffload([](bool, const hidl_string&) {});
    CrossingLog::instance().take();
    return 0;
}
