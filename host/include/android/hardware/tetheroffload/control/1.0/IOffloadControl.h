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

// Host stand-in for the generated android.hardware.tetheroffload.control@1.0::IOffloadControl.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <android/hardware/tetheroffload/control/1.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/HostGenerated.h>
#include <hidl/MQDescriptor.h>
#include <hidl/Status.h>
#include <utils/NativeHandle.h>
#include <utils/misc.h>

#include <cstdint>
#include <functional>
#include <string>

namespace android {
namespace hardware {
namespace tetheroffload {
namespace control {
namespace V1_0 {

struct IOffloadControl : public ::android::hidl::base::V1_0::IBase {
    typedef ::android::hardware::details::i_tag _hidl_tag;

    static const char* descriptor;

    virtual bool isRemote() const override { return false; }

    using initOffload_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> initOffload(
            const ::android::sp<
                    ::android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback>& cb,
            initOffload_cb _hidl_cb) = 0;

    using stopOffload_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> stopOffload(stopOffload_cb _hidl_cb) = 0;

    using setLocalPrefixes_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> setLocalPrefixes(
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& prefixes,
            setLocalPrefixes_cb _hidl_cb) = 0;

    using getForwardedStats_cb = std::function<void(uint64_t rxBytes, uint64_t txBytes)>;
    virtual ::android::hardware::Return<void> getForwardedStats(
            const ::android::hardware::hidl_string& upstream, getForwardedStats_cb _hidl_cb) = 0;

    using setDataLimit_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> setDataLimit(
            const ::android::hardware::hidl_string& upstream, uint64_t limit,
            setDataLimit_cb _hidl_cb) = 0;

    using setUpstreamParameters_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> setUpstreamParameters(
            const ::android::hardware::hidl_string& iface,
            const ::android::hardware::hidl_string& v4Addr,
            const ::android::hardware::hidl_string& v4Gw,
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& v6Gws,
            setUpstreamParameters_cb _hidl_cb) = 0;

    using addDownstream_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> addDownstream(
            const ::android::hardware::hidl_string& iface,
            const ::android::hardware::hidl_string& prefix, addDownstream_cb _hidl_cb) = 0;

    using removeDownstream_cb =
            std::function<void(bool success, const ::android::hardware::hidl_string& errMsg)>;
    virtual ::android::hardware::Return<void> removeDownstream(
            const ::android::hardware::hidl_string& iface,
            const ::android::hardware::hidl_string& prefix, removeDownstream_cb _hidl_cb) = 0;

    HOST_HIDL_IBASE_OVERRIDES

    static ::android::hardware::Return<::android::sp<IOffloadControl>> castFrom(
            const ::android::sp<IOffloadControl>& parent, bool emitError = false);
    static ::android::hardware::Return<::android::sp<IOffloadControl>> castFrom(
            const ::android::sp<::android::hidl::base::V1_0::IBase>& parent, bool emitError = false);

    HOST_HIDL_SERVICE_STATICS(IOffloadControl)
};

HOST_HIDL_TO_STRING(IOffloadControl)

}  // namespace V1_0
}  // namespace control
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
