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

// Test harness shared by the HAL's upstream, downstream and quota tests: an initialised HAL
// object, the device requests decoded, the agent commands, the log, and the offload state read
// back through the HAL's own replies and log lines.

#pragma once

#include <gtest/gtest.h>
#include <hostplatform/Recorder.h>
#include <utils/StrongPointer.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "hal/TetherOffloadHal.h"

namespace offloadtest {

using Reply = std::pair<bool, std::string>;

constexpr char kSuccessful[] = "Successful\n";
constexpr char kInvalid[] = "Invalid input values\n";
constexpr char kNotInitialised[] = "Device has not been initialized\n";
constexpr char kDeactivated[] = "vexa de-active flow\n";

constexpr char kUsbPrefix[] = "192.168.42.0/24";
constexpr char kWifiPrefix[] = "192.168.43.0/24";

// What the agent receives for one bridge activation and one deactivation. Inline, so that tables
// built at start-up in other files see them filled.
inline const std::vector<std::string> kBridgeUp = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge addif mdbr0 rndis0 ",
        "plexd bridge addif mdbr0 wanif-lan ",
        "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
        "plexd interface setcfg rndis0 0.0.0.0 0 up ",
};
inline const std::vector<std::string> kBridgeDown = {
        "plexd bridge clear mac mdbr0 ",
        "plexd bridge delif mdbr0 wanif-lan ",
};

// The part of the HAL's state that decides what the next call sends.
struct OffloadState {
    std::string upstream;
    std::string usbDownstream;
    std::string wifiDownstream;
    bool usbActive = false;
    bool wifiActive = false;

    bool operator==(const OffloadState& o) const;
};
std::ostream& operator<<(std::ostream& os, const OffloadState& s);

// One device request in words, e.g. "activate app=0 up=wanif0 down=mdbr0" or "timeouts app=255".
std::string describeRequest(const hostplatform::IoctlRecord& record);

std::vector<std::string> deviceRequests();
std::vector<std::string> agentCommands();
std::vector<std::string> logLines();  // tag "TetherOffload" only

// True when `expected` occurs in `lines` in this order, other lines in between allowed.
bool containsInOrder(const std::vector<std::string>& lines,
                     const std::vector<std::string>& expected);
bool contains(const std::vector<std::string>& lines, const std::string& line);

class OffloadHalTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // initOffload with a framework callback; forgets what the call recorded.
    void initialise();

    Reply upstream(const std::string& iface, const std::string& v4Addr = "",
                   const std::string& v4Gw = "", const std::vector<std::string>& v6Gws = {});
    Reply add(const std::string& iface, const std::string& prefix);
    Reply remove(const std::string& iface, const std::string& prefix);

    // Reads the state through calls that change nothing but the flags they report, so it is
    // the last thing a test asks.
    OffloadState probeState();

    android::sp<vendor::tetheroffload::TetherOffloadHal> mHal;
};

}  // namespace offloadtest
