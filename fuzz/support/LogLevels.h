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

// The level each of the service's log lines must have, told from its text by the rules alone:
// ERROR where the device, the data-path client, an allocation, a file, the agent or the framework
// fails (and for two lines of the client's start), WARN only for SIGPIPE left unblocked, INFO for
// everything else: the flow of the calls and their refusals.

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace fuzzsupport {

// ANDROID_LOG_INFO, ANDROID_LOG_WARN or ANDROID_LOG_ERROR.
int expectedPriority(const std::string& line);

// "" when every (priority, text) has its level, else the first that has not.
std::string levelProblem(const std::vector<std::pair<int, std::string>>& logs);

}  // namespace fuzzsupport
