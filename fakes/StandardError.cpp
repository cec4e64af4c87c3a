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

#include "fakes/StandardError.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <mutex>

namespace fakes {
namespace {

struct Switch {
    std::mutex lock;
    int savedFd = -1;  // the real standard error while it is closed
};

Switch& stderrSwitch() {
    static Switch* s = new Switch();
    return *s;
}

// A descriptor open for reading only: every write to it fails with EBADF.
void closeStderr(Switch& s) {
    if (s.savedFd >= 0) return;
    const int readOnly = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (readOnly < 0) return;
    s.savedFd = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (s.savedFd >= 0) dup2(readOnly, STDERR_FILENO);
    close(readOnly);
}

void reopenStderr(Switch& s) {
    if (s.savedFd < 0) return;
    dup2(s.savedFd, STDERR_FILENO);
    close(s.savedFd);
    s.savedFd = -1;
}

}  // namespace

void StandardError::setClosed(bool closed) {
    Switch& s = stderrSwitch();
    std::lock_guard<std::mutex> lock(s.lock);
    fflush(stderr);
    if (closed) {
        closeStderr(s);
    } else {
        reopenStderr(s);
    }
    clearerr(stderr);
}

}  // namespace fakes
