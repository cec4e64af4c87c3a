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

// What crosses the service's boundaries, as the fakes see it: a line reaching liblog, the open,
// ioctl and read of "/dev/vexa", a command line to the network agent, a call to the framework.
// Every fake hands what crosses it to the observers: the desktop's trace is one, a test or a fuzz
// target another. Without an observer nothing is built, so an unobserved event path stays cheap.

#pragma once

#include <stdint.h>

#include <atomic>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace fakes {

struct LogRecord {
    int prio = 0;
    std::string tag;
    std::string msg;
    std::string thread;
    // What logcat shows beside the line.
    int64_t wallSec = 0;  // CLOCK_REALTIME
    int32_t wallNsec = 0;
    int32_t pid = 0;
    int32_t tid = 0;
};

struct OpenRecord {
    std::string path;
    int fd = -1;     // -1 when the open failed
    int errnum = 0;  // set when the open failed
};

struct IoctlRecord {
    int fd = -1;
    unsigned long req = 0;
    std::vector<uint8_t> bytes;  // the request as the driver read it
    int ret = 0;
    int errnum = 0;  // set when ret is not 0
};

struct ReadRecord {
    long ret = 0;
    std::vector<uint8_t> bytes;  // what the read returned
    int errnum = 0;              // set when ret is negative
};

struct AgentRecord {
    std::string cmd;
    bool ok = true;  // false when the call failed in transport
};

struct AddrPort {
    std::string addr;
    uint16_t port = 0;
};

struct CallbackRecord {
    std::string op;      // "onEvent", "onEvent_1_1" or "updateTimeout"
    uint32_t event = 0;  // onEvent and onEvent_1_1
    AddrPort src;        // updateTimeout
    AddrPort dst;        // updateTimeout
    uint32_t proto = 0;  // updateTimeout
    bool ok = true;      // false when the call failed in transport
};

using Crossing =
        std::variant<LogRecord, OpenRecord, IoctlRecord, ReadRecord, AgentRecord, CallbackRecord>;

// Observers run on the thread that crossed, one at a time and in the order of the crossings. An
// observer may hold that thread (a slow trace holds the service), but must not cross itself.
class Observers {
public:
    using Observer = std::function<void(const Crossing&)>;

    // Returns what remove() takes.
    static int add(Observer observer);
    static void remove(int id);

    // Whether anyone would see a crossing: without one, callers skip building it.
    static bool any() { return sCount.load(std::memory_order_relaxed) > 0; }

    static void report(const Crossing& crossing);

private:
    static std::atomic<int> sCount;
};

}  // namespace fakes
