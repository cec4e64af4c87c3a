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

// The desktop's record of everything that crosses the service's boundaries: what the fakes
// report (log lines, the device, the agent, the framework's callbacks), and what the host's own
// pieces add (the thread pool, registrations, the scenario's calls and their replies, the exit).
// The recorder hands each record to its sinks: the trace of the host executable, a test's
// retaining sink. It keeps none itself, so a run of any length stays flat.

#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "fakes/Crossings.h"

namespace hostplatform {

using fakes::AddrPort;
using fakes::AgentRecord;
using fakes::CallbackRecord;
using fakes::IoctlRecord;
using fakes::LogRecord;
using fakes::OpenRecord;
using fakes::ReadRecord;

struct ThreadpoolRecord {
    size_t max = 0;
    bool callerWillJoin = false;
};

struct RegisterRecord {
    std::string interface;  // descriptor, e.g. "android.hardware.tetheroffload.config@1.0::..."
    std::string name;
};

struct CallRecord {
    int line = 0;
    std::string op;
    std::vector<std::string> args;
};

struct ReplyRecord {
    std::string op;
    bool ok = false;
    std::string msg;
    bool isStats = false;  // getForwardedStats replies with rx and tx instead of ok and msg
    uint64_t rx = 0;
    uint64_t tx = 0;
};

struct ExitRecord {
    int status = 0;
};

struct ErrorRecord {
    int line = 0;
    std::string msg;
};

struct DumpRecord {
    std::string text;  // all the service wrote to the descriptor
};

using RecordBody = std::variant<ThreadpoolRecord, RegisterRecord, LogRecord, OpenRecord,
                                IoctlRecord, ReadRecord, AgentRecord, CallbackRecord, CallRecord,
                                ReplyRecord, ExitRecord, ErrorRecord, DumpRecord>;

struct Record {
    int64_t tMicros = 0;  // since the recorder was created, monotonic
    RecordBody body;
};

// Process-wide, thread-safe, never destroyed (the event thread may still record while the
// process exits). Sinks run under the recorder's lock, in record order; they must not record.
class Recorder {
public:
    using Sink = std::function<void(const Record&)>;

    static Recorder& instance();

    // Stamps the record and hands it to every sink; without a sink it is dropped.
    void add(RecordBody body);

    // The first sink makes the recorder an observer of the fakes.
    void addSink(Sink sink);

private:
    Recorder();

    mutable std::mutex mLock;
    const int64_t mStartMicros;
    std::vector<Sink> mSinks;
};

}  // namespace hostplatform
