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

// A whole replay: the log read twice, first for what the scenario's header and beginning need,
// then to write the scenario as the lines come.

#pragma once

#include <optional>
#include <string>

#include "LogInput.h"
#include "ScenarioBuilder.h"

namespace hostreplay {

constexpr int kReplayed = 0;
constexpr int kNotReplayed = 2;

// `pid`: the process to replay (else the first that logs under the service's tag). Returns
// kReplayed, or kNotReplayed when the input is no log or holds no line of `pid`; `message` gets
// what to say on standard error (a warning, or why nothing was written), without the tool's name.
int replayLog(LogInput& input, std::optional<int> pid, const ScenarioOutput& output,
              std::string* message);

}  // namespace hostreplay
