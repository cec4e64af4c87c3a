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

#include "timeout/ConnTimeoutUpdate.h"

namespace hostrunner {

std::vector<uint8_t> buildEventRecord(const EventFields& fields) {
    vexa_common_hdr_t hdr = {};
    hdr.mcode = fields.mcode;
    hdr.status = fields.status;
    hdr.app_type = fields.app;
    hdr.msg = fields.msg;
    hdr.data_len = fields.dataLen.value_or(static_cast<uint32_t>(fields.payload.size()));
    std::vector<uint8_t> record(sizeof(hdr) + fields.payload.size());
    std::memcpy(record.data(), &hdr, sizeof(hdr));
    std::copy(fields.payload.begin(), fields.payload.end(), record.begin() + sizeof(hdr));
    return record;
}

std::vector<uint8_t> buildConnPayload(const ConnFields& fields) {
    vexa_conn_update_t conn = {};
    std::copy(fields.ip0.begin(), fields.ip0.end(), conn.ip0);
    std::copy(fields.ip1.begin(), fields.ip1.end(), conn.ip1);
    std::copy(fields.ip2.begin(), fields.ip2.end(), conn.ip2);
    conn.port0 = fields.port0;
    conn.port1 = fields.port1;
    conn.port2 = fields.port2;
    conn.proto = fields.proto;
    conn.dst_nat = fields.dstNat;
    std::vector<uint8_t> payload(sizeof(conn));
    std::memcpy(payload.data(), &conn, sizeof(conn));
    return payload;
}

size_t defaultReadSize(const std::vector<uint8_t>& record) {
    return std::min(record.size(), kMaxEventRead);
}

}  // namespace hostrunner
