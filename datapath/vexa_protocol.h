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

// Records and codes of the modem data-path device "/dev/vexa". Requests go down by ioctl, events
// come up by read; both start with the same 16-byte header. Integers are in host byte order and
// the layouts below are exactly what the driver reads and writes.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

#define VEXA_DEV_PATH "/dev/vexa"
#define VEXA_MCODE 0x2454
#define VEXA_REQ_STATUS 2     // `status` of every request
#define VEXA_IOCTL_REQUEST 0  // plain request number, no _IOC encoding
#define VEXA_IFNAME_SIZE 16   // at most 15 characters and a NUL
#define VEXA_MAX_PAYLOAD 256
#define VEXA_STATS_BUF_SIZE 256  // the statistics request leaves room for the answer
#define VEXA_STATS_ANSWER_LEN 128

typedef enum {
    VEXA_APP_TYPE_USB = 0,
    VEXA_APP_TYPE_WH = 1,
    VEXA_APP_TYPE_ALL = 255,
} vexa_app_type_e;

typedef enum {
    VEXA_CMSG_ENABLE = 0,
    VEXA_CMSG_DISABLE = 1,
    VEXA_CMSG_ACTIVATE = 2,
    VEXA_CMSG_DEACTIVATE = 3,
    VEXA_CMSG_GET_DATA_USAGE = 4,
    VEXA_CMSG_SET_DATA_LIMIT = 5,
    VEXA_CMSG_SET_CT_TIMEOUT = 6,
    VEXA_CMSG_SET_WARNING_AND_LIMIT = 7,
} vexa_ctrl_msg_e;

// Event codes, carried in `status` of an event record.
typedef enum {
    VEXA_STARTED = 1,
    VEXA_STOPPED_ERROR = 2,
    VEXA_STOPPED_UNSUPPORTED = 3,
    VEXA_SUPPORT_AVAILABLE = 4,
    VEXA_STOPPED_LIMIT_REACHED = 5,
    VEXA_CONNECT_UPDATE = 6,
    VEXA_WARNING_REACHED = 7,
} vexa_event_e;

typedef struct {
    uint16_t mcode;
    uint16_t status;
    uint32_t app_type;
    uint32_t msg;
    uint32_t data_len;
} vexa_common_hdr_t;

// VEXA_CMSG_ACTIVATE
typedef struct {
    vexa_common_hdr_t hdr;
    char up_iface[VEXA_IFNAME_SIZE];
    char down_iface[VEXA_IFNAME_SIZE];
} vexa_activate_req_t;

// VEXA_CMSG_GET_DATA_USAGE: sent with data_len 0; the driver answers in place with data_len 128.
typedef struct {
    vexa_common_hdr_t hdr;
    uint64_t rx_bytes;
    uint8_t reserved0[56];
    uint64_t tx_bytes;
    uint8_t reserved1[VEXA_STATS_BUF_SIZE - 88];
} vexa_data_usage_req_t;

// VEXA_CMSG_SET_DATA_LIMIT
typedef struct {
    vexa_common_hdr_t hdr;
    char iface[VEXA_IFNAME_SIZE];
    uint64_t limit_bytes;
} vexa_data_limit_req_t;

// VEXA_CMSG_SET_CT_TIMEOUT: UDP before TCP.
typedef struct {
    vexa_common_hdr_t hdr;
    int32_t udp_timeout;
    int32_t tcp_timeout;
} vexa_ct_timeout_req_t;

// VEXA_CMSG_SET_WARNING_AND_LIMIT: the limit sits where it does in the data-limit request.
typedef struct {
    vexa_common_hdr_t hdr;
    char iface[VEXA_IFNAME_SIZE];
    uint64_t limit_bytes;
    uint64_t warning_bytes;
} vexa_warning_limit_req_t;

// One event as read from the device: the header and up to 256 payload bytes.
typedef struct {
    uint16_t mcode;
    uint16_t status;
    uint32_t app_type;
    uint32_t msg;
    uint32_t data_len;
    uint8_t data[VEXA_MAX_PAYLOAD];
} vexa_dev_rsp_common_t;

typedef struct {
    uint64_t rx_bytes;
    uint64_t tx_bytes;
} tether_offload_stats_t;

static_assert(sizeof(vexa_common_hdr_t) == 16, "header is 16 bytes");
static_assert(offsetof(vexa_common_hdr_t, mcode) == 0, "mcode at 0");
static_assert(offsetof(vexa_common_hdr_t, status) == 2, "status at 2");
static_assert(offsetof(vexa_common_hdr_t, app_type) == 4, "app_type at 4");
static_assert(offsetof(vexa_common_hdr_t, msg) == 8, "msg at 8");
static_assert(offsetof(vexa_common_hdr_t, data_len) == 12, "data_len at 12");

static_assert(sizeof(vexa_activate_req_t) == 48, "activation request is 48 bytes");
static_assert(offsetof(vexa_activate_req_t, up_iface) == 16, "upstream name at 16");
static_assert(offsetof(vexa_activate_req_t, down_iface) == 32, "downstream name at 32");

static_assert(sizeof(vexa_data_usage_req_t) == VEXA_STATS_BUF_SIZE, "statistics buffer");
static_assert(offsetof(vexa_data_usage_req_t, rx_bytes) == 16, "rx_bytes at 16");
static_assert(offsetof(vexa_data_usage_req_t, tx_bytes) == 80, "tx_bytes at 80");

static_assert(sizeof(vexa_data_limit_req_t) == 40, "data-limit request is 40 bytes");
static_assert(offsetof(vexa_data_limit_req_t, iface) == 16, "name at 16");
static_assert(offsetof(vexa_data_limit_req_t, limit_bytes) == 32, "limit at 32");

static_assert(sizeof(vexa_ct_timeout_req_t) == 24, "timeout request is 24 bytes");
static_assert(offsetof(vexa_ct_timeout_req_t, udp_timeout) == 16, "UDP timeout at 16");
static_assert(offsetof(vexa_ct_timeout_req_t, tcp_timeout) == 20, "TCP timeout at 20");

static_assert(sizeof(vexa_warning_limit_req_t) == 48, "warning-and-limit request is 48 bytes");
static_assert(offsetof(vexa_warning_limit_req_t, iface) == 16, "name at 16");
static_assert(offsetof(vexa_warning_limit_req_t, limit_bytes) == 32, "limit at 32");
static_assert(offsetof(vexa_warning_limit_req_t, warning_bytes) == 40, "warning at 40");

static_assert(sizeof(vexa_dev_rsp_common_t) == 272, "event record is at most 272 bytes");
static_assert(offsetof(vexa_dev_rsp_common_t, data_len) == 12, "event data_len at 12");
static_assert(offsetof(vexa_dev_rsp_common_t, data) == 16, "event payload at 16");

static_assert(sizeof(tether_offload_stats_t) == 16, "two u64 counters");

// A record in words, for traces and tests: a request as the driver reads it (e.g. "ACTIVATE
// app=USB len=32 up=wanif0 down=mdbr0") and an event as a read returned it (e.g. "STARTED app=0
// msg=0 len=0"). The service itself never calls them.
std::string describeVexaRequest(const uint8_t* bytes, size_t size);
std::string describeVexaEvent(const uint8_t* bytes, size_t size);
