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

#include "fakes/FakeAgent.h"

#include <hidl/Status.h>
#include <utils/Errors.h>
#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <atomic>

#include "fakes/Crossings.h"

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;

namespace fakes {
namespace {

std::atomic<FakeAgent::Mode> gMode{FakeAgent::Mode::kUp};

class Agent : public IPlexd {
public:
    Return<void> runCmd(const hidl_string& cmd) override {
        const bool ok = gMode.load() != FakeAgent::Mode::kFailing;
        if (Observers::any()) Observers::report(AgentRecord{cmd, ok});
        if (!ok) return Status::fromStatusT(::android::DEAD_OBJECT);
        return Void();
    }
};

const sp<IPlexd>& agent() {
    // Never destroyed: the service may look it up while the process exits.
    static const auto* instance = new sp<IPlexd>(new Agent());
    return *instance;
}

}  // namespace

void FakeAgent::setMode(Mode mode) {
    gMode.store(mode);
}

}  // namespace fakes

sp<IPlexd> IPlexd::getService(const std::string& serviceName, bool /*getStub*/) {
    if (serviceName != "default" || fakes::gMode.load() == fakes::FakeAgent::Mode::kAbsent) {
        return nullptr;
    }
    return fakes::agent();
}
