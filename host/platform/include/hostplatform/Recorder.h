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

// The host layer's record of everything that crosses the service's boundaries. Every piece of the
// stand-in adds records here and the recorder hands each one to its sinks: the trace of the host
// executable, a test's retaining sink. It keeps none itself, so a run of any length stays flat.

#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace hostplatform {

struct ThreadpoolRecord {
    size_t max = 0;
    bool callerWillJoin = false;
};

struct RegisterRecord {
    std::string interface;  // descriptor, e.g. "android.hardware.tetheroffload.config@1.0::..."
    std::string name;
};

struct LogRecord {
    int prio = 0;
    std::string tag;
    std::string msg;
    std::string thread;
    // What logcat shows beside the line; the JSON Lines and text traces leave them out.
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

    // Whether any sink would see a record: without one, callers may skip building it.
    bool listening() const { return mListening.load(std::memory_order_relaxed); }

    // Stamps the record and hands it to every sink; without a sink it is dropped.
    void add(RecordBody body);

    void addSink(Sink sink);
    void clearSinks();

private:
    Recorder();

    mutable std::mutex mLock;
    const int64_t mStartMicros;
    std::vector<Sink> mSinks;
    std::atomic<bool> mListening{false};
};

}  // namespace hostplatform
