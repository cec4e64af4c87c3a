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

#include <hidl/HidlTransportSupport.h>

#include <functional>
#include <mutex>
#include <utility>

#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

namespace hostplatform {
namespace {

struct Server {
    std::mutex lock;
    std::function<void()> run;
};

Server& server() {
    static Server* instance = new Server();
    return *instance;
}

}  // namespace

void Threadpool::setServer(std::function<void()> run) {
    Server& s = server();
    std::lock_guard<std::mutex> guard(s.lock);
    s.run = std::move(run);
}

}  // namespace hostplatform

namespace android {
namespace hardware {

void configureRpcThreadpool(size_t maxThreads, bool callerWillJoin) {
    hostplatform::Recorder::instance().add(
            hostplatform::ThreadpoolRecord{maxThreads, callerWillJoin});
}

void joinRpcThreadpool() {
    std::function<void()> run;
    {
        hostplatform::Server& s = hostplatform::server();
        std::lock_guard<std::mutex> guard(s.lock);
        run = s.run;
    }
    // Served without the lock held, so that the server may replace itself.
    if (run) run();
}

bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right) {
    // Every object lives in this process, so identity is the address.
    return left == right;
}

}  // namespace hardware
}  // namespace android
