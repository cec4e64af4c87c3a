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

#include "fuzz/support/ByteReader.h"

#include <errno.h>

namespace fuzzsupport {
namespace {

constexpr uint16_t kFailedRead = 0xF000;
constexpr size_t kMaxRead = 272;

}  // namespace

uint64_t ByteReader::little(size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        value |= static_cast<uint64_t>(u8()) << (8 * i);
    }
    return value;
}

uint8_t ByteReader::u8() {
    return empty() ? 0 : mData[mPos++];
}

uint16_t ByteReader::u16() {
    return static_cast<uint16_t>(little(2));
}

uint32_t ByteReader::u32() {
    return static_cast<uint32_t>(little(4));
}

uint64_t ByteReader::u64() {
    return little(8);
}

std::string ByteReader::bytes(size_t n) {
    const size_t available = empty() ? 0 : mSize - mPos;
    const size_t take = n < available ? n : available;
    std::string out(reinterpret_cast<const char*>(mData + mPos), take);
    mPos += take;
    return out;
}

ModemRead takeModemRead(ByteReader& in) {
    ModemRead read;
    const uint16_t word = in.u16();
    if (word >= kFailedRead) {
        read.errnum = (word & 0xff) != 0 ? (word & 0xff) : EIO;
        return read;
    }
    const size_t size = word % (kMaxRead + 1);
    const std::string content = in.bytes(size);
    read.bytes.assign(content.begin(), content.end());
    read.bytes.resize(size, 0);
    return read;
}

}  // namespace fuzzsupport
