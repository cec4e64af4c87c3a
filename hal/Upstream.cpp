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
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

Return<void> TetherOffloadHal::setUpstreamParameters(
        const hidl_string& /*iface*/, const hidl_string& /*v4Addr*/, const hidl_string& /*v4Gw*/,
        const android::hardware::hidl_vec<hidl_string>& /*v6Gws*/,
        setUpstreamParameters_cb hidl_cb) {
    ALOGI("%s is not offered yet\n", "setUpstreamParameters");
    hidl_cb(false, "Not offered yet\n");
    return Void();
}

}  // namespace tetheroffload
}  // namespace vendor
