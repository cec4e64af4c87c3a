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

// The interactive session: reads lines, runs each as it comes, reports a malformed line and goes
// on. A Ctrl-C abandons the line being typed or the command that waits.

#pragma once

#include <cstdio>
#include <string>

namespace hostrunner {

class LineReader {
public:
    enum class Input { kLine, kInterrupted, kEnd };

    virtual ~LineReader() = default;
    // kLine with the line read, kInterrupted when Ctrl-C abandoned it, kEnd at the end of input.
    virtual Input readLine(std::string* line) = 0;
};

// Every command with its arguments, one a line.
const char* helpText();

class Console {
public:
    // `out` gets the greeting and the help text, `err` the complaints about malformed lines.
    Console(LineReader* reader, FILE* out, FILE* err) : mReader(reader), mOut(out), mErr(err) {}

    // Until `quit` or the end of input.
    void run();

private:
    void reject(int line, const std::string& what);

    LineReader* mReader;
    FILE* mOut;
    FILE* mErr;
};

}  // namespace hostrunner
