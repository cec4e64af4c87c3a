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

// Readers for the values a scenario word can hold. Each leaves its output untouched unless the
// word reads.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace hostrunner {

enum class NumberRead { kOk, kMalformed, kOutOfRange };

// Decimal or 0x hexadecimal, at most `max`; a well-formed number above it is out of range,
// however many digits it has.
NumberRead parseNumber(const std::string& text, uint64_t max, uint64_t* out);

// Dotted IPv4 address, four bytes in network order.
bool parseIpv4(const std::string& text, std::array<uint8_t, 4>* out);

// Hex string, two digits a byte, no separators; "" is no bytes.
bool parseHexBytes(const std::string& text, std::vector<uint8_t>* out);

constexpr uint64_t kMaxErrno = 4095;

// A number from 1 to kMaxErrno, or a symbolic name such as EIO.
NumberRead parseErrno(const std::string& text, int* out);

// The symbolic name of an errno value, or "" when it has none here.
std::string errnoName(int errnum);

// Every errno name parseErrno knows.
std::vector<std::string> errnoNames();

}  // namespace hostrunner
