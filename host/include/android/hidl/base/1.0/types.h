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

// Host stand-in for the generated android.hidl.base@1.0 types.

#pragma once

#include <cstdint>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

struct DebugInfo final {
    enum class Architecture : int32_t {
        UNKNOWN = 0,
        IS_64BIT = 1,
        IS_32BIT = 2,
    };

    int32_t pid = 0;
    uint64_t ptr = 0;
    Architecture arch = Architecture::UNKNOWN;
};

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android
