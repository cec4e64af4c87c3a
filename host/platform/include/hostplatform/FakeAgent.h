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

// The network agent stand-in: registered as IPlexd "default", it records every command line.

#pragma once

namespace hostplatform {

class FakeAgent {
public:
    enum class Mode { kUp, kAbsent, kFailing };

    // kUp registers the agent; kAbsent unregisters it; kFailing keeps it registered with every
    // runCmd failing in transport. The agent is up until told otherwise.
    // ServiceRegistry::clear() unregisters it as well; setMode(kUp) registers it again.
    static void setMode(Mode mode);
};

}  // namespace hostplatform
