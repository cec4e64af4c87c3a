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

#include "fuzz/support/ReferenceChecks.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdlib.h>

namespace reference {
namespace {

constexpr int32_t kIpv4 = 0;
constexpr int32_t kIpv6 = 1;
constexpr int32_t kAny = 2;

bool parses(int af, const std::string& text) {
    unsigned char buf[sizeof(struct in6_addr)];
    return inet_pton(af, text.c_str(), buf) == 1;
}

bool startsWith(const std::string& text, const char* head) {
    return std::string(text.c_str()).rfind(head, 0) == 0;
}

}  // namespace

// Modem, data, dummy, Wi-Fi, bridge and hotspot interfaces, told by their first letters.
bool acceptsInterface(const std::string& name) {
    if (name.empty()) return false;
    for (const char* head : {"wanif", "rmne", "dumm", "wlan", "mdbr", "ap"}) {
        if (startsWith(name, head)) return true;
    }
    return false;
}

bool validAddress(const std::string& text, int32_t family) {
    if (text.empty()) return false;
    switch (family) {
        case kIpv4:
            return parses(AF_INET, text);
        case kIpv6:
            return parses(AF_INET6, text);
        case kAny:
            return parses(AF_INET, text) || parses(AF_INET6, text);
        default:
            return false;
    }
}

bool validAddresses(const std::vector<std::string>& texts, int32_t family) {
    if (texts.empty()) return false;
    for (const std::string& t : texts) {
        if (!validAddress(t, family)) return false;
    }
    return true;
}

bool validMask(int mask, int32_t family) {
    if (mask < 1) return false;
    if (family == kIpv4) return mask <= 32;
    if (family == kIpv6) return mask <= 128;
    return true;
}

bool splitPrefix(const std::string& text, std::string* addr, std::string* mask) {
    if (text.empty()) return false;
    const size_t slash = text.find('/');
    if (slash == 0) return false;
    *addr = text.substr(0, slash);
    *mask = slash == std::string::npos ? "" : text.substr(slash + 1);
    return true;
}

// atoi() is strtol() in base 10 narrowed to int, on glibc and on bionic alike.
bool validPrefix(const std::string& text, int32_t family) {
    if (family == kAny) family = text.find(':') != std::string::npos ? kIpv6 : kIpv4;
    std::string addr;
    std::string mask;
    if (!splitPrefix(text, &addr, &mask)) return false;
    const int maskValue = mask.empty() ? (family == kIpv6 ? 128 : 32)
                                       : static_cast<int>(strtol(mask.c_str(), nullptr, 10));
    return validMask(maskValue, family) && validAddress(addr, family);
}

bool validPrefixes(const std::vector<std::string>& texts, int32_t family) {
    if (texts.empty()) return false;
    for (const std::string& t : texts) {
        if (!validPrefix(t, family)) return false;
    }
    return true;
}

}  // namespace reference
