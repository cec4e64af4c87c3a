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
#include <vector>

#include "hal/IfaceNames.h"
#include "hal/Replies.h"
#include "hal/TetherOffloadHal.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

namespace {

constexpr char kOp[] = "setUpstreamParameters";

}  // namespace

Return<void> TetherOffloadHal::setUpstreamParameters(const hidl_string& iface,
                                                     const hidl_string& v4Addr,
                                                     const hidl_string& v4Gw,
                                                     const hidl_vec<hidl_string>& v6Gws,
                                                     setUpstreamParameters_cb hidl_cb) {
    std::vector<std::string> gateways(v6Gws.begin(), v6Gws.end());
    ALOGI("setUpstreamParameters iface:%s  v4Addr:%s  v4Gw:%s\n", iface.c_str(), v4Addr.c_str(),
          v4Gw.c_str());

    Reply reply(false, kReplyInvalid);
    if (mCallback == nullptr || mCbEvent == nullptr) {
        ALOGI("%s() device has not been initialized ()\n", kOp);
        reply = Reply(false, kReplyNotInitialised);
    } else if (upstreamArgsValid(iface, v4Addr, v4Gw, gateways)) {
        mUpstreamIface = iface;
        reply = isModemIface(iface) ? followModemUpstream(iface) : leaveModemUpstream(iface);
    }

    ALOGI("setUpstreamParameters up-if:%s; down-if(%s,%s)\n", iface.c_str(), mUsbDownstream.c_str(),
          mWifiDownstream.c_str());
    hidl_cb(reply.first, reply.second);
    return Void();
}

// Empty arguments pass one by one (the framework clears what it no longer knows), but not all
// of them at once.
bool TetherOffloadHal::upstreamArgsValid(const std::string& iface, const std::string& v4Addr,
                                         const std::string& v4Gw,
                                         const std::vector<std::string>& v6Gws) {
    if (iface.empty() && v4Addr.empty() && v4Gw.empty() && v6Gws.empty()) {
        ALOGI("%s() All of inputs are empty\n", kOp);
        return false;
    }
    if (!checkInterface(iface) && !iface.empty()) {
        ALOGI("%s() Invalid interface\n", kOp);
        return false;
    }
    if (!verifyIpAddress(v4Addr, FAMILY_IPV4) && !v4Addr.empty()) {
        ALOGI("%s() Invalid v4Addr\n", kOp);
        return false;
    }
    if (!verifyIpAddress(v4Gw, FAMILY_IPV4) && !v4Gw.empty()) {
        ALOGI("%s() Invalid v4Gw\n", kOp);
        return false;
    }
    if (!verifyIpAddress(v6Gws, FAMILY_IPV6) && !v6Gws.empty()) {
        ALOGI("%s() Invalid v6Gws\n", kOp);
        return false;
    }
    return true;
}

// A modem upstream starts every known downstream kind that is not offloaded yet. A change from
// one modem interface to another leaves running offload alone.
TetherOffloadHal::Reply TetherOffloadHal::followModemUpstream(const std::string& iface) {
    if (!mUsbOffloadActive && mUsbDownstream == "mdbr0") {
        activateOffload(VEXA_APP_TYPE_USB, iface, mUsbDownstream);
        ALOGI("setUpstreamParameters active usb vexa (up %s)\n", mUpstreamIface.c_str());
    }
    if (!mWifiOffloadActive && !mWifiDownstream.empty()) {
        activateOffload(VEXA_APP_TYPE_WH, iface, mWifiDownstream);
        ALOGI("setUpstreamParameters active wh vexa (up %s)\n", mUpstreamIface.c_str());
    }
    return Reply(true, kReplySuccessful);
}

// Any other upstream ends one offload per call, USB first; the framework calls again for the
// next one.
TetherOffloadHal::Reply TetherOffloadHal::leaveModemUpstream(const std::string& iface) {
    if (mUsbOffloadActive && mUsbDownstream == "mdbr0") {
        deactivateOffload(VEXA_APP_TYPE_USB);
        ALOGI("setUpstreamParameters de-active usb vexa (up %s)\n", mUpstreamIface.c_str());
        return Reply(false, kReplyDeactivated);
    }
    if (mWifiOffloadActive && !mWifiDownstream.empty()) {
        deactivateOffload(VEXA_APP_TYPE_WH);
        ALOGI("setUpstreamParameters de-active wh vexa (up %s)\n", mUpstreamIface.c_str());
        return Reply(false, kReplyDeactivated);
    }
    if (iface.empty()) return Reply(false, kReplyInvalid);
    return Reply(true, kReplySuccessful);
}

}  // namespace tetheroffload
}  // namespace vendor
