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

// Argument checks: checkInterface, verifyIpAddress, checkPrefix, findAddrAndMask and isValidMask
// of the HAL on arbitrary strings, each answer compared with an independent reading of the same
// rules (support/ReferenceChecks). A disagreement is a finding, as is any sanitizer report or a
// line logged at another level than INFO.
//
// Input: a byte choosing the check, a byte choosing the family (b % 5: IPv4, IPv6, any, and two
// values that are no family), then the argument: the rest of the input as one string, or split
// at '\n' for the list forms; isValidMask takes four bytes as its mask.

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "fuzz/support/ByteReader.h"
#include "fuzz/support/Finding.h"
#include "fuzz/support/FuzzWorld.h"
#include "fuzz/support/LogLevels.h"
#include "fuzz/support/ReferenceChecks.h"
#include "hal/TetherOffloadHal.h"

using vendor::tetheroffload::TetherOffloadHal;

namespace {

TetherOffloadHal* gHal = nullptr;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    if (text.empty()) return out;
    size_t start = 0;
    for (size_t nl; (nl = text.find('\n', start)) != std::string::npos; start = nl + 1) {
        out.push_back(text.substr(start, nl - start));
    }
    out.push_back(text.substr(start));
    return out;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\') {
            out += static_cast<char>(c);
        } else {
            char esc[5];
            snprintf(esc, sizeof(esc), "\\x%02x", c);
            out += esc;
        }
    }
    return out + "\"";
}

void agree(const char* check, const std::string& arg, int32_t family, bool service, bool rules) {
    if (service == rules) return;
    fuzzsupport::finding(std::string(check) + "(" + quoted(arg) + ", family " +
                         std::to_string(family) + ") answered " + (service ? "true" : "false") +
                         ", the rules say " + (rules ? "true" : "false"));
}

// Outputs are replaced on success and untouched on failure.
void checkSplit(const std::string& text) {
    const std::string untouched = "\x01untouched";
    std::string addr = untouched, mask = untouched;
    std::string refAddr = untouched, refMask = untouched;
    const bool service = gHal->findAddrAndMask(text, addr, mask);
    const bool rules = reference::splitPrefix(text, &refAddr, &refMask);
    agree("findAddrAndMask", text, -1, service, rules);
    if (addr != refAddr || mask != refMask) {
        fuzzsupport::finding("findAddrAndMask(" + quoted(text) + ") gave " + quoted(addr) +
                             " and " + quoted(mask) + ", the rules say " + quoted(refAddr) +
                             " and " + quoted(refMask));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    fuzzsupport::prepareWorld();
    // The checks read no field; one object serves every input.
    gHal = new TetherOffloadHal();
    gHal->incStrong(nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::ByteReader in(data, size);
    const uint8_t which = in.u8();
    const int32_t family = in.u8() % 5;
    const auto fam = static_cast<TetherOffloadHal::FAMILY>(family);
    switch (which % 7) {
        case 0: {
            const std::string s = in.bytes(size);
            agree("checkInterface", s, family, gHal->checkInterface(s),
                  reference::acceptsInterface(s));
            break;
        }
        case 1: {
            const std::string s = in.bytes(size);
            agree("verifyIpAddress", s, family, gHal->verifyIpAddress(s, fam),
                  reference::validAddress(s, family));
            break;
        }
        case 2: {
            const std::string s = in.bytes(size);
            agree("verifyIpAddress[list]", s, family, gHal->verifyIpAddress(lines(s), fam),
                  reference::validAddresses(lines(s), family));
            break;
        }
        case 3: {
            const std::string s = in.bytes(size);
            agree("checkPrefix", s, family, gHal->checkPrefix(s, fam),
                  reference::validPrefix(s, family));
            break;
        }
        case 4: {
            const std::string s = in.bytes(size);
            agree("checkPrefix[list]", s, family, gHal->checkPrefix(lines(s), fam),
                  reference::validPrefixes(lines(s), family));
            break;
        }
        case 5:
            checkSplit(in.bytes(size));
            break;
        case 6: {
            const int mask = static_cast<int>(in.u32());
            agree("isValidMask", std::to_string(mask), family, gHal->isValidMask(mask, fam),
                  reference::validMask(mask, family));
            break;
        }
    }
    // The checks' lines tell the flow of a call: INFO, whatever they reject.
    const std::string level =
            fuzzsupport::levelProblem(fuzzsupport::CrossingLog::instance().take().logs);
    if (!level.empty()) fuzzsupport::finding(level);
    return 0;
}
