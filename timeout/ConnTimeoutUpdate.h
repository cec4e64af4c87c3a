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

// Holds the framework's callback for the event thread and turns the modem's connection updates
// into updateTimeout calls.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <stddef.h>
#include <stdint.h>
#include <utils/StrongPointer.h>

#include "datapath/vexa_protocol.h"

// Payload of a VEXA_CONNECT_UPDATE event. Addresses are in network order; ports are taken as
// stored, without byte swapping.
typedef struct {
    uint8_t ip0[4];
    uint8_t ip1[4];
    uint8_t ip2[4];
    uint16_t port0;
    uint16_t port1;
    uint16_t port2;
    uint8_t proto;
    uint8_t reserved0[5];
    uint8_t dst_nat;
    uint8_t reserved1[3];
} vexa_conn_update_t;

static_assert(sizeof(vexa_conn_update_t) == 28, "connection update is 28 bytes");
static_assert(offsetof(vexa_conn_update_t, ip1) == 4, "ip1 at 4");
static_assert(offsetof(vexa_conn_update_t, ip2) == 8, "ip2 at 8");
static_assert(offsetof(vexa_conn_update_t, port0) == 12, "port0 at 12");
static_assert(offsetof(vexa_conn_update_t, port1) == 14, "port1 at 14");
static_assert(offsetof(vexa_conn_update_t, port2) == 16, "port2 at 16");
static_assert(offsetof(vexa_conn_update_t, proto) == 18, "proto at 18");
static_assert(offsetof(vexa_conn_update_t, dst_nat) == 24, "dst_nat at 24");

class ConnTimeoutUpdate {
public:
    explicit ConnTimeoutUpdate(
            const android::sp<
                    android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb);
    explicit ConnTimeoutUpdate(
            const android::sp<
                    android::hardware::tetheroffload::control::V1_1::ITetheringOffloadCallback>& cb);

    // 0 when updateTimeout was called, -1 for a record of the wrong length, -2 with no callback.
    int connTimeoutUpdater(vexa_dev_rsp_common_t* rsp);

    // Writes the dotted text of the four bytes at `addr` into ipv4Addr.
    void formatIP(unsigned char* addr);

    // The version of the framework callback held: "1.1" or "1.0".
    const char* callbackVersion() const;

private:
    // The event thread delivers status events through the held callback.
    friend class OffloadEventHandle;

    android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>
            mCallbackV1_0;
    android::sp<android::hardware::tetheroffload::control::V1_1::ITetheringOffloadCallback>
            mCallbackV1_1;
    char ipv4Addr[16];
};
