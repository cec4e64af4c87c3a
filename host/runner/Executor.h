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

// Runs checked scenario commands against the service and its host world, one at a time: each is
// finished before it returns (a call once its reply has come, a modem event once the event thread
// has dispatched it and is reading again).

#pragma once

#include "Command.h"

namespace hostrunner {

// Before the first command: waits until the event thread is blocked in its first read.
void waitForEventThread();

void execute(const Command& command);

// Runs a script's commands like execute(), except that modem events and read failures in a row
// are queued on the device instead of handed over one by one: the event thread takes each one as
// soon as it is done with the one before, so the order of everything stays the same. Any other
// command, and finish(), first wait until the event thread has dispatched them all and is
// blocked in read again.
class ScriptRunner {
public:
    void run(const Command& command);
    void finish();

private:
    bool queue(const Command& command);

    bool mQueued = false;  // records on the device that may not have been dispatched yet
};

}  // namespace hostrunner
