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

// The JSON Lines trace: one object a record, `k` and `t` first, then the fields of its kind.

#pragma once

#include <string>

#include "hostplatform/Recorder.h"

namespace hostrunner {

// Appends the record's line, without its newline.
void appendJsonLine(const hostplatform::Record& record, std::string* out);

// One line, without its newline.
std::string toJsonLine(const hostplatform::Record& record);

}  // namespace hostrunner
