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

#include "fuzz/support/CallModel.h"

#include <string.h>

#include <algorithm>

#include "fuzz/support/ReferenceChecks.h"

namespace fuzzsupport {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kUsb = 0;
constexpr uint32_t kWifi = 1;
constexpr uint32_t kAll = 255;
enum Msg : uint32_t { kEnable, kDisable, kActivate, kDeactivate, kStats, kLimit, kTimeouts, kBoth };
constexpr int32_t kAnyFamily = 2;

const char kSuccessful[] = "Successful\n";
const char kInvalid[] = "Invalid input values\n";
const char kNotInitialised[] = "Device has not been initialized\n";

// Each with the blank the channel adds.
const char* const kBridgeUp[] = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge addif mdbr0 rndis0 ",
        "plexd bridge addif mdbr0 wanif-lan ",
        "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
        "plexd interface setcfg rndis0 0.0.0.0 0 up ",
};
const char* const kBridgeDown[] = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge delif mdbr0 wanif-lan ",
};

void put(Bytes* b, uint64_t value, size_t width) {
    for (size_t i = 0; i < width; ++i) b->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// mcode 0x2454, status 2, then app, msg and data_len; all little-endian.
Bytes request(uint32_t app, uint32_t msg, uint32_t dataLen) {
    Bytes b;
    put(&b, 0x2454, 2);
    put(&b, 2, 2);
    put(&b, app, 4);
    put(&b, msg, 4);
    put(&b, dataLen, 4);
    return b;
}

// The name up to its first NUL, cut to 15 characters, zero-filled to 16 bytes.
void putName(Bytes* b, const std::string& name) {
    const size_t n = std::min<size_t>(strlen(name.c_str()), 15);
    b->insert(b->end(), name.c_str(), name.c_str() + n);
    b->insert(b->end(), 16 - n, 0);
}

bool startsWith(const std::string& name, const char* head) {
    return strncmp(name.c_str(), head, strlen(head)) == 0;
}

std::string printed(const std::string& name) {
    return name.c_str();
}

Expected reply(bool ok, const char* msg) {
    Expected e;
    e.ok = ok;
    e.msg = msg;
    return e;
}

bool downstreamArgsValid(const std::string& iface, const std::string& prefix) {
    return !(iface.empty() && prefix.empty()) && reference::acceptsInterface(iface) &&
           reference::validPrefix(prefix, kAnyFamily);
}

}  // namespace

Expected CallModel::setHandles(int fds1, int fds2) const {
    if (fds1 != 1) return reply(false, "fail ,fd1 is empty");
    if (fds2 != 1) return reply(false, "fail ,fd2 is empty");
    return reply(true, "Successful");
}

Expected CallModel::initOffload(CallbackVersion version) {
    if (mRelay != CallbackVersion::kNone) return reply(false, "already  initialized");
    if (version == CallbackVersion::kNone) return reply(false, "initialized again");
    // A dead framework cannot answer the cast to 1.1: its callback is held as 1.0.
    const bool as11 = version == CallbackVersion::k1_1 && world.frameworkAlive;
    mRelay = as11 ? CallbackVersion::k1_1 : CallbackVersion::k1_0;
    Expected e = reply(true, world.ioctlError == 0 ? "Successful" : "sendCmd2MD  fail");
    e.requests.push_back(request(kAll, kEnable, 0));
    return e;
}

Expected CallModel::stopOffload() {
    if (mRelay == CallbackVersion::kNone) return reply(false, "not been  initialized");
    const Surroundings kept = world;
    *this = CallModel();
    world = kept;
    Expected e = reply(true, "Successful");
    e.requests.push_back(request(kAll, kDisable, 0));
    return e;
}

Expected CallModel::setLocalPrefixes(const std::vector<std::string>& prefixes) const {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    // An empty list is invalid too.
    if (!reference::validPrefixes(prefixes, kAnyFamily)) return reply(false, kInvalid);
    return reply(true, kSuccessful);
}

Expected CallModel::getForwardedStats() const {
    Expected e;
    if (mRelay == CallbackVersion::kNone) return e;
    Bytes r = request(kAll, kStats, 0);
    r.resize(256, 0);
    e.requests.push_back(r);
    if (world.ioctlError == 0 && world.statsLen == 128) {
        e.rx = world.rx;
        e.tx = world.tx;
    }
    return e;
}

Expected CallModel::setDataLimit(const std::string& upstream, uint64_t limit) const {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    if (upstream.empty()) return reply(false, kInvalid);
    Expected e = reply(true, kSuccessful);
    Bytes r = request(kAll, kLimit, 24);
    putName(&r, upstream);
    put(&r, limit, 8);
    e.requests.push_back(r);
    return e;
}

// The limit comes first in the record, where setDataLimit puts it.
Expected CallModel::setDataWarningAndLimit(const std::string& upstream, uint64_t warning,
                                           uint64_t limit) const {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    if (upstream.empty()) return reply(false, kInvalid);
    Expected e = reply(true, kSuccessful);
    Bytes r = request(kAll, kBoth, 32);
    putName(&r, upstream);
    put(&r, limit, 8);
    put(&r, warning, 8);
    e.requests.push_back(r);
    return e;
}

Expected CallModel::upstreamOutcome(const std::string& iface, const std::string& v4Addr,
                                    const std::string& v4Gw, const std::vector<std::string>& v6Gws) {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    // Each may be empty, but not all of them.
    const bool anyGiven = !iface.empty() || !v4Addr.empty() || !v4Gw.empty() || !v6Gws.empty();
    if (!anyGiven || (!iface.empty() && !reference::acceptsInterface(iface)) ||
        (!v4Addr.empty() && !reference::validAddress(v4Addr, 0)) ||
        (!v4Gw.empty() && !reference::validAddress(v4Gw, 0)) ||
        (!v6Gws.empty() && !reference::validAddresses(v6Gws, 1))) {
        return reply(false, kInvalid);
    }
    mUpstream = iface;
    if (startsWith(iface, "wanif")) {
        Expected e = reply(true, kSuccessful);
        if (!mUsbActive && mUsbStored) activate(kUsb, iface, "mdbr0", &e);
        if (!mWifiActive && !mWifiStored.empty()) activate(kWifi, iface, mWifiStored, &e);
        return e;
    }
    // Away from the modem: one offload ends per call, USB first.
    const bool usb = mUsbActive && mUsbStored;
    if (usb || (mWifiActive && !mWifiStored.empty())) {
        Expected e = reply(false, "vexa de-active flow\n");
        deactivate(usb ? kUsb : kWifi, &e);
        return e;
    }
    return iface.empty() ? reply(false, kInvalid) : reply(true, kSuccessful);
}

Expected CallModel::addOutcome(const std::string& iface, const std::string& prefix) {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    if (!downstreamArgsValid(iface, prefix)) return reply(false, kInvalid);
    Expected e = reply(true, kSuccessful);
    const bool modemUpstream = startsWith(mUpstream, "wanif");
    if (startsWith(iface, "mdbr")) {
        mUsbStored = true;
        // The modem gets the name as given.
        if (!mUsbActive && modemUpstream) activate(kUsb, mUpstream, iface, &e);
    } else if (startsWith(iface, "ap")) {
        mWifiStored = iface;
        if (!mWifiActive && modemUpstream) activate(kWifi, mUpstream, iface, &e);
    }
    return e;
}

Expected CallModel::removeOutcome(const std::string& iface, const std::string& prefix) {
    if (mRelay == CallbackVersion::kNone) return reply(false, kNotInitialised);
    if (!downstreamArgsValid(iface, prefix)) return reply(false, kInvalid);
    Expected e = reply(true, kSuccessful);
    if (mUsbActive && startsWith(iface, "mdbr")) {
        mUsbStored = false;
        deactivate(kUsb, &e);
    } else if (mWifiActive && startsWith(iface, "ap")) {
        mWifiStored.clear();
        deactivate(kWifi, &e);
    }
    return e;
}

// Every path ends with a line that names the interfaces as the call leaves them, each up to its
// first NUL as the log prints it.
Expected CallModel::setUpstreamParameters(const std::string& iface, const std::string& v4Addr,
                                          const std::string& v4Gw,
                                          const std::vector<std::string>& v6Gws) {
    Expected e = upstreamOutcome(iface, v4Addr, v4Gw, v6Gws);
    e.closingLine = "setUpstreamParameters up-if:" + printed(iface) + "; down-if(" +
                    (mUsbStored ? "mdbr0" : "") + "," + printed(mWifiStored) + ")\n";
    return e;
}

Expected CallModel::addDownstream(const std::string& iface, const std::string& prefix) {
    Expected e = addOutcome(iface, prefix);
    e.closingLine =
            "addDownstream(down-if:" + printed(iface) + "; up-if:" + printed(mUpstream) + ")\n";
    return e;
}

Expected CallModel::removeDownstream(const std::string& iface, const std::string& prefix) {
    Expected e = removeOutcome(iface, prefix);
    e.closingLine = "removeDownstream(donw-if: " + printed(iface) +
                    "; up-if: " + printed(mUpstream) + ")\n";
    return e;
}

// The modem first, with the conntrack timeouts (UDP before TCP); for USB the bridge after.
void CallModel::activate(uint32_t app, const std::string& up, const std::string& down, Expected* e) {
    Bytes r = request(app, kActivate, 32);
    putName(&r, up);
    putName(&r, down);
    e->requests.push_back(r);
    Bytes t = request(kAll, kTimeouts, 8);
    put(&t, static_cast<uint32_t>(world.udpTimeout), 4);
    put(&t, static_cast<uint32_t>(world.tcpTimeout), 4);
    e->requests.push_back(t);
    (app == kUsb ? mUsbActive : mWifiActive) = true;
    if (app == kUsb && world.agentHears) {
        e->agentLines.insert(e->agentLines.end(), std::begin(kBridgeUp), std::end(kBridgeUp));
    }
}

void CallModel::deactivate(uint32_t app, Expected* e) {
    if (app == kUsb && world.agentHears) {
        e->agentLines.insert(e->agentLines.end(), std::begin(kBridgeDown), std::end(kBridgeDown));
    }
    e->requests.push_back(request(app, kDeactivate, 0));
    (app == kUsb ? mUsbActive : mWifiActive) = false;
}

}  // namespace fuzzsupport
