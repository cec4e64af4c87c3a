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

#include "fuzz/support/LogLevels.h"

#include <fnmatch.h>

namespace fuzzsupport {
namespace {

constexpr int kInfo = 4;
constexpr int kWarn = 5;
constexpr int kError = 6;

// Glob patterns of the failure lines. '%' stands for each name of the list that goes with it, so
// that no pattern begins with a wildcard: a logged argument cannot pass for a failure line.
struct Failure {
    const char* names;
    const char* glob;
};

const char kCommands[] =
        "sendCmd2MD activeVexa getDataUsage setDataLimit setDataWarningAndLimit sendTimeoutValue";

const Failure kFailures[] = {
        {kCommands, "%: fail to get offloadEventHandle instance \n"},
        {kCommands, "%: fail to open vexa device \n"},
        {kCommands, "% (app: *)  fail errno: * \n"},
        {kCommands, "%: interface is null \n"},
        {kCommands, "%: alloc memory fail \n"},
        {"", "getDataUsage: fail to memory alloc \n"},
        {"", "open dev ++ g-fd =*"},
        {"", "open /dev/vexa fail \n"},
        {"", "unknown proctol "},
        {"tcp udp", "open proc (%) item fail err: *"},
        {"tcp udp", " % timeout atoi fail ,ret = *"},
        {"", "close tcp_filepath or udp_filepath fail\n"},
        {"", "initOffload : initOffload()warning: get mCbEvent instance fail \n"},
        {"", "getForwardedStats: mCbEvent is null\n"},
        {"", "createEventThread: unable to create offloadEventHandle instance \n"},
        {"", "fail to create event thread\n"},
        {"", "created HandleEvent thread\n"},
        {"", "fail to change HandleEvent thread name\n"},
        {"", "handleEvent: fail to get offloadEventHandle instance \n"},
        {"", "handleEvent: fail to open vexa device \n"},
        {"", "handleEvent: malloc fail \n"},
        {"", "readFD fail: fd=*, err=* \n"},
        {"", "handleEvent: response msg is too short \n"},
        {"", "handleEvent: message payload too big (>256 bytes)\n"},
        {"", "handleEvent: msg payload is too short\n"},
        {"", "a wrong format event for udp timeout update \n"},
        {"", "sprintf ipv4Addr failed\n"},
        {"", "PlexdCmd fprintf stderr failed\n"},
        {"", "get vendor.korvan.hardware.plexd@1.0::IPlexd service failed\n"},
        {"addSlave delSlave clearMac setInterface", "% sprintf cmd fail*"},
        {"addSlave delSlave clearMac setInterface", "bridge % fail\n"},
        // Transport failures, whose handling the rules leave to the service: logged as failures.
        {"", "PlexdCmd runCmd failed: *"},
        {"onEvent onEvent_1_1 updateTimeout", "% to framework failed: *"},
};

// Every failure glob with its names put in, made once: the check runs for every line of every
// input.
const std::vector<std::string>& failureGlobs() {
    static const auto* globs = [] {
        auto* out = new std::vector<std::string>();
        for (const Failure& f : kFailures) {
            const std::string glob = f.glob;
            const size_t at = glob.find('%');
            if (at == std::string::npos) {
                out->push_back(glob);
                continue;
            }
            const std::string names = std::string(f.names) + " ";
            for (size_t from = 0, end; (end = names.find(' ', from)) != std::string::npos;
                 from = end + 1) {
                out->push_back(glob.substr(0, at) + names.substr(from, end - from) +
                               glob.substr(at + 1));
            }
        }
        return out;
    }();
    return *globs;
}

}  // namespace

int expectedPriority(const std::string& line) {
    if (line == "WARNING: SIGPIPE not blocked\n") return kWarn;
    for (const std::string& glob : failureGlobs()) {
        if (fnmatch(glob.c_str(), line.c_str(), FNM_NOESCAPE) == 0) return kError;
    }
    return kInfo;
}

std::string levelProblem(const std::vector<std::pair<int, std::string>>& logs) {
    for (const auto& [priority, text] : logs) {
        const int expected = expectedPriority(text);
        if (priority != expected) {
            return "\"" + text + "\" logged at " + std::to_string(priority) + ", not " +
                   std::to_string(expected);
        }
    }
    return "";
}

}  // namespace fuzzsupport
