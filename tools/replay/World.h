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

// The desktop world a replayed scenario runs in (the fake driver's answers, the conntrack
// files, the agent, standard error, the framework, the build type) as the scenario has set it so
// far, and the lines that change it where a step needs it otherwise.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "Step.h"

namespace hostreplay {

struct ScenarioLine {
    std::string text;     // a command; empty for a line that is only a comment
    std::string comment;  // without "#"
};

class World {
public:
    // The host's defaults; the conntrack files are unknown until set.
    World();

    std::vector<ScenarioLine> settle(const std::vector<Requirement>& needs);

private:
    std::map<Requirement::Key, std::string> mState;
};

}  // namespace hostreplay
