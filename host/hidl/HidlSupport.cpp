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

#include <hidl/HidlSupport.h>

#include <utility>

namespace android {
namespace hardware {

hidl_handle& hidl_handle::operator=(const hidl_handle& other) {
    if (this == &other) return *this;
    freeHandle();
    if (other.mHandle != nullptr) {
        // A copy must stay valid after the original closes its descriptors.
        mHandle = native_handle_clone(other.mHandle);
        mOwnsHandle = mHandle != nullptr;
    }
    return *this;
}

hidl_handle& hidl_handle::operator=(hidl_handle&& other) noexcept {
    if (this == &other) return *this;
    freeHandle();
    mHandle = other.mHandle;
    mOwnsHandle = other.mOwnsHandle;
    other.mHandle = nullptr;
    other.mOwnsHandle = false;
    return *this;
}

hidl_handle& hidl_handle::operator=(const native_handle_t* native_handle) {
    freeHandle();
    mHandle = native_handle;
    return *this;
}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
    freeHandle();
    mHandle = handle;
    mOwnsHandle = shouldOwn;
}

void hidl_handle::freeHandle() {
    if (mOwnsHandle && mHandle != nullptr) {
        native_handle_t* handle = const_cast<native_handle_t*>(mHandle);
        native_handle_close(handle);
        native_handle_delete(handle);
    }
    mHandle = nullptr;
    mOwnsHandle = false;
}

}  // namespace hardware
}  // namespace android
