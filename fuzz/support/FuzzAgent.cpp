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

#include "fuzz/support/FuzzAgent.h"

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <mutex>
#include <utility>

#include "hostplatform/ServiceRegistry.h"

using android::sp;
using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Status;
using android::hardware::Void;
using android::hidl::base::V1_0::IBase;
using vendor::korvan::hardware::plexd::V1_0::IPlexd;

namespace fuzzsupport {
namespace {

class Agent : public IPlexd {
public:
    bool isRemote() const override { return true; }

    Return<void> runCmd(const hidl_string& cmd) override {
        Observer observer;
        bool failing;
        {
            std::lock_guard<std::mutex> lock(mLock);
            observer = mObserver;
            failing = mFailing;
        }
        if (observer) observer(std::string(cmd));
        if (failing) return Status::fromStatusT(android::DEAD_OBJECT);
        return Void();
    }

    using Observer = FuzzAgent::Observer;
    std::mutex mLock;
    Observer mObserver;
    bool mFailing = false;
};

sp<Agent>& agent() {
    // Never destroyed: the service may look it up while the process exits.
    static auto* a = new sp<Agent>(new Agent());
    return *a;
}

}  // namespace

void FuzzAgent::setObserver(Observer observer) {
    std::lock_guard<std::mutex> lock(agent()->mLock);
    agent()->mObserver = std::move(observer);
}

void FuzzAgent::setMode(Mode mode) {
    {
        std::lock_guard<std::mutex> lock(agent()->mLock);
        agent()->mFailing = mode == Mode::kFailing;
    }
    hostplatform::ServiceRegistry& registry = hostplatform::ServiceRegistry::instance();
    if (mode == Mode::kAbsent) {
        registry.remove(IPlexd::descriptor, "default");
        registry.remove(IBase::descriptor, "default");
    } else {
        registry.add(sp<IPlexd>(agent()), "default");
    }
}

bool isServiceCommand(const std::string& line) {
    static const char* const kLines[] = {
            "plexd bridge clear mac mdbr0 ",
            "plexd bridge addif mdbr0 rndis0 ",
            "plexd bridge addif mdbr0 wanif-lan ",
            "plexd interface setcfg wanif-lan 0.0.0.0 0 up ",
            "plexd interface setcfg rndis0 0.0.0.0 0 up ",
            "plexd bridge delif mdbr0 wanif-lan ",
    };
    for (const char* l : kLines) {
        if (line == l) return true;
    }
    return false;
}

}  // namespace fuzzsupport
