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

// Whether a request record the service sent to the device is well formed: the header (mcode,
// status 2, a known message with its app type and data_len), interface names that end in NUL
// within their 16 bytes with only zeros after it, a zeroed statistics buffer, and positive
// timeouts.

#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace fuzzsupport {

// "" when well formed, else what is wrong. `request` is what the driver read.
std::string requestProblem(const std::vector<uint8_t>& request);

uint32_t requestMsg(const std::vector<uint8_t>& request);
uint32_t requestApp(const std::vector<uint8_t>& request);

// Whether a line handed to the network agent is one of the service's six command lines, each
// with the blank the channel appends.
bool isServiceCommand(const std::string& line);

}  // namespace fuzzsupport
