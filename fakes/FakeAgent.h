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

// The network agent, as the service finds it: IPlexd "default". The agent runs in another
// process, so the fake stands in where the service reaches it: it answers IPlexd::getService (on
// a phone in front of the agent's own library, which would ask the hardware service manager).
// Every command line it is handed goes to the observers. It can be absent, or failing in
// transport as an agent whose process has gone.

#pragma once

namespace fakes {

class FakeAgent {
public:
    enum class Mode { kUp, kAbsent, kFailing };

    // Up until told otherwise.
    static void setMode(Mode mode);
};

}  // namespace fakes
