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

#include "VexaDecoder.h"

#include "datapath/vexa_protocol.h"

namespace hostrunner {

std::string callbackEventName(uint32_t event) {
    const char* const names[] = {
            "OFFLOAD_STARTED",
            "OFFLOAD_STOPPED_ERROR",
            "OFFLOAD_STOPPED_UNSUPPORTED",
            "OFFLOAD_SUPPORT_AVAILABLE",
            "OFFLOAD_STOPPED_LIMIT_REACHED",
            "OFFLOAD_WARNING_REACHED",
    };
    if (event >= 1 && event <= 6) return names[event - 1];
    return std::to_string(event);
}

std::string toHex(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 2);
    for (uint8_t b : bytes) {
        out += kDigits[b >> 4];
        out += kDigits[b & 0xf];
    }
    return out;
}

std::string toShortHex(const std::vector<uint8_t>& bytes) {
    size_t end = bytes.size();
    while (end > sizeof(vexa_common_hdr_t) && bytes[end - 1] == 0) --end;
    size_t zeros = bytes.size() - end;
    // A few zeros read better as bytes than as a note.
    if (zeros < 8) return toHex(bytes);
    return toHex(std::vector<uint8_t>(bytes.begin(), bytes.begin() + end)) + "...+" +
           std::to_string(zeros) + " zero bytes";
}

}  // namespace hostrunner
