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

#include "tests/support/RetainingSink.h"

namespace testsupport {

RetainingSink& RetainingSink::instance() {
    // Never destroyed: the recorder keeps calling it while the process exits.
    static RetainingSink* sink = [] {
        auto* created = new RetainingSink();
        hostplatform::Recorder::instance().addSink(
                [created](const hostplatform::Record& r) { created->keep(r); });
        return created;
    }();
    return *sink;
}

std::vector<hostplatform::Record> RetainingSink::records() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRecords;
}

void RetainingSink::clear() {
    std::lock_guard<std::mutex> lock(mLock);
    mRecords.clear();
}

void RetainingSink::keep(const hostplatform::Record& record) {
    std::lock_guard<std::mutex> lock(mLock);
    mRecords.push_back(record);
}

namespace {

// Installed before main, so that tests see the records of static set-up too.
[[maybe_unused]] const bool gInstalledAtStart = (RetainingSink::instance(), true);

}  // namespace
}  // namespace testsupport
