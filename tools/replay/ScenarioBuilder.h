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

// The scenario a service log replays as: the log's framework calls and modem events in their
// order, each preceded by the changes of the world it needs, with every line that could not be
// placed kept as a comment at its place.

#pragma once

#include <string>

#include "ServiceLog.h"

namespace hostreplay {

// `source` names the log in the scenario's first comment.
std::string buildScenario(const ServiceLog& log, const std::string& source);

}  // namespace hostreplay
