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

// Host stand-in for the generated
// android.hardware.tetheroffload.control@1.1::ITetheringOffloadCallback.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <android/hardware/tetheroffload/control/1.1/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/HostGenerated.h>
#include <hidl/MQDescriptor.h>
#include <hidl/Status.h>
#include <utils/NativeHandle.h>
#include <utils/misc.h>

namespace android {
namespace hardware {
namespace tetheroffload {
namespace control {
namespace V1_1 {

struct ITetheringOffloadCallback
    : public ::android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback {
    typedef ::android::hardware::details::i_tag _hidl_tag;

    static const char* descriptor;

    virtual bool isRemote() const override { return false; }

    virtual ::android::hardware::Return<void> onEvent(
            ::android::hardware::tetheroffload::control::V1_0::OffloadCallbackEvent event) = 0;
    virtual ::android::hardware::Return<void> updateTimeout(
            const ::android::hardware::tetheroffload::control::V1_0::NatTimeoutUpdate& params) = 0;
    virtual ::android::hardware::Return<void> onEvent_1_1(
            ::android::hardware::tetheroffload::control::V1_1::OffloadCallbackEvent event) = 0;

    HOST_HIDL_IBASE_OVERRIDES

    static ::android::hardware::Return<::android::sp<ITetheringOffloadCallback>> castFrom(
            const ::android::sp<ITetheringOffloadCallback>& parent, bool emitError = false);
    static ::android::hardware::Return<::android::sp<ITetheringOffloadCallback>> castFrom(
            const ::android::sp<
                    ::android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>&
                    parent,
            bool emitError = false);
    static ::android::hardware::Return<::android::sp<ITetheringOffloadCallback>> castFrom(
            const ::android::sp<::android::hidl::base::V1_0::IBase>& parent, bool emitError = false);

    HOST_HIDL_SERVICE_STATICS(ITetheringOffloadCallback)
};

HOST_HIDL_TO_STRING(ITetheringOffloadCallback)

}  // namespace V1_1
}  // namespace control
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
