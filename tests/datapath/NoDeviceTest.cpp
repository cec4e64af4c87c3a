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

// A process without "/dev/vexa": the client exists all the same, every command fails at its
// device check, and the event thread ends as soon as it starts. The device is made absent before
// anything looks up the client.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/ProcFiles.h>
#include <hostplatform/Recorder.h>

#include <functional>
#include <future>
#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "tests/datapath/RecordedLog.h"

using datapath_test::error;
using datapath_test::info;
using datapath_test::LogLine;
using datapath_test::logLines;
using hostplatform::IoctlRecord;
using hostplatform::LogRecord;
using hostplatform::ModemEmulator;
using hostplatform::OpenRecord;
using hostplatform::ProcFiles;
using hostplatform::Recorder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// The event thread is never joined: without a device it ends at once and stays unjoined, which
// ThreadSanitizer would report as a leak at exit.
extern "C" const char* __tsan_default_options() {
    return "report_thread_leaks=0";
}

namespace {

OffloadEventHandle* gHandle = nullptr;
std::vector<LogLine> gFirstLookupLines;
std::vector<OpenRecord> gFirstLookupOpens;

class NoDeviceTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ModemEmulator::instance().setDevicePresent(false);
        Recorder::instance().clear();
        gHandle = OffloadEventHandle::getInstance();
        gFirstLookupLines = logLines();
        gFirstLookupOpens = Recorder::instance().all<OpenRecord>();
    }

    void SetUp() override { Recorder::instance().clear(); }
};

TEST_F(NoDeviceTest, FirstLookupLogsTheFailedOpenAndStillGivesAClient) {
    ASSERT_NE(gHandle, nullptr);
    EXPECT_THAT(gFirstLookupLines,
                ElementsAre(error("open dev ++ g-fd =-1"), error("open /dev/vexa fail \n"),
                            info(" GetInstance p=" + datapath_test::pointerText(gHandle) + "\n")));
    ASSERT_EQ(gFirstLookupOpens.size(), 1u);
    EXPECT_EQ(gFirstLookupOpens[0].errnum, ENOENT);
}

TEST_F(NoDeviceTest, EveryCommandFailsAtTheDeviceAndTheOpenIsNotRetried) {
    char up[16] = "wanif0";
    char down[16] = "ap0";
    tether_offload_stats_t stats = {7, 9};
    struct Case {
        std::function<int()> run;
        const char* line;
    };
    const std::vector<Case> cases = {
            {[&] { return gHandle->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE); },
             "sendCmd2MD: fail to open vexa device \n"},
            {[&] { return gHandle->activeVexa(VEXA_APP_TYPE_WH, up, down); },
             "activeVexa: fail to open vexa device \n"},
            {[&] { return gHandle->getDataUsage(VEXA_APP_TYPE_ALL, &stats); },
             "getDataUsage: fail to open vexa device \n"},
            {[&] { return gHandle->setDataLimit(VEXA_APP_TYPE_ALL, up, 1); },
             "setDataLimit: fail to open vexa device \n"},
            {[&] { return gHandle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, up, 1, 2); },
             "setDataWarningAndLimit: fail to open vexa device \n"},
            {[&] { return gHandle->sendTimeoutValue(VEXA_APP_TYPE_ALL); },
             "sendTimeoutValue: fail to open vexa device \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Recorder::instance().clear();
        EXPECT_EQ(c.run(), -1);
        EXPECT_THAT(logLines(), Contains(error(c.line)));
    }
    EXPECT_EQ(stats.rx_bytes, 7u);
    EXPECT_EQ(stats.tx_bytes, 9u);
    EXPECT_THAT(Recorder::instance().all<IoctlRecord>(), IsEmpty());
    EXPECT_THAT(Recorder::instance().all<OpenRecord>(), IsEmpty());
}

TEST_F(NoDeviceTest, EventThreadEndsAtOnceAndIsNotStartedAgain) {
    const std::string lastWord = "handleEvent: fail to open vexa device \n";
    std::promise<void> ended;
    bool seen = false;  // the sink runs under the recorder's lock
    Recorder::instance().addSink([&](const hostplatform::Record& record) {
        const auto* log = std::get_if<LogRecord>(&record.body);
        if (seen || log == nullptr || log->msg != lastWord) return;
        seen = true;
        ended.set_value();
    });
    std::future<void> endedOn = ended.get_future();

    EXPECT_EQ(OffloadEventHandle::createEventThread(), 0);
    std::future_status status = endedOn.wait_for(std::chrono::seconds(10));
    Recorder::instance().clearSinks();
    ASSERT_EQ(status, std::future_status::ready);
    EXPECT_THAT(logLines(), Contains(error(lastWord)));

    Recorder::instance().clear();
    EXPECT_EQ(OffloadEventHandle::createEventThread(), 0);
    EXPECT_THAT(logLines(), Contains(info(" HandleEvent thread has  been created \n")));
    EXPECT_FALSE(ModemEmulator::instance().waitReaderBlocked());
}

}  // namespace
