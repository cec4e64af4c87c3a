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

// The device records in words, as the traces and the tests put them: every field of a request
// and of an event, and what a record too short to hold them reads as.

#include "datapath/vexa_protocol.h"

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "timeout/ConnTimeoutUpdate.h"

namespace {

template <typename T>
std::string request(const T& record) {
    return describeVexaRequest(reinterpret_cast<const uint8_t*>(&record), sizeof(record));
}

vexa_common_hdr_t header(uint32_t msg, uint32_t dataLen, uint32_t app = VEXA_APP_TYPE_ALL) {
    return vexa_common_hdr_t{VEXA_MCODE, VEXA_REQ_STATUS, app, msg, dataLen};
}

TEST(VexaProtocolTest, RequestsAndEventsInWords) {
    EXPECT_EQ("ACTIVATE app=USB len=32 up=wanif0 down=mdbr0",
              request(vexa_activate_req_t{header(VEXA_CMSG_ACTIVATE, 32, VEXA_APP_TYPE_USB),
                                          "wanif0", "mdbr0"}));
    EXPECT_EQ("SET_DATA_LIMIT app=WH len=24 iface=wanif0 limit=5",
              request(vexa_data_limit_req_t{header(VEXA_CMSG_SET_DATA_LIMIT, 24, VEXA_APP_TYPE_WH),
                                            "wanif0", 5}));
    EXPECT_EQ("SET_CT_TIMEOUT app=ALL len=8 udp=180 tcp=432000",
              request(vexa_ct_timeout_req_t{header(VEXA_CMSG_SET_CT_TIMEOUT, 8), 180, 432000}));
    EXPECT_EQ("SET_WARNING_AND_LIMIT app=ALL len=32 iface=wanif0 limit=200 warning=100",
              request(vexa_warning_limit_req_t{header(VEXA_CMSG_SET_WARNING_AND_LIMIT, 32),
                                               "wanif0", 200, 100}));
    EXPECT_EQ("msg 9 app=7 len=0 mcode=0x0 status=3", request(vexa_common_hdr_t{0, 3, 7, 9, 0}));
    EXPECT_EQ("short request", describeVexaRequest(nullptr, 15));

    vexa_dev_rsp_common_t event = {VEXA_MCODE, VEXA_CONNECT_UPDATE, 0, 0, 28, {}};
    const vexa_conn_update_t conn = {
            {192, 168, 43, 2}, {8, 8, 8, 8}, {10, 0, 0, 1}, 80, 53, 80, 17, {}, 1, {}};
    memcpy(event.data, &conn, sizeof(conn));
    const auto* bytes = reinterpret_cast<const uint8_t*>(&event);
    EXPECT_EQ(
            "CONNECT_UPDATE app=0 msg=0 len=28 192.168.43.2:80 8.8.8.8:53 10.0.0.1:80 proto=17 "
            "dst_nat=1",
            describeVexaEvent(bytes, 44));
    EXPECT_EQ("CONNECT_UPDATE app=0 msg=0 len=28", describeVexaEvent(bytes, 43));
    const vexa_common_hdr_t unknown = {0, 9, 1, 0, 0};
    EXPECT_EQ("unknown(9) app=1 msg=0 len=0 bad mcode=0x0",
              describeVexaEvent(reinterpret_cast<const uint8_t*>(&unknown), sizeof(unknown)));
    EXPECT_EQ("short record", describeVexaEvent(bytes, 15));
}

}  // namespace
