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

// The event path: the real event thread draining a batch of records written into the fake
// "/dev/vexa", whose reads are the kernel's, against the physical limit: a bare loop of read()
// calls taking the same batch from a socket of the same kind. Both are measured in every
// iteration, so that their ratio holds on a machine whose load changes. A third figure shows
// status events with the log lines left unformatted.

#pragma once

namespace bench {

void registerEventPath();

}  // namespace bench
