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

// The lines of a captured log, read as a stream, twice: from a file, from standard input (copied
// to an unnamed temporary file first, so that it can be read again), or from a bug report (its
// zip or its main text file), where only the SYSTEM LOG section counts. A capture saved as UTF-16
// is transcoded. No line is held longer than kMaxLineBytes: the rest of a longer one is skipped.

#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace hostreplay {

constexpr size_t kMaxLineBytes = 64 * 1024;

struct InputLine {
    int lineNo = 0;          // in the text the log is in, from 1
    std::string text;        // without its line end, at most kMaxLineBytes
    size_t length = 0;       // of the whole line, in bytes
    bool printable = false;  // `logcat -v printable` wrote it (a bug report's SYSTEM LOG)

    bool tooLong() const { return length > kMaxLineBytes; }
};

// Bytes that can be read again from the start.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Up to `size` bytes; 0 at the end, -1 when reading failed.
    virtual long read(char* buffer, size_t size) = 0;
    virtual bool rewind() = 0;
};

std::unique_ptr<ByteSource> textSource(std::string text);

class LogInput {
public:
    LogInput();
    ~LogInput();

    // A file, or standard input for "" or "-". False (with error()) when it cannot be read.
    bool open(const std::string& path);
    // Any bytes, named `name` in messages (a test's text).
    bool open(std::unique_ptr<ByteSource> bytes, const std::string& name);

    // The next line of the log; false at its end, or on an error (error() says which).
    bool next(InputLine* line);
    // Back to the first line, for the second pass.
    bool rewind();

    // Where the lines come from, for the scenario's header: "capture.txt", "<stdin> (UTF-16LE)",
    // "bugreport.zip (bugreport-x.txt, SYSTEM LOG)".
    std::string origin() const;
    // "NAME: cannot read the log" or "NAME is not a log: WHY"; empty while all is well.
    const std::string& error() const;
    // The file's name or "<stdin>".
    const std::string& name() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace hostreplay
