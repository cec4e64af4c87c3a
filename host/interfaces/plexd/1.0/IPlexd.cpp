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

#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include "InterfaceDefinitions.h"

using ::android::hidl::base::V1_0::IBase;

namespace vendor {
namespace korvan {
namespace hardware {
namespace plexd {
namespace V1_0 {

const char* IPlexd::descriptor = "vendor.korvan.hardware.plexd@1.0::IPlexd";

HOST_HIDL_DEFINE_IBASE_OPERATIONS(IPlexd, IPlexd::descriptor, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM_SELF(IPlexd)
HOST_HIDL_DEFINE_CAST_FROM(IPlexd, IBase)
HOST_HIDL_DEFINE_SERVICE_STATICS(IPlexd)

}  // namespace V1_0
}  // namespace plexd
}  // namespace hardware
}  // namespace korvan
}  // namespace vendor
