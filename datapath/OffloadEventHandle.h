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

// The process-wide client of the modem data-path device: it owns the one descriptor of
// "/dev/vexa", sends the control requests, and runs the event thread that hands modem events to
// the registered connection-timeout updater.

#pragma once

#include <pthread.h>
#include <stdint.h>

#include "datapath/vexa_protocol.h"

class ConnTimeoutUpdate;

class OffloadEventHandle {
public:
    // Creates the singleton and opens the device on the first call, exactly once.
    static OffloadEventHandle* getInstance();

    // Control requests: 0 on success, -1 on failure (the cause is logged).
    int sendCmd2MD(vexa_app_type_e app, vexa_ctrl_msg_e msg);
    int activeVexa(vexa_app_type_e app, char* upIface, char* downIface);
    int getDataUsage(vexa_app_type_e app, tether_offload_stats_t* stats);
    int setDataLimit(vexa_app_type_e app, char* iface, uint64_t limitBytes);
    int setDataWarningAndLimit(vexa_app_type_e app, char* iface, uint64_t warningBytes,
                               uint64_t limitBytes);
    int sendTimeoutValue(vexa_app_type_e app);

    // For the state dump: neither creates the client nor logs.
    static bool isDeviceOpen();
    static bool isEventThreadStarted();

    // Event thread and dispatch.
    static int createEventThread();
    static void* handleEvent(void* arg);
    int parsingEvent(vexa_dev_rsp_common_t* rsp);
    int registerTimeoutCallback(ConnTimeoutUpdate* u);
    int unregisterTimeoutCallback(ConnTimeoutUpdate* u);

private:
    OffloadEventHandle();
    OffloadEventHandle(const OffloadEventHandle&) = delete;
    OffloadEventHandle& operator=(const OffloadEventHandle&) = delete;

    // The log lines of one command's device steps.
    struct RequestLines;
    // Sends a filled request record to the device: 0 when the driver took it, -1 otherwise.
    static int submitRequest(const RequestLines& lines, vexa_app_type_e app, void* record);
    // Hands one event record to the registered updater; the lock is held.
    static void dispatch(ConnTimeoutUpdate* u, vexa_dev_rsp_common_t* rsp);
    static void deliverStatus(ConnTimeoutUpdate* u, uint32_t event);
    static void deliverWarning(ConnTimeoutUpdate* u);

    int mFd;
    ConnTimeoutUpdate* mTimeoutCallback;

    static OffloadEventHandle* sInstance;
    static bool sEventThreadCreated;
    static pthread_mutex_t sTimeoutCbLock;
};
