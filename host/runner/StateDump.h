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

// The `dump` command: the service's state report, fetched as `lshal debug` fetches it on a device.

#pragma once

namespace hostrunner {

// Calls debug on the IOffloadControl registered under "default" with a descriptor the host
// reads back, and records what the service wrote.
void dumpServiceState();

}  // namespace hostrunner
