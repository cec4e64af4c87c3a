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

// The definitions behind the generated interface headers: each interface's descriptor, its IBase
// operations (with its chain), one castFrom per entry of the chain, and its service statics.
// IBase has neither ancestors nor service statics.

#include <android/hardware/tetheroffload/config/1.0/IOffloadConfig.h>
#include <android/hardware/tetheroffload/control/1.1/IOffloadControl.h>
#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <android/hidl/base/1.0/IBase.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include "InterfaceDefinitions.h"

using IBase = ::android::hidl::base::V1_0::IBase;
using IOffloadConfig = ::android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using IOffloadControl10 = ::android::hardware::tetheroffload::control::V1_0::IOffloadControl;
using IOffloadControl11 = ::android::hardware::tetheroffload::control::V1_1::IOffloadControl;
using ICallback10 = ::android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback;
using ICallback11 = ::android::hardware::tetheroffload::control::V1_1::ITetheringOffloadCallback;
using IPlexd = ::vendor::korvan::hardware::plexd::V1_0::IPlexd;

const char* IBase::descriptor = "android.hidl.base@1.0::IBase";
HOST_HIDL_DEFINE_IBASE_OPERATIONS(IBase, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM_SELF(IBase)

HOST_HIDL_DEFINE_INTERFACE(IOffloadConfig,
                           "android.hardware.tetheroffload.config@1.0::IOffloadConfig",
                           IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM(IOffloadConfig, IBase)

HOST_HIDL_DEFINE_INTERFACE(IOffloadControl10,
                           "android.hardware.tetheroffload.control@1.0::IOffloadControl",
                           IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM(IOffloadControl10, IBase)

HOST_HIDL_DEFINE_INTERFACE(IOffloadControl11,
                           "android.hardware.tetheroffload.control@1.1::IOffloadControl",
                           IOffloadControl10::descriptor, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM(IOffloadControl11, IOffloadControl10)
HOST_HIDL_DEFINE_CAST_FROM(IOffloadControl11, IBase)

HOST_HIDL_DEFINE_INTERFACE(ICallback10,
                           "android.hardware.tetheroffload.control@1.0::ITetheringOffloadCallback",
                           IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM(ICallback10, IBase)

HOST_HIDL_DEFINE_INTERFACE(ICallback11,
                           "android.hardware.tetheroffload.control@1.1::ITetheringOffloadCallback",
                           ICallback10::descriptor, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM(ICallback11, ICallback10)
HOST_HIDL_DEFINE_CAST_FROM(ICallback11, IBase)

// The agent's getService is the fake agent's (fakes/FakeAgent.cpp): on a phone too it stands in
// front of the agent's own library.
const char* IPlexd::descriptor = "vendor.korvan.hardware.plexd@1.0::IPlexd";
HOST_HIDL_DEFINE_IBASE_OPERATIONS(IPlexd, IPlexd::descriptor, IBase::descriptor)
HOST_HIDL_DEFINE_CAST_FROM_SELF(IPlexd)
HOST_HIDL_DEFINE_CAST_FROM(IPlexd, IBase)
