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

// What crossed the service's boundaries, kept for tests to read back: the fakes keep nothing. The
// one retaining observer is installed when the test program starts, so it sees every crossing.
// Each is stamped with the steady clock on the thread that crossed.

#pragma once

#include <stdint.h>

#include <mutex>
#include <variant>
#include <vector>

#include "fakes/Crossings.h"

namespace testsupport {

struct Observation {
    int64_t tMicros = 0;
    fakes::Crossing crossing;
};

class Observed {
public:
    static Observed& instance();

    std::vector<Observation> all() const;

    // Every crossing of one kind, in order.
    template <typename T>
    std::vector<T> of() const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<T> out;
        for (const Observation& o : mObservations) {
            if (const T* record = std::get_if<T>(&o.crossing)) out.push_back(*record);
        }
        return out;
    }

    // Forgets what was kept; it goes on keeping what comes.
    void clear();

private:
    Observed() = default;
    void keep(const fakes::Crossing& crossing);

    mutable std::mutex mLock;
    std::vector<Observation> mObservations;
};

inline Observed& observed() {
    return Observed::instance();
}

}  // namespace testsupport
