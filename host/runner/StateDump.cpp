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

#include "StateDump.h"

#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <cutils/native_handle.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "hostplatform/Recorder.h"

namespace hostrunner {
namespace {

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::tetheroffload::control::V1_1::IOffloadControl;

// Everything in the file from its start.
std::string readBack(int fd) {
    std::string text;
    char chunk[4096];
    off_t offset = 0;
    for (;;) {
        ssize_t n = pread(fd, chunk, sizeof(chunk), offset);
        if (n <= 0) break;
        text.append(chunk, static_cast<size_t>(n));
        offset += n;
    }
    return text;
}

// lshal hands over a pipe; a memory file holds any length without a second thread to drain it.
std::string callDebug(const sp<IOffloadControl>& control) {
    native_handle_t* handle = native_handle_create(1, 0);
    if (handle == nullptr) return "";
    handle->data[0] = memfd_create("dump", MFD_CLOEXEC);
    std::string text;
    if (handle->data[0] >= 0 &&
        control->debug(hidl_handle(handle), hidl_vec<hidl_string>()).isOk()) {
        text = readBack(handle->data[0]);
    }
    native_handle_close(handle);
    native_handle_delete(handle);
    return text;
}

}  // namespace

void dumpServiceState() {
    sp<IOffloadControl> control = IOffloadControl::getService("default");
    // Without a registered service there is nobody to write anything.
    std::string text = control != nullptr ? callDebug(control) : "";
    hostplatform::Recorder::instance().add(hostplatform::DumpRecord{std::move(text)});
}

}  // namespace hostrunner
