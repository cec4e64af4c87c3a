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

// The messages with which the upstream, downstream, prefix and quota operations answer the
// framework. Every invalid argument gets the same message; the cause goes to the log only.

#pragma once

namespace vendor {
namespace tetheroffload {

constexpr char kReplySuccessful[] = "Successful\n";
constexpr char kReplyInvalid[] = "Invalid input values\n";
constexpr char kReplyNotInitialised[] = "Device has not been initialized\n";
constexpr char kReplyDeactivated[] = "vexa de-active flow\n";

}  // namespace tetheroffload
}  // namespace vendor
