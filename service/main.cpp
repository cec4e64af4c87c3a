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

// Process entry: registers the HAL object, starts the modem event thread and serves binder calls.

#define LOG_TAG "TetherOffload"

#include <errno.h>
#include <hidl/HidlTransportSupport.h>
#include <log/log.h>
#include <signal.h>
#include <string.h>
#include <utils/StrongPointer.h>

#include "datapath/OffloadEventHandle.h"
#include "hal/TetherOffloadHal.h"

using android::sp;
using android::hardware::joinRpcThreadpool;
using vendor::tetheroffload::TetherOffloadHal;

namespace {

// A peer that goes away while we write to it must not kill the service. Done before the event
// thread exists, so that thread inherits the blocked mask.
void blockSigpipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    if (sigprocmask(SIG_BLOCK, &set, nullptr) != 0) {
        ALOGW("WARNING: SIGPIPE not blocked\n");
    }
}

}  // namespace

int main() {
    sp<TetherOffloadHal> hal = TetherOffloadHal::makeTetherOffloadHal();
    if (hal == nullptr) {
        int err = errno;
        ALOGE("get tetherOffloadHal service failed(%s)\n", strerror(err));
        return -err;
    }
    blockSigpipe();
    // Calls are served even without the event thread; the cause has been logged.
    (void)OffloadEventHandle::createEventThread();
    joinRpcThreadpool();
    ALOGI("tether offload exiting");
    return 0;
}
