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
// make the first lookup together, and every command fails at its device check. The client opens
// the device once per process, so this runs in a process of its own: a death test's child,
// started afresh, which reports what it found wrong and exits with 1 if anything was.

#include <errno.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "fakes/FakeVexaDevice.h"
#include "tests/support/TestSupport.h"

using testsupport::error;
using testsupport::LogLine;

namespace {

constexpr int kThreads = 2;

class Findings {
public:
    void expect(bool ok, const std::string& what) {
        if (!ok) mFound += what + "\n";
    }
    [[noreturn]] void exit() const {
        fputs(mFound.c_str(), stderr);
        fflush(stderr);
        _exit(mFound.empty() ? 0 : 1);
    }

private:
    std::string mFound;
};

bool contains(const std::vector<LogLine>& lines, const LogLine& line) {
    for (const LogLine& l : lines) {
        if (l == line) return true;
    }
    return false;
}

void runWithoutDevice() {
    Findings f;
    fakes::FakeVexaDevice::instance().setPresent(false);
    testsupport::observed().clear();

    // The first lookup is held until both threads have made their call, and a little longer.
    std::atomic<int> waiting{kThreads};
    const int hold = fakes::Observers::add([&](const fakes::Crossing& c) {
        const auto* log = std::get_if<fakes::LogRecord>(&c);
        if (log == nullptr || log->msg != "open dev ++ g-fd =-1") return;
        while (waiting.load() > 0) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    OffloadEventHandle* seen[kThreads] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            waiting.fetch_sub(1);
            seen[i] = OffloadEventHandle::getInstance();
        });
    }
    for (std::thread& thread : threads) thread.join();
    fakes::Observers::remove(hold);

    f.expect(seen[0] != nullptr && seen[0] == seen[1], "the two threads got different clients");
    const LogLine lookup = testsupport::lookupLine(seen[0]);
    f.expect(testsupport::logEntries() == std::vector<LogLine>{error("open dev ++ g-fd =-1"),
                                                               error("open /dev/vexa fail \n"),
                                                               lookup, lookup},
             "the first lookup did not log its open once and both lookups");
    const auto opens = testsupport::observed().of<fakes::OpenRecord>();
    f.expect(opens.size() == 1 && opens[0].errnum == ENOENT, "not exactly one open, with ENOENT");

    // sendCmd2MD and getDataUsage are left to the no-device example's golden trace.
    OffloadEventHandle* handle = seen[0];
    char up[] = "wanif0";
    const std::pair<std::function<int()>, const char*> commands[] = {
            {[&] { return handle->activeVexa(VEXA_APP_TYPE_WH, up, up); },
             "activeVexa: fail to open vexa device \n"},
            {[&] { return handle->setDataLimit(VEXA_APP_TYPE_ALL, up, 1); },
             "setDataLimit: fail to open vexa device \n"},
            {[&] { return handle->setDataWarningAndLimit(VEXA_APP_TYPE_ALL, up, 1, 2); },
             "setDataWarningAndLimit: fail to open vexa device \n"},
            {[&] { return handle->sendTimeoutValue(VEXA_APP_TYPE_ALL); },
             "sendTimeoutValue: fail to open vexa device \n"},
    };
    for (const auto& [run, line] : commands) {
        testsupport::observed().clear();
        f.expect(run() == -1, std::string("did not fail: ") + line);
        f.expect(contains(testsupport::logEntries(), error(line)), std::string("no line ") + line);
        f.expect(testsupport::observed().of<fakes::IoctlRecord>().empty() &&
                         testsupport::observed().of<fakes::OpenRecord>().empty(),
                 std::string("reached the device or opened it again: ") + line);
    }
    f.exit();
}

TEST(NoDeviceTest, FirstLookupOpensOnceAndEveryCommandFailsAtTheDeviceCheck) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(runWithoutDevice(), testing::ExitedWithCode(0), "");
}

}  // namespace
