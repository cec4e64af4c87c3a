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

// Values of the trace in words for people: the framework's event names and record bytes in hex.
// The records themselves are put into words by describeVexaRequest and describeVexaEvent.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hostrunner {

// The callback event names of the framework, e.g. "OFFLOAD_STARTED".
std::string callbackEventName(uint32_t event);

// Lowercase hex, two digits a byte.
std::string toHex(const std::vector<uint8_t>& bytes);

// Like toHex, with a run of zero bytes at the end shortened to "...+N zero bytes".
std::string toShortHex(const std::vector<uint8_t>& bytes);

}  // namespace hostrunner
