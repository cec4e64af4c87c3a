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

#include "CallReplay.h"

#include <cctype>
#include <optional>
#include <string>

#include "ScenarioText.h"
#include "WorldClues.h"

namespace hostreplay {
namespace {

using Lines = std::vector<const ServiceLine*>;

const ServiceMessage* find(const Lines& lines, Msg id) {
    for (const ServiceLine* line : lines) {
        if (line->message && line->message->id == id) return &*line->message;
    }
    return nullptr;
}

bool has(const Lines& lines, Msg id) {
    return find(lines, id) != nullptr;
}

// The recognised message right before the first `id`, if any.
const ServiceMessage* before(const Lines& lines, Msg id) {
    const ServiceMessage* previous = nullptr;
    for (const ServiceLine* line : lines) {
        if (!line->message) continue;
        if (line->message->id == id) return previous;
        previous = &*line->message;
    }
    return nullptr;
}

bool setHandlesCall(Msg id) {
    return id == Msg::kSetHandlesOk || id == Msg::kSetHandlesFd1Empty ||
           id == Msg::kSetHandlesFd2Empty;
}

void setHandles(Msg id, Step* step) {
    if (id == Msg::kSetHandlesOk) {
        step->command = "setHandles 1 1";
    } else if (id == Msg::kSetHandlesFd1Empty) {
        step->command = "setHandles 0 1";
        step->picks.push_back("fd1 held 0, 2 or no descriptors; the log does not tell which");
    } else {
        step->command = "setHandles 1 0";
        step->picks.push_back("fd2 held 0, 2 or no descriptors; the log does not tell which");
    }
}

// Whether the service was initialised when the call came. setHandles does not care; initOffload
// says so when it refuses; every other call checks it first and logs only a refusal.
Step::Initialised initialisedWhenCalled(Msg first, const Lines& lines) {
    if (setHandlesCall(first)) return Step::Initialised::kUnknown;
    if (first == Msg::kInitStart) {
        if (has(lines, Msg::kInitAlready)) return Step::Initialised::kYes;
        return lines.size() > 1 ? Step::Initialised::kNo : Step::Initialised::kUnknown;
    }
    if (has(lines, Msg::kNotInitialised) || has(lines, Msg::kPrefixesNotInit)) {
        return Step::Initialised::kNo;
    }
    // An accepted setLocalPrefixes logs one line; so does a call cut off by the end of the log.
    if (lines.size() > 1 || first == Msg::kPrefixesStart) return Step::Initialised::kYes;
    return Step::Initialised::kUnknown;
}

void initOffload(const Lines& lines, Step* step) {
    if (has(lines, Msg::kInitAlready)) {
        step->command = "initOffload 1.1";
        step->picks.push_back("the callback's version is not logged (already initialised)");
    } else if (has(lines, Msg::kInitAgain)) {
        step->command = "initOffload null";
    } else if (has(lines, Msg::kRegister) || has(lines, Msg::kInitRegistered)) {
        // The version is settled with the events that follow (ScenarioBuilder).
        step->command = "initOffload";
        step->opensSession = true;
        step->need(Requirement::Key::kFramework, "framework alive");
    } else {
        step->command = "initOffload 1.1";
        step->picks.push_back("how the call went is not in the log");
    }
}

void stopOffload(const Lines& lines, Step* step) {
    step->command = "stopOffload";
    step->closesSession = has(lines, Msg::kStopDone) || has(lines, Msg::kUnregister);
}

// The prefix whose check failed, from the lines of that check.
std::string failingPrefix(const Lines& lines, Step* step) {
    if (const ServiceMessage* m = find(lines, Msg::kPrefixSlash)) return textField(*m, 0);
    if (const ServiceMessage* m = find(lines, Msg::kMaskInvalid)) {
        step->picks.push_back("the address of the failing prefix is not logged");
        const std::string address = numberField(*m, 1) == 1 ? "fe80::" : "192.168.42.0";
        return address + "/" + std::to_string(numberField(*m, 0));
    }
    if (has(lines, Msg::kAddrInvalid)) {
        step->picks.push_back("the failing address is not logged");
        return "192.168.42.300/24";
    }
    if (!has(lines, Msg::kPrefixEmpty)) step->picks.push_back("the failing prefix is not logged");
    return "";
}

void setLocalPrefixes(const Lines& lines, Step* step) {
    step->command = "setLocalPrefixes";
    if (has(lines, Msg::kPrefixesEmpty)) return;
    if (has(lines, Msg::kPrefixesNotInit)) {
        step->picks.push_back("the prefixes are not logged");
    } else if (has(lines, Msg::kPrefixesInvalid)) {
        step->command += " " + scenarioWord(failingPrefix(lines, step));
        step->picks.push_back("prefixes before the failing one are not logged");
    } else {
        step->command += " 192.168.42.0/24";
        step->picks.push_back("the prefixes are not logged");
    }
}

bool failedOn(const Lines& lines, const std::string& what) {
    for (const ServiceLine* line : lines) {
        const auto& m = line->message;
        if (m && m->id == Msg::kInvalidArgument && textField(*m, 1) == what) return true;
    }
    return false;
}

// The gateways are never logged; the checks' lines tell how many there were and which failed.
std::string upstreamGateways(const Lines& lines, Step* step) {
    if (failedOn(lines, "v6Gws")) {
        const ServiceMessage* cause = before(lines, Msg::kInvalidArgument);
        step->picks.push_back("gateways before the failing one are not logged");
        if (cause != nullptr && cause->id == Msg::kAddrEmpty) return " \"\"";
        step->picks.push_back("the failing gateway is not logged; an IPv4 text fails alike");
        return " 192.0.2.1";
    }
    if (has(lines, Msg::kAllEmpty)) return "";
    if (has(lines, Msg::kInvalidArgument) || has(lines, Msg::kNotInitialised)) {
        step->picks.push_back("the IPv6 gateways are not logged (never checked)");
        return "";
    }
    for (const ServiceLine* line : lines) {
        const auto& m = line->message;
        if (m && m->id == Msg::kListEmpty && textField(*m, 0) == "verifyIpAddress") return "";
    }
    step->picks.push_back("the IPv6 gateways are not logged");
    return " fe80::1";
}

// The IPv4 address and gateway that take the path of the checks' lines: each empty one logs
// "in.length() == 0", the one that fails "Invalid Ip address" and its own refusal.
std::vector<std::string> upstreamAddresses(const Lines& lines, Step* step) {
    if (has(lines, Msg::kAllEmpty)) return {"", ""};
    if (has(lines, Msg::kNotInitialised) || failedOn(lines, "interface")) {
        step->picks.push_back("the IPv4 address and gateway are not logged (never checked)");
        return {"", ""};
    }
    step->picks.push_back(
            "the IPv4 address and gateway are not logged: chosen to take the "
            "same path");
    const ServiceMessage* first = nullptr;
    size_t empties = 0;
    for (const ServiceLine* line : lines) {
        if (!line->message) continue;
        const Msg id = line->message->id;
        if (first == nullptr && (id == Msg::kAddrEmpty || id == Msg::kAddrInvalid)) {
            first = &*line->message;
        }
        if (id == Msg::kAddrEmpty) ++empties;
    }
    if (failedOn(lines, "v4Addr")) return {"192.0.2.256", ""};
    if (failedOn(lines, "v4Gw")) {
        return {first != nullptr && first->id == Msg::kAddrEmpty ? "" : "192.0.2.2", "192.0.2.256"};
    }
    // The failing IPv6 gateway's own line is no IPv4 one.
    const ServiceMessage* cause = before(lines, Msg::kInvalidArgument);
    if (failedOn(lines, "v6Gws") && cause != nullptr && cause->id == Msg::kAddrEmpty) --empties;
    if (empties == 0) return {"192.0.2.2", "192.0.2.1"};
    if (empties == 1) return {"", "192.0.2.1"};
    return {"", ""};
}

// The upstream, from the lines that name it after the first.
std::string upstreamFromLater(const Lines& lines, Step* step) {
    if (const ServiceMessage* m = find(lines, Msg::kUpstreamEnd)) return textField(*m, 0);
    if (const ServiceMessage* m = find(lines, Msg::kCheckInterface)) return textField(*m, 0);
    for (Msg id : {Msg::kUpstreamActivated, Msg::kUpstreamDeactivated}) {
        if (const ServiceMessage* m = find(lines, id)) return textField(*m, 1);
    }
    if (has(lines, Msg::kAllEmpty)) return "";
    step->picks.push_back("the upstream is not in the log");
    return "wanif0";
}

std::vector<std::string> downstreamFromLater(const Lines& lines, Step* step) {
    const ServiceMessage* check = find(lines, Msg::kCheckInterface);
    std::string iface;
    if (check != nullptr) {
        iface = textField(*check, 0);
    } else if (const ServiceMessage* m = find(lines, Msg::kAddEnd)) {
        iface = textField(*m, 0);
    } else if (const ServiceMessage* m = find(lines, Msg::kRemoveEnd)) {
        iface = textField(*m, 0);
    }
    if (has(lines, Msg::kNotInitialised) || (failedOn(lines, "interface") && check == nullptr)) {
        step->picks.push_back("the prefix is not logged (never checked)");
        return {iface, ""};
    }
    if (has(lines, Msg::kInvalidPrefix)) return {iface, failingPrefix(lines, step)};
    step->picks.push_back("the prefix is not logged");
    return {iface, "192.168.42.0/24"};
}

// The first word of a call's first line: its name.
std::string callName(Msg id) {
    const std::string format = formatOf(id);
    size_t end = 0;
    while (end < format.size() && isalpha(static_cast<unsigned char>(format[end]))) ++end;
    return format.substr(0, end);
}

// A call whose first line the log cut short: which call it was, where the lines after it tell,
// and the values of that line from them, or values that lead down the same path.
std::optional<ServiceMessage> rebuiltFirstLine(const Lines& lines, Step* step) {
    const ServiceLine& cut = *lines.front();
    std::vector<Msg> calls;
    for (Msg id : cut.cutFrom) {
        for (const ServiceLine* line : lines) {
            if (line->message && callOf(*line->message) == id) {
                calls.push_back(id);
                break;
            }
        }
    }
    if (calls.empty() && cut.cutFrom.size() == 1) calls = cut.cutFrom;
    if (calls.size() != 1) {
        std::string names;
        for (Msg id : cut.cutFrom) {
            const std::string name = callName(id);
            if (names.find(name) == std::string::npos) names += (names.empty() ? "" : ", ") + name;
        }
        step->notes.push_back(Note{
                cut.lineNo,
                "cut short: " + std::string(1, cut.level) + " " + quotedForComment(cut.text) +
                        ": the call it began (" + names + ") is lost" +
                        (lines.size() == 1   ? ""
                         : lines.size() == 2 ? ", with the line after it"
                                             : ", with the " + std::to_string(lines.size() - 1) +
                                                       " lines after it") +
                        "; the steps after it may take another path, as the "
                        "service's state may differ"});
        return std::nullopt;
    }
    ServiceMessage first{calls.front(), {}};
    step->picks.push_back("log line " + std::to_string(cut.lineNo) +
                          " was cut short: " + quotedForComment(cut.text, 40));
    switch (first.id) {
        case Msg::kUpstreamStart:
            first.fields = {upstreamFromLater(lines, step)};
            for (const std::string& address : upstreamAddresses(lines, step)) {
                first.fields.push_back(address);
            }
            break;
        case Msg::kAddStart:
        case Msg::kRemoveStart:
            first.fields = downstreamFromLater(lines, step);
            break;
        case Msg::kStatsStart:
        case Msg::kLimitStart:
        case Msg::kWarningLimitStart:
            if (has(lines, Msg::kQuotaEmptyName)) {
                first.fields = {""};
            } else {
                first.fields = {"wanif0"};
                step->picks.push_back("the upstream is not in the log");
            }
            break;
        default:
            break;
    }
    return first;
}

std::string words(const ServiceMessage& m) {
    std::string out;
    for (const std::string& field : m.fields) out += " " + scenarioWord(field);
    return out;
}

}  // namespace

Step replayCall(const Lines& lines) {
    Step step;
    step.lineNo = lines.front()->lineNo;
    const std::optional<ServiceMessage> cutFirst =
            lines.front()->message ? std::nullopt : rebuiltFirstLine(lines, &step);
    if (!lines.front()->message && !cutFirst) return step;
    const ServiceMessage& first = cutFirst ? *cutFirst : *lines.front()->message;
    collectWorldClues(lines, &step);
    step.initialised = initialisedWhenCalled(first.id, lines);
    switch (first.id) {
        case Msg::kSetHandlesOk:
        case Msg::kSetHandlesFd1Empty:
        case Msg::kSetHandlesFd2Empty:
            setHandles(first.id, &step);
            break;
        case Msg::kInitStart:
            initOffload(lines, &step);
            break;
        case Msg::kStopStart:
            stopOffload(lines, &step);
            break;
        case Msg::kPrefixesStart:
            setLocalPrefixes(lines, &step);
            break;
        case Msg::kNotInitialised:  // getForwardedStats before initOffload
            step.command = "getForwardedStats wanif0";
            step.picks.push_back("the upstream is not logged before initOffload");
            break;
        case Msg::kStatsStart:
            step.command = "getForwardedStats" + words(first);
            break;
        case Msg::kLimitStart:
            step.command = "setDataLimit" + words(first) + " 0";
            step.picks.push_back("the limit is not logged");
            break;
        case Msg::kWarningLimitStart:
            step.command = "setDataWarningAndLimit" + words(first) + " 0 0";
            step.picks.push_back("the warning and the limit are not logged");
            break;
        case Msg::kUpstreamStart:
            step.command = "setUpstreamParameters" + words(first) + upstreamGateways(lines, &step);
            break;
        case Msg::kAddStart:
            step.command = "addDownstream" + words(first);
            break;
        case Msg::kRemoveStart:
            step.command = "removeDownstream" + words(first);
            break;
        default:
            break;
    }
    return step;
}

}  // namespace hostreplay
