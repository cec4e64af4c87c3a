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

// The two things a fuzz target needs from the platform that differ between the host and a phone:
// where the service's log lines go, and the build type that decides whether addresses are logged.

#pragma once

#include <functional>
#include <string>

namespace fuzzsupport {

// Log lines are formatted as on the device and then dropped, after `observer` (if any) saw the
// message text.
using LogObserver = std::function<void(const char* message)>;
void silenceLog(LogObserver observer = nullptr);

// "user", "userdebug", ...; where the property cannot be set (a phone), nothing changes.
void setBuildType(const std::string& type);

}  // namespace fuzzsupport
