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

// The fuzz targets' side of the fakes: the service's world with its pauses skipped and its log
// kept off the phone's logd, the framework's callbacks by version, the records of one input handed
// to the event thread, and what crossed the boundaries in the words the oracles use.

#pragma once

#include <android/hardware/tetheroffload/control/1.0/ITetheringOffloadCallback.h>
#include <utils/StrongPointer.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "fuzz/support/ByteReader.h"
#include "fuzz/support/EventModel.h"

namespace fuzzsupport {

// Once, from LLVMFuzzerInitialize, after keepReportChannel().
void prepareWorld();

// How long the event thread may take to start reading the device: generous, since a loaded
// machine (or a profiler) slows a sanitized program's start, and a thread that never reads
// fails the same.
constexpr std::chrono::seconds kStartLimit{10};

// Null for kNone.
android::sp<android::hardware::tetheroffload::control::V1_0::ITetheringOffloadCallback> makeCallback(
        CallbackVersion version);

// Hands the reads to the event thread and returns once all have been dispatched and it is back
// in read(). A thread that stops reading is a finding; one that never comes back from a record is
// a hang, which libFuzzer's timeout reports.
void feed(const std::vector<ModemRead>& reads);

// What crossed since the last take, in order.
struct Crossed {
    std::vector<std::string> callbacks;          // in EventModel's words
    std::vector<std::vector<uint8_t>> requests;  // as the driver read them
    std::vector<std::string> agentLines;
    std::vector<std::pair<int, std::string>> logs;  // priority, text of the service's tag
};

class CrossingLog {
public:
    // The process's one log, observing the fakes from its first use.
    static CrossingLog& instance();
    Crossed take();

private:
    CrossingLog() = default;
    std::mutex mLock;
    Crossed mCrossed;
};

}  // namespace fuzzsupport
