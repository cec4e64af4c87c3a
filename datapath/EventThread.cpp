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

#define LOG_TAG "TetherOffload"

#include <log/log.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include "datapath/OffloadEventHandle.h"
#include "timeout/ConnTimeoutUpdate.h"

using android::hardware::Return;

namespace V1_0 = android::hardware::tetheroffload::control::V1_0;
namespace V1_1 = android::hardware::tetheroffload::control::V1_1;

namespace {

constexpr size_t kHeaderSize = offsetof(vexa_dev_rsp_common_t, data);
constexpr size_t kEventBufSize = sizeof(vexa_dev_rsp_common_t);

// A descriptor that fails every read would otherwise spin a core and flood the log, so failed
// reads are spaced out, 10 ms doubling up to 320 ms. One good read ends the back-off.
class ReadBackoff {
public:
    void afterFailure() {
        usleep(mDelayUs);
        if (mDelayUs < kMaxDelayUs) mDelayUs *= 2;
    }
    void afterSuccess() { mDelayUs = kFirstDelayUs; }

private:
    static constexpr useconds_t kFirstDelayUs = 10 * 1000;
    static constexpr useconds_t kMaxDelayUs = 320 * 1000;
    useconds_t mDelayUs = kFirstDelayUs;
};

// Checks the framing of a record that filled `readSize` bytes. A length beyond the payload room
// is clamped so that the parser never looks past the buffer.
bool isWholeRecord(vexa_dev_rsp_common_t* rsp, ssize_t readSize) {
    uint32_t len = rsp->data_len;
    if (len > VEXA_MAX_PAYLOAD) {
        ALOGE("handleEvent: message payload too big (>256 bytes)\n");
        rsp->data_len = VEXA_MAX_PAYLOAD;
        len = VEXA_MAX_PAYLOAD;
    }
    if (len == 0) return true;
    if (kHeaderSize + len > static_cast<size_t>(readSize)) {
        ALOGE("handleEvent: msg payload is too short\n");
        return false;
    }
    return true;
}

void logIfFailed(const Return<void>& ret, const char* op) {
    if (!ret.isOk()) {
        ALOGE("%s to framework failed: %s\n", op, ret.description().c_str());
    }
}

}  // namespace

// Once started the flag stays set, even when the thread ended at start-up (no device).
bool OffloadEventHandle::isEventThreadStarted() {
    return sEventThreadCreated;
}

int OffloadEventHandle::createEventThread() {
    if (getInstance() == nullptr) {
        ALOGE("createEventThread: unable to create offloadEventHandle instance \n");
        return -2;
    }
    if (sEventThreadCreated) {
        ALOGI(" HandleEvent thread has  been created \n");
        return 0;
    }
    pthread_t thread;
    if (pthread_create(&thread, nullptr, handleEvent, nullptr) != 0) {
        ALOGE("fail to create event thread\n");
        return -1;
    }
    ALOGE("created HandleEvent thread\n");
    if (pthread_setname_np(thread, "HandleEvent") != 0) {
        ALOGE("fail to change HandleEvent thread name\n");
    }
    sEventThreadCreated = true;
    return 0;
}

void* OffloadEventHandle::handleEvent(void* /*arg*/) {
    OffloadEventHandle* inst = getInstance();
    if (inst == nullptr) {
        ALOGE("handleEvent: fail to get offloadEventHandle instance \n");
        return nullptr;
    }
    if (inst->mFd < 0) {
        ALOGE("handleEvent: fail to open vexa device \n");
        return nullptr;
    }
    // One buffer for the life of the thread.
    auto* rsp = static_cast<vexa_dev_rsp_common_t*>(malloc(kEventBufSize));
    if (rsp == nullptr) {
        ALOGE("handleEvent: malloc fail \n");
        return nullptr;
    }
    ReadBackoff backoff;
    for (;;) {
        memset(rsp, 0, kEventBufSize);
        ssize_t n = read(inst->mFd, rsp, kEventBufSize);
        if (n < 0) {
            ALOGE("readFD fail: fd=%d, err=%d \n", inst->mFd, static_cast<int>(n));
            ALOGI("handleEvent: readsize %d \n", static_cast<int>(n));
            // The zeroed record goes to the parser, which rejects it with its own line.
            inst->parsingEvent(rsp);
            backoff.afterFailure();
            continue;
        }
        backoff.afterSuccess();
        ALOGI("handleEvent: readsize %d \n", static_cast<int>(n));
        if (static_cast<size_t>(n) < kHeaderSize) {
            ALOGE("handleEvent: response msg is too short \n");
            continue;
        }
        if (isWholeRecord(rsp, n)) inst->parsingEvent(rsp);
    }
}

int OffloadEventHandle::parsingEvent(vexa_dev_rsp_common_t* rsp) {
    // Held through the whole dispatch, so that unregistering waits for a relay in progress.
    pthread_mutex_lock(&sTimeoutCbLock);
    int result = 0;
    if (mTimeoutCallback == nullptr) {
        ALOGI(" %s, not register Timeout Callback (type = %d) \n", "parsingEvent", rsp->status);
        result = -1;
    } else if (rsp->mcode != VEXA_MCODE) {
        ALOGI(" %s, mcode is not right  (type = %d) \n", "parsingEvent", rsp->status);
        result = -1;
    } else {
        ALOGI(" parsingEvent : recv a msg from MD: status:%d ,msg: %d\n", rsp->status, rsp->msg);
        dispatch(mTimeoutCallback, rsp);
    }
    pthread_mutex_unlock(&sTimeoutCbLock);
    return result;
}

void OffloadEventHandle::dispatch(ConnTimeoutUpdate* u, vexa_dev_rsp_common_t* rsp) {
    switch (rsp->status) {
        case VEXA_STARTED:
            ALOGI(" recv VEXA_STARTED msg from MD\n");
            deliverStatus(u, rsp->status);
            break;
        case VEXA_STOPPED_ERROR:
            ALOGI("recv VEXA_STOPPED_ERROR msg from MD\n");
            deliverStatus(u, rsp->status);
            break;
        case VEXA_STOPPED_UNSUPPORTED:
            ALOGI("recv VEXA_STOPPED_UNSUPPORTED msg from MD\n");
            deliverStatus(u, rsp->status);
            break;
        case VEXA_SUPPORT_AVAILABLE:
            ALOGI("recv VEXA_SUPPORT_AVAILABLE msg from MD\n");
            deliverStatus(u, rsp->status);
            break;
        case VEXA_STOPPED_LIMIT_REACHED:
            ALOGI("recv VEXA_STOPPED_LIMIT_REACHED msg from MD\n");
            deliverStatus(u, rsp->status);
            break;
        case VEXA_CONNECT_UPDATE:
            ALOGI("recv VEXA_CONNECT_UPDATE msg from MD\n");
            u->connTimeoutUpdater(rsp);
            break;
        case VEXA_WARNING_REACHED:
            ALOGI("recv VEXA_WARNING_REACHED msg from MD\n");
            deliverWarning(u);
            break;
        default:
            ALOGI("recv unknown msg from MD (type = %d)\n", rsp->status);
            break;
    }
}

// Device codes 1 to 5 carry the framework's own event values.
void OffloadEventHandle::deliverStatus(ConnTimeoutUpdate* u, uint32_t event) {
    if (u->mCallbackV1_0 != nullptr) {
        logIfFailed(u->mCallbackV1_0->onEvent(static_cast<V1_0::OffloadCallbackEvent>(event)),
                    "onEvent");
    } else if (u->mCallbackV1_1 != nullptr) {
        logIfFailed(u->mCallbackV1_1->onEvent_1_1(static_cast<V1_1::OffloadCallbackEvent>(event)),
                    "onEvent_1_1");
    }
}

// A 1.0 framework has no warning event, so it hears nothing.
void OffloadEventHandle::deliverWarning(ConnTimeoutUpdate* u) {
    if (u->mCallbackV1_1 == nullptr) return;
    logIfFailed(u->mCallbackV1_1->onEvent_1_1(V1_1::OffloadCallbackEvent::OFFLOAD_WARNING_REACHED),
                "onEvent_1_1");
}

int OffloadEventHandle::registerTimeoutCallback(ConnTimeoutUpdate* u) {
    pthread_mutex_lock(&sTimeoutCbLock);
    if (mTimeoutCallback != nullptr) {
        ALOGI("already have registerTimeoutCallback previously, override \n");
    } else {
        ALOGI(" registerTimeoutCallback \n");
    }
    mTimeoutCallback = u;
    pthread_mutex_unlock(&sTimeoutCbLock);
    return 0;
}

// The argument is not compared: whatever is registered goes.
int OffloadEventHandle::unregisterTimeoutCallback(ConnTimeoutUpdate* /*u*/) {
    pthread_mutex_lock(&sTimeoutCbLock);
    if (mTimeoutCallback == nullptr) {
        ALOGI("already have unregisterTimeoutCallback previously, override \n");
    } else {
        ALOGI(" unregisterTimeoutCallback \n");
        mTimeoutCallback = nullptr;
    }
    pthread_mutex_unlock(&sTimeoutCbLock);
    return 0;
}
