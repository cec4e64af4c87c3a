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

#include "BenchWorld.h"

#include <android/log.h>
#include <string.h>

#include "datapath/OffloadEventHandle.h"
#include "datapath/vexa_protocol.h"
#include "fakes/ConntrackFiles.h"
#include "fakes/FakeVexaDevice.h"
#include "fakes/Properties.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::hardware::hidl_string;
using android::hardware::Void;
using fakes::ConntrackFiles;
using fakes::FakeVexaDevice;
namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace bench {
// Nothing observes the fakes, so the log tap drops every line once liblog has formatted it.
void prepareWorld() {
    ConntrackFiles::setContent(ConntrackFiles::Proto::kTcp, "432000\n");
    ConntrackFiles::setContent(ConntrackFiles::Proto::kUdp, "180\n");
    fakes::Properties::clear();
}

ParkingCallback::Return ParkingCallback::onEvent(V1_0::OffloadCallbackEvent) {
    return arrive();
}

ParkingCallback::Return ParkingCallback::updateTimeout(const V1_0::NatTimeoutUpdate&) {
    return arrive();
}

ParkingCallback::Return ParkingCallback::onEvent_1_1(V1_1::OffloadCallbackEvent) {
    return arrive();
}

// Only the flag and the count are read on the measured path.
ParkingCallback::Return ParkingCallback::arrive() {
    if (!mParkWanted.load(std::memory_order_acquire)) {
        if (mTimedCalls > 0) countTimed();
        return Void();
    }
    std::unique_lock<std::mutex> lock(mLock);
    mParked = true;
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return !mParkWanted.load(std::memory_order_acquire); });
    mParked = false;
    return Void();
}

void ParkingCallback::countTimed() {
    ++mCallsSeen;
    if (mCallsSeen == 1) mFirst = std::chrono::steady_clock::now();
    if (mCallsSeen < mTimedCalls) return;
    mLast = std::chrono::steady_clock::now();
    mTimedCalls = 0;
}

void ParkingCallback::timeNextCalls(size_t calls) {
    std::lock_guard<std::mutex> lock(mLock);
    mTimedCalls = calls;
    mCallsSeen = 0;
}

double ParkingCallback::timedSeconds() const {
    return std::chrono::duration<double>(mLast - mFirst).count();
}

bool ParkingCallback::park() {
    mParkWanted.store(true, std::memory_order_release);
    const Bytes started = statusRecord(VEXA_STARTED);
    FakeVexaDevice::instance().queueRecord(started, started.size());
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, std::chrono::seconds(10), [&] { return mParked; });
}

void ParkingCallback::release() {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mParkWanted.store(false, std::memory_order_release);
    }
    mChanged.notify_all();
    FakeVexaDevice::instance().waitUntilDrained();
}

Service& Service::instance() {
    static Service* service = [] {
        auto* created = new Service();
        created->hal = new vendor::tetheroffload::TetherOffloadHal();
        created->callback = new ParkingCallback();
        created->hal->initOffload(created->callback, [](bool, const hidl_string&) {});
        (void)OffloadEventHandle::createEventThread();
        FakeVexaDevice::instance().waitReaderBlocked();
        return created;
    }();
    return *service;
}

Bytes statusRecord(uint16_t status) {
    const vexa_common_hdr_t header = {VEXA_MCODE, status, 0, 0, 0};
    Bytes record(sizeof(header));
    memcpy(record.data(), &header, sizeof(header));
    return record;
}

Bytes connectionRecord() {
    const vexa_common_hdr_t header = {VEXA_MCODE, VEXA_CONNECT_UPDATE, 0, 0,
                                      sizeof(vexa_conn_update_t)};
    const vexa_conn_update_t conn = {{192, 168, 43, 2}, {8, 8, 8, 8}, {}, 80, 53, 0, 17, {}, 0, {}};
    Bytes record(sizeof(header) + sizeof(conn));
    memcpy(record.data(), &header, sizeof(header));
    memcpy(record.data() + sizeof(header), &conn, sizeof(conn));
    return record;
}

}  // namespace bench
