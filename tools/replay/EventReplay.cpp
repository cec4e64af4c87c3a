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

#include "EventReplay.h"

#include <array>
#include <cstdint>
#include <string>

#include "EventRecords.h"
#include "Values.h"
#include "VexaDecoder.h"
#include "datapath/vexa_protocol.h"

namespace hostreplay {
namespace {

using Lines = std::vector<const ServiceLine*>;
using Key = Requirement::Key;

constexpr long long kHeaderSize = sizeof(vexa_common_hdr_t);
constexpr long long kConnReadSize = 44;  // header and the 28-byte update
constexpr long long kMaxStatus = 0xffff;
constexpr uint64_t kMsgRange = 1ull << 32;

// Everything the lines of one pass tell.
struct Pass {
    bool readFailed = false;
    long long size = -1;  // what read() returned
    bool tooShort = false;
    bool payloadBig = false;
    bool payloadShort = false;
    bool parsed = false;  // the parser named the status
    long long status = 0;
    bool badMcode = false;
    bool received = false;  // dispatched to the registered relay
    uint64_t msg = 0;
    bool wrongLength = false;
    std::vector<std::string> addresses;
    const ServiceMessage* natLine = nullptr;
    std::string failedOp;  // the callback method that failed in transport
};

void take(const ServiceMessage& m, Pass* pass) {
    switch (m.id) {
        case Msg::kReadFail:
            pass->readFailed = true;
            break;
        case Msg::kReadSize:
            pass->size = numberField(m, 0);
            break;
        case Msg::kReadShort:
            pass->tooShort = true;
            break;
        case Msg::kPayloadBig:
            pass->payloadBig = true;
            break;
        case Msg::kPayloadShort:
            pass->payloadShort = true;
            break;
        case Msg::kNotRegistered:
        case Msg::kBadMcode:
            pass->parsed = true;
            pass->status = numberField(m, 0);
            pass->badMcode = m.id == Msg::kBadMcode;
            break;
        case Msg::kReceived:
            pass->parsed = pass->received = true;
            pass->status = numberField(m, 0);
            // Logged with %d: a large value shows negative.
            pass->msg =
                    static_cast<uint64_t>(numberField(m, 1) + static_cast<long long>(kMsgRange)) %
                    kMsgRange;
            break;
        case Msg::kConnWrongLength:
            pass->wrongLength = true;
            break;
        case Msg::kConnAddress:
            pass->addresses.push_back(textField(m, 0));
            break;
        case Msg::kConnDstNat:
        case Msg::kConnNoDstNat:
            pass->natLine = &m;
            break;
        case Msg::kCallbackFailed:
            pass->failedOp = textField(m, 0);
            break;
        default:
            break;
    }
}

std::string statusWord(long long status) {
    static const char* const kNames[] = {
            "STARTED",           "STOPPED_ERROR",         "STOPPED_UNSUPPORTED",
            "SUPPORT_AVAILABLE", "STOPPED_LIMIT_REACHED", "CONNECT_UPDATE",
            "WARNING_REACHED"};
    if (status >= 1 && status <= 7) return kNames[status - 1];
    return std::to_string(status);
}

bool isConnUpdate(const Pass& p) {
    return p.received && p.status == 6;
}

// The four bytes of an address printed as one little-endian word.
std::string dotted(uint32_t raw) {
    return std::to_string(raw & 0xff) + "." + std::to_string((raw >> 8) & 0xff) + "." +
           std::to_string((raw >> 16) & 0xff) + "." + std::to_string(raw >> 24);
}

// The update's fields the debug lines tell; a user build tells none.
hostrunner::ConnFields connFields(const Pass& p, Step* step) {
    hostrunner::ConnFields conn;
    if (p.natLine != nullptr) {
        const ServiceMessage& m = *p.natLine;
        const bool dstNat = m.id == Msg::kConnDstNat;
        std::array<uint8_t, 4>* src = dstNat ? &conn.ip1 : &conn.ip0;
        std::array<uint8_t, 4>* dst = dstNat ? &conn.ip2 : &conn.ip1;
        hostrunner::parseIpv4(dotted(static_cast<uint32_t>(numberField(m, 0, 16))), src);
        hostrunner::parseIpv4(dotted(static_cast<uint32_t>(numberField(m, 2, 16))), dst);
        (dstNat ? conn.port1 : conn.port0) = static_cast<uint16_t>(numberField(m, 1, 16));
        (dstNat ? conn.port2 : conn.port1) = static_cast<uint16_t>(numberField(m, 3, 16));
        conn.dstNat = dstNat ? 1 : 0;
        step->picks.push_back(dstNat ? "ip0, port0 and the protocol are not logged"
                                     : "ip2, port2 and the protocol are not logged");
    } else if (p.addresses.size() == 2 && hostrunner::parseIpv4(p.addresses[0], &conn.ip0) &&
               hostrunner::parseIpv4(p.addresses[1], &conn.ip1)) {
        step->picks.push_back("the ports, dst_nat and the protocol are not in the log");
    } else {
        step->picks.push_back("a user build logs no address, port or protocol");
    }
    return conn;
}

std::string ipWord(const char* name, const std::array<uint8_t, 4>& ip) {
    return std::string(" ") + name + "=" + std::to_string(ip[0]) + "." + std::to_string(ip[1]) +
           "." + std::to_string(ip[2]) + "." + std::to_string(ip[3]);
}

std::string connCommand(const hostrunner::ConnFields& c) {
    std::string command = "modem conn";
    if (c.dstNat != 0) command += " dst_nat=1";
    if (c.ip0 != std::array<uint8_t, 4>{}) command += ipWord("ip0", c.ip0);
    if (c.port0 != 0) command += " port0=" + std::to_string(c.port0);
    if (c.ip1 != std::array<uint8_t, 4>{}) command += ipWord("ip1", c.ip1);
    if (c.port1 != 0) command += " port1=" + std::to_string(c.port1);
    if (c.ip2 != std::array<uint8_t, 4>{}) command += ipWord("ip2", c.ip2);
    if (c.port2 != 0) command += " port2=" + std::to_string(c.port2);
    return command;
}

// A record the read cut short or the framing dropped: only its size is logged.
void droppedRecord(const Pass& p, Step* step) {
    step->command = "modem event 0";
    if (p.payloadShort) {
        step->command += " len=" + std::to_string(p.payloadBig ? 300 : p.size - kHeaderSize + 1);
    }
    step->command += " read=" + std::to_string(p.size);
    step->picks.push_back("only the size of the record is logged");
}

void parsedRecord(const Pass& p, Step* step) {
    long long status = p.status;
    if (status < 0 || status > kMaxStatus) {
        step->picks.push_back("the logged status " + std::to_string(status) + " cannot be sent");
        status = 0;
    }
    const bool conn = isConnUpdate(p) && !p.badMcode && !p.wrongLength && !p.payloadBig;
    if (conn && p.size == kConnReadSize && p.msg == 0) {
        step->command = connCommand(connFields(p, step));
        return;
    }
    std::string command = "modem event " + statusWord(status);
    if (p.badMcode) command += " mcode=0";
    if (p.msg != 0) command += " msg=" + std::to_string(p.msg);
    long long payloadSize = 0;
    if (conn) {
        const std::vector<uint8_t> payload = hostrunner::buildConnPayload(connFields(p, step));
        command += " payload=" + hostrunner::toHex(payload);
        payloadSize = static_cast<long long>(payload.size());
    } else if (p.payloadBig) {
        command += " len=300";
        step->picks.push_back("data_len is not logged, only that it was above 256");
    } else if (isConnUpdate(p) && p.wrongLength) {
        step->picks.push_back("data_len is not logged, only that it was not 28");
    } else if (p.size > kHeaderSize) {
        step->picks.push_back("the payload is not logged");
    }
    if (p.size != kHeaderSize + payloadSize) command += " read=" + std::to_string(p.size);
    step->command = command;
}

// The framework the delivery met, and the build type that decided the address lines.
void deliveryNeeds(const Pass& p, Step* step) {
    const bool delivered = p.received && !p.badMcode &&
                           ((p.status >= 1 && p.status <= 5) || p.status == 7 ||
                            (p.status == 6 && !p.wrongLength));
    if (!delivered) return;
    step->need(Key::kFramework, p.failedOp.empty() ? "framework alive" : "framework dead");
    if (p.failedOp == "onEvent") step->versionClue = "1.0";
    if (p.failedOp == "onEvent_1_1") step->versionClue = "1.1";
    if (p.status != 6) return;
    if (p.natLine != nullptr || !p.addresses.empty()) {
        step->need(Key::kBuildType, "prop ro.build.type userdebug",
                   "or eng: the log shows a debug build");
    } else {
        step->need(Key::kBuildType, "prop ro.build.type user");
    }
}

}  // namespace

Step replayEvent(const Lines& lines) {
    Step step;
    step.lineNo = lines.front()->lineNo;
    Pass pass;
    for (const ServiceLine* line : lines) {
        if (line->message) take(*line->message, &pass);
    }
    const long long maxRead = static_cast<long long>(hostrunner::kMaxEventRead);
    if (pass.size > maxRead) {
        step.picks.push_back("the logged size " + std::to_string(pass.size) +
                             " is more than a read returns");
        pass.size = maxRead;
    }
    if (pass.readFailed || pass.size < 0) {
        step.command = "modem readfail EIO";
        step.picks.push_back("the errno is not logged");
    } else if (pass.tooShort || pass.payloadShort) {
        droppedRecord(pass, &step);
    } else if (pass.parsed && pass.size >= kHeaderSize) {
        // Only a relay that initOffload registered gets past the first check.
        step.initialised =
                pass.received || pass.badMcode ? Step::Initialised::kYes : Step::Initialised::kNo;
        parsedRecord(pass, &step);
        deliveryNeeds(pass, &step);
    } else {
        step.notes.push_back(Note{step.lineNo, "how this read ended is not in the log"});
    }
    return step;
}

}  // namespace hostreplay
