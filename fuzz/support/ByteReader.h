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

// Reads a fuzz input front to back. Past the end every value reads as zero and every byte string
// as empty, so a short input is still a whole test case.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

namespace fuzzsupport {

class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool empty() const { return mPos >= mSize; }
    uint8_t u8();
    uint16_t u16();  // little-endian, as are the wider ones
    uint32_t u32();
    uint64_t u64();
    std::string bytes(size_t n);  // up to n, fewer at the end

private:
    uint64_t little(size_t width);

    const uint8_t* mData;
    size_t mSize;
    size_t mPos = 0;
};

// One read() on the device: the bytes it returns (their count is its result), or a failure.
struct ModemRead {
    std::vector<uint8_t> bytes;
    int errnum = 0;  // non-zero: read() fails with this errno
};

// One read() of the device: a 16-bit word, then the bytes. A word from 0xF000 up is a failed read
// (errno in its low byte, EIO for 0); otherwise it is the size read() returns, up to 272, and
// that many bytes follow (zeros where the input ends).
ModemRead takeModemRead(ByteReader& in);

}  // namespace fuzzsupport
