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

#include "fakes/FakeFramework.h"

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <fcntl.h>
#include <hidl/Status.h>
#include <unistd.h>
#include <utils/Errors.h>

#include <atomic>
#include <utility>

#include "fakes/Crossings.h"

using ::android::sp;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;
namespace V1_0 = ::android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = ::android::hardware::tetheroffload::control::V1_1;

namespace fakes {
namespace {

std::atomic<bool> gAlive{true};

Return<void> deliver(CallbackRecord record) {
    record.ok = gAlive.load();
    const bool ok = record.ok;
    if (Observers::any()) Observers::report(record);
    if (!ok) return Status::fromStatusT(::android::DEAD_OBJECT);
    return Void();
}

CallbackRecord eventRecord(const char* op, uint32_t event) {
    CallbackRecord record;
    record.op = op;
    record.event = event;
    return record;
}

template <typename I>
class Callback : public I {
public:
    Return<void> onEvent(V1_0::OffloadCallbackEvent event) override {
        return deliver(eventRecord("onEvent", static_cast<uint32_t>(event)));
    }

    Return<void> updateTimeout(const V1_0::NatTimeoutUpdate& params) override {
        CallbackRecord record;
        record.op = "updateTimeout";
        record.src = AddrPort{params.src.addr, params.src.port};
        record.dst = AddrPort{params.dst.addr, params.dst.port};
        record.proto = static_cast<uint32_t>(params.proto);
        return deliver(std::move(record));
    }

    // The chain travels through the same transport as every other call.
    Return<void> interfaceChain(typename I::interfaceChain_cb cb) override {
        if (!gAlive.load()) return Status::fromStatusT(::android::DEAD_OBJECT);
        return I::interfaceChain(cb);
    }
};

class CallbackV1_1 : public Callback<V1_1::ITetheringOffloadCallback> {
public:
    Return<void> onEvent_1_1(V1_1::OffloadCallbackEvent event) override {
        return deliver(eventRecord("onEvent_1_1", static_cast<uint32_t>(event)));
    }
};

}  // namespace

sp<V1_0::ITetheringOffloadCallback> FakeFramework::makeCallback(Version version) {
    if (version == Version::k1_1) return new CallbackV1_1();
    return new Callback<V1_0::ITetheringOffloadCallback>();
}

void FakeFramework::setAlive(bool alive) {
    gAlive.store(alive);
}

FrameworkHandle::FrameworkHandle(int fds) {
    if (fds == kNoHandle) return;
    mNative = native_handle_create(fds, 0);
    for (int i = 0; mNative != nullptr && i < fds; ++i) {
        mNative->data[i] = open("/dev/null", O_RDWR | O_CLOEXEC);
    }
}

FrameworkHandle::~FrameworkHandle() {
    if (mNative == nullptr) return;
    native_handle_close(mNative);
    native_handle_delete(mNative);
}

bool FrameworkHandle::descriptorsOpen() const {
    for (int i = 0; mNative != nullptr && i < mNative->numFds; ++i) {
        if (fcntl(mNative->data[i], F_GETFD) == -1) return false;
    }
    return true;
}

}  // namespace fakes
