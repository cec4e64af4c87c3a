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

// A process that never opened the device: nobody can be waiting in read().

#include <gtest/gtest.h>

#include <chrono>

#include "hostplatform/ModemEmulator.h"
#include "hostplatform/Recorder.h"

namespace hostplatform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(ModemUnopenedTest, NoReaderIsAwaitedAndEventsAreDropped) {
    ModemEmulator& modem = ModemEmulator::instance();
    EXPECT_EQ(-1, modem.deviceFd());

    const auto start = steady_clock::now();
    EXPECT_FALSE(modem.waitReaderBlocked(milliseconds(2000)));
    EXPECT_LT(steady_clock::now() - start, milliseconds(1000)) << "should answer at once";

    EXPECT_FALSE(modem.deliverEvent({0x54, 0x24, 1, 0}, 16, milliseconds(50)));
    EXPECT_FALSE(modem.deliverReadFailure(5, milliseconds(50)));
    EXPECT_TRUE(Recorder::instance().all<ReadRecord>().empty());
}

}  // namespace
}  // namespace hostplatform
