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

#include "ServiceMessages.h"

#include <cerrno>
#include <cstdlib>

#include "FormatPattern.h"

namespace hostreplay {
namespace {

struct Entry {
    Msg id;
    const char* format;  // as the service writes it, its final newline left out
    Context context;
    bool replayable;
};

// The first entry that matches wins, so a format that could take another's text comes first
// ("bridge %s fail" before "bridge addSlave %s").
// clang-format off
constexpr Entry kEntries[] = {
    {Msg::kOpenDevStart, "open dev ++ g-fd =%d", Context::kStartup, true},
    {Msg::kOpenDevFail, "open %s fail ", Context::kStartup, true},
    {Msg::kOpenDevDone, "open %s done, fd=%d", Context::kStartup, true},
    {Msg::kGetInstance, " GetInstance p=%p", Context::kAnywhere, true},
    {Msg::kThreadCreated, "created HandleEvent thread", Context::kStartup, true},
    {Msg::kThreadNameFail, "fail to change HandleEvent thread name", Context::kStartup, false},
    {Msg::kThreadCreateFail, "fail to create event thread", Context::kStartup, false},
    {Msg::kThreadNoInstance, "createEventThread: unable to create offloadEventHandle instance ",
     Context::kStartup, false},
    {Msg::kThreadAgain, " HandleEvent thread has  been created ", Context::kStartup, false},
    {Msg::kSigpipeNotBlocked, "WARNING: SIGPIPE not blocked", Context::kStartup, false},
    {Msg::kHalNotMade, "get tetherOffloadHal service failed(%s)", Context::kStartup, false},
    {Msg::kEventMallocFail, "handleEvent: malloc fail ", Context::kStartup, false},
    {Msg::kExiting, "tether offload exiting", Context::kExit, true},

    {Msg::kSetHandlesFd1Empty, "setHandles(), fd1 is empty", Context::kCallEntry, true},
    {Msg::kSetHandlesFd2Empty, "setHandles(), fd2 is empty", Context::kCallEntry, true},
    {Msg::kSetHandlesOk, "setHandles() ", Context::kCallEntry, true},
    {Msg::kInitStart, "initOffload ++", Context::kCallEntry, true},
    {Msg::kStopStart, "stopOffload ", Context::kCallEntry, true},
    {Msg::kPrefixesStart, "setLocalPrefixes() ", Context::kCallEntry, true},
    {Msg::kStatsStart, "getForwardedStats() upstream:%s", Context::kCallEntry, true},
    {Msg::kLimitStart, "setDataLimit() upstream:%s", Context::kCallEntry, true},
    {Msg::kWarningLimitStart, "setDataWarningAndLimit() upstream:%s", Context::kCallEntry, true},
    {Msg::kUpstreamStart, "setUpstreamParameters iface:%s  v4Addr:%s  v4Gw:%s",
     Context::kCallEntry, true},
    {Msg::kAddStart, "addDownstream iface:%s prefix:%s", Context::kCallEntry, true},
    {Msg::kRemoveStart, "removeDownstream iface:%s prefix:%s", Context::kCallEntry, true},

    {Msg::kInitAlready, "already  initialized", Context::kCall, true},
    {Msg::kInitAgain, "initOffload()warning: initialized again ", Context::kCall, true},
    {Msg::kInitNoClient, "initOffload : initOffload()warning: get mCbEvent instance fail ",
     Context::kCall, false},
    {Msg::kInitRegistered, "initOffload(): create event thread : mCbEvent=%p  ", Context::kCall,
     true},
    {Msg::kInitEnd, "initOffload() --", Context::kCall, true},
    {Msg::kRegister, " registerTimeoutCallback ", Context::kCall, true},
    {Msg::kRegisterOverride, "already have registerTimeoutCallback previously, override ",
     Context::kCall, false},
    {Msg::kUnregister, " unregisterTimeoutCallback ", Context::kCall, true},
    {Msg::kUnregisterNone, "already have unregisterTimeoutCallback previously, override ",
     Context::kCall, false},
    {Msg::kStopNoClient, "mCbEvent has not been initialized () ", Context::kCall, false},
    {Msg::kStopDone, "stopOffload() ", Context::kCall, true},
    {Msg::kPrefixesNotInit, "setLocalPrefixes device has not been initialized () ",
     Context::kCall, true},
    {Msg::kPrefixesEmpty, "setLocalPrefixes prefixes.size() < 0", Context::kCall, true},
    {Msg::kPrefixesInvalid, "setLocalPrefixes Invalid prefixes ", Context::kCall, true},
    {Msg::kNotInitialised, "%s() device has not been initialized ()", Context::kCall, true},
    {Msg::kStatsNoClient, "getForwardedStats: mCbEvent is null", Context::kCall, false},
    {Msg::kQuotaEmptyName, "%s() interface name is empty", Context::kCall, true},
    {Msg::kAllEmpty, "setUpstreamParameters() All of inputs are empty", Context::kCall, true},
    {Msg::kInvalidArgument, "%s() Invalid %s", Context::kCall, true},
    {Msg::kUpstreamActivated, "setUpstreamParameters active %s vexa (up %s)", Context::kCall,
     true},
    {Msg::kUpstreamDeactivated, "setUpstreamParameters de-active %s vexa (up %s)",
     Context::kCall, true},
    {Msg::kUpstreamEnd, "setUpstreamParameters up-if:%s; down-if(%s,%s)", Context::kCall, true},
    {Msg::kInvalidPrefix, "%s Invalid prefix", Context::kCall, true},
    {Msg::kActiveUsb, "active usb tehtering offload", Context::kCall, true},
    {Msg::kActiveWifi, "active wifi tehtering offload", Context::kCall, true},
    {Msg::kNoActivated, "No actived offload", Context::kCall, true},
    {Msg::kAddEnd, "addDownstream(down-if:%s; up-if:%s)", Context::kCall, true},
    {Msg::kRemoveDeactivated, "removeDownstream() de-active %s vexa", Context::kCall, true},
    {Msg::kNoDeactivated, "No de-active vexa", Context::kCall, true},
    {Msg::kRemoveEnd, "removeDownstream(donw-if: %s; up-if: %s)", Context::kCall, true},

    {Msg::kCheckInterface, "checkInterface in: %s", Context::kCall, true},
    {Msg::kAddrEmpty, "verifyIpAddress in.length() == 0", Context::kCall, true},
    {Msg::kAddrFamily, "verifyIpAddress Invalid family", Context::kCall, false},
    {Msg::kAddrInvalid, "verifyIpAddress Invalid Ip address", Context::kCall, true},
    {Msg::kListEmpty, "%s in.size() == 0", Context::kCall, true},
    {Msg::kPrefixEmpty, "%s string in is empty", Context::kCall, true},
    {Msg::kPrefixSlash, "findAddrAndMask Invalid input: %s", Context::kCall, true},
    {Msg::kPrefixSplit, "checkPrefix Faied to find address and mask", Context::kCall, true},
    {Msg::kMaskInvalid, "isValidMask Invalid input: mask = %d, fam = %d", Context::kCall, true},
    {Msg::kPrefixMask, "checkPrefix Invalid mask", Context::kCall, true},

    {Msg::kCmdOk, "sendCmd2MD (app: %d cmd: %d) ok ", Context::kCall, true},
    {Msg::kCmdFail, "sendCmd2MD (app: %d cmd: %d)  fail errno: %d ", Context::kCall, true},
    {Msg::kRequestOk, "%s (app: %d ) ok ", Context::kCall, true},
    {Msg::kRequestFail, "%s (app: %d )  fail errno: %d ", Context::kCall, true},
    {Msg::kNoDevice, "%s: fail to open vexa device ", Context::kCall, true},
    {Msg::kNoInstance, "%s: fail to get offloadEventHandle instance ", Context::kCall, false},
    {Msg::kNullIface, "%s: interface is null ", Context::kCall, false},
    {Msg::kStatsLength, "getDataUsage : response length is not right ", Context::kCall, true},
    {Msg::kTimeouts, "sendTimeoutValue: timeout tcp %d ,udp %d ", Context::kCall, true},
    {Msg::kProcOpenFail, "open proc (%s) item fail err: %d", Context::kCall, true},
    {Msg::kProcAtoiFail, " %s timeout atoi fail ,ret = %d", Context::kCall, true},
    {Msg::kProcCloseFail, "close tcp_filepath or udp_filepath fail", Context::kCall, false},
    {Msg::kProcUnknown, "unknown proctol ", Context::kCall, false},

    {Msg::kStderrFail, "PlexdCmd fprintf stderr failed", Context::kCall, true},
    {Msg::kAgentMissing, "get %s service failed", Context::kCall, true},
    {Msg::kAgentFailed, "PlexdCmd runCmd failed: %s", Context::kCall, true},
    {Msg::kBridgeStepFail, "bridge %s fail", Context::kCall, true},
    {Msg::kBridgeFormatFail, "%s sprintf cmd fail ", Context::kCall, false},
    {Msg::kBridgeClearMac, "bridge clearMac", Context::kCall, true},
    {Msg::kBridgeAdd, "bridge addSlave %s", Context::kCall, true},
    {Msg::kBridgeDel, "bridge delSlave %s", Context::kCall, true},
    {Msg::kBridgeSetInterface, "bridge setInterface ", Context::kCall, true},

    {Msg::kReadFail, "readFD fail: fd=%d, err=%d ", Context::kEventStart, true},
    {Msg::kReadSize, "handleEvent: readsize %d ", Context::kEventStart, true},
    {Msg::kReadShort, "handleEvent: response msg is too short ", Context::kEvent, true},
    {Msg::kPayloadBig, "handleEvent: message payload too big (>256 bytes)", Context::kEvent, true},
    {Msg::kPayloadShort, "handleEvent: msg payload is too short", Context::kEvent, true},
    {Msg::kNotRegistered, " parsingEvent, not register Timeout Callback (type = %d) ",
     Context::kEvent, true},
    {Msg::kBadMcode, " parsingEvent, mcode is not right  (type = %d) ", Context::kEvent, true},
    {Msg::kReceived, " parsingEvent : recv a msg from MD: status:%d ,msg: %d", Context::kEvent,
     true},
    {Msg::kDispatchedUnknown, "recv unknown msg from MD (type = %d)", Context::kEvent, true},
    {Msg::kDispatched, "recv VEXA_%s msg from MD", Context::kEvent, true},
    {Msg::kConnNoCallback, " UDPTimeoutUpdate : not register callback ", Context::kEvent, false},
    {Msg::kConnWrongLength, "a wrong format event for udp timeout update ", Context::kEvent, true},
    {Msg::kConnAddress, "TimeoutUpdate : addr =%s ", Context::kEvent, true},
    {Msg::kConnDstNat, "dst nat is  set  src (port)=0x%x (0x%x) dst =0x%x(0x%x)  ",
     Context::kEvent, true},
    {Msg::kConnNoDstNat, "dst nat is not set  src (port)=0x%x (0x%x) dst =0x%x(0x%x)  ",
     Context::kEvent, true},
    {Msg::kAddrFormatFail, "sprintf ipv4Addr failed", Context::kEvent, false},
    {Msg::kCallbackFailed, "%s to framework failed: %s", Context::kEvent, true},
};
// clang-format on

struct Compiled {
    const Entry* entry;
    FormatPattern pattern;
};

const std::vector<Compiled>& compiled() {
    static const auto* all = [] {
        auto* out = new std::vector<Compiled>();
        for (const Entry& e : kEntries) out->push_back(Compiled{&e, FormatPattern(e.format)});
        return out;
    }();
    return *all;
}

const Entry& entryOf(Msg id) {
    for (const Entry& e : kEntries) {
        if (e.id == id) return e;
    }
    return kEntries[0];  // every Msg has an entry
}

}  // namespace

std::string textField(const ServiceMessage& message, size_t index) {
    return index < message.fields.size() ? message.fields[index] : "";
}

long long numberField(const ServiceMessage& message, size_t index, int base) {
    const std::string text = textField(message, index);
    errno = 0;
    char* end = nullptr;
    long long value = strtoll(text.c_str(), &end, base);
    return errno == 0 && end != text.c_str() && *end == '\0' ? value : 0;
}

std::optional<ServiceMessage> matchServiceMessage(const std::string& text) {
    for (const Compiled& c : compiled()) {
        if (auto fields = c.pattern.match(text)) return ServiceMessage{c.entry->id, *fields};
    }
    return std::nullopt;
}

bool beginsServiceMessage(const std::string& text) {
    for (const Compiled& c : compiled()) {
        if (c.pattern.beginsWith(text)) return true;
    }
    return false;
}

std::vector<Msg> messagesCutShort(const std::string& text) {
    std::vector<Msg> out;
    for (const Compiled& c : compiled()) {
        if (c.pattern.isCutFrom(text)) out.push_back(c.entry->id);
    }
    return out;
}

std::optional<Msg> callOf(const ServiceMessage& message) {
    static const std::pair<const char*, Msg> kOps[] = {
            {"setUpstreamParameters", Msg::kUpstreamStart},
            {"addDownstream", Msg::kAddStart},
            {"removeDownstream", Msg::kRemoveStart},
            {"stopOffload", Msg::kStopStart},
            {"getForwardedStats", Msg::kStatsStart},
            {"getDataUsage", Msg::kStatsStart},
            {"setDataLimit", Msg::kLimitStart},
            {"setDataWarningAndLimit", Msg::kWarningLimitStart},
    };
    switch (message.id) {
        case Msg::kNotInitialised:
        case Msg::kInvalidArgument:
        case Msg::kQuotaEmptyName:
        case Msg::kInvalidPrefix:
        case Msg::kRequestOk:
        case Msg::kRequestFail:
            for (const auto& [op, call] : kOps) {
                if (textField(message, 0) == op) return call;
            }
            return std::nullopt;
        case Msg::kAllEmpty:
        case Msg::kUpstreamActivated:
        case Msg::kUpstreamDeactivated:
        case Msg::kUpstreamEnd:
            return Msg::kUpstreamStart;
        case Msg::kActiveUsb:
        case Msg::kActiveWifi:
        case Msg::kNoActivated:
        case Msg::kAddEnd:
            return Msg::kAddStart;
        case Msg::kRemoveDeactivated:
        case Msg::kNoDeactivated:
        case Msg::kRemoveEnd:
            return Msg::kRemoveStart;
        case Msg::kInitAlready:
        case Msg::kInitAgain:
        case Msg::kInitNoClient:
        case Msg::kInitRegistered:
        case Msg::kInitEnd:
        case Msg::kRegister:
        case Msg::kRegisterOverride:
            return Msg::kInitStart;
        case Msg::kStopNoClient:
        case Msg::kStopDone:
        case Msg::kUnregister:
        case Msg::kUnregisterNone:
            return Msg::kStopStart;
        case Msg::kPrefixesNotInit:
        case Msg::kPrefixesEmpty:
        case Msg::kPrefixesInvalid:
            return Msg::kPrefixesStart;
        case Msg::kStatsNoClient:
        case Msg::kStatsLength:
            return Msg::kStatsStart;
        default:
            if (contextOf(message) == Context::kCallEntry) return message.id;
            return std::nullopt;
    }
}

std::vector<Msg> allMessages() {
    std::vector<Msg> out;
    for (const Entry& e : kEntries) out.push_back(e.id);
    return out;
}

const char* formatOf(Msg id) {
    return entryOf(id).format;
}

Context contextOf(const ServiceMessage& message) {
    const std::string op = message.fields.empty() ? "" : message.fields[0];
    switch (message.id) {
        case Msg::kNotInitialised:
            // The only line getForwardedStats writes before its check.
            return op == "getForwardedStats" ? Context::kCallEntry : Context::kCall;
        case Msg::kNoDevice:
        case Msg::kNoInstance:
            return op == "handleEvent" ? Context::kStartup : Context::kCall;
        default:
            return entryOf(message.id).context;
    }
}

bool canBeReplayed(const ServiceMessage& message) {
    // Without the device the event thread ends at start-up: `device absent` does that.
    if (message.id == Msg::kNoInstance) return false;
    return entryOf(message.id).replayable;
}

}  // namespace hostreplay
