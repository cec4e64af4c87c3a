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

// A phone whose modem offers no data-path device: the service still starts, registers and
// answers every call, and nothing reaches a device.

#include <cutils/native_handle.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostplatform/Framework.h>
#include <hostplatform/ModemEmulator.h>
#include <hostplatform/Recorder.h>

#include <string>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "hal/TetherOffloadHal.h"

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;
using hostplatform::Framework;
using hostplatform::IoctlRecord;
using hostplatform::ModemEmulator;
using hostplatform::OpenRecord;
using hostplatform::Recorder;
using testing::ElementsAre;
using testing::IsEmpty;
using vendor::tetheroffload::TetherOffloadHal;

namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

// Without a device the event thread ends at once and, like every event thread, is never joined;
// ThreadSanitizer would report that as a leak at exit.
extern "C" const char* __tsan_default_options() {
    return "report_thread_leaks=0";
}

namespace {

TEST(DeviceAbsentTest, ServiceStartsAndAnswersWithoutTheDevice) {
    ModemEmulator::instance().setDevicePresent(false);
    Recorder::instance().clear();

    sp<TetherOffloadHal> hal = TetherOffloadHal::makeTetherOffloadHal();
    ASSERT_NE(nullptr, hal);
    OffloadEventHandle::createEventThread();
    std::vector<OpenRecord> opens = Recorder::instance().all<OpenRecord>();
    ASSERT_EQ(1u, opens.size());
    EXPECT_EQ(ENOENT, opens[0].errnum);

    sp<IOffloadConfig> config = IOffloadConfig::getService();
    sp<V1_1::IOffloadControl> control = V1_1::IOffloadControl::getService();
    ASSERT_NE(nullptr, config);
    ASSERT_NE(nullptr, control);
    std::vector<std::string> replies;
    auto record = [&](bool ok, const hidl_string& msg) {
        replies.push_back((ok ? "true " : "false ") + std::string(msg));
    };
    native_handle_t* one = native_handle_create(1, 0);
    one->data[0] = 0;
    EXPECT_TRUE(config->setHandles(hidl_handle(one), hidl_handle(one), record).isOk());
    native_handle_delete(one);
    EXPECT_TRUE(
            control->initOffload(Framework::makeCallback(Framework::Version::k1_1), record).isOk());
    EXPECT_TRUE(control->stopOffload(record).isOk());

    EXPECT_THAT(replies, ElementsAre("true Successful", "true sendCmd2MD  fail", "true Successful"));
    EXPECT_THAT(Recorder::instance().all<IoctlRecord>(), IsEmpty());
}

}  // namespace
