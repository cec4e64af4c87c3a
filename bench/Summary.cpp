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

#include "Summary.h"

#include <stdio.h>
#include <unistd.h>

#include <cmath>
#include <fstream>

namespace bench {
namespace {

const double kNaN = std::nan("");

const char* verdict(bool met) {
    return met ? "met" : "MISSED";
}

}  // namespace

SummaryReporter::SummaryReporter()
    : ConsoleReporter(isatty(STDOUT_FILENO) == 1 ? OO_Defaults : OO_Tabular) {}

void SummaryReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
            mRuns[run.run_name.function_name] = run;
        }
    }
}

double SummaryReporter::counter(const std::string& benchmark, const std::string& name) const {
    auto run = mRuns.find(benchmark);
    if (run == mRuns.end()) return kNaN;
    auto value = run->second.counters.find(name);
    return value == run->second.counters.end() ? kNaN : value->second.value;
}

void SummaryReporter::printSummary(const std::string& load) const {
    printf("\nSummary: each figure beside its baseline from this run (load average %s)\n",
           load.c_str());
    printEventPath();
    printCalls();
    printActivation();
    printHostRuns();
    fflush(stdout);
}

void SummaryReporter::printEventPath() const {
    printf("\nEvent path (events per second; baseline: read() of the same records from a kernel\n"
           "socket, the physical limit; the event thread's share of its rate)\n");
    struct Row {
        const char* name;
        bool goal;  // held to 70% of the bare rate
    } const rows[] = {{"status_events", true},
                      {"status_events_unformatted", false},
                      {"connection_updates", false}};
    for (const Row& row : rows) {
        const std::string b = std::string("event_path/") + row.name;
        const double ratio = counter(b, "ratio");
        printf("  %-26s %10.0f /s   kernel read %10.0f /s   %5.1f%% of it", row.name,
               counter(b, "rate"), counter(b, "bare_rate"), ratio * 100);
        if (row.goal) printf("   goal >= 70%% %s", verdict(ratio >= 0.70));
        printf("\n");
    }
    printf("Allocations per event (baseline: what the callback's NatTimeoutUpdate strings take)\n");
    for (const char* name : {"status_events", "connection_updates"}) {
        const std::string b = std::string("event_path/") + name;
        const double allocs = counter(b, "allocs_per_event");
        const double baseline = counter(b, "allocs_baseline");
        printf("  %-26s %10.3f      baseline %10.0f      goal <= baseline %s\n", name, allocs,
               baseline, verdict(allocs <= baseline));
    }
}

void SummaryReporter::printCalls() const {
    printf("\nOne framework call (microseconds; baseline: one device request to the fake)\n");
    for (const auto& [name, run] : mRuns) {
        if (name.rfind("calls/", 0) != 0) continue;
        const double p99 = counter(name, "p99_us");
        printf("  %-24s p50 %6.2f  p99 %6.2f   request p50 %5.2f  p99 %5.2f   p99 %5.1fx   "
               "goal p99 <= 20 %s\n",
               name.substr(6).c_str(), counter(name, "p50_us"), p99, counter(name, "base_p50_us"),
               counter(name, "base_p99_us"), p99 / counter(name, "base_p99_us"), verdict(p99 <= 20));
    }
}

void SummaryReporter::printActivation() const {
    printf("\nOne USB activation (milliseconds; baseline: a bare sleep of the bridge's pause)\n");
    const double ms = counter("activation/usb", "activation_ms");
    const double pause = counter("activation/usb", "pause_ms");
    printf("  mean %7.2f  worst %7.2f   pause %7.2f   %+6.2f over the pause   goal <= 505 %s\n", ms,
           counter("activation/usb", "worst_ms"), pause, ms - pause, verdict(ms <= 505));
}

void SummaryReporter::printHostRuns() const {
    printf("\nHost executable, --trace=jsonl to /dev/null (baseline: the event path in-process, "
           "and the run of 10^3 events)\n");
    const double inProcess = counter("event_path/status_events", "rate");
    const double smallRss = counter("host/events:1000", "peak_rss_kb");
    for (const char* events : {"1000", "1000000"}) {
        const std::string b = std::string("host/events:") + events;
        const double rate = counter(b, "events_per_s");
        const double rss = counter(b, "peak_rss_kb");
        printf("  %8s events %10.0f /s   %5.1f%% of in-process   peak RSS %6.0f KiB (%+5.0f KiB)",
               events, rate, 100 * rate / inProcess, rss, rss - smallRss);
        if (std::string(events) == "1000000") {
            printf("   goals >= 50000 /s %s, within 1024 KiB %s", verdict(rate >= 50000),
                   verdict(rss - smallRss <= 1024));
        }
        printf("\n");
    }
}

std::string loadAverages() {
    std::ifstream file("/proc/loadavg");
    std::string one, five, fifteen;
    file >> one >> five >> fifteen;
    return one + " " + five + " " + fifteen;
}

}  // namespace bench
