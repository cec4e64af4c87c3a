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

#include "hostplatform/ServiceRegistry.h"

#include <hidl/HidlSupport.h>

#include <map>
#include <mutex>

#include "ClientProxies.h"

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hidl::base::V1_0::IBase;

namespace hostplatform {
namespace {

struct Services {
    std::mutex lock;
    std::map<ServiceRegistry::Entry, sp<IBase>> byEntry;
};

Services& services() {
    // Never destroyed: a service may be looked up while the process exits.
    static Services* instance = new Services();
    return *instance;
}

}  // namespace

ServiceRegistry& ServiceRegistry::instance() {
    static ServiceRegistry* registry = new ServiceRegistry();
    return *registry;
}

bool ServiceRegistry::add(const sp<IBase>& service, const std::string& name) {
    if (service == nullptr) return false;
    // Clients get what a client of another process gets.
    const sp<IBase> view = hostinterfaces::clientView(service);
    // Asked outside the lock: the object may itself use the registry.
    std::vector<std::string> chain;
    Return<void> ret = view->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
        chain.assign(descriptors.begin(), descriptors.end());
    });
    if (!ret.isOk() || chain.empty()) return false;

    std::vector<sp<IBase>> replaced;  // released after the lock, as in remove()
    Services& s = services();
    std::lock_guard<std::mutex> guard(s.lock);
    for (const std::string& descriptor : chain) {
        sp<IBase>& slot = s.byEntry[Entry(descriptor, name)];
        replaced.push_back(slot);
        slot = view;
    }
    return true;
}

void ServiceRegistry::remove(const std::string& descriptor, const std::string& name) {
    sp<IBase> removed;  // released after the lock: its destructor may use the registry
    Services& s = services();
    std::lock_guard<std::mutex> guard(s.lock);
    auto it = s.byEntry.find(Entry(descriptor, name));
    if (it == s.byEntry.end()) return;
    removed = std::move(it->second);
    s.byEntry.erase(it);
}

sp<IBase> ServiceRegistry::get(const std::string& descriptor, const std::string& name) const {
    Services& s = services();
    std::lock_guard<std::mutex> guard(s.lock);
    auto it = s.byEntry.find(Entry(descriptor, name));
    return it == s.byEntry.end() ? nullptr : it->second;
}

std::vector<ServiceRegistry::Entry> ServiceRegistry::entries() const {
    Services& s = services();
    std::lock_guard<std::mutex> guard(s.lock);
    std::vector<Entry> out;
    for (const auto& item : s.byEntry) out.push_back(item.first);
    return out;
}

void ServiceRegistry::clear() {
    std::map<Entry, sp<IBase>> removed;  // released after the lock, as in remove()
    Services& s = services();
    std::lock_guard<std::mutex> guard(s.lock);
    removed.swap(s.byEntry);
}

}  // namespace hostplatform
