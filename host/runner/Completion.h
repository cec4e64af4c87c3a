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

// Tab completion on the console: what may stand at a place of a scenario line. A candidate ends
// in the blank that follows it, or in the '=' of an option that a value follows.

#pragma once

#include <string>
#include <vector>

namespace hostrunner {

// The candidates that begin with `word`, the word being typed after `before` (the line up to it).
std::vector<std::string> completions(const std::string& before, const std::string& word);

}  // namespace hostrunner
