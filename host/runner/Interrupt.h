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

// Ctrl-C in the console: instead of ending the process it abandons the line being typed or the
// `wait` that runs. The signal handler only writes a byte to a pipe, which whoever waits on the
// terminal or the clock also watches.

#pragma once

#include <chrono>

namespace hostrunner {

// Before the service starts its threads: SIGINT is blocked in the calling thread, and so in every
// thread it starts, until catchInterrupts() takes it on the console's own thread. A Ctrl-C then
// never lands on a service thread, where it could interrupt a call or wait unhandled (a
// sanitizer's runtime defers a signal to a thread blocked in a read).
void keepInterruptsForTheConsole();

// From now on SIGINT is caught, on the calling thread. False when it could not be set up (Ctrl-C
// then ends the process).
bool catchInterrupts();

// The descriptor that is readable while an interrupt is pending, or -1 before catchInterrupts().
int interruptDescriptor();

// Whether an interrupt was pending; it is not any more.
bool takeInterrupt();

// Sleeps for `duration`, or until an interrupt, which stays pending for the console to take.
void interruptibleSleep(std::chrono::milliseconds duration);

}  // namespace hostrunner
