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

// Construction, registration and the offload lifecycle of the HAL object: setHandles,
// initOffload and stopOffload.

#define LOG_TAG "TetherOffload"

#include "hal/TetherOffloadHal.h"

#include <android/hardware/tetheroffload/control/1.1/ITetheringOffloadCallback.h>
#include <cutils/native_handle.h>
#include <errno.h>
#include <hidl/HidlTransportSupport.h>
#include <log/log.h>

#include <memory>
#include <new>

// Only after <memory>: it uses std::shared_ptr without including it.
#include <hidl/HidlLazyUtils.h>

#include "datapath/OffloadEventHandle.h"
#include "datapath/vexa_protocol.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::sp;
using android::hardware::configureRpcThreadpool;
using android::hardware::hidl_handle;
using android::hardware::LazyServiceRegistrar;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::tetheroffload::config::V1_0::IOffloadConfig;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace vendor {
namespace tetheroffload {

namespace {

// A handle without a native handle counts as empty, like one with no descriptor.
bool carriesOneFd(const hidl_handle& handle) {
    const native_handle_t* nh = handle.getNativeHandle();
    return nh != nullptr && nh->numFds == 1;
}

// The relay holds the callback as 1.1 when the framework offers it, else as 1.0. A cast that
// fails in transport (a dead framework) counts as a 1.0 callback.
ConnTimeoutUpdate* makeRelay(const sp<V1_0::ITetheringOffloadCallback>& cb) {
    sp<V1_1::ITetheringOffloadCallback> cb11 =
            V1_1::ITetheringOffloadCallback::castFrom(cb, false).withDefault(nullptr);
    if (cb11 != nullptr) {
        return new ConnTimeoutUpdate(cb11);
    }
    return new ConnTimeoutUpdate(cb);
}

}  // namespace

TetherOffloadHal::TetherOffloadHal() {
    mCallback = nullptr;
    mTimeoutUpdate = nullptr;
    mCbEvent = nullptr;
    mUpstreamIface.clear();
    mUsbDownstream.clear();
    mWifiDownstream.clear();
    mUsbOffloadActive = false;
    mWifiOffloadActive = false;
}

// Releases only the callback and the strings: the object lives as long as the process, so the
// relay and the device are left as they are.
TetherOffloadHal::~TetherOffloadHal() {}

sp<TetherOffloadHal> TetherOffloadHal::makeTetherOffloadHal() {
    // Held here across registration, so a registration that keeps no reference cannot destroy it.
    sp<TetherOffloadHal> hal = new (std::nothrow) TetherOffloadHal();
    if (hal == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    configureRpcThreadpool(1, false);
    hal->registerAsSystemService();
    return hal;
}

void TetherOffloadHal::registerAsSystemService() {
    sp<IOffloadConfig> config = this;
    sp<V1_1::IOffloadControl> control = this;
    LazyServiceRegistrar& registrar = LazyServiceRegistrar::getInstance();
    // A failed registration is not fatal: the process serves whatever was registered.
    (void)registrar.registerService(config, "default");
    (void)registrar.registerService(control, "default");
}

Return<void> TetherOffloadHal::setHandles(const hidl_handle& fd1, const hidl_handle& fd2,
                                          setHandles_cb hidl_cb) {
    if (!carriesOneFd(fd1)) {
        hidl_cb(false, "fail ,fd1 is empty");
        ALOGI("setHandles(), fd1 is empty\n");
        return Void();
    }
    if (!carriesOneFd(fd2)) {
        hidl_cb(false, "fail ,fd2 is empty");
        ALOGI("setHandles(), fd2 is empty\n");
        return Void();
    }
    hidl_cb(true, "Successful");
    ALOGI("setHandles() \n");
    return Void();
}

Return<void> TetherOffloadHal::initOffload(const sp<V1_0::ITetheringOffloadCallback>& cb,
                                           initOffload_cb hidl_cb) {
    ALOGI("initOffload ++\n");
    auto reply = [&hidl_cb](bool success, const char* msg) {
        hidl_cb(success, msg);
        ALOGI("initOffload() --\n");
    };
    if (mCallback != nullptr) {
        ALOGI("already  initialized\n");
        reply(false, "already  initialized");
        return Void();
    }
    mCallback = cb;
    if (cb == nullptr || mCbEvent != nullptr) {
        ALOGI("initOffload()warning: initialized again \n");
        reply(false, "initialized again");
        return Void();
    }
    mTimeoutUpdate = makeRelay(cb);
    mCbEvent = OffloadEventHandle::getInstance();
    if (mCbEvent == nullptr) {
        ALOGE("%s : initOffload()warning: get mCbEvent instance fail \n", "initOffload");
        reply(false, "get mCbEvent instance fail ");
        return Void();
    }
    // Registered before the start command, so events answering it find the relay in place.
    mCbEvent->registerTimeoutCallback(mTimeoutUpdate);
    ALOGI("initOffload(): create event thread : mCbEvent=%p  \n", static_cast<void*>(mCbEvent));
    if (mCbEvent->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE) < 0) {
        reply(true, "sendCmd2MD  fail");
    } else {
        reply(true, "Successful");
    }
    return Void();
}

Return<void> TetherOffloadHal::stopOffload(stopOffload_cb hidl_cb) {
    ALOGI("stopOffload ");
    if (mCallback == nullptr) {
        ALOGI("%s() device has not been initialized () \n", "stopOffload");
        hidl_cb(false, "not been  initialized");
        return Void();
    }
    if (mCbEvent == nullptr) {
        ALOGI("mCbEvent has not been initialized () \n");
        hidl_cb(false, "mCbEvent has not been  initialized");
        return Void();
    }
    // Unregistering takes the dispatch lock, so an event being delivered finishes before the
    // relay is deleted.
    mCbEvent->unregisterTimeoutCallback(mTimeoutUpdate);
    (void)mCbEvent->sendCmd2MD(VEXA_APP_TYPE_ALL, VEXA_CMSG_DISABLE);
    delete mTimeoutUpdate;
    mTimeoutUpdate = nullptr;
    mCbEvent = nullptr;
    mCallback = nullptr;
    mUpstreamIface.clear();
    mUsbDownstream.clear();
    mWifiDownstream.clear();
    mUsbOffloadActive = false;
    mWifiOffloadActive = false;
    hidl_cb(true, "Successful");
    ALOGI("stopOffload() \n");
    return Void();
}

}  // namespace tetheroffload
}  // namespace vendor
