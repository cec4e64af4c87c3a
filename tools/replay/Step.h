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

// What one framework call or one pass of the event thread in the log turns into: a scenario
// command, the state of the world it must meet, and what the log did not tell.

#pragma once

#include <string>
#include <vector>

namespace hostreplay {

struct Requirement {
    enum class Key { kIoctl, kStats, kProcTcp, kProcUdp, kAgent, kStderr, kFramework, kBuildType };
    Key key;
    std::string command;  // the scenario line that puts the world so
    std::string why;      // its comment when it picks a value the log does not hold
};

// A log line that needs a word in the scenario: one that could not be placed, or one that no
// scenario can make happen.
struct Note {
    int lineNo = 0;
    std::string text;
};

struct Step {
    int lineNo = 0;  // of the log line that began it
    std::string command;
    std::vector<std::string> picks;  // values chosen where the log has none, for the comment
    std::vector<Requirement> needs;
    std::vector<Note> notes;
    bool deviceAbsent = false;
    // A successful initOffload: the callback's version shows, if at all, in later events.
    bool opensSession = false;
    bool closesSession = false;
    std::string versionClue;  // "1.0" or "1.1" when a failure line names the callback's method
    // Whether the service was initialised when the step began, where its lines show it.
    enum class Initialised { kUnknown, kYes, kNo };
    Initialised initialised = Initialised::kUnknown;

    // Adds what the world must be; the first of two different answers for one key stays, with a
    // word in the comment, since the scenario sets the world between steps only.
    void need(Requirement::Key key, const std::string& command, const std::string& why = "");
};

}  // namespace hostreplay
