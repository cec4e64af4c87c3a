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

#include "datapath/OffloadEventHandle.h"
#include "hal/IfaceNames.h"
#include "hal/Replies.h"
#include "hal/TetherOffloadHal.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

// The prefixes are only checked: the modem learns nothing from them.
Return<void> TetherOffloadHal::setLocalPrefixes(const hidl_vec<hidl_string>& prefixes,
                                                setLocalPrefixes_cb hidl_cb) {
    std::vector<std::string> list(prefixes.begin(), prefixes.end());
    ALOGI("setLocalPrefixes() \n");

    Reply reply(true, kReplySuccessful);
    if (mCallback == nullptr) {
        ALOGI("%s device has not been initialized () \n", "setLocalPrefixes");
        reply = Reply(false, kReplyNotInitialised);
    } else if (list.empty()) {
        ALOGI("%s prefixes.size() < 0\n", "setLocalPrefixes");
        reply = Reply(false, kReplyInvalid);
    } else if (!checkPrefix(list, FAMILY_ANY)) {
        ALOGI("%s Invalid prefixes \n", "setLocalPrefixes");
        reply = Reply(false, kReplyInvalid);
    }

    hidl_cb(reply.first, reply.second);
    return Void();
}

// One query for all apps together, whatever upstream is named. A failed query leaves the
// counters at zero, which reads as nothing forwarded.
Return<void> TetherOffloadHal::getForwardedStats(const hidl_string& upstream,
                                                 getForwardedStats_cb hidl_cb) {
    tether_offload_stats_t stats = {0, 0};

    if (mCallback == nullptr) {
        ALOGI("%s() device has not been initialized ()\n", "getForwardedStats");
    } else {
        ALOGI("%s() upstream:%s\n", "getForwardedStats", upstream.c_str());
        if (mCbEvent == nullptr) {
            ALOGE("getForwardedStats: mCbEvent is null\n");
        } else {
            mCbEvent->getDataUsage(VEXA_APP_TYPE_ALL, &stats);
        }
    }

    hidl_cb(stats.rx_bytes, stats.tx_bytes);
    return Void();
}

Return<void> TetherOffloadHal::setDataLimit(const hidl_string& upstream, uint64_t limitBytes,
                                            setDataLimit_cb hidl_cb) {
    char name[VEXA_IFNAME_SIZE];
    Reply reply = checkQuotaRequest("setDataLimit", upstream, name);
    if (reply.first) mCbEvent->setDataLimit(VEXA_APP_TYPE_ALL, name, limitBytes);

    hidl_cb(reply.first, reply.second);
    return Void();
}

Return<void> TetherOffloadHal::setDataWarningAndLimit(const hidl_string& upstream,
                                                      uint64_t warningBytes, uint64_t limitBytes,
                                                      setDataWarningAndLimit_cb hidl_cb) {
    char name[VEXA_IFNAME_SIZE];
    Reply reply = checkQuotaRequest("setDataWarningAndLimit", upstream, name);
    if (reply.first) {
        mCbEvent->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, name, warningBytes, limitBytes);
    }

    hidl_cb(reply.first, reply.second);
    return Void();
}

// The quota applies to whatever upstream the framework names; values are passed on as given and
// the device's answer does not change the reply.
TetherOffloadHal::Reply TetherOffloadHal::checkQuotaRequest(const char* op,
                                                            const std::string& upstream,
                                                            char (&name)[VEXA_IFNAME_SIZE]) {
    ALOGI("%s() upstream:%s\n", op, upstream.c_str());
    if (mCallback == nullptr || mCbEvent == nullptr) {
        ALOGI("%s() device has not been initialized ()\n", op);
        return Reply(false, kReplyNotInitialised);
    }
    if (upstream.empty()) {
        ALOGI("%s() interface name is empty\n", op);
        return Reply(false, kReplyInvalid);
    }
    fillIfaceName(name, upstream);
    return Reply(true, kReplySuccessful);
}

}  // namespace tetheroffload
}  // namespace vendor
