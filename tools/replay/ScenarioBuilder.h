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

// The scenario a service log replays as: the log's framework calls and modem events in their
// order, each preceded by the changes of the world it needs, with every line that could not be
// placed kept as a comment at its place. It is written as the lines come, in two passes: the
// first gathers what the scenario's beginning needs from the whole log (ScenarioFacts), the second
// writes. Between lines it keeps only the calls and passes of the event thread still open.

#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>

#include "ServiceLog.h"
#include "World.h"

namespace hostreplay {

struct ScenarioFacts {
    bool deviceAbsent = false;
    bool initBeforeLog = false;  // the log begins inside a session: an initOffload goes first
    // The framework callback's version of each session, in order: '0' for 1.0, '1' for 1.1, '?'
    // when the log does not tell; the first for the session the log begins in.
    std::string versions = "?";
};

using ScenarioOutput = std::function<void(const std::string&)>;

class ScenarioWriter : public LineSink {
public:
    // The first pass: no facts; it gathers them and writes nothing. The second: the first's facts,
    // and where the scenario goes.
    explicit ScenarioWriter(const ScenarioFacts* facts = nullptr, ScenarioOutput output = {});

    void begin(const std::string& header);
    void serviceLine(ServiceLine line) override;
    void note(Note note) override;
    void finish();

    const ScenarioFacts& facts() const { return mFacts; }

private:
    struct Episode {
        bool isEvent = false;
        bool closed = false;
        std::vector<ServiceLine> lines;
    };

    Episode* open(bool isEvent, ServiceLine line);
    void append(Episode* episode, ServiceLine line, const char* orphan);
    void close(Episode** episode);
    void closeOldest();
    void cutLine(ServiceLine line);
    bool continuesFailedRead() const;
    void drain(bool all);
    void writeNotes(int upTo);
    void gather(const Step& step);
    void write(Step step);

    const ScenarioFacts* mGiven;
    ScenarioOutput mOutput;
    ScenarioFacts mFacts;
    std::deque<Episode> mEpisodes;  // in the order they began; the first ones may be closed
    Episode* mCall = nullptr;
    Episode* mEvent = nullptr;
    std::multimap<int, std::string> mNotes;  // by line number, in the order they came
    World mWorld;
    bool mInitKnown = false;
    size_t mSession = 0;   // first pass: the session of `versions` open, npos outside one
    size_t mSessions = 0;  // second pass: the session of `versions` the next initOffload opens
};

// The scenario's first comment lines: where the log came from and what was left out.
std::string scenarioHeader(const LogCounts& counts, const std::string& origin);

}  // namespace hostreplay
