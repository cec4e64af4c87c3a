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

#include "hal/TetherOffloadHal.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

Return<void> TetherOffloadHal::setLocalPrefixes(const hidl_vec<hidl_string>& /*prefixes*/,
                                                setLocalPrefixes_cb hidl_cb) {
    ALOGI("%s is not offered yet\n", "setLocalPrefixes");
    hidl_cb(false, "Not offered yet\n");
    return Void();
}

Return<void> TetherOffloadHal::getForwardedStats(const hidl_string& /*upstream*/,
                                                 getForwardedStats_cb hidl_cb) {
    ALOGI("%s is not offered yet\n", "getForwardedStats");
    hidl_cb(0, 0);
    return Void();
}

Return<void> TetherOffloadHal::setDataLimit(const hidl_string& /*upstream*/,
                                            uint64_t /*limitBytes*/, setDataLimit_cb hidl_cb) {
    ALOGI("%s is not offered yet\n", "setDataLimit");
    hidl_cb(false, "Not offered yet\n");
    return Void();
}

Return<void> TetherOffloadHal::setDataWarningAndLimit(const hidl_string& /*upstream*/,
                                                      uint64_t /*warningBytes*/,
                                                      uint64_t /*limitBytes*/,
                                                      setDataWarningAndLimit_cb hidl_cb) {
    ALOGI("%s is not offered yet\n", "setDataWarningAndLimit");
    hidl_cb(false, "Not offered yet\n");
    return Void();
}

}  // namespace tetheroffload
}  // namespace vendor
