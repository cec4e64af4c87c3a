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

#include "datapath/OffloadEventHandle.h"

#include <errno.h>
#include <fcntl.h>
#include <log/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>

#include <mutex>

struct OffloadEventHandle::RequestLines {
    const char* noInstance;
    const char* noDevice;
    const char* ioctlFail;  // with the app and errno
};

OffloadEventHandle* OffloadEventHandle::sInstance = nullptr;
bool OffloadEventHandle::sEventThreadCreated = false;
pthread_mutex_t OffloadEventHandle::sTimeoutCbLock = PTHREAD_MUTEX_INITIALIZER;

namespace {

constexpr int kDefaultTcpTimeout = 432000;
constexpr int kDefaultUdpTimeout = 180;
constexpr size_t kProcReadMax = 64;

std::once_flag gInstanceOnce;

void fillHeader(vexa_common_hdr_t* hdr, vexa_app_type_e app, vexa_ctrl_msg_e msg, uint32_t dataLen) {
    hdr->mcode = VEXA_MCODE;
    hdr->status = VEXA_REQ_STATUS;
    hdr->app_type = app;
    hdr->msg = msg;
    hdr->data_len = dataLen;
}

// The field is zero already; at most 15 characters go in, so byte 15 stays NUL.
void copyIfaceName(char (&field)[VEXA_IFNAME_SIZE], const char* name) {
    memcpy(field, name, strnlen(name, VEXA_IFNAME_SIZE - 1));
}

// The timeout in seconds from the kernel's conntrack table, or a value below 1 on failure.
int readConnectionTimeout(const char* proto) {
    const char* path;
    if (strcmp(proto, "udp") == 0) {
        path = "/proc/sys/net/netfilter/nf_conntrack_udp_timeout_stream";
    } else if (strcmp(proto, "tcp") == 0) {
        path = "/proc/sys/net/netfilter/nf_conntrack_tcp_timeout_established";
    } else {
        ALOGE("unknown proctol ");
        return 0;
    }
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        ALOGE("open proc (%s) item fail err: %d", proto, errno);
        return -1;
    }
    char text[kProcReadMax + 1] = {};
    // A failed or empty read leaves the text empty, which reads as 0.
    size_t got = fread(text, 1, kProcReadMax, file);
    text[got] = '\0';
    int value = atoi(text);
    if (value < 1) {
        ALOGE(" %s timeout atoi fail ,ret = %d", proto, value);
    }
    if (fclose(file) != 0) {
        ALOGE("close tcp_filepath or udp_filepath fail\n");
    }
    return value;
}

}  // namespace

OffloadEventHandle::OffloadEventHandle() : mFd(-1), mTimeoutCallback(nullptr) {}

OffloadEventHandle* OffloadEventHandle::getInstance() {
    // Binder threads and the main thread may make the first call together.
    std::call_once(gInstanceOnce, [] {
        OffloadEventHandle* inst = new OffloadEventHandle();
        sEventThreadCreated = false;
        ALOGE("open dev ++ g-fd =%d", inst->mFd);
        inst->mFd = open(VEXA_DEV_PATH, O_RDWR);
        if (inst->mFd < 0) {
            ALOGE("open %s fail \n", VEXA_DEV_PATH);
        } else {
            ALOGI("open %s done, fd=%d\n", VEXA_DEV_PATH, inst->mFd);
        }
        // A failed open is not retried: the client lives on without a device.
        sInstance = inst;
    });
    ALOGI(" GetInstance p=%p\n", sInstance);
    return sInstance;
}

bool OffloadEventHandle::isDeviceOpen() {
    return sInstance != nullptr && sInstance->mFd >= 0;
}

int OffloadEventHandle::submitRequest(const RequestLines& lines, vexa_app_type_e app, void* record) {
    OffloadEventHandle* inst = getInstance();
    if (inst == nullptr) {
        ALOGE("%s", lines.noInstance);
        return -1;
    }
    if (inst->mFd < 0) {
        ALOGE("%s", lines.noDevice);
        return -1;
    }
    if (ioctl(inst->mFd, VEXA_IOCTL_REQUEST, record) != 0) {
        ALOGE(lines.ioctlFail, app, errno);
        return -1;
    }
    return 0;
}

int OffloadEventHandle::sendCmd2MD(vexa_app_type_e app, vexa_ctrl_msg_e msg) {
    vexa_common_hdr_t hdr = {};
    fillHeader(&hdr, app, msg, 0);
    OffloadEventHandle* inst = getInstance();
    if (inst == nullptr) {
        ALOGE("sendCmd2MD: fail to get offloadEventHandle instance \n");
        return -1;
    }
    if (inst->mFd < 0) {
        ALOGE("sendCmd2MD: fail to open vexa device \n");
        return -1;
    }
    if (ioctl(inst->mFd, VEXA_IOCTL_REQUEST, &hdr) != 0) {
        ALOGE("sendCmd2MD (app: %d cmd: %d)  fail errno: %d \n", app, msg, errno);
        return -1;
    }
    ALOGI("sendCmd2MD (app: %d cmd: %d) ok \n", app, msg);
    return 0;
}

int OffloadEventHandle::activeVexa(vexa_app_type_e app, char* upIface, char* downIface) {
    static const RequestLines kLines = {
            "activeVexa: fail to get offloadEventHandle instance \n",
            "activeVexa: fail to open vexa device \n",
            "activeVexa (app: %d )  fail errno: %d \n",
    };
    if (upIface == nullptr || downIface == nullptr) {
        ALOGE("activeVexa: interface is null \n");
        return -1;
    }
    vexa_activate_req_t req = {};
    fillHeader(&req.hdr, app, VEXA_CMSG_ACTIVATE, sizeof(req) - sizeof(req.hdr));
    copyIfaceName(req.up_iface, upIface);
    copyIfaceName(req.down_iface, downIface);
    if (submitRequest(kLines, app, &req) != 0) return -1;
    ALOGI("activeVexa (app: %d ) ok \n", app);
    return 0;
}

int OffloadEventHandle::getDataUsage(vexa_app_type_e app, tether_offload_stats_t* stats) {
    static const RequestLines kLines = {
            "getDataUsage: fail to get offloadEventHandle instance \n",
            "getDataUsage: fail to open vexa device \n",
            "getDataUsage (app: %d )  fail errno: %d \n",
    };
    // The driver writes its answer into the same buffer, so it is sent at full size.
    vexa_data_usage_req_t req = {};
    fillHeader(&req.hdr, app, VEXA_CMSG_GET_DATA_USAGE, 0);
    if (submitRequest(kLines, app, &req) != 0) return -1;
    if (req.hdr.data_len != VEXA_STATS_ANSWER_LEN) {
        ALOGI("getDataUsage : response length is not right \n");
        return -1;
    }
    stats->rx_bytes = req.rx_bytes;
    stats->tx_bytes = req.tx_bytes;
    ALOGI("getDataUsage (app: %d ) ok \n", app);
    return 0;
}

int OffloadEventHandle::setDataLimit(vexa_app_type_e app, char* iface, uint64_t limitBytes) {
    static const RequestLines kLines = {
            "setDataLimit: fail to get offloadEventHandle instance \n",
            "setDataLimit: fail to open vexa device \n",
            "setDataLimit (app: %d )  fail errno: %d \n",
    };
    if (iface == nullptr) {
        ALOGE("setDataLimit: interface is null \n");
        return -1;
    }
    vexa_data_limit_req_t req = {};
    fillHeader(&req.hdr, app, VEXA_CMSG_SET_DATA_LIMIT, sizeof(req) - sizeof(req.hdr));
    copyIfaceName(req.iface, iface);
    req.limit_bytes = limitBytes;
    if (submitRequest(kLines, app, &req) != 0) return -1;
    ALOGI("setDataLimit (app: %d ) ok \n", app);
    return 0;
}

int OffloadEventHandle::setDataWarningAndLimit(vexa_app_type_e app, char* iface,
                                               uint64_t warningBytes, uint64_t limitBytes) {
    static const RequestLines kLines = {
            "setDataWarningAndLimit: fail to get offloadEventHandle instance \n",
            "setDataWarningAndLimit: fail to open vexa device \n",
            "setDataWarningAndLimit (app: %d )  fail errno: %d \n",
    };
    if (iface == nullptr) {
        ALOGE("setDataWarningAndLimit: interface is null \n");
        return -1;
    }
    vexa_warning_limit_req_t req = {};
    fillHeader(&req.hdr, app, VEXA_CMSG_SET_WARNING_AND_LIMIT, sizeof(req) - sizeof(req.hdr));
    copyIfaceName(req.iface, iface);
    req.limit_bytes = limitBytes;
    req.warning_bytes = warningBytes;
    if (submitRequest(kLines, app, &req) != 0) return -1;
    ALOGI("setDataWarningAndLimit (app: %d ) ok \n", app);
    return 0;
}

int OffloadEventHandle::sendTimeoutValue(vexa_app_type_e app) {
    static const RequestLines kLines = {
            "sendTimeoutValue: fail to get offloadEventHandle instance \n",
            "sendTimeoutValue: fail to open vexa device \n",
            "sendTimeoutValue (app: %d )  fail errno: %d \n",
    };
    // Read afresh each time: the kernel's values may have been tuned since the last activation.
    int tcpTimeout = readConnectionTimeout("tcp");
    if (tcpTimeout < 1) tcpTimeout = kDefaultTcpTimeout;
    int udpTimeout = readConnectionTimeout("udp");
    if (udpTimeout < 1) udpTimeout = kDefaultUdpTimeout;

    vexa_ct_timeout_req_t req = {};
    fillHeader(&req.hdr, app, VEXA_CMSG_SET_CT_TIMEOUT, sizeof(req) - sizeof(req.hdr));
    req.udp_timeout = udpTimeout;
    req.tcp_timeout = tcpTimeout;
    ALOGI("sendTimeoutValue: timeout tcp %d ,udp %d \n", tcpTimeout, udpTimeout);
    if (submitRequest(kLines, app, &req) != 0) return -1;
    ALOGI("sendTimeoutValue (app: %d ) ok \n", app);
    return 0;
}
