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

// The per-command part of the parser: checks the words of one command and fills its body.

#pragma once

#include <string>
#include <vector>

#include "Command.h"
#include "Words.h"

namespace hostrunner {

// Returns "" and fills `out`, or returns what is wrong.
std::string parseCommand(const Word& name, const std::vector<Word>& args, CommandBody* out);

// The names the parser knows, for completion on the console: every command, and the event
// statuses that `modem event` takes by name.
std::vector<std::string> commandNames();
std::vector<std::string> eventStatusNames();

}  // namespace hostrunner
