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

// The network agent for the framework-calls target: registered as IPlexd "default" in the host's
// service registry, it hands every command line to an observer. It can be absent, or failing in
// transport, like the agent of another process.

#pragma once

#include <functional>
#include <string>

namespace fuzzsupport {

class FuzzAgent {
public:
    enum class Mode { kUp, kAbsent, kFailing };
    using Observer = std::function<void(const std::string& line)>;

    static void setObserver(Observer observer);
    static void setMode(Mode mode);
};

// The six command lines the service may send, each with the blank the channel appends.
bool isServiceCommand(const std::string& line);

}  // namespace fuzzsupport
