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

// The host's service manager: the registry behind getService and registration, and what
// joinRpcThreadpool runs on the host.

#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace hostplatform {

class ServiceRegistry {
public:
    using Entry = std::pair<std::string, std::string>;  // descriptor, instance name

    static ServiceRegistry& instance();

    // Registers the service under every descriptor of its interface chain, as what a client of
    // another process gets: a proxy that checks each call as the generated stub does.
    bool add(const android::sp<android::hidl::base::V1_0::IBase>& service, const std::string& name);
    void remove(const std::string& descriptor, const std::string& name);
    android::sp<android::hidl::base::V1_0::IBase> get(const std::string& descriptor,
                                                      const std::string& name) const;
    std::vector<Entry> entries() const;
    void clear();

private:
    ServiceRegistry() = default;
};

class Threadpool {
public:
    // What joinRpcThreadpool() runs on the joining thread; with none it returns at once.
    static void setServer(std::function<void()> server);
};

}  // namespace hostplatform
