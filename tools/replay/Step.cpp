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

#include "Step.h"

namespace hostreplay {

void Step::need(Requirement::Key key, const std::string& command, const std::string& why) {
    for (const Requirement& had : needs) {
        if (had.key != key) continue;
        if (had.command != command) {
            picks.push_back("the log also needs `" + command +
                            "` within this step, which a scenario cannot change mid-step");
        }
        return;
    }
    needs.push_back(Requirement{key, command, why});
}

}  // namespace hostreplay
