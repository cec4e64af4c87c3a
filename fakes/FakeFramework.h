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

// The tethering framework's callbacks, 1.0-only or 1.1, standing for objects of another process:
// every call goes to the observers, and while the framework is dead every call fails in
// transport, the interface chain included, so that a cast then fails as it would.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

namespace fakes {

class FakeFramework {
public:
    enum class Version { k1_0, k1_1 };

    static android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>
    makeCallback(Version version);

    // Alive until told otherwise.
    static void setAlive(bool alive);
};

// A handle as the framework hands its netlink sockets to setHandles: `fds` descriptors (on
// /dev/null here), or no native handle at all. The service only borrows it; it is closed and freed
// with this object.
class FrameworkHandle {
public:
    static constexpr int kNoHandle = -1;

    explicit FrameworkHandle(int fds = 1);
    ~FrameworkHandle();
    FrameworkHandle(const FrameworkHandle&) = delete;
    FrameworkHandle& operator=(const FrameworkHandle&) = delete;

    android::hardware::hidl_handle get() const { return android::hardware::hidl_handle(mNative); }
    // Whether every descriptor is still open: the service must not close what it borrowed.
    bool descriptorsOpen() const;

private:
    native_handle_t* mNative = nullptr;
};

}  // namespace fakes
