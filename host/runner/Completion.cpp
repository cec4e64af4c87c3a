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

#include "Completion.h"

#include "CommandParsers.h"
#include "Values.h"
#include "Words.h"

namespace hostrunner {
namespace {

using Names = std::vector<std::string>;

Names withBlank(Names names) {
    for (std::string& name : names) name += ' ';
    return names;
}

Names options(Names keys) {
    for (std::string& key : keys) key += '=';
    return keys;
}

// What may stand after the words typed so far; `words` holds at least the command.
Names candidatesAfter(const std::vector<Word>& words) {
    const std::string& command = words[0].text;
    const size_t place = words.size();  // of the word being typed, the command's being 0
    const std::string sub = place > 1 ? words[1].text : "";
    if (command == "setHandles" && place <= 2) return withBlank({"0", "1", "2", "none"});
    if (command == "initOffload" && place == 1) return withBlank({"1.0", "1.1", "null"});
    if (command == "agent" && place == 1) return withBlank({"up", "absent", "failing"});
    if (command == "framework" && place == 1) return withBlank({"alive", "dead"});
    if (command == "stderr" && place == 1) return withBlank({"closed", "open"});
    if (command == "proc" && place == 1) return withBlank({"tcp", "udp"});
    if (command == "proc" && place == 2) return withBlank({"absent"});
    if (command != "modem") return {};
    if (place == 1) return withBlank({"event", "conn", "readfail", "stats", "ioctl"});
    if (sub == "event" && place == 2) return withBlank(eventStatusNames());
    if (sub == "event") return options({"mcode", "msg", "app", "len", "payload", "read"});
    if (sub == "conn") {
        return options({"dst_nat", "ip0", "ip1", "ip2", "port0", "port1", "port2", "proto", "len"});
    }
    if (sub == "readfail" && place == 2) return withBlank(errnoNames());
    if (sub == "stats" && place == 4) return options({"len"});
    if (sub == "ioctl" && place == 2) return withBlank({"ok", "fail"});
    if (sub == "ioctl" && place == 3 && words[2].text == "fail") return withBlank(errnoNames());
    return {};
}

}  // namespace

std::vector<std::string> completions(const std::string& before, const std::string& word) {
    const SplitResult split = splitWords(before);
    if (!split.error.empty()) return {};
    Names all;
    if (!split.words.empty()) {
        all = candidatesAfter(split.words);
    } else {
        for (const std::string& name : commandNames()) {
            if (name != "device") all.push_back(name + ' ');  // a script's start-up setting
        }
    }
    Names matching;
    for (const std::string& candidate : all) {
        if (candidate.compare(0, word.size(), word) == 0) matching.push_back(candidate);
    }
    return matching;
}

}  // namespace hostrunner
