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

// The state report that `lshal debug` shows: what the HAL object holds and whether the data path
// runs. Reading it must leave every trace as it was, so nothing here logs or changes a field.

#include <cutils/native_handle.h>
#include <errno.h>
#include <unistd.h>

#include <string>

#include "datapath/OffloadEventHandle.h"
#include "hal/TetherOffloadHal.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace vendor {
namespace tetheroffload {

namespace {

// Names come from the framework: quoted, so that an empty one shows.
std::string quoted(const std::string& name) {
    return "\"" + name + "\"";
}

void addLine(std::string* report, const char* key, const std::string& value) {
    *report += "  ";
    *report += key;
    *report += ": ";
    *report += value;
    *report += "\n";
}

// A failed write is dropped: the reader has gone, and the dump must not log.
void writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

}  // namespace

// The options of `lshal debug` are not used: there is one report.
Return<void> TetherOffloadHal::debug(const hidl_handle& fd,
                                     const hidl_vec<hidl_string>& /*options*/) {
    const native_handle_t* handle = fd.getNativeHandle();
    if (handle == nullptr || handle->numFds < 1) return Void();
    writeAll(handle->data[0], stateReport());
    return Void();
}

std::string TetherOffloadHal::stateReport() const {
    std::string initialised = "no";
    if (mCallback != nullptr) {
        initialised = "yes, callback ";
        initialised += mTimeoutUpdate != nullptr ? mTimeoutUpdate->callbackVersion() : "unknown";
    }
    std::string report = "TetherOffloadHal\n";
    addLine(&report, "initialised", initialised);
    addLine(&report, "upstream", quoted(mUpstreamIface));
    addLine(&report, "USB downstream", quoted(mUsbDownstream));
    addLine(&report, "Wi-Fi downstream", quoted(mWifiDownstream));
    addLine(&report, "USB offload", mUsbOffloadActive ? "active" : "inactive");
    addLine(&report, "Wi-Fi offload", mWifiOffloadActive ? "active" : "inactive");
    addLine(&report, "data-path device", OffloadEventHandle::isDeviceOpen() ? "open" : "not open");
    addLine(&report, "event thread",
            OffloadEventHandle::isEventThreadStarted() ? "started" : "not started");
    return report;
}

}  // namespace tetheroffload
}  // namespace vendor
