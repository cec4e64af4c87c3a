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

// Two threads making the very first lookup together get one client and one open of the device.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Recorder.h>

#include <atomic>
#include <string>
#include <thread>

#include "datapath/OffloadEventHandle.h"
#include "tests/datapath/RecordedLog.h"

using hostplatform::OpenRecord;
using hostplatform::Recorder;

namespace {

TEST(FirstLookupTest, TwoThreadsCreateOneClientAndOpenTheDeviceOnce) {
    Recorder::instance().clear();
    std::atomic<int> waiting{2};
    OffloadEventHandle* seen[2] = {};
    auto lookUp = [&](int i) {
        // Both threads leave the gate together to make the first calls overlap.
        waiting.fetch_sub(1);
        while (waiting.load() > 0) std::this_thread::yield();
        seen[i] = OffloadEventHandle::getInstance();
    };
    std::thread first(lookUp, 0);
    std::thread second(lookUp, 1);
    first.join();
    second.join();

    ASSERT_NE(seen[0], nullptr);
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_EQ(Recorder::instance().all<OpenRecord>().size(), 1u);
    int creations = 0;
    int lookups = 0;
    for (const auto& line : datapath_test::logLines()) {
        if (line.second == "open dev ++ g-fd =-1") ++creations;
        if (line.second == " GetInstance p=" + datapath_test::pointerText(seen[0]) + "\n") {
            ++lookups;
        }
    }
    EXPECT_EQ(creations, 1);
    EXPECT_EQ(lookups, 2);
}

}  // namespace
