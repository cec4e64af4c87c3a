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

// What the framework must hear for one read() of the device, worked out from the device protocol
// and the event thread's rules alone: the framing checks, the clamp of data_len to 256, the
// dispatch table, and the slot and protocol mapping of a connection update. The fuzz targets
// compare the service's callbacks with it, so that a record used beyond the bytes it came with,
// or a value sent that the framework does not define, is a finding.

#pragma once

#include <string>
#include <vector>

#include "fuzz/support/ByteReader.h"

namespace fuzzsupport {

enum class CallbackVersion { kNone, k1_0, k1_1 };

// What the framework heard, in words: "onEvent 1", "onEvent_1_1 6",
// "updateTimeout 192.168.43.2:80 8.8.8.8:53 17". `version` is that of the registered relay,
// kNone when none is.
std::vector<std::string> expectedCallbacks(const ModemRead& read, CallbackVersion version);

// False with a reason when an entry carries a value the framework does not define
// for that call and callback version.
bool definedByFramework(const std::string& entry, CallbackVersion version, std::string* why);

}  // namespace fuzzsupport
