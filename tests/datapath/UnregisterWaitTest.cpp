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

// Unregistering the updater while the event thread is inside a framework call: the call must
// finish before unregisterTimeoutCallback returns, because the caller deletes the updater next.

#include <gtest/gtest.h>
#include <hostplatform/ModemEmulator.h>
#include <string.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "datapath/OffloadEventHandle.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::sp;
using android::hardware::Return;
using android::hardware::Void;
using hostplatform::ModemEmulator;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;

namespace {

// What happened, in the order it happened, with a way to wait for one step.
class Timeline {
public:
    void add(const std::string& step) {
        std::lock_guard<std::mutex> lock(mLock);
        mSteps.push_back(step);
        mChanged.notify_all();
    }

    bool waitFor(const std::string& step, std::chrono::milliseconds timeout) {
        std::unique_lock<std::mutex> lock(mLock);
        return mChanged.wait_for(lock, timeout, [&] { return has(step); });
    }

    std::vector<std::string> steps() {
        std::lock_guard<std::mutex> lock(mLock);
        return mSteps;
    }

private:
    bool has(const std::string& step) const {
        for (const std::string& s : mSteps) {
            if (s == step) return true;
        }
        return false;
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    std::vector<std::string> mSteps;
};

// A framework whose updateTimeout holds the event thread until the test lets it go.
class BlockingCallback : public V1_0::ITetheringOffloadCallback {
public:
    explicit BlockingCallback(Timeline* timeline) : mTimeline(timeline) {}

    Return<void> onEvent(V1_0::OffloadCallbackEvent) override { return Void(); }

    Return<void> updateTimeout(const V1_0::NatTimeoutUpdate&) override {
        mTimeline->add("entered");
        mTimeline->waitFor("released", std::chrono::seconds(10));
        return Void();
    }

private:
    Timeline* mTimeline;
};

std::vector<uint8_t> connUpdateRecord() {
    std::vector<uint8_t> record(16 + sizeof(vexa_conn_update_t), 0);
    vexa_common_hdr_t hdr = {VEXA_MCODE, VEXA_CONNECT_UPDATE, 0, 0, sizeof(vexa_conn_update_t)};
    memcpy(record.data(), &hdr, sizeof(hdr));
    return record;
}

TEST(UnregisterTest, WaitsForTheDispatchInProgress) {
    ASSERT_EQ(OffloadEventHandle::createEventThread(), 0);
    ASSERT_TRUE(ModemEmulator::instance().waitReaderBlocked());
    OffloadEventHandle* handle = OffloadEventHandle::getInstance();

    Timeline timeline;
    sp<V1_0::ITetheringOffloadCallback> callback = new BlockingCallback(&timeline);
    ConnTimeoutUpdate updater(callback);
    handle->registerTimeoutCallback(&updater);

    bool delivered = false;
    std::thread modem([&] {
        delivered = ModemEmulator::instance().deliverEvent(
                connUpdateRecord(), connUpdateRecord().size(), std::chrono::seconds(10));
    });
    EXPECT_TRUE(timeline.waitFor("entered", std::chrono::seconds(10)));

    std::thread binder([&] {
        handle->unregisterTimeoutCallback(&updater);
        timeline.add("unregister returned");
    });
    // Let go once unregister has returned (it should not) or after 200 ms, whichever is first.
    timeline.waitFor("unregister returned", std::chrono::milliseconds(200));
    timeline.add("released");

    binder.join();
    modem.join();
    EXPECT_TRUE(delivered);
    EXPECT_EQ(timeline.steps(),
              (std::vector<std::string>{"entered", "released", "unregister returned"}));
}

}  // namespace
