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

// What the host recorder saw, kept for tests to read back: the recorder itself keeps nothing.
// The one retaining sink is installed when the test program starts, so it sees every record.

#pragma once

#include <hostplatform/Recorder.h>

#include <mutex>
#include <variant>
#include <vector>

namespace testsupport {

class RetainingSink {
public:
    // The process's one retaining sink, installed in the recorder on first use.
    static RetainingSink& instance();

    std::vector<hostplatform::Record> records() const;

    // All records of one kind, in order.
    template <typename T>
    std::vector<T> all() const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<T> out;
        for (const hostplatform::Record& r : mRecords) {
            if (const T* body = std::get_if<T>(&r.body)) out.push_back(*body);
        }
        return out;
    }

    // Forgets what was kept; it goes on keeping what comes.
    void clear();

private:
    RetainingSink() = default;
    void keep(const hostplatform::Record& record);

    mutable std::mutex mLock;
    std::vector<hostplatform::Record> mRecords;
};

// The records kept since the last clear.
inline RetainingSink& recorded() {
    return RetainingSink::instance();
}

}  // namespace testsupport
