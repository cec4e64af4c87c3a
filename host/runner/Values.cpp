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

#include "Values.h"

#include <arpa/inet.h>
#include <errno.h>

#include <cstring>

namespace hostrunner {
namespace {

struct ErrnoName {
    const char* name;
    int value;
};

constexpr ErrnoName kErrnoNames[] = {
        {"EPERM", EPERM},           {"ENOENT", ENOENT},
        {"EINTR", EINTR},           {"EIO", EIO},
        {"ENXIO", ENXIO},           {"E2BIG", E2BIG},
        {"EBADF", EBADF},           {"EAGAIN", EAGAIN},
        {"ENOMEM", ENOMEM},         {"EACCES", EACCES},
        {"EFAULT", EFAULT},         {"EBUSY", EBUSY},
        {"EEXIST", EEXIST},         {"ENODEV", ENODEV},
        {"EINVAL", EINVAL},         {"ENOSPC", ENOSPC},
        {"EPIPE", EPIPE},           {"ERANGE", ERANGE},
        {"ENOTTY", ENOTTY},         {"ENOSYS", ENOSYS},
        {"ETIMEDOUT", ETIMEDOUT},   {"ENODATA", ENODATA},
        {"EPROTO", EPROTO},         {"EOVERFLOW", EOVERFLOW},
        {"ENOTSUP", ENOTSUP},       {"ENETDOWN", ENETDOWN},
        {"ECONNRESET", ECONNRESET}, {"ESHUTDOWN", ESHUTDOWN},
};

int digitValue(char c, int base) {
    int v = -1;
    if (c >= '0' && c <= '9') v = c - '0';
    if (c >= 'a' && c <= 'f') v = c - 'a' + 10;
    if (c >= 'A' && c <= 'F') v = c - 'A' + 10;
    return v < base ? v : -1;
}

}  // namespace

NumberRead parseNumber(const std::string& text, uint64_t max, uint64_t* out) {
    int base = 10;
    size_t pos = 0;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        pos = 2;
    }
    if (pos >= text.size()) return NumberRead::kMalformed;
    uint64_t value = 0;
    bool tooLarge = false;
    // Read to the end even past the range, so that "99999999999999999999x" is malformed.
    for (; pos < text.size(); ++pos) {
        const int digit = digitValue(text[pos], base);
        if (digit < 0) return NumberRead::kMalformed;
        const uint64_t d = static_cast<uint64_t>(digit);
        if (d > max || value > (max - d) / static_cast<uint64_t>(base)) {
            tooLarge = true;
        } else {
            value = value * static_cast<uint64_t>(base) + d;
        }
    }
    if (tooLarge) return NumberRead::kOutOfRange;
    *out = value;
    return NumberRead::kOk;
}

bool parseIpv4(const std::string& text, std::array<uint8_t, 4>* out) {
    struct in_addr addr;
    if (inet_pton(AF_INET, text.c_str(), &addr) != 1) return false;
    std::memcpy(out->data(), &addr, 4);
    return true;
}

bool parseHexBytes(const std::string& text, std::vector<uint8_t>* out) {
    if (text.size() % 2 != 0) return false;
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
        int high = digitValue(text[i], 16);
        int low = digitValue(text[i + 1], 16);
        if (high < 0 || low < 0) return false;
        bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    *out = bytes;
    return true;
}

NumberRead parseErrno(const std::string& text, int* out) {
    for (const ErrnoName& entry : kErrnoNames) {
        if (text == entry.name) {
            *out = entry.value;
            return NumberRead::kOk;
        }
    }
    uint64_t value = 0;
    const NumberRead read = parseNumber(text, kMaxErrno, &value);
    if (read != NumberRead::kOk) return read;
    if (value == 0) return NumberRead::kOutOfRange;
    *out = static_cast<int>(value);
    return NumberRead::kOk;
}

std::string errnoName(int errnum) {
    for (const ErrnoName& entry : kErrnoNames) {
        if (entry.value == errnum) return entry.name;
    }
    return "";
}

std::vector<std::string> errnoNames() {
    std::vector<std::string> names;
    for (const ErrnoName& entry : kErrnoNames) names.push_back(entry.name);
    return names;
}

}  // namespace hostrunner
