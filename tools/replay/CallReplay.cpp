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
Step::Initialised initialisedWhenCalled(const Lines& lines) {
    const Msg first = lines.front()->message->id;
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

std::string words(const ServiceMessage& m) {
    std::string out;
    for (const std::string& field : m.fields) out += " " + scenarioWord(field);
    return out;
}

}  // namespace

Step replayCall(const Lines& lines) {
    Step step;
    step.lineNo = lines.front()->lineNo;
    collectWorldClues(lines, &step);
    step.initialised = initialisedWhenCalled(lines);
    const ServiceMessage& first = *lines.front()->message;
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
