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

// Interface names as the HAL tells them apart by their leading characters, and the fixed-size
// name buffers in which they travel to the data-path client.

#pragma once

#include <string>

#include "datapath/vexa_protocol.h"

namespace vendor {
namespace tetheroffload {

// A modem (cellular) interface: the name begins with "wanif".
bool isModemIface(const std::string& name);

// The USB downstream is the bridge: the name begins with "mdbr".
bool isUsbDownstream(const std::string& name);

// A Wi-Fi hotspot downstream: the name begins with "ap".
bool isWifiDownstream(const std::string& name);

// Zero-fills `buf` and copies at most 15 characters of `name`; the last byte is always NUL.
void fillIfaceName(char (&buf)[VEXA_IFNAME_SIZE], const std::string& name);

}  // namespace tetheroffload
}  // namespace vendor
