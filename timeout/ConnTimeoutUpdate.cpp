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

#define LOG_TAG "TetherOffload"

#include "timeout/ConnTimeoutUpdate.h"

#include <cutils/properties.h>
#include <log/log.h>
#include <stdio.h>
#include <string.h>

using android::sp;
using android::hardware::Return;
using android::hardware::tetheroffload::control::V1_0::NatTimeoutUpdate;
using android::hardware::tetheroffload::control::V1_0::NetworkProtocol;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

constexpr uint32_t kConnUpdateLen = sizeof(vexa_conn_update_t);
constexpr uint8_t kProtoTcp = 6;

// Addresses and ports are logged only on debug builds; a production build logs none.
bool mayLogAddresses() {
    char type[PROPERTY_VALUE_MAX] = {};
    property_get("ro.build.type", type, "user");
    return strncmp(type, "userdebug", 9) == 0 || strncmp(type, "eng", 3) == 0;
}

// The four address bytes as one host-order word, the way the debug line prints them.
uint32_t rawAddress(const uint8_t addr[4]) {
    uint32_t value;
    memcpy(&value, addr, sizeof(value));
    return value;
}

}  // namespace

ConnTimeoutUpdate::ConnTimeoutUpdate(const sp<V1_0::ITetheringOffloadCallback>& cb)
    : mCallbackV1_0(cb), mCallbackV1_1(nullptr), ipv4Addr{} {}

ConnTimeoutUpdate::ConnTimeoutUpdate(const sp<V1_1::ITetheringOffloadCallback>& cb)
    : mCallbackV1_0(nullptr), mCallbackV1_1(cb), ipv4Addr{} {}

int ConnTimeoutUpdate::connTimeoutUpdater(vexa_dev_rsp_common_t* rsp) {
    NatTimeoutUpdate update{};
    if (mCallbackV1_0 == nullptr && mCallbackV1_1 == nullptr) {
        ALOGI(" UDPTimeoutUpdate : not register callback \n");
        return -2;
    }
    if (rsp->data_len != kConnUpdateLen) {
        ALOGE("a wrong format event for udp timeout update \n");
        return -1;
    }
    vexa_conn_update_t conn;
    memcpy(&conn, rsp->data, sizeof(conn));

    update.proto = conn.proto == kProtoTcp ? NetworkProtocol::TCP : NetworkProtocol::UDP;

    // With destination NAT the modem reports the translated pair one slot further on.
    uint8_t* srcAddr = conn.dst_nat ? conn.ip1 : conn.ip0;
    uint16_t srcPort = conn.dst_nat ? conn.port1 : conn.port0;
    uint8_t* dstAddr = conn.dst_nat ? conn.ip2 : conn.ip1;
    uint16_t dstPort = conn.dst_nat ? conn.port2 : conn.port1;

    formatIP(srcAddr);
    update.src.addr = ipv4Addr;
    update.src.port = srcPort;
    formatIP(dstAddr);
    update.dst.addr = ipv4Addr;
    update.dst.port = dstPort;

    if (mayLogAddresses()) {
        if (conn.dst_nat) {
            ALOGI("dst nat is  set  src (port)=0x%x (0x%x) dst =0x%x(0x%x)  \n",
                  rawAddress(conn.ip1), conn.port1, rawAddress(conn.ip2), conn.port2);
        } else {
            ALOGI("dst nat is not set  src (port)=0x%x (0x%x) dst =0x%x(0x%x)  \n",
                  rawAddress(conn.ip0), conn.port0, rawAddress(conn.ip1), conn.port1);
        }
    }

    Return<void> ret = mCallbackV1_1 != nullptr ? mCallbackV1_1->updateTimeout(update)
                                                : mCallbackV1_0->updateTimeout(update);
    // A framework that has gone away loses the update; the event thread carries on.
    if (!ret.isOk()) {
        ALOGE("%s to framework failed: %s\n", "updateTimeout", ret.description().c_str());
    }
    return 0;
}

const char* ConnTimeoutUpdate::callbackVersion() const {
    return mCallbackV1_1 != nullptr ? "1.1" : "1.0";
}

void ConnTimeoutUpdate::formatIP(unsigned char* addr) {
    memset(ipv4Addr, 0, sizeof(ipv4Addr));
    if (snprintf(ipv4Addr, sizeof(ipv4Addr), "%u.%u.%u.%u", addr[0], addr[1], addr[2], addr[3]) < 0) {
        ALOGE("sprintf ipv4Addr failed\n");
    }
    if (mayLogAddresses()) {
        ALOGI("TimeoutUpdate : addr =%s \n", ipv4Addr);
    }
}
