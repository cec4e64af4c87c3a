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

#include "WorldClues.h"

#include <errno.h>

#include <string>

#include "Values.h"

namespace hostreplay {
namespace {

using Key = Requirement::Key;

constexpr int kMaxErrno = 4095;

void needIoctlFailure(long long errnum, Step* step) {
    if (errnum < 1 || errnum > kMaxErrno) {
        step->need(Key::kIoctl, "modem ioctl fail EIO",
                   "the log's errno " + std::to_string(errnum) + " cannot be set here");
        return;
    }
    const std::string name = hostrunner::errnoName(static_cast<int>(errnum));
    step->need(Key::kIoctl, "modem ioctl fail " + (name.empty() ? std::to_string(errnum) : name));
}

void deviceClue(const ServiceMessage& m, Step* step) {
    switch (m.id) {
        case Msg::kCmdOk:
            step->need(Key::kIoctl, "modem ioctl ok");
            break;
        case Msg::kRequestOk:
            step->need(Key::kIoctl, "modem ioctl ok");
            if (textField(m, 0) == "getDataUsage") {
                step->need(Key::kStats, "modem stats 0 0",
                           "the forwarded byte counts are not logged");
            }
            break;
        case Msg::kCmdFail:
            needIoctlFailure(numberField(m, 2), step);
            break;
        case Msg::kRequestFail:
            needIoctlFailure(numberField(m, 2), step);
            break;
        case Msg::kStatsLength:
            step->need(Key::kIoctl, "modem ioctl ok");
            step->need(Key::kStats, "modem stats 0 0 len=0",
                       "the answer's data_len is not logged, only that it was not 128");
            break;
        case Msg::kNoDevice:
            step->deviceAbsent = true;
            break;
        default:
            break;
    }
}

// One sendTimeoutValue reads both files, then logs the values it sends: a value read from a file
// shows there, a file that failed shows by its own line and the default it leads to.
class ConntrackClues {
public:
    void take(const ServiceMessage& m, Step* step) {
        switch (m.id) {
            case Msg::kProcOpenFail:
                failed(textField(m, 0), numberField(m, 1), step);
                break;
            case Msg::kProcAtoiFail:
                file(textField(m, 0), std::to_string(numberField(m, 1)), step);
                mark(textField(m, 0));
                break;
            case Msg::kTimeouts:
                if (!mTcpFailed) file("tcp", std::to_string(numberField(m, 0)), step);
                if (!mUdpFailed) file("udp", std::to_string(numberField(m, 1)), step);
                mTcpFailed = mUdpFailed = false;
                break;
            default:
                break;
        }
    }

private:
    static Key keyOf(const std::string& proto) {
        return proto == "udp" ? Key::kProcUdp : Key::kProcTcp;
    }
    void mark(const std::string& proto) { (proto == "udp" ? mUdpFailed : mTcpFailed) = true; }
    void file(const std::string& proto, const std::string& value, Step* step) {
        step->need(keyOf(proto), "proc " + proto + " \"" + value + "\\n\"");
    }
    void failed(const std::string& proto, long long errnum, Step* step) {
        std::string why;
        if (errnum != ENOENT) {
            why = "the log's errno " + std::to_string(errnum) + " becomes ENOENT here";
        }
        step->need(keyOf(proto), "proc " + proto + " absent", why);
        mark(proto);
    }

    bool mTcpFailed = false;
    bool mUdpFailed = false;
};

void bridgeClue(const ServiceMessage& m, Step* step) {
    switch (m.id) {
        case Msg::kBridgeClearMac:
        case Msg::kBridgeAdd:
        case Msg::kBridgeDel:
        case Msg::kBridgeSetInterface:
            step->need(Key::kStderr, "stderr open");
            step->need(Key::kAgent, "agent up");
            break;
        case Msg::kStderrFail:
            step->need(Key::kStderr, "stderr closed");
            break;
        case Msg::kAgentMissing:
            step->need(Key::kStderr, "stderr open");
            step->need(Key::kAgent, "agent absent");
            break;
        case Msg::kAgentFailed:
            step->need(Key::kStderr, "stderr open");
            step->need(Key::kAgent, "agent failing");
            break;
        default:
            break;
    }
}

}  // namespace

void collectWorldClues(const std::vector<const ServiceLine*>& lines, Step* step) {
    ConntrackClues conntrack;
    for (const ServiceLine* line : lines) {
        if (!line->message) continue;
        deviceClue(*line->message, step);
        conntrack.take(*line->message, step);
        bridgeClue(*line->message, step);
    }
}

}  // namespace hostreplay
