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

#include "bridge/VexaBridge.h"
#include "datapath/OffloadEventHandle.h"
#include "hal/IfaceNames.h"
#include "hal/TetherOffloadHal.h"

namespace vendor {
namespace tetheroffload {

// The modem is told first; the bridge is built only once the flag says USB is offloaded. Device
// and bridge failures are logged where they happen and never undo the activation.
void TetherOffloadHal::activateOffload(vexa_app_type_e app, const std::string& upIface,
                                       const std::string& downIface) {
    char up[VEXA_IFNAME_SIZE];
    char down[VEXA_IFNAME_SIZE];
    fillIfaceName(up, upIface);
    fillIfaceName(down, downIface);

    mCbEvent->activeVexa(app, up, down);
    mCbEvent->sendTimeoutValue(VEXA_APP_TYPE_ALL);
    if (app == VEXA_APP_TYPE_USB) {
        mUsbOffloadActive = true;
        ::activeVexaonBridge();
    } else {
        mWifiOffloadActive = true;
    }
}

// The reverse order: the bridge lets go of the modem before the modem is told.
void TetherOffloadHal::deactivateOffload(vexa_app_type_e app) {
    if (app == VEXA_APP_TYPE_USB) {
        ::deactiveVexaonBridge();
        mCbEvent->sendCmd2MD(VEXA_APP_TYPE_USB, VEXA_CMSG_DEACTIVATE);
        mUsbOffloadActive = false;
    } else {
        mCbEvent->sendCmd2MD(VEXA_APP_TYPE_WH, VEXA_CMSG_DEACTIVATE);
        mWifiOffloadActive = false;
    }
}

}  // namespace tetheroffload
}  // namespace vendor
