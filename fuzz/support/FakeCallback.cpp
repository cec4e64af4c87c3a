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

#include "fuzz/support/FakeCallback.h"

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <hidl/Status.h>
#include <utils/Errors.h>

#include <utility>

using android::sp;
using android::hardware::Return;
using android::hardware::Status;
using android::hardware::Void;
namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace fuzzsupport {
namespace {

Return<void> deliver(std::string entry) {
    CallbackLog& log = CallbackLog::instance();
    log.add(std::move(entry));
    if (!log.alive()) return Status::fromStatusT(android::DEAD_OBJECT);
    return Void();
}

std::string describe(const V1_0::NatTimeoutUpdate& u) {
    return "updateTimeout " + std::string(u.src.addr) + ":" + std::to_string(u.src.port) + " " +
           std::string(u.dst.addr) + ":" + std::to_string(u.dst.port) + " " +
           std::to_string(static_cast<uint32_t>(u.proto));
}

template <typename I>
class Callback : public I {
public:
    Return<void> onEvent(V1_0::OffloadCallbackEvent event) override {
        return deliver("onEvent " + std::to_string(static_cast<uint32_t>(event)));
    }
    Return<void> updateTimeout(const V1_0::NatTimeoutUpdate& params) override {
        return deliver(describe(params));
    }
};

class CallbackV1_1 : public Callback<V1_1::ITetheringOffloadCallback> {
public:
    Return<void> onEvent_1_1(V1_1::OffloadCallbackEvent event) override {
        return deliver("onEvent_1_1 " + std::to_string(static_cast<uint32_t>(event)));
    }
};

}  // namespace

CallbackLog& CallbackLog::instance() {
    // Never destroyed: the event thread may still call back while the process exits.
    static CallbackLog* log = new CallbackLog();
    return *log;
}

void CallbackLog::add(std::string entry) {
    std::lock_guard<std::mutex> lock(mLock);
    mEntries.push_back(std::move(entry));
}

std::vector<std::string> CallbackLog::take() {
    std::lock_guard<std::mutex> lock(mLock);
    return std::exchange(mEntries, {});
}

void CallbackLog::setAlive(bool alive) {
    std::lock_guard<std::mutex> lock(mLock);
    mAlive = alive;
}

bool CallbackLog::alive() {
    std::lock_guard<std::mutex> lock(mLock);
    return mAlive;
}

sp<V1_0::ITetheringOffloadCallback> makeCallback(CallbackVersion version) {
    switch (version) {
        case CallbackVersion::k1_0:
            return new Callback<V1_0::ITetheringOffloadCallback>();
        case CallbackVersion::k1_1:
            return new CallbackV1_1();
        case CallbackVersion::kNone:
            break;
    }
    return nullptr;
}

}  // namespace fuzzsupport
