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

// A pass of the event thread in the log as the modem command that causes it: a failed read, or
// a record of the size, status and fields the lines tell, with the framework and the build type
// the delivery met.

#pragma once

#include <vector>

#include "ServiceLog.h"
#include "Step.h"

namespace hostreplay {

// `lines`: the pass's lines in order, the first one its read's result.
Step replayEvent(const std::vector<const ServiceLine*>& lines);

}  // namespace hostreplay
