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

#include "hostplatform/Recorder.h"

#include <time.h>

#include <mutex>
#include <utility>

namespace hostplatform {
namespace {

int64_t monotonicMicros() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000 + ts.tv_nsec / 1000;
}

}  // namespace

Recorder& Recorder::instance() {
    // Never destroyed: threads that outlive main may still record while the process exits.
    static Recorder* recorder = new Recorder();
    return *recorder;
}

Recorder::Recorder() : mStartMicros(monotonicMicros()) {}

void Recorder::add(RecordBody body) {
    std::lock_guard<std::mutex> lock(mLock);
    if (mSinks.empty()) return;
    // Stamped under the lock, so that times never go back in record order.
    const Record record{monotonicMicros() - mStartMicros, std::move(body)};
    for (const Sink& sink : mSinks) sink(record);
}

void Recorder::addSink(Sink sink) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        mSinks.push_back(std::move(sink));
    }
    // Outside the lock: a crossing in progress holds the observers' lock and waits for ours.
    static std::once_flag observing;
    std::call_once(observing, [this] {
        fakes::Observers::add([this](const fakes::Crossing& crossing) {
            std::visit([this](const auto& record) { add(record); }, crossing);
        });
    });
}

}  // namespace hostplatform
