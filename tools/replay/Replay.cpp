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

#include "Replay.h"

namespace hostreplay {
namespace {

// Reads every line of the input into `reader`; false when reading failed.
bool readAll(LogInput& input, ServiceLogReader* reader) {
    InputLine line;
    while (input.next(&line)) reader->take(line);
    if (!input.error().empty()) return false;
    reader->finish();
    return true;
}

std::string processesOfTheTag(const LogCounts& counts) {
    std::string out;
    for (const auto& [pid, lines] : counts.otherProcesses) {
        out += (out.empty() ? "" : ", ") + std::to_string(pid);
    }
    return out;
}

}  // namespace

int replayLog(LogInput& input, std::optional<int> pid, const ScenarioOutput& output,
              std::string* message) {
    ScenarioWriter gatherer;
    ServiceLogReader first(pid, &gatherer);
    if (!readAll(input, &first)) {
        *message = input.error();
        return kNotReplayed;
    }
    gatherer.finish();
    const LogCounts& counts = first.counts();
    const std::string tag = std::string(" of tag ") + kServiceTag;
    if (counts.logcatLines == 0) {
        *message = input.name() +
                   " is not a log: no line of it is a logcat line (threadtime or brief format)";
        return kNotReplayed;
    }
    if (pid && counts.serviceLines == 0) {
        const std::string others = processesOfTheTag(counts);
        *message = input.name() + ": process " + std::to_string(*pid) + " logs no line" + tag +
                   (others.empty() ? " (no process does)" : " (processes that do: " + others + ")");
        return kNotReplayed;
    }
    if (!input.rewind()) {
        *message = input.error();
        return kNotReplayed;
    }
    if (counts.serviceLines == 0) *message = input.name() + ": no line" + tag + " to replay";

    const ScenarioFacts facts = gatherer.facts();
    ScenarioWriter writer(&facts, output);
    writer.begin(scenarioHeader(counts, input.origin()));
    ServiceLogReader second(counts.pid, &writer);
    if (!readAll(input, &second)) {
        *message = input.error();
        return kNotReplayed;
    }
    writer.finish();
    return kReplayed;
}

}  // namespace hostreplay
