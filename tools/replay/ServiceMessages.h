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

// Every line the service logs under its tag, recognised from its text: which message it is and
// the values it was written with.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hostreplay {

enum class Msg {
    // Start-up and the end.
    kOpenDevStart,
    kOpenDevFail,
    kOpenDevDone,
    kGetInstance,
    kThreadCreated,
    kThreadNameFail,
    kThreadCreateFail,
    kThreadNoInstance,
    kThreadAgain,
    kSigpipeNotBlocked,
    kHalNotMade,
    kEventMallocFail,
    kExiting,
    // Framework calls: their first lines.
    kSetHandlesFd1Empty,
    kSetHandlesFd2Empty,
    kSetHandlesOk,
    kInitStart,
    kStopStart,
    kPrefixesStart,
    kStatsStart,
    kLimitStart,
    kWarningLimitStart,
    kUpstreamStart,
    kAddStart,
    kRemoveStart,
    // Framework calls: the rest.
    kInitAlready,
    kInitAgain,
    kInitNoClient,
    kInitRegistered,
    kInitEnd,
    kRegister,
    kRegisterOverride,
    kUnregister,
    kUnregisterNone,
    kStopNoClient,
    kStopDone,
    kPrefixesNotInit,
    kPrefixesEmpty,
    kPrefixesInvalid,
    kNotInitialised,  // op
    kStatsNoClient,
    kQuotaEmptyName,  // op
    kAllEmpty,
    kInvalidArgument,  // op, what
    kUpstreamActivated,
    kUpstreamDeactivated,
    kUpstreamEnd,
    kInvalidPrefix,  // op
    kActiveUsb,
    kActiveWifi,
    kNoActivated,
    kAddEnd,
    kRemoveDeactivated,
    kNoDeactivated,
    kRemoveEnd,
    // Argument checks.
    kCheckInterface,
    kAddrEmpty,
    kAddrFamily,
    kAddrInvalid,
    kListEmpty,    // function
    kPrefixEmpty,  // function
    kPrefixSlash,  // prefix
    kPrefixSplit,
    kMaskInvalid,  // mask, family
    kPrefixMask,
    // The data-path device and the conntrack files.
    kCmdOk,        // app, msg
    kCmdFail,      // app, msg, errno
    kRequestOk,    // op, app
    kRequestFail,  // op, app, errno
    kNoDevice,     // op
    kNoInstance,   // op
    kNullIface,    // op
    kStatsLength,
    kTimeouts,      // tcp, udp
    kProcOpenFail,  // proto, errno
    kProcAtoiFail,  // proto, value
    kProcCloseFail,
    kProcUnknown,
    // The network agent and the bridge.
    kStderrFail,
    kAgentMissing,      // descriptor
    kAgentFailed,       // description
    kBridgeStepFail,    // step
    kBridgeFormatFail,  // step
    kBridgeClearMac,
    kBridgeAdd,  // iface
    kBridgeDel,  // iface
    kBridgeSetInterface,
    // The event thread.
    kReadFail,  // fd, result
    kReadSize,  // size
    kReadShort,
    kPayloadBig,
    kPayloadShort,
    kNotRegistered,      // status
    kBadMcode,           // status
    kReceived,           // status, msg
    kDispatched,         // name
    kDispatchedUnknown,  // status
    kConnNoCallback,
    kConnWrongLength,
    kConnAddress,   // address
    kConnDstNat,    // raw ip1, port1, raw ip2, port2 (hex)
    kConnNoDstNat,  // raw ip0, port0, raw ip1, port1 (hex)
    kAddrFormatFail,
    kCallbackFailed,  // op, description
};

struct ServiceMessage {
    Msg id;
    std::vector<std::string> fields;  // the values of the format's conversions, in order
};

// The value of conversion `index` (its text, or its number in `base`); "" or 0 when missing.
std::string textField(const ServiceMessage& message, size_t index);
long long numberField(const ServiceMessage& message, size_t index, int base = 10);

// Which message of the service `text` is, if any.
std::optional<ServiceMessage> matchServiceMessage(const std::string& text);

// Whether `text` can be the first line of a message of the service that logcat split because a
// value held a newline.
bool beginsServiceMessage(const std::string& text);

// The messages `text` can be the beginning of when the line was cut short; none for a text the
// service writes whole.
std::vector<Msg> messagesCutShort(const std::string& text);

// The call whose first line `message` is, or the call that writes it as a later line when only one
// does (by its text or by the name of the operation it holds).
std::optional<Msg> callOf(const ServiceMessage& message);

// The catalogue: every message, and the format it is written with (without its final newline).
std::vector<Msg> allMessages();
const char* formatOf(Msg id);

// Where a message belongs: what a replay makes of it depends on it.
enum class Context {
    kStartup,     // main and the event thread starting
    kCallEntry,   // the first line of a framework call
    kCall,        // a later line of a framework call
    kEventStart,  // the event thread's read returned
    kEvent,       // a later line of the event thread's pass
    kAnywhere,    // says nothing a replay needs
    kExit,        // main leaves
};

Context contextOf(const ServiceMessage& message);

// False for lines no scenario can make the service write on the desktop (failed allocations,
// signal masks, threads that cannot start, ...).
bool canBeReplayed(const ServiceMessage& message);

}  // namespace hostreplay
