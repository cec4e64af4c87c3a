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

// Host stand-in for the generated android.hardware.tetheroffload.config@1.0::IOffloadConfig.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/HostGenerated.h>
#include <hidl/MQDescriptor.h>
#include <hidl/Status.h>
#include <utils/NativeHandle.h>
#include <utils/misc.h>

#include <functional>
#include <string>

namespace android {
namespace hardware {
namespace tetheroffload {
namespace config {
namespace V1_0 {

struct IOffloadConfig : public ::android::hidl::base::V1_0::IBase {
    typedef ::android::hardware::details::i_tag _hidl_tag;

    static const char* descriptor;

    virtual bool isRemote() const override { return false; }

    using setHandles_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> setHandles(const ::android::hardware::hidl_handle& fd1,
                                                         const ::android::hardware::hidl_handle& fd2,
                                                         setHandles_cb _hidl_cb) = 0;

    HOST_HIDL_IBASE_OVERRIDES

    static ::android::hardware::Return<::android::sp<IOffloadConfig>> castFrom(
            const ::android::sp<IOffloadConfig>& parent, bool emitError = false);
    static ::android::hardware::Return<::android::sp<IOffloadConfig>> castFrom(
            const ::android::sp<::android::hidl::base::V1_0::IBase>& parent, bool emitError = false);

    HOST_HIDL_SERVICE_STATICS(IOffloadConfig)
};

HOST_HIDL_TO_STRING(IOffloadConfig)

}  // namespace V1_0
}  // namespace config
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
