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

#include "datapath/vexa_protocol.h"

#include <string.h>

#include <string>

#include "timeout/ConnTimeoutUpdate.h"

namespace {

// A field of the record, or zero where the record is too short to hold it.
template <typename T>
T fieldAt(const uint8_t* bytes, size_t size, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= size) memcpy(&value, bytes + offset, sizeof(T));
    return value;
}

vexa_common_hdr_t headerOf(const uint8_t* bytes, size_t size) {
    return fieldAt<vexa_common_hdr_t>(bytes, size, 0);
}

// A name field: up to its NUL, at most VEXA_IFNAME_SIZE bytes.
std::string nameAt(const uint8_t* bytes, size_t size, size_t offset) {
    std::string name;
    for (size_t i = offset; i < offset + VEXA_IFNAME_SIZE && i < size && bytes[i] != 0; ++i) {
        name += static_cast<char>(bytes[i]);
    }
    return name;
}

std::string appName(uint32_t app) {
    switch (app) {
        case VEXA_APP_TYPE_USB:
            return "USB";
        case VEXA_APP_TYPE_WH:
            return "WH";
        case VEXA_APP_TYPE_ALL:
            return "ALL";
        default:
            return std::to_string(app);
    }
}

std::string hex(uint32_t value) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    do {
        out.insert(out.begin(), kDigits[value & 0xf]);
        value >>= 4;
    } while (value != 0);
    return "0x" + out;
}

std::string requestFields(uint32_t msg, const uint8_t* b, size_t n) {
    switch (msg) {
        case VEXA_CMSG_ACTIVATE:
            return " up=" + nameAt(b, n, offsetof(vexa_activate_req_t, up_iface)) +
                   " down=" + nameAt(b, n, offsetof(vexa_activate_req_t, down_iface));
        case VEXA_CMSG_SET_DATA_LIMIT:
            return " iface=" + nameAt(b, n, offsetof(vexa_data_limit_req_t, iface)) + " limit=" +
                   std::to_string(
                           fieldAt<uint64_t>(b, n, offsetof(vexa_data_limit_req_t, limit_bytes)));
        case VEXA_CMSG_SET_CT_TIMEOUT:
            return " udp=" +
                   std::to_string(
                           fieldAt<int32_t>(b, n, offsetof(vexa_ct_timeout_req_t, udp_timeout))) +
                   " tcp=" +
                   std::to_string(
                           fieldAt<int32_t>(b, n, offsetof(vexa_ct_timeout_req_t, tcp_timeout)));
        case VEXA_CMSG_SET_WARNING_AND_LIMIT:
            return " iface=" + nameAt(b, n, offsetof(vexa_warning_limit_req_t, iface)) + " limit=" +
                   std::to_string(fieldAt<uint64_t>(
                           b, n, offsetof(vexa_warning_limit_req_t, limit_bytes))) +
                   " warning=" +
                   std::to_string(fieldAt<uint64_t>(
                           b, n, offsetof(vexa_warning_limit_req_t, warning_bytes)));
        default:
            return "";
    }
}

std::string dotted(const uint8_t (&ip)[4]) {
    return std::to_string(ip[0]) + "." + std::to_string(ip[1]) + "." + std::to_string(ip[2]) + "." +
           std::to_string(ip[3]);
}

// The three slots of a connection update, its protocol and its destination-NAT flag.
std::string connectionUpdate(const uint8_t* b, size_t n) {
    const auto c = fieldAt<vexa_conn_update_t>(b, n, offsetof(vexa_dev_rsp_common_t, data));
    return " " + dotted(c.ip0) + ":" + std::to_string(c.port0) + " " + dotted(c.ip1) + ":" +
           std::to_string(c.port1) + " " + dotted(c.ip2) + ":" + std::to_string(c.port2) +
           " proto=" + std::to_string(c.proto) + " dst_nat=" + std::to_string(c.dst_nat);
}

}  // namespace

std::string describeVexaRequest(const uint8_t* bytes, size_t size) {
    static const char* const kNames[] = {
            "ENABLE",         "DISABLE",        "ACTIVATE",       "DEACTIVATE",
            "GET_DATA_USAGE", "SET_DATA_LIMIT", "SET_CT_TIMEOUT", "SET_WARNING_AND_LIMIT",
    };
    if (size < sizeof(vexa_common_hdr_t)) return "short request";
    const vexa_common_hdr_t h = headerOf(bytes, size);
    std::string out = h.msg <= VEXA_CMSG_SET_WARNING_AND_LIMIT ? kNames[h.msg]
                                                               : "msg " + std::to_string(h.msg);
    out += " app=" + appName(h.app_type) + " len=" + std::to_string(h.data_len);
    if (h.mcode != VEXA_MCODE) out += " mcode=" + hex(h.mcode);
    if (h.status != VEXA_REQ_STATUS) out += " status=" + std::to_string(h.status);
    return out + requestFields(h.msg, bytes, size);
}

std::string describeVexaEvent(const uint8_t* bytes, size_t size) {
    static const char* const kNames[] = {
            "unknown",           "STARTED",
            "STOPPED_ERROR",     "STOPPED_UNSUPPORTED",
            "SUPPORT_AVAILABLE", "STOPPED_LIMIT_REACHED",
            "CONNECT_UPDATE",    "WARNING_REACHED",
    };
    if (size < sizeof(vexa_common_hdr_t)) return "short record";
    const vexa_common_hdr_t h = headerOf(bytes, size);
    std::string out = h.status >= VEXA_STARTED && h.status <= VEXA_WARNING_REACHED
                              ? kNames[h.status]
                              : "unknown(" + std::to_string(h.status) + ")";
    out += " app=" + std::to_string(h.app_type) + " msg=" + std::to_string(h.msg) +
           " len=" + std::to_string(h.data_len);
    if (h.mcode != VEXA_MCODE) out += " bad mcode=" + hex(h.mcode);
    if (h.status == VEXA_CONNECT_UPDATE &&
        size >= offsetof(vexa_dev_rsp_common_t, data) + sizeof(vexa_conn_update_t)) {
        out += connectionUpdate(bytes, size);
    }
    return out;
}
