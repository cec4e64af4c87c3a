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

#include "fuzz/support/EventModel.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

namespace fuzzsupport {
namespace {

constexpr size_t kHeader = 16;
constexpr uint32_t kMaxPayload = 256;
constexpr uint16_t kMcode = 0x2454;
constexpr uint32_t kConnUpdateLen = 28;

// Bytes past what read() returned are the zeros the reader put in its buffer.
template <typename T>
T at(const std::vector<uint8_t>& bytes, size_t offset) {
    uint8_t raw[sizeof(T)] = {};
    for (size_t i = 0; i < sizeof(T) && offset + i < bytes.size(); ++i) raw[i] = bytes[offset + i];
    T value;
    memcpy(&value, raw, sizeof(T));
    return value;
}

std::string addrPort(const std::vector<uint8_t>& b, size_t addrAt, size_t portAt) {
    char text[32];
    snprintf(text, sizeof(text), "%u.%u.%u.%u:%u", at<uint8_t>(b, addrAt),
             at<uint8_t>(b, addrAt + 1), at<uint8_t>(b, addrAt + 2), at<uint8_t>(b, addrAt + 3),
             at<uint16_t>(b, portAt));
    return text;
}

// Payload offsets within the record: ip0 16, ip1 20, ip2 24, port0 28, port1 30, port2 32,
// proto 34, dst_nat 40. With destination NAT both ends move one slot on.
std::string connectionUpdate(const std::vector<uint8_t>& b) {
    const bool dstNat = at<uint8_t>(b, 40) != 0;
    const std::string src = dstNat ? addrPort(b, 20, 30) : addrPort(b, 16, 28);
    const std::string dst = dstNat ? addrPort(b, 24, 32) : addrPort(b, 20, 30);
    const int proto = at<uint8_t>(b, 34) == 6 ? 6 : 17;
    return "updateTimeout " + src + " " + dst + " " + std::to_string(proto);
}

std::string statusEvent(uint16_t status, CallbackVersion version) {
    const char* op = version == CallbackVersion::k1_0 ? "onEvent " : "onEvent_1_1 ";
    return op + std::to_string(status);
}

}  // namespace

std::vector<std::string> expectedCallbacks(const ModemRead& read, CallbackVersion version) {
    const std::vector<uint8_t>& b = read.bytes;
    if (read.errnum != 0 || b.size() < kHeader) return {};
    uint32_t len = at<uint32_t>(b, 12);
    if (len > kMaxPayload) len = kMaxPayload;
    if (len > 0 && kHeader + len > b.size()) return {};
    if (version == CallbackVersion::kNone || at<uint16_t>(b, 0) != kMcode) return {};
    const uint16_t status = at<uint16_t>(b, 2);
    if (status >= 1 && status <= 5) return {statusEvent(status, version)};
    if (status == 6 && len == kConnUpdateLen) return {connectionUpdate(b)};
    if (status == 7 && version == CallbackVersion::k1_1) return {"onEvent_1_1 6"};
    return {};
}

bool definedByFramework(const std::string& entry, CallbackVersion version, std::string* why) {
    unsigned value = 0;
    if (sscanf(entry.c_str(), "onEvent_1_1 %u", &value) == 1) {
        if (version == CallbackVersion::k1_1 && value >= 1 && value <= 6) return true;
        *why = "onEvent_1_1 with a value outside 1-6 or on a 1.0 callback";
        return false;
    }
    if (sscanf(entry.c_str(), "onEvent %u", &value) == 1) {
        if (version == CallbackVersion::k1_0 && value >= 1 && value <= 5) return true;
        *why = "onEvent with a value outside 1-5 or on a 1.1 callback";
        return false;
    }
    unsigned proto = 0;
    const char* last = strrchr(entry.c_str(), ' ');
    if (entry.compare(0, 14, "updateTimeout ") == 0 && last != nullptr &&
        sscanf(last, " %u", &proto) == 1 && (proto == 6 || proto == 17)) {
        return true;
    }
    *why = "a call the framework does not define";
    return false;
}

}  // namespace fuzzsupport
