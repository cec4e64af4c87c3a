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

#include "hostplatform/FakeAgent.h"

#include <vendor/korvan/hardware/plexd/1.0/IPlexd.h>

#include <atomic>
#include <mutex>

#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;
using ::android::hidl::base::V1_0::IBase;
using ::vendor::korvan::hardware::plexd::V1_0::IPlexd;

namespace hostplatform {
namespace {

// The agent service of another process: it records every line it is handed and, when failing,
// the call dies in transport as it would with the agent's process gone.
class Agent : public IPlexd {
public:
    bool isRemote() const override { return true; }

    Return<void> runCmd(const hidl_string& cmd) override {
        bool ok = !mFailing;
        Recorder::instance().add(AgentRecord{cmd, ok});
        if (!ok) return Status::fromStatusT(::android::DEAD_OBJECT);
        return Void();
    }

    void setFailing(bool failing) { mFailing = failing; }

private:
    std::atomic<bool> mFailing{false};
};

struct AgentState {
    std::mutex lock;  // orders the mode changes with their registration
    sp<Agent> agent = new Agent();
};

AgentState& state() {
    // Never destroyed: the agent may be called while the process exits.
    static AgentState* instance = new AgentState();
    return *instance;
}

// The agent is up from process start, before any service code can look for it.
__attribute__((constructor)) void registerAgentAtStart() {
    FakeAgent::setMode(FakeAgent::Mode::kUp);
}

}  // namespace

void FakeAgent::setMode(Mode mode) {
    AgentState& s = state();
    std::lock_guard<std::mutex> guard(s.lock);
    s.agent->setFailing(mode == Mode::kFailing);
    ServiceRegistry& registry = ServiceRegistry::instance();
    if (mode == Mode::kAbsent) {
        registry.remove(IPlexd::descriptor, "default");
        // The IBase entry is the agent's only until another service registers as "default".
        sp<IBase> base = registry.get(IBase::descriptor, "default");
        if (base == sp<IBase>(s.agent)) registry.remove(IBase::descriptor, "default");
    } else {
        registry.add(sp<IPlexd>(s.agent), "default");
    }
}

}  // namespace hostplatform
