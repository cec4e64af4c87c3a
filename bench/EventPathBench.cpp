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
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "AllocationCounter.h"
#include "BenchWorld.h"
#include "datapath/vexa_protocol.h"
#include "fakes/FakeVexaDevice.h"

using fakes::FakeVexaDevice;
using Clock = std::chrono::steady_clock;

namespace bench {
namespace {

constexpr int kSendBuffer = 4 << 20;  // as much as the kernel grants, as the fake asks

double secondsBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

// A pair of sockets like the fake device's: records keep their bounds, each read takes one.
class RecordSocket {
public:
    RecordSocket() {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, mEnds) != 0) return;
        setsockopt(mEnds[1], SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
    }
    ~RecordSocket() {
        close(mEnds[0]);
        close(mEnds[1]);
    }
    RecordSocket(const RecordSocket&) = delete;
    RecordSocket& operator=(const RecordSocket&) = delete;

    // Writes as many copies as fit, at most `limit`; returns how many.
    size_t fill(const Bytes& record, size_t limit) {
        size_t written = 0;
        while (written < limit && send(mEnds[1], record.data(), record.size(), MSG_DONTWAIT) >= 0) {
            ++written;
        }
        return written;
    }
    int readEnd() const { return mEnds[0]; }

private:
    int mEnds[2] = {-1, -1};
};

// How many records of this size the device takes while its reader is held: a batch queued then
// never waits for room.
size_t batchSize(const Bytes& record) {
    RecordSocket probe;
    return std::min<size_t>(probe.fill(record, 4096) * 3 / 4, 1024);
}

// The physical limit: read() of each record of the batch, timed from the end of the first read to
// the end of the last.
double bareBatch(const Bytes& record, size_t batch) {
    RecordSocket socket;
    if (socket.fill(record, batch) != batch) return 0;
    uint8_t buf[FakeVexaDevice::kMaxRead];
    benchmark::DoNotOptimize(read(socket.readEnd(), buf, sizeof(buf)));
    const Clock::time_point first = Clock::now();
    for (size_t i = 1; i < batch; ++i) {
        benchmark::DoNotOptimize(read(socket.readEnd(), buf, sizeof(buf)));
    }
    return secondsBetween(first, Clock::now());
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
// minimum priority. What is left is the service's own work and the read.
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
// the event thread go through a batch queued on the device, timed by the callback from the
// first event's call to the last one's. Allocations are counted meanwhile. The rates come from
// the median batch, so that a batch cut off by another process does not count.
void eventPath(benchmark::State& state, const Bytes& record) {
    ParkingCallback& callback = *Service::instance().callback;
    const size_t batch = batchSize(record);
    if (batch < 16) return state.SkipWithError("the kernel takes too few records at a time");
    std::vector<double> bareSeconds, eventSeconds;
    uint64_t allocations = 0;
    for (auto _ : state) {
        if (!callback.park()) return state.SkipWithError("the event thread does not read");
        bareSeconds.push_back(bareBatch(record, batch));
        for (size_t i = 0; i < batch; ++i) {
            if (!FakeVexaDevice::instance().queueRecord(record, record.size())) {
                return state.SkipWithError("the device took no record");
            }
        }
        callback.timeNextCalls(batch);
        const uint64_t before = allocationCount();
        callback.release();
        allocations += allocationCount() - before;
        eventSeconds.push_back(callback.timedSeconds());
        state.SetIterationTime(eventSeconds.back());
    }
    // Each batch times the intervals between its records.
    const double intervals = static_cast<double>(batch - 1);
    state.counters["rate"] = intervals / median(eventSeconds);
    state.counters["bare_rate"] = intervals / median(bareSeconds);
    state.counters["ratio"] = median(bareSeconds) / median(eventSeconds);
    state.counters["allocs_per_event"] =
            static_cast<double>(allocations) / (state.iterations() * batch);
    state.counters["batch"] = static_cast<double>(batch);
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
