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

// Host stand-in for the platform's <hidl/HidlInternal.h>: what the HIDL value types are built
// from.

#pragma once

#include <cstddef>
#include <cstdint>

namespace android {
namespace hardware {
namespace details {

// Tag that the generated interfaces carry in `_hidl_tag`.
struct i_tag {};

// A pointer that takes eight bytes whatever the pointer size, so that the value types have the
// same layout in 32-bit and 64-bit processes (generated headers check the offsets).
template <typename T>
struct hidl_pointer {
    hidl_pointer() : _pad(0) {}
    hidl_pointer(T* pointer) : hidl_pointer() { mPointer = pointer; }
    hidl_pointer(const hidl_pointer& other) : hidl_pointer(other.mPointer) {}
    hidl_pointer& operator=(const hidl_pointer& other) {
        mPointer = other.mPointer;
        return *this;
    }
    hidl_pointer& operator=(T* pointer) {
        mPointer = pointer;
        return *this;
    }

    operator T*() const { return mPointer; }

private:
    union {
        T* mPointer;
        uint64_t _pad;
    };
};

// HIDL sizes travel as 32 bits: a larger string or vector ends the process, as on the device.
void checkHidlSize(size_t size, const char* what);

}  // namespace details
}  // namespace hardware
}  // namespace android
