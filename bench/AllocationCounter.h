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

// Counts every allocation the benchmark process makes through malloc, calloc, realloc and the
// aligned forms (operator new comes through malloc), so that a benchmark can tell what one event
// costs in allocations. The memory itself still comes from the C library.

#pragma once

#include <cstdint>

namespace bench {

// Allocations since the process started, on every thread.
uint64_t allocationCount();

}  // namespace bench
