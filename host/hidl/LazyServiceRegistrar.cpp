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

// clang-format off
#include <memory>  // before the registrar's header, which does not include it
#include <hidl/HidlLazyUtils.h>
// clang-format on

#include <mutex>
#include <string>
#include <utility>

#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

using ::android::hidl::base::V1_0::IBase;

namespace android {
namespace hardware {
namespace details {

// The host keeps its services for as long as the scenario runs, so the only thing left to hold
// is the callback that the device would consult before ending the process.
class LazyServiceRegistrarImpl {
public:
    void setActiveServicesCallback(const std::function<bool(bool)>& callback) {
        std::lock_guard<std::mutex> guard(mLock);
        mActiveServicesCallback = callback;
    }

private:
    std::mutex mLock;
    std::function<bool(bool)> mActiveServicesCallback;
};

}  // namespace details

namespace {

bool askDescriptor(const sp<IBase>& service, std::string* descriptor) {
    Return<void> ret =
            service->interfaceDescriptor([&](const hidl_string& value) { *descriptor = value; });
    return ret.isOk();
}

}  // namespace

LazyServiceRegistrar::LazyServiceRegistrar()
    : mImpl(std::make_shared<details::LazyServiceRegistrarImpl>()) {}

LazyServiceRegistrar& LazyServiceRegistrar::getInstance() {
    static LazyServiceRegistrar* instance = new LazyServiceRegistrar();
    return *instance;
}

status_t LazyServiceRegistrar::registerService(const sp<IBase>& service, const std::string& name) {
    if (service == nullptr) return UNKNOWN_ERROR;
    std::string descriptor;
    if (!askDescriptor(service, &descriptor)) return UNKNOWN_ERROR;
    hostplatform::Recorder::instance().add(hostplatform::RegisterRecord{descriptor, name});
    return hostplatform::ServiceRegistry::instance().add(service, name) ? OK : UNKNOWN_ERROR;
}

void LazyServiceRegistrar::setActiveServicesCallback(
        const std::function<bool(bool)>& activeServicesCallback) {
    mImpl->setActiveServicesCallback(activeServicesCallback);
}

bool LazyServiceRegistrar::tryUnregister() {
    // The scenario is always a client: nothing is ever given up.
    return false;
}

void LazyServiceRegistrar::reRegister() {
    // Nothing was unregistered, so everything is still registered.
}

}  // namespace hardware
}  // namespace android
