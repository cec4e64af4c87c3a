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

// Host stand-in for the generated android.hardware.tetheroffload.control@1.1 types.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/types.h>

#include <cstdint>
#include <string>

namespace android {
namespace hardware {
namespace tetheroffload {
namespace control {
namespace V1_1 {

// A distinct enum that repeats the 1.0 values: it does not convert to or from the 1.0 one.
enum class OffloadCallbackEvent : uint32_t {
    OFFLOAD_STARTED = 1u,
    OFFLOAD_STOPPED_ERROR = 2u,
    OFFLOAD_STOPPED_UNSUPPORTED = 3u,
    OFFLOAD_SUPPORT_AVAILABLE = 4u,
    OFFLOAD_STOPPED_LIMIT_REACHED = 5u,
    OFFLOAD_WARNING_REACHED = 6u,
};

static inline std::string toString(OffloadCallbackEvent o) {
    if (o == OffloadCallbackEvent::OFFLOAD_WARNING_REACHED) return "OFFLOAD_WARNING_REACHED";
    return ::android::hardware::tetheroffload::control::V1_0::toString(
            static_cast<::android::hardware::tetheroffload::control::V1_0::OffloadCallbackEvent>(o));
}

}  // namespace V1_1
}  // namespace control
}  // namespace tetheroffload
}  // namespace hardware
}  // namespace android
