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

// What the host's recorder saw, for the host's own tests: the thread pool, the registrations,
// the scenario's calls and what crossed the fakes, in order. Kept from the first call on.

#pragma once

#include <hostplatform/Recorder.h>

#include <mutex>
#include <vector>

namespace hosttest {

class Recorded {
public:
    static Recorded& instance() {
        static Recorded* recorded = [] {
            auto* created = new Recorded();
            hostplatform::Recorder::instance().addSink([created](const hostplatform::Record& r) {
                std::lock_guard<std::mutex> lock(created->mLock);
                created->mRecords.push_back(r);
            });
            return created;
        }();
        return *recorded;
    }

    template <typename T>
    std::vector<T> of() const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<T> out;
        for (const hostplatform::Record& r : mRecords) {
            if (const T* body = std::get_if<T>(&r.body)) out.push_back(*body);
        }
        return out;
    }

    std::vector<hostplatform::Record> all() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mRecords;
    }

private:
    mutable std::mutex mLock;
    std::vector<hostplatform::Record> mRecords;
};

}  // namespace hosttest
