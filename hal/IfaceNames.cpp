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

#include "hal/IfaceNames.h"

#include <string.h>

namespace vendor {
namespace tetheroffload {

// Only the leading characters count, so "mdbr1" is a USB downstream and "apple" a hotspot.
bool isModemIface(const std::string& name) {
    return strncmp(name.c_str(), "wanif", 5) == 0;
}

bool isUsbDownstream(const std::string& name) {
    return strncmp(name.c_str(), "mdbr0", 4) == 0;
}

bool isWifiDownstream(const std::string& name) {
    return strncmp(name.c_str(), "ap0", 2) == 0;
}

void fillIfaceName(char (&buf)[VEXA_IFNAME_SIZE], const std::string& name) {
    memset(buf, 0, sizeof(buf));
    strncpy(buf, name.c_str(), sizeof(buf) - 1);
    buf[sizeof(buf) - 1] = '\0';
}

}  // namespace tetheroffload
}  // namespace vendor
