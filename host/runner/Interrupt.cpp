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

#include "Interrupt.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <thread>

namespace hostrunner {
namespace {

// Set once by catchInterrupts(); atomics because the handler may run on any thread.
std::atomic<int> gReadEnd{-1};
std::atomic<int> gWriteEnd{-1};

void onInterrupt(int) {
    const int saved = errno;
    const char byte = 1;
    // A full pipe already says that an interrupt is pending.
    (void)!write(gWriteEnd.load(), &byte, 1);
    errno = saved;
}

}  // namespace

void keepInterruptsForTheConsole() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
}

// Unblocks SIGINT on every path: without the handler, Ctrl-C ends the process as it would anyway.
bool catchInterrupts() {
    int ends[2];
    bool caught = pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0;
    if (caught) {
        gReadEnd = ends[0];
        gWriteEnd = ends[1];
        struct sigaction action = {};
        action.sa_handler = onInterrupt;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        caught = sigaction(SIGINT, &action, nullptr) == 0;
    }
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    return pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr) == 0 && caught;
}

int interruptDescriptor() {
    return gReadEnd.load();
}

bool takeInterrupt() {
    const int fd = gReadEnd.load();
    if (fd < 0) return false;
    bool taken = false;
    char bytes[64];
    while (read(fd, bytes, sizeof(bytes)) > 0) taken = true;
    return taken;
}

void interruptibleSleep(std::chrono::milliseconds duration) {
    const int fd = gReadEnd.load();
    if (fd < 0) {
        std::this_thread::sleep_for(duration);
        return;
    }
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + duration;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return;
        pollfd pending = {fd, POLLIN, 0};
        const int ready =
                poll(&pending, 1, static_cast<int>(std::min<int64_t>(left.count(), INT_MAX)));
        if (ready > 0) return;
        if (ready < 0 && errno != EINTR) {
            std::this_thread::sleep_for(left);
            return;
        }
    }
}

}  // namespace hostrunner
