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

#include "World.h"

namespace hostreplay {

using Key = Requirement::Key;

World::World()
    : mState{
              {Key::kIoctl, "modem ioctl ok"},
              {Key::kStats, "modem stats 0 0"},
              {Key::kAgent, "agent up"},
              {Key::kStderr, "stderr open"},
              {Key::kFramework, "framework alive"},
              // Unset reads as "user".
              {Key::kBuildType, "prop ro.build.type user"},
      } {}

std::vector<ScenarioLine> World::settle(const std::vector<Requirement>& needs) {
    std::vector<ScenarioLine> lines;
    for (const Requirement& need : needs) {
        std::string& now = mState[need.key];
        if (now == need.command) continue;
        now = need.command;
        lines.push_back(ScenarioLine{need.command, need.why});
    }
    return lines;
}

}  // namespace hostreplay
