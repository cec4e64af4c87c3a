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

#include "tests/support/Observed.h"

#include <chrono>

namespace testsupport {

Observed& Observed::instance() {
    // Never destroyed: the event thread may still cross while the process exits.
    static Observed* observed = [] {
        auto* created = new Observed();
        fakes::Observers::add([created](const fakes::Crossing& c) { created->keep(c); });
        return created;
    }();
    return *observed;
}

std::vector<Observation> Observed::all() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mObservations;
}

void Observed::clear() {
    std::lock_guard<std::mutex> lock(mLock);
    mObservations.clear();
}

void Observed::keep(const fakes::Crossing& crossing) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::lock_guard<std::mutex> lock(mLock);
    mObservations.push_back(
            {std::chrono::duration_cast<std::chrono::microseconds>(now).count(), crossing});
}

namespace {

// Installed before main, so that tests see the crossings of static set-up too.
[[maybe_unused]] const bool gInstalledAtStart = (Observed::instance(), true);

}  // namespace
}  // namespace testsupport
