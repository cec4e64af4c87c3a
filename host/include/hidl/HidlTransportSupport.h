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

// Host stand-in for the platform's <hidl/HidlTransportSupport.h>.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <cstddef>

namespace android {
namespace hardware {

// Records the configuration; on the host the pool is the thread that joins it.
void configureRpcThreadpool(size_t maxThreads, bool callerWillJoin);

// Serves the host's framework calls on the calling thread and returns when they are done.
void joinRpcThreadpool();

bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right);

namespace details {

// The generated castFrom: asks the object for its interface chain and casts when the target
// descriptor is in it. A transport failure gives null unless the caller asked for the error.
template <typename IChild, typename IParent>
Return<sp<IChild>> castInterface(sp<IParent> parent, const char* childIndicator, bool emitError) {
    if (parent.get() == nullptr) {
        return sp<IChild>(nullptr);
    }
    bool canCast = false;
    Return<void> chain = parent->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
        for (const hidl_string& descriptor : descriptors) {
            if (descriptor == childIndicator) canCast = true;
        }
    });
    if (!chain.isOk()) {
        if (emitError)
            return Status::fromStatusT(chain.isDeadObject() ? DEAD_OBJECT : FAILED_TRANSACTION);
        return sp<IChild>(nullptr);
    }
    if (!canCast) {
        return sp<IChild>(nullptr);
    }
    return sp<IChild>(static_cast<IChild*>(parent.get()));
}

}  // namespace details
}  // namespace hardware
}  // namespace android
