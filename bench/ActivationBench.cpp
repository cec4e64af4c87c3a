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

#include "ActivationBench.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "BenchWorld.h"
#include "fakes/StandardError.h"

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using fakes::StandardError;
using vendor::tetheroffload::TetherOffloadHal;
using Clock = std::chrono::steady_clock;

namespace bench {
namespace {

constexpr useconds_t kBridgePauseUs = 500 * 1000;  // what the bridge waits between its steps

void status(bool, const hidl_string&) {}

double millisSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Offload started afresh with the USB bridge as a downstream and no upstream yet.
void prepareUsb(TetherOffloadHal& hal) {
    hal.stopOffload(status);
    hal.initOffload(Service::instance().callback, status);
    hal.addDownstream("mdbr0", "192.168.42.0/24", status);
}

void usbActivation(benchmark::State& state) {
    TetherOffloadHal& hal = *Service::instance().hal;
    const hidl_vec<hidl_string> v6Gws = {"fe80::1"};
    double pauseMs = 0, activationMs = 0, worstMs = 0;
    StandardError::setClosed(true);  // the bridge echoes its commands there
    for (auto _ : state) {
        prepareUsb(hal);
        Clock::time_point start = Clock::now();
        usleep(kBridgePauseUs);
        pauseMs += millisSince(start);
        start = Clock::now();
        hal.setUpstreamParameters("wanif0", "10.0.0.2", "10.0.0.1", v6Gws, status);
        const double ms = millisSince(start);
        activationMs += ms;
        worstMs = std::max(worstMs, ms);
        state.SetIterationTime(ms / 1e3);
    }
    StandardError::setClosed(false);
    const double n = static_cast<double>(state.iterations());
    state.counters["activation_ms"] = activationMs / n;
    state.counters["worst_ms"] = worstMs;
    state.counters["pause_ms"] = pauseMs / n;
}

}  // namespace

void registerActivation() {
    benchmark::RegisterBenchmark("activation/usb", usbActivation)
            ->UseManualTime()
            ->Iterations(5)
            ->Unit(benchmark::kMillisecond);
}

}  // namespace bench
