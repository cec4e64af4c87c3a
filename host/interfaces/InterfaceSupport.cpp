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

#include <utils/misc.h>

#include "InterfaceDefinitions.h"
#include "hostplatform/ServiceRegistry.h"

using ::android::sp;
using ::android::hardware::hidl_array;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::DebugInfo;
using ::android::hidl::base::V1_0::IBase;

namespace hostinterfaces {

Return<void> sendInterfaceChain(DescriptorChain chain,
                                const std::function<void(const hidl_vec<hidl_string>&)>& cb) {
    cb(hidl_vec<hidl_string>(chain.begin(), chain.end()));
    return Void();
}

Return<void> sendHashChain(size_t chainLength,
                           const std::function<void(const hidl_vec<hidl_array<uint8_t, 32>>&)>& cb) {
    // The host interfaces are not frozen, so every hash reads as unset (all zero).
    cb(hidl_vec<hidl_array<uint8_t, 32>>(chainLength));
    return Void();
}

Return<void> sendDebugInfo(const std::function<void(const DebugInfo&)>& cb) {
    DebugInfo info;
    info.pid = -1;
    info.ptr = 0;
    info.arch = DebugInfo::Architecture::IS_64BIT;
    cb(info);
    return Void();
}

Return<void> notifySyspropsChanged() {
    ::android::report_sysprop_change();
    return Void();
}

sp<IBase> lookUpService(const char* descriptor, const std::string& name) {
    return hostplatform::ServiceRegistry::instance().get(descriptor, name);
}

::android::status_t registerService(const sp<IBase>& self, const std::string& name) {
    return hostplatform::ServiceRegistry::instance().add(self, name) ? ::android::OK
                                                                     : ::android::UNKNOWN_ERROR;
}

}  // namespace hostinterfaces
