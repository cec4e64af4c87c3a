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

// Builds the records that the modem hands the event thread, laid out by the device protocol's own
// structs: the header and the payload, in host byte order as the driver writes them.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "datapath/vexa_protocol.h"

namespace hostrunner {

constexpr size_t kMaxEventPayload = VEXA_MAX_PAYLOAD;
constexpr size_t kMaxEventRead = sizeof(vexa_dev_rsp_common_t);

struct EventFields {
    uint16_t mcode = VEXA_MCODE;
    uint16_t status = 0;
    uint32_t app = 0;
    uint32_t msg = 0;
    std::optional<uint32_t> dataLen;  // else the payload's size
    std::vector<uint8_t> payload;
};

struct ConnFields {
    std::array<uint8_t, 4> ip0{};
    std::array<uint8_t, 4> ip1{};
    std::array<uint8_t, 4> ip2{};
    uint16_t port0 = 0;
    uint16_t port1 = 0;
    uint16_t port2 = 0;
    uint8_t proto = 0;
    uint8_t dstNat = 0;
};

std::vector<uint8_t> buildEventRecord(const EventFields& fields);

// The 28-byte connection-update payload.
std::vector<uint8_t> buildConnPayload(const ConnFields& fields);

// What read() returns by default: the whole record, at most 272 bytes.
size_t defaultReadSize(const std::vector<uint8_t>& record);

}  // namespace hostrunner
