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

// How the emulated driver takes a request record from the caller's memory and writes the
// statistics answer back into it.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace hostplatform {

struct StatsAnswer {
    uint64_t rxBytes = 0;
    uint64_t txBytes = 0;
    uint32_t dataLen = 128;
};

// The bytes the driver reads: the header, then data_len payload bytes (at most 256), or the
// whole 256-byte buffer of a statistics request.
std::vector<uint8_t> readRequest(const uint8_t* record);

bool isStatsRequest(const std::vector<uint8_t>& request);

// Rewrites a statistics buffer in place as the driver answers it.
void writeStatsAnswer(uint8_t* record, const StatsAnswer& answer);

}  // namespace hostplatform
