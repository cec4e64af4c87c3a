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

// A framework call of the log as a scenario command: the call its first line names, with the
// arguments its lines tell and, where they tell none, values that lead the service down the
// same path.

#pragma once

#include <vector>

#include "ServiceLog.h"
#include "Step.h"

namespace hostreplay {

// `lines`: the call's lines in order, the first one naming the call.
Step replayCall(const std::vector<const ServiceLine*>& lines);

}  // namespace hostreplay
