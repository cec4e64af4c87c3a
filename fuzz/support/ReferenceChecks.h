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

// The argument rules of the HAL written out a second time, straight from their description and
// with libc's inet_pton and strtol used directly, so that the fuzz target can compare each answer
// of the service's checks with an independent one. Strings are taken as the checks take them:
// the size of the whole string where a rule looks at all of it (emptiness, ':' and '/'), the text
// up to the first NUL where libc reads it.

#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace reference {

// 0 IPv4, 1 IPv6, 2 either; any other value is no family.
bool acceptsInterface(const std::string& name);
bool validAddress(const std::string& text, int32_t family);
bool validAddresses(const std::vector<std::string>& texts, int32_t family);
bool validMask(int mask, int32_t family);
bool validPrefix(const std::string& text, int32_t family);
bool validPrefixes(const std::vector<std::string>& texts, int32_t family);

// Address and mask texts of a prefix; false (outputs untouched) when it is empty or starts with '/'.
bool splitPrefix(const std::string& text, std::string* addr, std::string* mask);

}  // namespace reference
