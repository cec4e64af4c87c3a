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

// A process without "/dev/vexa", made absent before anything looks up the client: two threads
// make the first lookup together, and every command fails at its device check.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "tests/datapath/RecordedLog.h"
#include "tests/support/RetainingSink.h"

using datapath_test::error;
using datapath_test::LogLine;
using datapath_test::logLines;
using hostplatform::OpenRecord;
using hostplatform::Recorder;
using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr int kThreads = 2;
OffloadEventHandle* gSeen[kThreads] = {};
std::vector<LogLine> gFirstLookupLines;
std::vector<OpenRecord> gFirstLookupOpens;
std::atomic<int> gWaiting{0};  // threads yet to make their first lookup

// Holds the first lookup until every thread has made its call, and a little longer.
void holdFirstLookup(const hostplatform::Record& record) {
    auto* log = std::get_if<hostplatform::LogRecord>(&record.body);
    if (log == nullptr || log->msg != "open dev ++ g-fd =-1") return;
    while (gWaiting.load() > 0) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

class NoDeviceTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        hostplatform::ModemEmulator::instance().setDevicePresent(false);
        testsupport::recorded().clear();
        gWaiting = kThreads;
        Recorder::instance().addSink(holdFirstLookup);  // the line comes only once
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([i] {
                gWaiting.fetch_sub(1);
                gSeen[i] = OffloadEventHandle::getInstance();
            });
        }
        for (std::thread& thread : threads) thread.join();
        gFirstLookupLines = logLines();
        gFirstLookupOpens = testsupport::recorded().all<OpenRecord>();
    }

    void SetUp() override { testsupport::recorded().clear(); }
};

TEST_F(NoDeviceTest, FirstLookupFromTwoThreadsOpensOnceAndGivesOneClient) {
    ASSERT_NE(gSeen[0], nullptr);
    for (OffloadEventHandle* seen : gSeen) EXPECT_EQ(seen, gSeen[0]);
    const LogLine lookup = datapath_test::lookupLine(gSeen[0]);
    EXPECT_THAT(gFirstLookupLines, ElementsAre(error("open dev ++ g-fd =-1"),
                                               error("open /dev/vexa fail \n"), lookup, lookup));
    ASSERT_EQ(gFirstLookupOpens.size(), 1u);
    EXPECT_EQ(gFirstLookupOpens[0].errnum, ENOENT);
}

// sendCmd2MD and getDataUsage are left to the no-device example's golden trace.
TEST_F(NoDeviceTest, CommandsFailAtTheDeviceCheckAndTheOpenIsNotRetried) {
    OffloadEventHandle* handle = OffloadEventHandle::getInstance();
    char up[] = "wanif0";
    // clang-format off
    const std::pair<std::function<int()>, const char*> cases[] = {
        {[&] { return handle->activeVexa(VEXA_APP_TYPE_WH, up, up); }, "activeVexa: fail to open vexa device \n"},
        {[&] { return handle->setDataLimit(VEXA_APP_TYPE_ALL, up, 1); }, "setDataLimit: fail to open vexa device \n"},
        {[&] { return handle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, up, 1, 2); },
         "setDataWarningAndLimit: fail to open vexa device \n"},
        {[&] { return handle->sendTimeoutValue(VEXA_APP_TYPE_ALL); }, "sendTimeoutValue: fail to open vexa device \n"},
    };
    // clang-format on
    for (const auto& [run, line] : cases) {
        SCOPED_TRACE(line);
        testsupport::recorded().clear();
        EXPECT_EQ(run(), -1);
        EXPECT_THAT(logLines(), Contains(error(line)));
        EXPECT_EQ(testsupport::recorded().all<hostplatform::IoctlRecord>().size(), 0u);
        EXPECT_EQ(testsupport::recorded().all<OpenRecord>().size(), 0u);
    }
}

}  // namespace
