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

// Checks of the interface names, addresses and prefixes that the framework hands over. They
// answer yes or no and log why; the callers turn a no into "Invalid input values\n".

#define LOG_TAG "TetherOffload"

#include <arpa/inet.h>
#include <log/log.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <string.h>

#include "hal/TetherOffloadHal.h"

namespace vendor {
namespace tetheroffload {

namespace {

// Accepted interface-name prefixes. Only the leading `count` characters of each literal are
// compared, so e.g. every name beginning with "ap" passes.
struct IfacePrefix {
    const char* literal;
    size_t count;
};

constexpr IfacePrefix kIfacePrefixes[] = {
        {"wanif", 5}, {"rmnet_data0", 4}, {"dummy0", 4}, {"wlan0", 4}, {"mdbr0", 4}, {"ap0", 2},
};

// inet_pton into a zeroed buffer; the parsed value is not needed.
int parseAddress(int af, const std::string& text) {
    if (af == AF_INET) {
        struct in_addr v4 = {};
        return inet_pton(AF_INET, text.c_str(), &v4);
    }
    struct in6_addr v6 = {};
    return inet_pton(AF_INET6, text.c_str(), &v6);
}

}  // namespace

bool TetherOffloadHal::checkInterface(std::string iface) {
    ALOGI("%s in: %s\n", "checkInterface", iface.c_str());
    if (iface.empty()) return false;
    for (const IfacePrefix& prefix : kIfacePrefixes) {
        if (strncmp(iface.c_str(), prefix.literal, prefix.count) == 0) return true;
    }
    return false;
}

bool TetherOffloadHal::verifyIpAddress(std::string in, FAMILY fam) {
    if (in.empty()) {
        ALOGI("%s in.length() == 0\n", "verifyIpAddress");
        return false;
    }
    int ret;
    switch (fam) {
        case FAMILY_IPV4:
            ret = parseAddress(AF_INET, in);
            break;
        case FAMILY_IPV6:
            ret = parseAddress(AF_INET6, in);
            break;
        case FAMILY_ANY:
            ret = parseAddress(AF_INET, in);
            if (ret != 1) ret = parseAddress(AF_INET6, in);
            break;
        default:
            ALOGI("%s Invalid family\n", "verifyIpAddress");
            return false;
    }
    if (ret != 1) {
        ALOGI("%s Invalid Ip address\n", "verifyIpAddress");
        return false;
    }
    return true;
}

bool TetherOffloadHal::verifyIpAddress(std::vector<std::string> in, FAMILY fam) {
    if (in.empty()) {
        ALOGI("%s in.size() == 0\n", "verifyIpAddress");
        return false;
    }
    for (const std::string& address : in) {
        if (!verifyIpAddress(address, fam)) return false;
    }
    return true;
}

bool TetherOffloadHal::checkPrefix(std::string in, FAMILY fam) {
    if (in.empty()) {
        ALOGI("%s string in is empty\n", "checkPrefix");
        return false;
    }
    // The family is decided on the whole text, mask part included.
    if (fam == FAMILY_ANY) {
        fam = in.find(':') != std::string::npos ? FAMILY_IPV6 : FAMILY_IPV4;
    }
    std::string addr;
    std::string mask;
    if (!findAddrAndMask(in, addr, mask)) {
        ALOGI("%s Faied to find address and mask\n", "checkPrefix");
        return false;
    }
    int maskValue;
    if (mask.empty()) {
        maskValue = fam == FAMILY_IPV6 ? 128 : 32;
    } else {
        maskValue = atoi(mask.c_str());
    }
    if (!isValidMask(maskValue, fam)) {
        ALOGI("%s Invalid mask\n", "checkPrefix");
        return false;
    }
    return verifyIpAddress(addr, fam);
}

bool TetherOffloadHal::checkPrefix(std::vector<std::string> in, FAMILY fam) {
    if (in.empty()) {
        ALOGI("%s in.size() == 0\n", "checkPrefix");
        return false;
    }
    for (const std::string& prefix : in) {
        if (!checkPrefix(prefix, fam)) return false;
    }
    return true;
}

bool TetherOffloadHal::isValidMask(int mask, FAMILY fam) {
    bool valid = mask >= 1;
    if (fam == FAMILY_IPV4 && mask > 32) valid = false;
    if (fam == FAMILY_IPV6 && mask > 128) valid = false;
    if (!valid) {
        ALOGI("%s Invalid input: mask = %d, fam = %d\n", "isValidMask", mask, static_cast<int>(fam));
    }
    return valid;
}

bool TetherOffloadHal::findAddrAndMask(std::string in, std::string& addr, std::string& mask) {
    if (in.empty()) {
        ALOGI("%s string in is empty\n", "findAddrAndMask");
        return false;
    }
    size_t slash = in.find('/');
    if (slash == std::string::npos) {
        addr = in;
        mask.clear();
        return true;
    }
    if (slash == 0) {
        ALOGI("%s Invalid input: %s\n", "findAddrAndMask", in.c_str());
        return false;
    }
    addr = in.substr(0, slash);
    mask = in.substr(slash + 1);
    return true;
}

}  // namespace tetheroffload
}  // namespace vendor
