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

// The benchmark program: the service's event path, its calls and one USB activation in this
// process, then the host executable end to end and the JSON formatting of its trace.
// scripts/bench.sh runs it; the summary at the end puts each figure beside its baseline.

#include <benchmark/benchmark.h>

#include "ActivationBench.h"
#include "BenchWorld.h"
#include "CallBench.h"
#include "EventPathBench.h"
#include "HostRunBench.h"
#include "JsonFormatBench.h"
#include "Summary.h"

int main(int argc, char** argv) {
    bench::prepareWorld();
    // In this order: the event path first, while nothing else has used the service.
    bench::registerEventPath();
    bench::registerCalls();
    bench::registerActivation();
    bench::registerHostRuns();
    bench::registerJsonFormats();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    const std::string loadBefore = bench::loadAverages();
    bench::SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printSummary("at start " + loadBefore + ", at end " + bench::loadAverages());
    benchmark::Shutdown();
    return 0;
}
