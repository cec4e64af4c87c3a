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

#include "fuzz/support/RequestCheck.h"

#include <string.h>

namespace fuzzsupport {
namespace {

constexpr size_t kHeader = 16;
constexpr size_t kNameSize = 16;

struct Layout {
    uint32_t dataLen;
    bool perApp;                // activate and deactivate go to USB (0) or the hotspot (1)
    std::vector<size_t> names;  // offsets of the interface-name fields
};

// Indexed by message: enable, disable, activate, deactivate, statistics, data limit, timeouts,
// warning and limit.
const Layout kLayouts[] = {
        {0, false, {}}, {0, false, {}},    {32, true, {16, 32}}, {0, true, {}},
        {0, false, {}}, {24, false, {16}}, {8, false, {}},       {32, false, {16}},
};

template <typename T>
T at(const std::vector<uint8_t>& b, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= b.size()) memcpy(&value, b.data() + offset, sizeof(T));
    return value;
}

bool goodName(const std::vector<uint8_t>& b, size_t offset) {
    if (offset + kNameSize > b.size()) return false;
    size_t i = offset;
    while (i < offset + kNameSize && b[i] != 0) ++i;
    if (i == offset + kNameSize) return false;  // no NUL
    for (; i < offset + kNameSize; ++i) {
        if (b[i] != 0) return false;
    }
    return true;
}

}  // namespace

uint32_t requestMsg(const std::vector<uint8_t>& request) {
    return at<uint32_t>(request, 8);
}

uint32_t requestApp(const std::vector<uint8_t>& request) {
    return at<uint32_t>(request, 4);
}

std::string requestProblem(const std::vector<uint8_t>& b) {
    if (b.size() < kHeader) return "shorter than a header";
    if (at<uint16_t>(b, 0) != 0x2454 || at<uint16_t>(b, 2) != 2) return "bad mcode or status";
    const uint32_t msg = requestMsg(b);
    if (msg >= sizeof(kLayouts) / sizeof(kLayouts[0])) return "unknown message";
    const Layout& layout = kLayouts[msg];
    const uint32_t app = requestApp(b);
    if (layout.perApp ? (app != 0 && app != 1) : app != 255) return "wrong app type";
    if (at<uint32_t>(b, 12) != layout.dataLen) return "wrong data_len";
    for (size_t offset : layout.names) {
        if (!goodName(b, offset)) return "interface name not NUL-terminated and zero-filled";
    }
    if (msg == 4) {
        for (size_t i = kHeader; i < b.size(); ++i) {
            if (b[i] != 0) return "statistics buffer not zeroed";
        }
    }
    if (msg == 6 && (at<int32_t>(b, 16) < 1 || at<int32_t>(b, 20) < 1)) return "timeout below 1";
    return "";
}

bool isServiceCommand(const std::string& line) {
    static const char* const kLines[] = {
            "plexd bridge clear mac mdbr0 ",
            "plexd bridge addif mdbr0 rndis0 ",
            "plexd bridge addif mdbr0 wanif-lan ",
            "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
            "plexd interface setcfg rndis0 0.0.0.0 0 up ",
            "plexd bridge delif mdbr0 wanif-lan ",
    };
    for (const char* l : kLines) {
        if (line == l) return true;
    }
    return false;
}

}  // namespace fuzzsupport
