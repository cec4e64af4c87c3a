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

// The interactive session: reads lines from a terminal with editing and history, runs each as it
// comes, reports a malformed line and goes on.

#pragma once

#include <cstdio>
#include <string>

namespace hostrunner {

class LineReader {
public:
    virtual ~LineReader() = default;
    // False at the end of input.
    virtual bool readLine(std::string* line) = 0;
};

// Line editing and history on the terminal.
class EditLineReader : public LineReader {
public:
    explicit EditLineReader(std::string prompt) : mPrompt(std::move(prompt)) {}
    bool readLine(std::string* line) override;

private:
    std::string mPrompt;
};

// Every command with its arguments, one a line.
const char* helpText();

class Console {
public:
    // `out` gets the help text, `err` the complaints about malformed lines.
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
