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
// device, agent, framework and standard-error faults, run on a fresh HAL object for each input.
// Checked on every input, besides the sanitizers:
// - every call returns OK and answers exactly once;
// - every request record sent to the device is well formed (support/RequestCheck);
// - every agent line is one of the service's six command lines;
// - the USB downstream (as the closing line of setUpstreamParameters shows it) is "" or "mdbr0",
//   and both stored downstreams are what the calls so far have left;
// - an offload is activated only while not active, and is active only while its downstream is
//   stored;
// - statistics replies are the driver's answer, or zeros where no answer may be read;
// - events reach the framework as the event thread's rules say (support/EventModel);
// - after a stopOffload that reports success the object behaves as a new one: a fixed probe of
//   calls gives exactly the replies, requests, agent lines and log lines it gives on a new object.
//
// Input: a sequence of operations, each a byte (b % 16, table in runOp) and its arguments.
// Strings are a byte s: below 0xC0 one of kWords; 0xC0-0xFE that many minus 0xC0 raw bytes;
// 0xFF a 16-bit length (up to 1023) and that many raw bytes.

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <cutils/native_handle.h>
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/FakeAgent.h"
#include "fakes/FakeFramework.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/StandardError.h"
#include "fuzz/support/ByteReader.h"
#include "fuzz/support/EventModel.h"
#include "fuzz/support/Finding.h"
#include "fuzz/support/FuzzWorld.h"
#include "fuzz/support/RequestCheck.h"
#include "hal/TetherOffloadHal.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using fakes::FakeAgent;
using fakes::FakeVexaDevice;
using fuzzsupport::CallbackVersion;
using fuzzsupport::CrossingLog;
using fuzzsupport::finding;
using vendor::tetheroffload::TetherOffloadHal;

namespace {

constexpr size_t kMaxOps = 48;
constexpr size_t kMaxLongString = 1023;

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

// ---- what the calls leave behind, as far as the outside can tell

struct World {
    int ioctlError = 0;
    uint64_t rx = 0;
    uint64_t tx = 0;
    uint32_t statsLen = 128;
    FakeAgent::Mode agent = FakeAgent::Mode::kUp;
    bool frameworkAlive = true;
    bool stderrClosed = false;

    void apply() const {
        FakeVexaDevice::instance().setIoctlError(ioctlError);
        FakeVexaDevice::instance().setStatsAnswer(rx, tx, statsLen);
        FakeAgent::setMode(agent);
        fakes::FakeFramework::setAlive(frameworkAlive);
        fakes::StandardError::setClosed(stderrClosed);
    }
};

struct Offload {
    bool initialised = false;
    CallbackVersion version = CallbackVersion::kNone;
    bool usbStored = false;
    std::string wifiStored;  // as the framework named it
    bool usbActive = false;
    bool wifiActive = false;
};

// What crossed the boundary during one call, in order.
struct Observed {
    std::vector<std::vector<uint8_t>> requests;
    std::vector<std::string> agentLines;
    std::vector<std::string> logLines;

    void clear() {
        CrossingLog::instance().take();
        requests.clear();
        agentLines.clear();
        logLines.clear();
    }
};

Observed gObserved;

void collectCrossings();
World gWorld;
Offload gOffload;
std::vector<std::string> gFreshProbe;
int gDevNull = -1;

// ---- the calls

struct Reply {
    int answers = 0;
    bool ok = false;
    std::string msg;
    uint64_t rx = 0;
    uint64_t tx = 0;
};

template <typename Call>
Reply statusCall(const char* op, Call call) {
    Reply r;
    Return<void> ret = call([&](bool ok, const hidl_string& msg) {
        ++r.answers;
        r.ok = ok;
        r.msg = msg;
    });
    if (!ret.isOk()) finding(std::string(op) + " failed in transport");
    if (r.answers != 1)
        finding(std::string(op) + " answered " + std::to_string(r.answers) + " times");
    collectCrossings();
    return r;
}

Reply statsCall(TetherOffloadHal& hal, const hidl_string& upstream) {
    Reply r;
    Return<void> ret = hal.getForwardedStats(upstream, [&](uint64_t rx, uint64_t tx) {
        ++r.answers;
        r.rx = rx;
        r.tx = tx;
    });
    if (!ret.isOk()) finding("getForwardedStats failed in transport");
    if (r.answers != 1)
        finding("getForwardedStats answered " + std::to_string(r.answers) + " times");
    collectCrossings();
    return r;
}

// A handle of `fds` descriptors (3: no native handle), closed when the call is over.
class Handle {
public:
    explicit Handle(int fds) {
        if (fds > 2) return;
        mNative = native_handle_create(fds, 0);
        for (int i = 0; i < fds; ++i) mNative->data[i] = dup(gDevNull);
    }
    ~Handle() {
        if (mNative == nullptr) return;
        native_handle_close(mNative);
        native_handle_delete(mNative);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    hidl_handle get() const { return hidl_handle(mNative); }

private:
    native_handle_t* mNative = nullptr;
};

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

// ---- checks after each call

bool beginsWith(const hidl_string& name, const char* head) {
    return strncmp(name.c_str(), head, strlen(head)) == 0;
}

// Activations and deactivations seen on the device move the offload flags.
void followRequests(const std::vector<std::vector<uint8_t>>& requests, bool* usbOff, bool* wifiOff) {
    for (const auto& r : requests) {
        const uint32_t msg = fuzzsupport::requestMsg(r);
        const bool usb = fuzzsupport::requestApp(r) == 0;
        bool& active = usb ? gOffload.usbActive : gOffload.wifiActive;
        if (msg == 2) {
            if (active) finding("an offload activated again while active");
            active = true;
        } else if (msg == 3) {
            active = false;
            *(usb ? usbOff : wifiOff) = true;
        }
    }
}

// The closing line "setUpstreamParameters up-if:%s; down-if(%s,%s)\n" shows both stored
// downstreams. liblog cuts a line at its buffer; then there is nothing to read.
void checkStoredDownstreams(const hidl_string& iface) {
    constexpr size_t kLogBufferText = 1023;
    const std::string head =
            "setUpstreamParameters up-if:" + std::string(iface.c_str()) + "; down-if(";
    for (const std::string& line : gObserved.logLines) {
        if (line.rfind(head, 0) != 0) continue;
        if (line.size() >= kLogBufferText) return;
        const std::string tail = line.substr(head.size());
        if (tail.size() < 3 || tail.compare(tail.size() - 2, 2, ")\n") != 0) return;
        const std::string expected = std::string(gOffload.usbStored ? "mdbr0" : "") + "," +
                                     std::string(gOffload.wifiStored.c_str()) + ")\n";
        if (tail.rfind("mdbr0,", 0) != 0 && tail.rfind(",", 0) != 0) {
            finding("the USB downstream is neither \"\" nor \"mdbr0\": " + line);
        }
        if (tail != expected)
            finding("stored downstreams " + tail + " where the calls left " + expected);
        return;
    }
    finding("setUpstreamParameters without its closing line");
}

void checkOffloadInvariant() {
    if (gOffload.usbActive && !gOffload.usbStored) finding("USB offload active, no USB downstream");
    if (gOffload.wifiActive && gOffload.wifiStored.empty()) {
        finding("hotspot offload active, no hotspot downstream");
    }
}

void afterDownstreamCall(bool add, const hidl_string& iface, const Reply& r) {
    bool usbOff = false, wifiOff = false;
    followRequests(gObserved.requests, &usbOff, &wifiOff);
    if (r.ok && add && beginsWith(iface, "mdbr")) gOffload.usbStored = true;
    if (r.ok && add && !beginsWith(iface, "mdbr") && beginsWith(iface, "ap")) {
        gOffload.wifiStored = std::string(iface);
    }
    if (r.ok && !add && usbOff) gOffload.usbStored = false;
    if (r.ok && !add && wifiOff) gOffload.wifiStored.clear();
    checkOffloadInvariant();
}

std::vector<std::string> probe(TetherOffloadHal& hal);

void afterStop(TetherOffloadHal& hal, const Reply& r) {
    if (r.ok != gOffload.initialised) finding("stopOffload answered " + r.msg);
    if (!r.ok) return;
    gOffload = Offload();
    const std::vector<std::string> seen = probe(hal);
    if (seen != gFreshProbe) {
        std::string diff;
        for (size_t i = 0; i < seen.size() || i < gFreshProbe.size(); ++i) {
            const std::string a = i < seen.size() ? seen[i] : "(none)";
            const std::string b = i < gFreshProbe.size() ? gFreshProbe[i] : "(none)";
            if (a != b) diff += "\n  after stop: " + a + "\n  new object: " + b;
        }
        finding("a stopped object is not as new:" + diff);
    }
}

void checkStats(const Reply& r) {
    const bool answered = gOffload.initialised && gWorld.ioctlError == 0 && gWorld.statsLen == 128;
    const uint64_t rx = answered ? gWorld.rx : 0;
    const uint64_t tx = answered ? gWorld.tx : 0;
    if (r.rx != rx || r.tx != tx)
        finding("getForwardedStats replied other counters than the driver's");
}

void feedEvent(fuzzsupport::ByteReader& in) {
    const fuzzsupport::ModemRead read = fuzzsupport::takeModemRead(in);
    CrossingLog::instance().take();
    fuzzsupport::feed({read});
    const CallbackVersion version = gOffload.initialised ? gOffload.version : CallbackVersion::kNone;
    if (CrossingLog::instance().take().callbacks != fuzzsupport::expectedCallbacks(read, version)) {
        finding("an event reached the framework other than the records say");
    }
}

// ---- one operation of the input

void runOp(TetherOffloadHal& hal, fuzzsupport::ByteReader& in) {
    gObserved.clear();
    const int op = in.u8() % 16;
    switch (op) {
        case 0: {
            Handle fd1(in.u8() % 4), fd2(in.u8() % 4);
            statusCall("setHandles",
                       [&](auto cb) { return hal.setHandles(fd1.get(), fd2.get(), cb); });
            break;
        }
        case 1: {
            const auto version = static_cast<CallbackVersion>(in.u8() % 3);
            Reply r = statusCall("initOffload", [&](auto cb) {
                return hal.initOffload(fuzzsupport::makeCallback(version), cb);
            });
            const bool mayStart = !gOffload.initialised && version != CallbackVersion::kNone;
            if (r.ok != mayStart) finding("initOffload answered " + r.msg);
            if (r.ok) {
                gOffload.initialised = true;
                gOffload.version = version;
            }
            break;
        }
        case 2:
            afterStop(hal, statusCall("stopOffload", [&](auto cb) { return hal.stopOffload(cb); }));
            break;
        case 3: {
            const hidl_vec<hidl_string> prefixes = takeStrings(in, 4);
            statusCall("setLocalPrefixes",
                       [&](auto cb) { return hal.setLocalPrefixes(prefixes, cb); });
            break;
        }
        case 4:
            checkStats(statsCall(hal, takeString(in)));
            break;
        case 5: {
            const hidl_string upstream = takeString(in);
            const uint64_t limit = in.u64();
            statusCall("setDataLimit",
                       [&](auto cb) { return hal.setDataLimit(upstream, limit, cb); });
            break;
        }
        case 6: {
            const hidl_string upstream = takeString(in);
            const uint64_t warning = in.u64();
            const uint64_t limit = in.u64();
            statusCall("setDataWarningAndLimit", [&](auto cb) {
                return hal.setDataWarningAndLimit(upstream, warning, limit, cb);
            });
            break;
        }
        case 7: {
            const hidl_string iface = takeString(in);
            const hidl_string v4Addr = takeString(in);
            const hidl_string v4Gw = takeString(in);
            const hidl_vec<hidl_string> v6Gws = takeStrings(in, 3);
            statusCall("setUpstreamParameters", [&](auto cb) {
                return hal.setUpstreamParameters(iface, v4Addr, v4Gw, v6Gws, cb);
            });
            bool usbOff = false, wifiOff = false;
            followRequests(gObserved.requests, &usbOff, &wifiOff);
            checkOffloadInvariant();
            checkStoredDownstreams(iface);
            break;
        }
        case 8:
        case 9: {
            const bool add = op == 8;
            const hidl_string iface = takeString(in);
            const hidl_string prefix = takeString(in);
            Reply r = add ? statusCall("addDownstream",
                                       [&](auto cb) { return hal.addDownstream(iface, prefix, cb); })
                          : statusCall("removeDownstream", [&](auto cb) {
                                return hal.removeDownstream(iface, prefix, cb);
                            });
            afterDownstreamCall(add, iface, r);
            break;
        }
        case 10:
            feedEvent(in);
            break;
        case 11:
            gWorld.ioctlError = in.u8() % 3 == 0 ? 0 : (in.u8() % 40) + 1;
            gWorld.apply();
            break;
        case 12:
            gWorld.rx = in.u64();
            gWorld.tx = in.u64();
            gWorld.statsLen = in.u8() % 2 == 0 ? 128 : in.u32();
            gWorld.apply();
            break;
        case 13:
            gWorld.agent = static_cast<FakeAgent::Mode>(in.u8() % 3);
            gWorld.apply();
            break;
        case 14:
            gWorld.frameworkAlive = in.u8() % 2 == 0;
            gWorld.apply();
            break;
        case 15:
            gWorld.stderrClosed = in.u8() % 2 != 0;
            gWorld.apply();
            break;
    }
}

// ---- the probe of a stopped object

std::string hex(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (uint8_t b : bytes) {
        out += kDigits[b >> 4];
        out += kDigits[b & 15];
    }
    return out;
}

void record(std::vector<std::string>* trace, const char* op, const Reply& r) {
    trace->push_back(std::string(op) + " -> " + (r.ok ? "true " : "false ") + r.msg + " " +
                     std::to_string(r.rx) + "/" + std::to_string(r.tx));
    for (const auto& q : gObserved.requests) trace->push_back("  request " + hex(q));
    for (const auto& a : gObserved.agentLines) trace->push_back("  agent " + a);
    for (const auto& l : gObserved.logLines) trace->push_back("  log " + l);
}

// Reveals every field: the closing lines show the upstream and both downstreams, a non-modem
// upstream ends whatever offload is flagged with its downstream, and a modem upstream then starts
// both downstreams unless a flag was left set.
std::vector<std::string> probe(TetherOffloadHal& hal) {
    const World saved = gWorld;
    gWorld = World();
    gWorld.apply();
    std::vector<std::string> trace;
    const hidl_vec<hidl_string> none;
    auto step = [&](const char* op, auto call) {
        gObserved.clear();
        Reply r = call();
        record(&trace, op, r);
    };
    step("getForwardedStats", [&] { return statsCall(hal, "wanif0"); });
    step("initOffload", [&] {
        return statusCall("initOffload", [&](auto cb) {
            return hal.initOffload(fuzzsupport::makeCallback(CallbackVersion::k1_1), cb);
        });
    });
    step("addDownstream", [&] {
        return statusCall("addDownstream",
                          [&](auto cb) { return hal.addDownstream("wlan0", "10.0.0.0/8", cb); });
    });
    step("setUpstreamParameters", [&] {
        return statusCall("setUpstreamParameters", [&](auto cb) {
            return hal.setUpstreamParameters("rmnet_data0", "", "", none, cb);
        });
    });
    step("addDownstream", [&] {
        return statusCall("addDownstream", [&](auto cb) {
            return hal.addDownstream("mdbr0", "192.168.42.0/24", cb);
        });
    });
    step("addDownstream", [&] {
        return statusCall("addDownstream",
                          [&](auto cb) { return hal.addDownstream("ap0", "fe80::/64", cb); });
    });
    step("setUpstreamParameters", [&] {
        return statusCall("setUpstreamParameters", [&](auto cb) {
            return hal.setUpstreamParameters("wanif0", "", "", none, cb);
        });
    });
    step("stopOffload",
         [&] { return statusCall("stopOffload", [&](auto cb) { return hal.stopOffload(cb); }); });
    CrossingLog::instance().take();
    gWorld = saved;
    gWorld.apply();
    return trace;
}

// Takes what crossed during a call: every request must be well formed and every agent line one
// of the service's.
void collectCrossings() {
    fuzzsupport::Crossed crossed = CrossingLog::instance().take();
    for (const auto& request : crossed.requests) {
        const std::string problem = fuzzsupport::requestProblem(request);
        if (!problem.empty()) finding("request " + hex(request) + ": " + problem);
        gObserved.requests.push_back(request);
    }
    for (const std::string& line : crossed.agentLines) {
        if (!fuzzsupport::isServiceCommand(line)) finding("agent line \"" + line + "\"");
        gObserved.agentLines.push_back(line);
    }
    for (const auto& log : crossed.logs) gObserved.logLines.push_back(log.second);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    fuzzsupport::prepareWorld();
    gDevNull = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (OffloadEventHandle::createEventThread() != 0 ||
        !FakeVexaDevice::instance().waitReaderBlocked()) {
        finding("the event thread did not start reading the device");
    }
    sp<TetherOffloadHal> fresh = new TetherOffloadHal();
    gFreshProbe = probe(*fresh);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    gWorld = World();
    gWorld.apply();
    gOffload = Offload();
    CrossingLog::instance().take();

    sp<TetherOffloadHal> hal = new TetherOffloadHal();
    fuzzsupport::ByteReader in(data, size);
    for (size_t ops = 0; !in.empty() && ops < kMaxOps; ++ops) runOp(*hal, in);

    // The framework going away: the relay must not outlive the object.
    gWorld = World();
    gWorld.apply();
    hal->stopOffload([](bool, const hidl_string&) {});
    CrossingLog::instance().take();
    return 0;
}
