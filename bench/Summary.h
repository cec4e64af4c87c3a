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

// Google Benchmark's console output, then a summary: each figure beside its baseline from the
// same run, the ratio, and the goal it is held to.

#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace bench {

class SummaryReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal.
    SummaryReporter();

    void ReportRuns(const std::vector<Run>& runs) override;

    // Prints the summary of what ran; `load` describes the machine's load meanwhile.
    void printSummary(const std::string& load) const;

private:
    // A counter of a benchmark that ran without error, or NaN.
    double counter(const std::string& benchmark, const std::string& name) const;

    void printEventPath() const;
    void printCalls() const;
    void printActivation() const;
    void printHostRuns() const;

    std::map<std::string, Run> mRuns;
};

// The load averages of the machine, as /proc/loadavg gives them.
std::string loadAverages();

}  // namespace bench
