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

// Host only. What a client of another process holds on a device is a proxy, and each call it makes
// runs through the service's generated stub, which ends the process when a method with results
// does not call its result callback exactly once, or returns an error. The host's registry hands
// out the same: a proxy that makes those checks, whoever the client is (the scenario, a test, the
// platform's own conformance tests built against the desktop stand-in).

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

namespace hostinterfaces {

// The proxy a client gets for `service`; the service itself when no proxy of its interface exists.
::android::sp<::android::hidl::base::V1_0::IBase> clientView(
        const ::android::sp<::android::hidl::base::V1_0::IBase>& service);

}  // namespace hostinterfaces
