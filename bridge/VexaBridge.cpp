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

#include "bridge/VexaBridge.h"

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <log/log.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>
#include <utils/StrongPointer.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <string>

using android::sp;
using android::hardware::hidl_string;
using android::hardware::Return;
using vendor::korvan::hardware::plexd::V1_0::IPlexd;

const char gBridgeName[] = "mdbr0";
const char gUsbIface[] = "rndis0";
const char gModemLanIface[] = "wanif-lan";

namespace {

constexpr size_t kCmdSize = 128;
constexpr size_t kNameSize = 16;  // a Linux interface name and its NUL
constexpr useconds_t kSetcfgPauseMicros = 500000;

// Copies at most 15 characters; the buffer always ends in NUL.
void fillName(char (&buf)[kNameSize], const char* name) {
    memset(buf, 0, sizeof(buf));
    strncpy(buf, name, sizeof(buf) - 1);
}

// False when formatting failed or the line did not fit: a cut command must never reach the agent.
bool formatted(int n) {
    return n >= 0 && static_cast<size_t>(n) < kCmdSize;
}

}  // namespace

// Hands one command line to the network agent. 0 once the agent has taken the line, -1 when it
// could not be reached. What the agent does with the line is never seen here.
static int PlexdCmd(char* cmd) {
    if (cmd == nullptr) return -1;

    std::string line(cmd);
    line += " ";
    if (fprintf(stderr, "%s\n", line.c_str()) < 0) {
        ALOGE("PlexdCmd fprintf stderr failed\n");
        return -1;
    }

    // No cached handle: the agent may have restarted since the last command.
    sp<IPlexd> agent = IPlexd::getService("default", false);
    if (agent == nullptr) {
        ALOGE("get %s service failed\n", IPlexd::descriptor);
        return -1;
    }

    Return<void> ret = agent->runCmd(hidl_string(line));
    // An unchecked failed Return aborts the process; a dead agent must not take the service down.
    if (!ret.isOk()) {
        ALOGE("PlexdCmd runCmd failed: %s\n", ret.description().c_str());
        return -1;
    }
    return 0;
}

// One command of the bridge family: a line that failed to format or did not fit is refused, the
// rest goes to the agent. Each failure is logged with the calling function's own line.
static int sendBridgeCommand(char* cmd, int formatResult, const char* formatFailLine,
                             const char* sendFailLine) {
    if (!formatted(formatResult)) {
        ALOGE("%s", formatFailLine);
        return -1;
    }
    if (PlexdCmd(cmd) < 0) {
        ALOGE("%s", sendFailLine);
        return -1;
    }
    return 0;
}

int addSlave(char* iface) {
    char cmd[kCmdSize] = {};
    int n = iface == nullptr
                    ? -1
                    : snprintf(cmd, sizeof(cmd), "plexd bridge addif %s %s", gBridgeName, iface);
    if (sendBridgeCommand(cmd, n, "addSlave sprintf cmd fail \n", "bridge addSlave fail\n") < 0) {
        return -1;
    }
    ALOGI("bridge addSlave %s\n", iface);
    return 0;
}

int delSlave(char* iface) {
    char cmd[kCmdSize] = {};
    int n = iface == nullptr
                    ? -1
                    : snprintf(cmd, sizeof(cmd), "plexd bridge delif %s %s", gBridgeName, iface);
    if (sendBridgeCommand(cmd, n, "delSlave sprintf cmd fail\n", "bridge delSlave fail\n") < 0) {
        return -1;
    }
    ALOGI("bridge delSlave %s\n", iface);
    return 0;
}

int clearMac() {
    char cmd[kCmdSize] = {};
    int n = snprintf(cmd, sizeof(cmd), "plexd bridge clear mac %s", gBridgeName);
    if (sendBridgeCommand(cmd, n, "clearMac sprintf cmd fail \n", "bridge clearMac fail\n") < 0) {
        return -1;
    }
    ALOGI("bridge clearMac\n");
    return 0;
}

// Gives the interface no address and brings it up. Failures are logged and the caller goes on.
static void setInterface(const char* iface, const char* addr, const char* flag) {
    char cmd[kCmdSize] = {};
    int n = snprintf(cmd, sizeof(cmd), "plexd interface setcfg %s %s 0 %s", iface, addr, flag);
    const char* formatFail = "setInterface sprintf cmd fail\n";
    if (sendBridgeCommand(cmd, n, formatFail, "bridge setInterface fail\n") == 0) {
        ALOGI("bridge setInterface \n");
    }
}

int activeVexaonBridge() {
    char addr[kNameSize];
    char flag[kNameSize];
    char usbIface[kNameSize];
    char lanIface[kNameSize];
    fillName(addr, "0.0.0.0");
    fillName(flag, "up");
    fillName(usbIface, gUsbIface);
    fillName(lanIface, gModemLanIface);

    clearMac();
    addSlave(usbIface);
    addSlave(lanIface);
    setInterface(lanIface, addr, flag);
    // The agent needs time between the two interface changes.
    usleep(kSetcfgPauseMicros);
    setInterface(usbIface, addr, flag);
    return 0;
}

int deactiveVexaonBridge() {
    char lanIface[kNameSize];
    fillName(lanIface, gModemLanIface);

    // rndis0 stays a member: only the modem side leaves the bridge.
    clearMac();
    delSlave(lanIface);
    return 0;
}
