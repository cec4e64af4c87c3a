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

// One checked scenario line, ready to run. The parser fills these without touching the world; the
// executor acts on them.

#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace hostrunner {

// Framework calls. kNoHandle stands for `none`: no native handle at all.
struct SetHandles {
    static constexpr int kNoHandle = -1;  // as fakes::FrameworkHandle takes it
    int fds1 = 0;
    int fds2 = 0;
};

struct InitOffload {
    enum class Callback { k1_0, k1_1, kNull };
    Callback callback = Callback::kNull;
};

struct StopOffload {};

struct SetLocalPrefixes {
    std::vector<std::string> prefixes;
};

struct GetForwardedStats {
    std::string upstream;
};

struct SetDataLimit {
    std::string upstream;
    uint64_t limit = 0;
};

struct SetDataWarningAndLimit {
    std::string upstream;
    uint64_t warning = 0;
    uint64_t limit = 0;
};

struct SetUpstreamParameters {
    std::string iface;
    std::string v4Addr;
    std::string v4Gw;
    std::vector<std::string> v6Gws;
};

struct AddDownstream {
    std::string iface;
    std::string prefix;
};

struct RemoveDownstream {
    std::string iface;
    std::string prefix;
};

// The service's state report, as `lshal debug` shows it.
struct Dump {};

// The modem. `modem event` and `modem conn` both hand the event thread one record.
struct ModemEvent {
    std::vector<uint8_t> record;
    size_t readSize = 0;
};

struct ModemReadFail {
    int errnum = 0;
};

struct ModemStats {
    uint64_t rx = 0;
    uint64_t tx = 0;
    uint32_t dataLen = 128;
};

struct ModemIoctl {
    int errnum = 0;  // 0: the ioctls succeed
};

// The rest of the world.
struct Agent {
    enum class Mode { kUp, kAbsent, kFailing };
    Mode mode = Mode::kUp;
};

struct FrameworkState {
    bool alive = true;
};

struct Prop {
    std::string name;
    std::string value;
};

struct Proc {
    enum class File { kTcp, kUdp };
    File file = File::kTcp;
    bool absent = false;
    std::string content;
};

struct Stderr {
    bool closed = false;
};

struct Wait {
    uint64_t millis = 0;
};

// Start-up setting, only before any other command.
struct DeviceAbsent {};

// Console only.
struct Help {};
struct Quit {};

using CommandBody =
        std::variant<SetHandles, InitOffload, StopOffload, SetLocalPrefixes, GetForwardedStats,
                     SetDataLimit, SetDataWarningAndLimit, SetUpstreamParameters, AddDownstream,
                     RemoveDownstream, Dump, ModemEvent, ModemReadFail, ModemStats, ModemIoctl,
                     Agent, FrameworkState, Prop, Proc, Stderr, Wait, DeviceAbsent, Help, Quit>;

struct Command {
    int line = 0;
    std::string name;               // the first word
    std::vector<std::string> args;  // the words after it, unquoted
    CommandBody body;
};

}  // namespace hostrunner
