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

// The HAL object as the rules describe it, run beside the service by a fuzz target: for each
// framework call, the reply it must give (flag and exact message, or the counters), the device
// requests it must send, byte for byte and in order, and the lines the network agent must get, in
// order. Written from the rules alone; the argument checks are those of ReferenceChecks.

#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "fuzz/support/EventModel.h"

namespace fuzzsupport {

// What the world does while a call runs.
struct Surroundings {
    int ioctlError = 0;  // every request fails with it; 0: they succeed
    uint64_t rx = 0;     // the driver's statistics answer
    uint64_t tx = 0;
    uint32_t statsLen = 128;
    bool agentHears = true;  // the agent is there and standard error can be written
    bool frameworkAlive = true;
    int32_t udpTimeout = 0;  // what the timeout request must carry
    int32_t tcpTimeout = 0;
};

struct Expected {
    bool ok = false;
    std::string msg;
    uint64_t rx = 0;  // getForwardedStats
    uint64_t tx = 0;
    std::vector<std::vector<uint8_t>> requests;
    std::vector<std::string> agentLines;
    // The line the call ends its log with, where it names the stored interfaces; else empty.
    std::string closingLine;
};

class CallModel {
public:
    Surroundings world;

    // fds: the descriptors a handle carries; -1 for no native handle.
    Expected setHandles(int fds1, int fds2) const;
    Expected initOffload(CallbackVersion version);
    Expected stopOffload();
    Expected setLocalPrefixes(const std::vector<std::string>& prefixes) const;
    Expected getForwardedStats() const;
    Expected setDataLimit(const std::string& upstream, uint64_t limit) const;
    Expected setDataWarningAndLimit(const std::string& upstream, uint64_t warning,
                                    uint64_t limit) const;
    Expected setUpstreamParameters(const std::string& iface, const std::string& v4Addr,
                                   const std::string& v4Gw, const std::vector<std::string>& v6Gws);
    Expected addDownstream(const std::string& iface, const std::string& prefix);
    Expected removeDownstream(const std::string& iface, const std::string& prefix);

    // The callback version events reach: kNone before initOffload and after stopOffload.
    CallbackVersion relay() const { return mRelay; }

private:
    Expected upstreamOutcome(const std::string& iface, const std::string& v4Addr,
                             const std::string& v4Gw, const std::vector<std::string>& v6Gws);
    Expected addOutcome(const std::string& iface, const std::string& prefix);
    Expected removeOutcome(const std::string& iface, const std::string& prefix);
    void activate(uint32_t app, const std::string& up, const std::string& down, Expected* e);
    void deactivate(uint32_t app, Expected* e);

    CallbackVersion mRelay = CallbackVersion::kNone;
    std::string mUpstream;
    bool mUsbStored = false;  // the USB downstream is "mdbr0" when stored
    std::string mWifiStored;
    bool mUsbActive = false;
    bool mWifiActive = false;
};

}  // namespace fuzzsupport
