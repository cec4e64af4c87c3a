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

#include <log/log.h>

#include <string>

#include "hal/IfaceNames.h"
#include "hal/Replies.h"
#include "hal/TetherOffloadHal.h"

using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

namespace {

constexpr char kAddOp[] = "addDownstream";
constexpr char kRemoveOp[] = "removeDownstream";

}  // namespace

Return<void> TetherOffloadHal::addDownstream(const hidl_string& iface, const hidl_string& prefix,
                                             addDownstream_cb hidl_cb) {
    ALOGI("addDownstream iface:%s prefix:%s\n", iface.c_str(), prefix.c_str());

    Reply reply(false, kReplyInvalid);
    if (mCallback == nullptr || mCbEvent == nullptr) {
        ALOGI("%s() device has not been initialized ()\n", kAddOp);
        reply = Reply(false, kReplyNotInitialised);
    } else if (downstreamArgsValid(kAddOp, iface, prefix)) {
        startDownstream(iface);
        reply = Reply(true, kReplySuccessful);
    }

    ALOGI("addDownstream(down-if:%s; up-if:%s)\n", iface.c_str(), mUpstreamIface.c_str());
    hidl_cb(reply.first, reply.second);
    return Void();
}

Return<void> TetherOffloadHal::removeDownstream(const hidl_string& iface, const hidl_string& prefix,
                                                removeDownstream_cb hidl_cb) {
    ALOGI("removeDownstream iface:%s prefix:%s\n", iface.c_str(), prefix.c_str());

    Reply reply(false, kReplyInvalid);
    if (mCallback == nullptr || mCbEvent == nullptr) {
        ALOGI("%s() device has not been initialized ()\n", kRemoveOp);
        reply = Reply(false, kReplyNotInitialised);
    } else if (downstreamArgsValid(kRemoveOp, iface, prefix)) {
        stopDownstream(iface);
        reply = Reply(true, kReplySuccessful);
    }

    ALOGI("removeDownstream(donw-if: %s; up-if: %s)\n", iface.c_str(), mUpstreamIface.c_str());
    hidl_cb(reply.first, reply.second);
    return Void();
}

bool TetherOffloadHal::downstreamArgsValid(const char* op, const std::string& iface,
                                           const std::string& prefix) {
    if ((iface.empty() && prefix.empty()) || !checkInterface(iface)) {
        ALOGI("%s() Invalid interface\n", op);
        return false;
    }
    if (!checkPrefix(prefix, FAMILY_ANY)) {
        ALOGI("%s Invalid prefix\n", op);
        return false;
    }
    return true;
}

// The downstream is remembered in any case, so that a modem upstream arriving later can start
// its offload. The modem gets the name as given, even where only "mdbr0" is stored.
void TetherOffloadHal::startDownstream(const std::string& iface) {
    if (isUsbDownstream(iface)) {
        mUsbDownstream = "mdbr0";
        if (!mUsbOffloadActive && isModemIface(mUpstreamIface)) {
            activateOffload(VEXA_APP_TYPE_USB, mUpstreamIface, iface);
            ALOGI("active usb tehtering offload\n");
        }
    } else if (isWifiDownstream(iface)) {
        mWifiDownstream = iface;
        if (!mWifiOffloadActive && isModemIface(mUpstreamIface)) {
            activateOffload(VEXA_APP_TYPE_WH, mUpstreamIface, iface);
            ALOGI("active wifi tehtering offload\n");
        }
    } else {
        ALOGI("No actived offload\n");
    }
}

// Only a running offload is ended; a stored downstream that was never offloaded stays stored.
// Any hotspot name ends the hotspot offload: there is only one.
void TetherOffloadHal::stopDownstream(const std::string& iface) {
    if (mUsbOffloadActive && isUsbDownstream(iface)) {
        mUsbDownstream.clear();
        deactivateOffload(VEXA_APP_TYPE_USB);
        ALOGI("removeDownstream() de-active usb vexa\n");
    } else if (mWifiOffloadActive && isWifiDownstream(iface)) {
        mWifiDownstream.clear();
        deactivateOffload(VEXA_APP_TYPE_WH);
        ALOGI("removeDownstream() de-active wh vexa\n");
    } else {
        ALOGI("No de-active vexa\n");
    }
}

}  // namespace tetheroffload
}  // namespace vendor
