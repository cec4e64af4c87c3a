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

// How a fuzz target reports a check that failed: the reason on the standard error it started
// with (libFuzzer may close standard error for the code under test), then abort, which libFuzzer
// turns into a crash with its input saved.

#pragma once

#include <string>

namespace fuzzsupport {

// Keeps a copy of the standard error descriptor; call it first, from LLVMFuzzerInitialize.
void keepReportChannel();

[[noreturn]] void finding(const std::string& what);

}  // namespace fuzzsupport
