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

// The side of ProcFiles that the interposed fopen reaches.

#pragma once

#include <stdio.h>

namespace hostplatform {

// Answers fopen() of a conntrack file whose content or absence has been set: stores the stream
// (null, with errno set, when absent) in `*file` and returns true. Returns false when the real
// file is to be opened. Safe before static initialisation.
bool openStandInProcFile(const char* path, const char* mode, FILE** file);

}  // namespace hostplatform
