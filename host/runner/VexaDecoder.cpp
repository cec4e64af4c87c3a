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

#include <cstring>
#include <sstream>

namespace hostrunner {
namespace {

constexpr size_t kHeaderSize = 16;
constexpr uint16_t kMcode = 0x2454;

struct Header {
    uint16_t mcode = 0;
    uint16_t status = 0;
    uint32_t app = 0;
    uint32_t msg = 0;
    uint32_t dataLen = 0;
};

template <typename T>
T get(const std::vector<uint8_t>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

Header readHeader(const std::vector<uint8_t>& bytes) {
    return Header{get<uint16_t>(bytes, 0), get<uint16_t>(bytes, 2), get<uint32_t>(bytes, 4),
                  get<uint32_t>(bytes, 8), get<uint32_t>(bytes, 12)};
}

// A NUL-terminated name in a 16-byte field.
std::string ifname(const std::vector<uint8_t>& bytes, size_t offset) {
    std::string name;
    for (size_t i = offset; i < offset + 16 && i < bytes.size() && bytes[i] != 0; ++i) {
        name += static_cast<char>(bytes[i]);
    }
    return name;
}

std::string appName(uint32_t app) {
    switch (app) {
        case 0:
            return "USB";
        case 1:
            return "WH";
        case 255:
            return "ALL";
        default:
            return std::to_string(app);
    }
}

const char* const kRequestNames[] = {
        "ENABLE",         "DISABLE",        "ACTIVATE",       "DEACTIVATE",
        "GET_DATA_USAGE", "SET_DATA_LIMIT", "SET_CT_TIMEOUT", "SET_WARNING_AND_LIMIT",
};

const char* const kEventNames[] = {
        "unknown",           "STARTED",
        "STOPPED_ERROR",     "STOPPED_UNSUPPORTED",
        "SUPPORT_AVAILABLE", "STOPPED_LIMIT_REACHED",
        "CONNECT_UPDATE",    "WARNING_REACHED",
};

std::string requestPayload(const Header& h, const std::vector<uint8_t>& bytes) {
    std::ostringstream out;
    switch (h.msg) {
        case 2:
            out << " up=" << ifname(bytes, 16) << " down=" << ifname(bytes, 32);
            break;
        case 5:
            out << " iface=" << ifname(bytes, 16) << " limit=" << get<uint64_t>(bytes, 32);
            break;
        case 6:
            out << " udp=" << get<int32_t>(bytes, 16) << " tcp=" << get<int32_t>(bytes, 20);
            break;
        case 7:
            out << " iface=" << ifname(bytes, 16) << " limit=" << get<uint64_t>(bytes, 32)
                << " warning=" << get<uint64_t>(bytes, 40);
            break;
        default:
            break;
    }
    return out.str();
}

std::string ipv4(const std::vector<uint8_t>& bytes, size_t offset) {
    std::ostringstream out;
    for (size_t i = 0; i < 4; ++i) {
        out << (i ? "." : "") << static_cast<unsigned>(get<uint8_t>(bytes, offset + i));
    }
    return out.str();
}

std::string connUpdate(const std::vector<uint8_t>& bytes) {
    constexpr size_t p = kHeaderSize;
    std::ostringstream out;
    for (size_t slot = 0; slot < 3; ++slot) {
        out << " " << ipv4(bytes, p + 4 * slot) << ":" << get<uint16_t>(bytes, p + 12 + 2 * slot);
    }
    out << " proto=" << static_cast<unsigned>(get<uint8_t>(bytes, p + 18))
        << " dst_nat=" << static_cast<unsigned>(get<uint8_t>(bytes, p + 24));
    return out.str();
}

}  // namespace

std::string describeRequest(const std::vector<uint8_t>& bytes) {
    if (bytes.size() < kHeaderSize) return "short request";
    Header h = readHeader(bytes);
    std::ostringstream out;
    out << (h.msg < 8 ? kRequestNames[h.msg] : "msg " + std::to_string(h.msg))
        << " app=" << appName(h.app) << " len=" << h.dataLen;
    if (h.mcode != kMcode) out << " mcode=0x" << std::hex << h.mcode << std::dec;
    if (h.status != 2) out << " status=" << h.status;
    out << requestPayload(h, bytes);
    return out.str();
}

std::string describeEvent(long ret, const std::vector<uint8_t>& bytes) {
    if (ret < static_cast<long>(kHeaderSize)) return "short record";
    Header h = readHeader(bytes);
    std::ostringstream out;
    out << (h.status >= 1 && h.status <= 7 ? kEventNames[h.status]
                                           : "unknown(" + std::to_string(h.status) + ")")
        << " app=" << h.app << " msg=" << h.msg << " len=" << h.dataLen;
    if (h.mcode != kMcode) out << " bad mcode=0x" << std::hex << h.mcode << std::dec;
    if (h.status == 6 && bytes.size() >= kHeaderSize + 28) out << connUpdate(bytes);
    return out.str();
}

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
    while (end > kHeaderSize && bytes[end - 1] == 0) --end;
    size_t zeros = bytes.size() - end;
    // A few zeros read better as bytes than as a note.
    if (zeros < 8) return toHex(bytes);
    return toHex(std::vector<uint8_t>(bytes.begin(), bytes.begin() + end)) + "...+" +
           std::to_string(zeros) + " zero bytes";
}

}  // namespace hostrunner
