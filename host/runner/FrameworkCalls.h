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

// Makes the framework's calls that a scenario names, as the framework would over binder: through
// the services registered under "default", each call recorded before it is made and its reply
// when the result callback runs.

#pragma once

#include "Command.h"

namespace hostrunner {

bool isFrameworkCall(const CommandBody& body);

// Makes the call; the command must be a framework call.
void makeFrameworkCall(const Command& command);

}  // namespace hostrunner
