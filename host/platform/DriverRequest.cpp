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

#include "DriverRequest.h"

#include <string.h>

#include <algorithm>

#include "datapath/vexa_protocol.h"

namespace hostplatform {
namespace {

vexa_common_hdr_t header(const uint8_t* record) {
    vexa_common_hdr_t hdr;
    memcpy(&hdr, record, sizeof(hdr));
    return hdr;
}

}  // namespace

std::vector<uint8_t> readRequest(const uint8_t* record) {
    const vexa_common_hdr_t hdr = header(record);
    size_t size = sizeof(hdr) + std::min<size_t>(hdr.data_len, VEXA_MAX_PAYLOAD);
    if (hdr.msg == VEXA_CMSG_GET_DATA_USAGE) size = VEXA_STATS_BUF_SIZE;
    return std::vector<uint8_t>(record, record + size);
}

bool isStatsRequest(const std::vector<uint8_t>& request) {
    return request.size() >= sizeof(vexa_common_hdr_t) &&
           header(request.data()).msg == VEXA_CMSG_GET_DATA_USAGE;
}

void writeStatsAnswer(uint8_t* record, const StatsAnswer& answer) {
    memcpy(record + offsetof(vexa_common_hdr_t, data_len), &answer.dataLen, sizeof(answer.dataLen));
    memcpy(record + offsetof(vexa_data_usage_req_t, rx_bytes), &answer.rxBytes,
           sizeof(answer.rxBytes));
    memcpy(record + offsetof(vexa_data_usage_req_t, tx_bytes), &answer.txBytes,
           sizeof(answer.txBytes));
}

}  // namespace hostplatform
