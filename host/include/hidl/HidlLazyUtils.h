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

// Host stand-in for the platform's <hidl/HidlLazyUtils.h>. Like the platform header it does not
// include <memory> itself, so code that builds here also builds on the device.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <functional>
#include <string>

namespace android {
namespace hardware {
namespace details {
class LazyServiceRegistrarImpl;
}  // namespace details

// On the host the process never ends for lack of clients: the scenario decides when it ends.
class LazyServiceRegistrar {
public:
    static LazyServiceRegistrar& getInstance();
    status_t registerService(const sp<::android::hidl::base::V1_0::IBase>& service,
                             const std::string& name = "default");
    void setActiveServicesCallback(const std::function<bool(bool)>& activeServicesCallback);
    bool tryUnregister();
    void reRegister();

private:
    std::shared_ptr<details::LazyServiceRegistrarImpl> mImpl;
    LazyServiceRegistrar();
};

}  // namespace hardware
}  // namespace android
