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

// Every line that reaches liblog becomes a log record, exactly as formatted, with the name of the
// thread that logged it, and nothing is printed.

#include <android/log.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <stdio.h>
#include <unistd.h>

#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

// Standard error goes to a temporary file while `body` runs; returns how much was written.
template <typename Body>
long stderrBytesDuring(Body body) {
    FILE* capture = tmpfile();
    const int saved = dup(STDERR_FILENO);
    dup2(fileno(capture), STDERR_FILENO);
    body();
    dup2(saved, STDERR_FILENO);
    close(saved);
    fseek(capture, 0, SEEK_END);
    const long size = ftell(capture);
    fclose(capture);
    return size;
}

std::string ownThreadName() {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return name;
}

TEST(LogCaptureTest, LinesAreRecordedAsFormattedAndNotPrinted) {
    Recorder::instance().clear();
    const long printed = stderrBytesDuring([] {
        __android_log_print(ANDROID_LOG_INFO, "TetherOffload", "open %s done, fd=%d\n", "/dev/vexa",
                            7);
        __android_log_print(ANDROID_LOG_WARN, "TetherOffload", "  two  blanks ");
        __android_log_print(ANDROID_LOG_ERROR, "Other", "%d%%", 100);
        __android_log_print(ANDROID_LOG_DEBUG, "TetherOffload", "debug\n");
    });
    EXPECT_EQ(0, printed);

    struct Expected {
        int prio;
        const char* tag;
        const char* msg;
    };
    const Expected expected[] = {
            {ANDROID_LOG_INFO, "TetherOffload", "open /dev/vexa done, fd=7\n"},
            {ANDROID_LOG_WARN, "TetherOffload", "  two  blanks "},
            {ANDROID_LOG_ERROR, "Other", "100%"},
            {ANDROID_LOG_DEBUG, "TetherOffload", "debug\n"},
    };
    const std::vector<LogRecord> logs = Recorder::instance().all<LogRecord>();
    ASSERT_EQ(std::size(expected), logs.size());
    for (size_t i = 0; i < logs.size(); ++i) {
        EXPECT_EQ(expected[i].prio, logs[i].prio);
        EXPECT_EQ(expected[i].tag, logs[i].tag);
        EXPECT_EQ(expected[i].msg, logs[i].msg);
        EXPECT_EQ(ownThreadName(), logs[i].thread);
    }
}

TEST(LogCaptureTest, RecordCarriesTheLoggingThreadsName) {
    Recorder::instance().clear();
    std::thread worker([] {
        pthread_setname_np(pthread_self(), "HandleEvent");
        __android_log_print(ANDROID_LOG_INFO, "TetherOffload", "from the worker\n");
    });
    worker.join();
    __android_log_print(ANDROID_LOG_INFO, "TetherOffload", "from the test\n");

    const std::vector<LogRecord> logs = Recorder::instance().all<LogRecord>();
    ASSERT_EQ(2u, logs.size());
    EXPECT_EQ("HandleEvent", logs[0].thread);
    EXPECT_EQ("from the worker\n", logs[0].msg);
    EXPECT_EQ(ownThreadName(), logs[1].thread);
    EXPECT_NE("HandleEvent", logs[1].thread);
}

}  // namespace
}  // namespace hostplatform
