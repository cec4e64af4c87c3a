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

#include "EventRecords.h"

#include <algorithm>
#include <cstring>

namespace hostrunner {
namespace {

template <typename T>
void put(std::vector<uint8_t>* bytes, size_t offset, T value) {
    std::memcpy(bytes->data() + offset, &value, sizeof(value));
}

}  // namespace

std::vector<uint8_t> buildEventRecord(const EventFields& fields) {
    std::vector<uint8_t> record(kEventHeaderSize + fields.payload.size(), 0);
    put(&record, 0, fields.mcode);
    put(&record, 2, fields.status);
    put(&record, 4, fields.app);
    put(&record, 8, fields.msg);
    put(&record, 12, fields.dataLen.value_or(static_cast<uint32_t>(fields.payload.size())));
    std::copy(fields.payload.begin(), fields.payload.end(), record.begin() + kEventHeaderSize);
    return record;
}

std::vector<uint8_t> buildConnPayload(const ConnFields& fields) {
    std::vector<uint8_t> payload(kConnectUpdateSize, 0);
    std::copy(fields.ip0.begin(), fields.ip0.end(), payload.begin());
    std::copy(fields.ip1.begin(), fields.ip1.end(), payload.begin() + 4);
    std::copy(fields.ip2.begin(), fields.ip2.end(), payload.begin() + 8);
    put(&payload, 12, fields.port0);
    put(&payload, 14, fields.port1);
    put(&payload, 16, fields.port2);
    payload[18] = fields.proto;
    payload[24] = fields.dstNat;
    return payload;
}

size_t defaultReadSize(const std::vector<uint8_t>& record) {
    return std::min(record.size(), kMaxEventRead);
}

}  // namespace hostrunner
