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

// The service's pauses (the event thread's back-off after a failed read, the bridge's 500 ms
// between two agent commands) are real by default. A fuzz target skips them: they cost only
// time, and the order of what they separate stays the same.

#pragma once

namespace fakes {

void skipPauses(bool skipped);

}  // namespace fakes
