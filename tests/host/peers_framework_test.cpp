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

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <gtest/gtest.h>

#include <vector>

#include "hostplatform/Framework.h"
#include "hostplatform/Recorder.h"

using ::android::sp;
using ::android::hardware::Return;
using ::hostplatform::CallbackRecord;
using ::hostplatform::Framework;
using ::hostplatform::Recorder;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace {

class PeersFrameworkTest : public ::testing::Test {
protected:
    void SetUp() override {
        Recorder::instance().clear();
        cb = V1_1::ITetheringOffloadCallback::castFrom(
                Framework::makeCallback(Framework::Version::k1_1));
        ASSERT_NE(nullptr, cb);
    }
    void TearDown() override { Framework::setAlive(true); }

    // Makes the three calls a 1.1 callback takes and tells which went through.
    std::vector<bool> callEveryOperation() {
        V1_0::NatTimeoutUpdate update;
        update.src = {"192.168.43.2", 0x50};
        update.dst = {"8.8.8.8", 53};
        update.proto = V1_0::NetworkProtocol::UDP;
        return {cb->onEvent(V1_0::OffloadCallbackEvent::OFFLOAD_STARTED).isOk(),
                cb->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_WARNING_REACHED).isOk(),
                cb->updateTimeout(update).isOk()};
    }

    sp<V1_1::ITetheringOffloadCallback> cb;
};

TEST_F(PeersFrameworkTest, AliveFrameworkRecordsEveryCall) {
    EXPECT_TRUE(Framework::alive());
    EXPECT_TRUE(cb->isRemote());
    EXPECT_EQ((std::vector<bool>{true, true, true}), callEveryOperation());

    std::vector<CallbackRecord> records = Recorder::instance().all<CallbackRecord>();
    ASSERT_EQ(3u, records.size());
    EXPECT_EQ("onEvent", records[0].op);
    EXPECT_EQ(1u, records[0].event);
    EXPECT_EQ("onEvent_1_1", records[1].op);
    EXPECT_EQ(6u, records[1].event);
    EXPECT_EQ("updateTimeout", records[2].op);
    EXPECT_EQ("192.168.43.2", records[2].src.addr);
    EXPECT_EQ(0x50, records[2].src.port);
    EXPECT_EQ("8.8.8.8", records[2].dst.addr);
    EXPECT_EQ(53, records[2].dst.port);
    EXPECT_EQ(17u, records[2].proto);
    for (const CallbackRecord& record : records) EXPECT_TRUE(record.ok) << record.op;
}

TEST_F(PeersFrameworkTest, DeadFrameworkFailsAndRecordsEveryCall) {
    Framework::setAlive(false);
    EXPECT_FALSE(Framework::alive());
    EXPECT_EQ((std::vector<bool>{false, false, false}), callEveryOperation());
    Return<void> ret = cb->onEvent(V1_0::OffloadCallbackEvent::OFFLOAD_STOPPED_ERROR);
    EXPECT_TRUE(ret.isDeadObject());

    std::vector<CallbackRecord> records = Recorder::instance().all<CallbackRecord>();
    ASSERT_EQ(4u, records.size());
    for (const CallbackRecord& record : records) EXPECT_FALSE(record.ok) << record.op;

    Framework::setAlive(true);  // the same object works again once the switch is back
    EXPECT_TRUE(cb->onEvent(V1_0::OffloadCallbackEvent::OFFLOAD_STARTED).isOk());
}

}  // namespace
