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

#include "EventPathBench.h"

#include <android/hardware/tetheroffload/control/1.0/types.h>
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <hostplatform/ModemEmulator.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "AllocationCounter.h"
#include "BenchWorld.h"
#include "datapath/vexa_protocol.h"

using hostplatform::ModemEmulator;
using Clock = std::chrono::steady_clock;

namespace bench {
namespace {

constexpr size_t kBatch = ModemEmulator::kQueueCapacity;  // records a batch, queued at once

double secondsBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

// False when the queue was not empty: the batch would not be whole.
bool queueBatch(const Bytes& record) {
    return ModemEmulator::instance().queueEvents(record, record.size(), kBatch) == kBatch;
}

// The bare loop: the queued batch read the way the event thread reads it, and nothing else, timed
// from the end of the first read to the end of the last. The event thread must be held meanwhile.
double bareBatch() {
    Clock::time_point first, last;
    std::thread reader([&] {
        const int fd = ModemEmulator::instance().deviceFd();
        uint8_t buf[ModemEmulator::kMaxRead];
        benchmark::DoNotOptimize(read(fd, buf, sizeof(buf)));
        first = Clock::now();
        for (size_t i = 1; i < kBatch; ++i) benchmark::DoNotOptimize(read(fd, buf, sizeof(buf)));
        last = Clock::now();
    });
    reader.join();
    return secondsBetween(first, last);
}

// What the two address strings of one NatTimeoutUpdate allocate: all a connection update may.
double natTimeoutUpdateAllocations() {
    const uint64_t before = allocationCount();
    {
        android::hardware::tetheroffload::control::V1_0::NatTimeoutUpdate update{};
        update.src.addr = "192.168.43.2";
        update.dst.addr = "8.8.8.8";
        benchmark::DoNotOptimize(update);
    }
    return static_cast<double>(allocationCount() - before);
}

// The log lines unformatted: liblog drops them before it formats them, as it does below its
// minimum priority. What is left is the service's own work and the emulated read.
class UnformattedLines {
public:
    UnformattedLines() : mPriority(__android_log_get_minimum_priority()) {
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    }
    ~UnformattedLines() { __android_log_set_minimum_priority(mPriority); }

private:
    const int32_t mPriority;
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// Each iteration reads one batch with the bare loop while the event thread is held, then lets
// the event thread go through the next one, timed by the callback from the first event's call
// to the last one's. Allocations are counted meanwhile. The rates come from the median batch,
// so that a batch cut off by another process does not count.
void eventPath(benchmark::State& state, const Bytes& record) {
    ParkingCallback& callback = *Service::instance().callback;
    std::vector<double> bareSeconds, eventSeconds;
    uint64_t allocations = 0;
    for (auto _ : state) {
        if (!callback.park()) return state.SkipWithError("the event thread does not read");
        if (!queueBatch(record)) return state.SkipWithError("records left on the device");
        bareSeconds.push_back(bareBatch());
        if (!queueBatch(record)) return state.SkipWithError("records left on the device");
        callback.timeNextCalls(kBatch);
        const uint64_t before = allocationCount();
        callback.release();
        allocations += allocationCount() - before;
        eventSeconds.push_back(callback.timedSeconds());
        state.SetIterationTime(eventSeconds.back());
    }
    // Each batch times the intervals between its records.
    const double intervals = kBatch - 1;
    state.counters["rate"] = intervals / median(eventSeconds);
    state.counters["bare_rate"] = intervals / median(bareSeconds);
    state.counters["ratio"] = median(bareSeconds) / median(eventSeconds);
    state.counters["allocs_per_event"] =
            static_cast<double>(allocations) / (state.iterations() * kBatch);
    state.counters["allocs_baseline"] =
            record.size() == sizeof(vexa_common_hdr_t) ? 0.0 : natTimeoutUpdateAllocations();
}

void eventPathUnformatted(benchmark::State& state, const Bytes& record) {
    UnformattedLines unformatted;
    eventPath(state, record);
}

}  // namespace

void registerEventPath() {
    benchmark::RegisterBenchmark("event_path/status_events", eventPath, statusRecord(VEXA_STARTED))
            ->UseManualTime()
            ->MinTime(0.5)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("event_path/status_events_unformatted", eventPathUnformatted,
                                 statusRecord(VEXA_STARTED))
            ->UseManualTime()
            ->MinTime(0.5)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("event_path/connection_updates", eventPath, connectionRecord())
            ->UseManualTime()
            ->MinTime(0.5)
            ->Unit(benchmark::kMillisecond);
}

}  // namespace bench
