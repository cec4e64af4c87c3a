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

#include "CallBench.h"

#include <benchmark/benchmark.h>
#include <cutils/native_handle.h>
#include <fcntl.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "BenchWorld.h"
#include "datapath/vexa_protocol.h"
#include "fakes/FakeVexaDevice.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using vendor::tetheroffload::TetherOffloadHal;
using Clock = std::chrono::steady_clock;

namespace bench {
namespace {

constexpr int kCalls = 20000;  // samples of each call

using Step = std::function<void(TetherOffloadHal&)>;

// A call to time, and what puts the HAL in the state it expects (not timed).
struct CallCase {
    const char* name;
    Step prepare;
    Step call;
};

void status(bool, const hidl_string&) {}

// A native handle of one descriptor, as the framework hands its sockets. Kept for the process.
hidl_handle oneDescriptor() {
    native_handle_t* handle = native_handle_create(1, 0);
    handle->data[0] = open("/dev/null", O_RDWR | O_CLOEXEC);
    return hidl_handle(handle);
}

std::vector<CallCase> callCases() {
    static const hidl_handle handle = oneDescriptor();
    static const hidl_string upstream("wanif0"), v4Addr("10.0.0.2"), v4Gw("10.0.0.1");
    static const hidl_string hotspot("ap0"), hotspotPrefix("192.168.43.0/24");
    static const hidl_vec<hidl_string> prefixes = {"192.168.0.0/16", "fe80::/64"};
    static const hidl_vec<hidl_string> v6Gws = {"fe80::1"};
    auto init = [](TetherOffloadHal& hal) { hal.initOffload(Service::instance().callback, status); };
    auto stop = [](TetherOffloadHal& hal) { hal.stopOffload(status); };
    auto addHotspot = [](TetherOffloadHal& hal) {
        hal.addDownstream(hotspot, hotspotPrefix, status);
    };
    auto removeHotspot = [](TetherOffloadHal& hal) {
        hal.removeDownstream(hotspot, hotspotPrefix, status);
    };
    auto none = [](TetherOffloadHal&) {};
    // In this order: each case leaves offload initialised, and the upstream is known to the
    // hotspot cases, which start and end the hotspot's offload.
    return {
            {"setHandles", none,
             [](TetherOffloadHal& hal) { hal.setHandles(handle, handle, status); }},
            {"stopOffload", init, stop},
            {"initOffload", stop, init},
            {"setLocalPrefixes", none,
             [](TetherOffloadHal& hal) { hal.setLocalPrefixes(prefixes, status); }},
            {"getForwardedStats", none,
             [](TetherOffloadHal& hal) {
                 hal.getForwardedStats(upstream, [](uint64_t, uint64_t) {});
             }},
            {"setDataLimit", none,
             [](TetherOffloadHal& hal) { hal.setDataLimit(upstream, 1ull << 30, status); }},
            {"setDataWarningAndLimit", none,
             [](TetherOffloadHal& hal) {
                 hal.setDataWarningAndLimit(upstream, 1ull << 29, 1ull << 30, status);
             }},
            {"setUpstreamParameters", none,
             [](TetherOffloadHal& hal) {
                 hal.setUpstreamParameters(upstream, v4Addr, v4Gw, v6Gws, status);
             }},
            {"addDownstream", removeHotspot, addHotspot},
            {"removeDownstream", addHotspot, removeHotspot},
    };
}

// One device request to the fake: what each call pays at least once for the modem.
void deviceRequest() {
    vexa_common_hdr_t enable = {VEXA_MCODE, VEXA_REQ_STATUS, VEXA_APP_TYPE_ALL, VEXA_CMSG_ENABLE, 0};
    ioctl(fakes::FakeVexaDevice::instance().deviceFd(), VEXA_IOCTL_REQUEST, &enable);
}

template <typename F>
double timed(F&& f) {
    const Clock::time_point start = Clock::now();
    f();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double percentile(std::vector<double> samples, double p) {
    const size_t at = std::min(samples.size() - 1, static_cast<size_t>(p * samples.size()));
    std::nth_element(samples.begin(), samples.begin() + at, samples.end());
    return samples[at];
}

void callLatency(benchmark::State& state, const CallCase& c) {
    TetherOffloadHal& hal = *Service::instance().hal;
    std::vector<double> calls, requests;
    calls.reserve(kCalls);
    requests.reserve(kCalls);
    for (auto _ : state) {
        c.prepare(hal);
        requests.push_back(timed(deviceRequest));
        const double micros = timed([&] { c.call(hal); });
        calls.push_back(micros);
        state.SetIterationTime(micros / 1e6);
    }
    state.counters["p50_us"] = percentile(calls, 0.50);
    state.counters["p99_us"] = percentile(calls, 0.99);
    state.counters["base_p50_us"] = percentile(requests, 0.50);
    state.counters["base_p99_us"] = percentile(requests, 0.99);
}

}  // namespace

void registerCalls() {
    for (const CallCase& c : callCases()) {
        benchmark::RegisterBenchmark((std::string("calls/") + c.name).c_str(), callLatency, c)
                ->UseManualTime()
                ->Iterations(kCalls)
                ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace bench
