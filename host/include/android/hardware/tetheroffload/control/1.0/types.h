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

// Host stand-in for the generated android.hardware.tetheroffload.control@1.0 types.

#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>
#include <string>

namespace android {
namespace hardware {
namespace tetheroffload {
namespace control {
namespace V1_0 {

enum class OffloadCallbackEvent : uint32_t {
    OFFLOAD_STARTED = 1u,
    OFFLOAD_STOPPED_ERROR = 2u,
    OFFLOAD_STOPPED_UNSUPPORTED = 3u,
    OFFLOAD_SUPPORT_AVAILABLE = 4u,
    OFFLOAD_STOPPED_LIMIT_REACHED = 5u,
};

enum class NetworkProtocol : uint32_t {
    TCP = 6u,
    UDP = 17u,
};

struct IPv4AddrPortPair final {
    ::android::hardware::hidl_string addr;
    uint16_t port = 0;
};

struct NatTimeoutUpdate final {
    ::android::hardware::tetheroffload::control::V1_0::IPv4AddrPortPair src;
    ::android::hardware::tetheroffload::control::V1_0::IPv4AddrPortPair dst;
    ::android::hardware::tetheroffload::control::V1_0::NetworkProtocol proto{};
};

static inline std::string toString(OffloadCallbackEvent o) {
    switch (o) {
        case OffloadCallbackEvent::OFFLOAD_STARTED:
            return "OFFLOAD_STARTED";
        case OffloadCallbackEvent::OFFLOAD_STOPPED_ERROR:
            return "OFFLOAD_STOPPED_ERROR";
        case OffloadCallbackEvent::OFFLOAD_STOPPED_UNSUPPORTED:
            return "OFFLOAD_STOPPED_UNSUPPORTED";
        case OffloadCallbackEvent::OFFLOAD_SUPPORT_AVAILABLE:
            return "OFFLOAD_SUPPORT_AVAILABLE";
        case OffloadCallbackEvent::OFFLOAD_STOPPED_LIMIT_REACHED:
            return "OFFLOAD_STOPPED_LIMIT_REACHED";
    }
    return std::to_string(static_cast<uint32_t>(o));
}

static inline std::string toString(NetworkProtocol o) {
    switch (o) {
        case NetworkProtocol::TCP:
            return "TCP";
        case NetworkProtocol::UDP:
            return "UDP";
    }
    return std::to_string(static_cast<uint32_t>(o));
}

static inline bool operator==(const IPv4AddrPortPair& lhs, const IPv4AddrPortPair& rhs) {
    return lhs.addr == rhs.addr && lhs.port == rhs.port;
}
static inline bool operator!=(const IPv4AddrPortPair& lhs, const IPv4AddrPortPair& rhs) {
    return !(lhs == rhs);
}

static inline bool operator==(const NatTimeoutUpdate& lhs, const NatTimeoutUpdate& rhs) {
    return lhs.src == rhs.src && lhs.dst == rhs.dst && lhs.proto == rhs.proto;
}
static inline bool operator!=(const NatTimeoutUpdate& lhs, const NatTimeoutUpdate& rhs) {
    return !(lhs == rhs);
}

}  // namespace V1_0
}  // namespace control
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
