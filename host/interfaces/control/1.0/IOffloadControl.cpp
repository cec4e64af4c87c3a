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

#include <android/hardware/tetheroffload/control/1.0/IOffloadControl.h>

#include "InterfaceDefinitions.h"

using ::android::hidl::base::V1_0::IBase;

namespace android {
namespace hardware {
namespace tetheroffload {
namespace control {
namespace V1_0 {

const char* IOffloadControl::descriptor =
        "android.hardware.tetheroffload.control@1.0::IOffloadControl";

HOST_HIDL_DEFINE_IBASE_OPERATIONS(IOffloadControl, IOffloadControl::descriptor, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM_SELF(IOffloadControl)
HOST_HIDL_DEFINE_CAST_FROM(IOffloadControl, IBase)
HOST_HIDL_DEFINE_SERVICE_STATICS(IOffloadControl)

}  // namespace V1_0
}  // namespace control
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
