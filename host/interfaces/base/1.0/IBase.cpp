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

#include <android/hidl/base/1.0/IBase.h>

#include "InterfaceDefinitions.h"

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

const char* IBase::descriptor = "android.hidl.base@1.0::IBase";

HOST_HIDL_DEFINE_IBASE_OPERATIONS(IBase, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM_SELF(IBase)

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android
