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

#include "ScenarioBuilder.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <utility>
#include <vector>

#include "CallReplay.h"
#include "EventReplay.h"
#include "ScenarioText.h"

namespace hostreplay {
namespace {

// Bounds on what is held between lines: a call or pass longer than this is a log gone wrong,
// and a call still open after this many later ones or notes has ended long ago (a call that logs
// no last line of its own stays open until the next one begins).
constexpr size_t kMaxEpisodeLines = 64;
constexpr size_t kMaxOpenEpisodes = 16;
constexpr size_t kMaxHeldNotes = 256;
constexpr size_t kNoSession = std::string::npos;

Note noteFor(const ServiceLine& line, const std::string& why) {
    return Note{line.lineNo, why + ": " + line.level + " " + quotedForComment(line.text)};
}

// The calls that log a last line of their own; after it, nothing more is theirs.
bool isClosingLine(Msg id) {
    return id == Msg::kInitEnd || id == Msg::kStopDone || id == Msg::kUpstreamEnd ||
           id == Msg::kAddEnd || id == Msg::kRemoveEnd;
}

bool isSetHandles(Msg id) {
    return id == Msg::kSetHandlesOk || id == Msg::kSetHandlesFd1Empty ||
           id == Msg::kSetHandlesFd2Empty;
}

// The calls the first line of an open call can be.
std::vector<Msg> callsOf(const ServiceLine& first) {
    if (!first.message) return first.cutFrom;
    const std::optional<Msg> call = callOf(*first.message);
    return call ? std::vector<Msg>{*call} : std::vector<Msg>{};
}

std::string joined(const std::vector<std::string>& parts) {
    std::string out;
    for (const std::string& part : parts) out += (out.empty() ? "" : "; ") + part;
    return out;
}

std::string lineText(const ScenarioLine& line) {
    if (line.text.empty()) return "# " + line.comment + "\n";
    return line.text + (line.comment.empty() ? "" : "  # " + line.comment) + "\n";
}

std::string counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

ScenarioWriter::ScenarioWriter(const ScenarioFacts* facts, ScenarioOutput output)
    : mGiven(facts), mOutput(std::move(output)) {}

void ScenarioWriter::begin(const std::string& header) {
    if (mGiven == nullptr) return;
    mOutput(header);
    if (mGiven->deviceAbsent) mOutput("device absent\n");
    // A capture usually begins in the middle of things. An initOffload in front puts the replay
    // in the state the log shows; what the framework set before the capture (upstream,
    // downstreams) is not in the log.
    if (mGiven->initBeforeLog) {
        Step init;
        init.command = "initOffload";
        init.opensSession = true;
        init.picks.push_back("the log begins after the service was initialised");
        init.need(Requirement::Key::kFramework, "framework alive");
        write(std::move(init));
    } else {
        mSessions = 1;  // the session before the log has no initOffload to write
    }
}

void ScenarioWriter::serviceLine(ServiceLine line) {
    if (!line.message) {
        if (line.cutFrom.empty()) {
            note(noteFor(line, "not a line of this service's"));
        } else {
            cutLine(std::move(line));
        }
        return;
    }
    const ServiceMessage m = *line.message;
    if (!canBeReplayed(m)) note(noteFor(line, "cannot be made to happen here"));
    switch (contextOf(m)) {
        case Context::kAnywhere:
            break;
        case Context::kStartup:
            if (m.id == Msg::kOpenDevFail || m.id == Msg::kNoDevice) mFacts.deviceAbsent = true;
            break;
        case Context::kExit:
            close(&mCall);
            break;
        case Context::kCallEntry:
            close(&mCall);
            mCall = open(false, std::move(line));
            // setHandles logs one line, its last.
            if (isSetHandles(m.id)) close(&mCall);
            break;
        case Context::kCall:
            append(mCall, std::move(line), "outside any call");
            if (isClosingLine(m.id)) close(&mCall);
            break;
        case Context::kEventStart:
            // A failed read logs its own size line right after.
            if (m.id == Msg::kReadSize && continuesFailedRead()) {
                mEvent->lines.push_back(std::move(line));
            } else {
                close(&mEvent);
                mEvent = open(true, std::move(line));
            }
            break;
        case Context::kEvent:
            append(mEvent, std::move(line), "part of an event whose read is not in the log");
            break;
    }
    drain(false);
}

// A line of the service cut short: the first line of a call, which the lines after it may
// rebuild (CallReplay), a later line of the open call, or a line whose loss leaves a gap.
void ScenarioWriter::cutLine(ServiceLine line) {
    std::vector<Msg> entries;
    bool ofOpenCall = false;
    bool beginsEvent = false;
    for (Msg id : line.cutFrom) {
        const ServiceMessage m{id, {}};
        const Context context = contextOf(m);
        if (context == Context::kCallEntry) entries.push_back(id);
        if (context == Context::kEventStart) beginsEvent = true;
        const std::optional<Msg> call = callOf(m);
        if (context == Context::kCall && call && mCall != nullptr) {
            const std::vector<Msg> open = callsOf(mCall->lines.front());
            ofOpenCall = ofOpenCall || std::find(open.begin(), open.end(), *call) != open.end();
        }
    }
    if (ofOpenCall) {
        note(noteFor(line, "cut short, a line of the call before whose rest is lost"));
    } else if (!entries.empty()) {
        line.cutFrom = entries;
        close(&mCall);
        mCall = open(false, std::move(line));
    } else {
        // The lines after a lost first line of a pass are no part of the pass before.
        if (beginsEvent) close(&mEvent);
        note(noteFor(line, std::string("cut short, its rest lost (it began \"") +
                                   formatOf(line.cutFrom.front()) +
                                   "\"); the lines after it may show another path"));
    }
    drain(false);
}

void ScenarioWriter::note(Note note) {
    mNotes.emplace(note.lineNo, std::move(note.text));
    if (mNotes.size() > kMaxHeldNotes && !mEpisodes.empty()) closeOldest();
    drain(false);
}

void ScenarioWriter::closeOldest() {
    Episode* oldest = &mEpisodes.front();
    if (mCall == oldest) mCall = nullptr;
    if (mEvent == oldest) mEvent = nullptr;
    oldest->closed = true;
}

ScenarioWriter::Episode* ScenarioWriter::open(bool isEvent, ServiceLine line) {
    mEpisodes.push_back(Episode{isEvent, false, {}});
    mEpisodes.back().lines.push_back(std::move(line));
    if (mEpisodes.size() > kMaxOpenEpisodes) closeOldest();
    return &mEpisodes.back();
}

void ScenarioWriter::append(Episode* episode, ServiceLine line, const char* orphan) {
    if (episode == nullptr) {
        note(noteFor(line, orphan));
    } else if (episode->lines.size() >= kMaxEpisodeLines) {
        note(noteFor(line, "past the " + std::to_string(kMaxEpisodeLines) +
                                   " lines a replay keeps of one call or event"));
    } else {
        episode->lines.push_back(std::move(line));
    }
}

void ScenarioWriter::close(Episode** episode) {
    if (*episode != nullptr) (*episode)->closed = true;
    *episode = nullptr;
}

bool ScenarioWriter::continuesFailedRead() const {
    if (mEvent == nullptr) return false;
    const auto& lines = mEvent->lines;
    return lines.size() == 1 && lines[0].message && lines[0].message->id == Msg::kReadFail;
}

// Turns the episodes that are done into steps, in the order they began, with the notes of the
// lines before each; then the notes before the first episode still open.
void ScenarioWriter::drain(bool all) {
    while (!mEpisodes.empty() && (mEpisodes.front().closed || all)) {
        Episode episode = std::move(mEpisodes.front());
        if (mCall == &mEpisodes.front()) mCall = nullptr;
        if (mEvent == &mEpisodes.front()) mEvent = nullptr;
        mEpisodes.pop_front();
        std::vector<const ServiceLine*> lines;
        for (const ServiceLine& line : episode.lines) lines.push_back(&line);
        Step step = episode.isEvent ? replayEvent(lines) : replayCall(lines);
        for (const Note& n : step.notes) mNotes.emplace(n.lineNo, n.text);
        writeNotes(step.lineNo);
        if (mGiven == nullptr) {
            gather(step);
        } else {
            write(std::move(step));
        }
    }
    writeNotes(mEpisodes.empty() ? INT_MAX : mEpisodes.front().lines.front().lineNo - 1);
}

void ScenarioWriter::writeNotes(int upTo) {
    auto note = mNotes.begin();
    for (; note != mNotes.end() && note->first <= upTo; ++note) {
        if (mGiven != nullptr) {
            mOutput("# log line " + std::to_string(note->first) + ": " + note->second + "\n");
        }
    }
    mNotes.erase(mNotes.begin(), note);
}

// What the beginning of the scenario needs: whether the device was absent, whether the log
// begins initialised (the first step that shows it decides), and the callback's version of each
// session, which shows, if at all, when a delivery fails in transport and its line names the
// method: the first such line between an initOffload and its stopOffload decides.
void ScenarioWriter::gather(const Step& step) {
    mFacts.deviceAbsent = mFacts.deviceAbsent || step.deviceAbsent;
    if (!mInitKnown && step.initialised != Step::Initialised::kUnknown) {
        mInitKnown = true;
        mFacts.initBeforeLog = step.initialised == Step::Initialised::kYes;
    }
    if (step.opensSession) {
        mSession = mFacts.versions.size();
        mFacts.versions += '?';
    } else if (mSession != kNoSession && !step.versionClue.empty() &&
               mFacts.versions[mSession] == '?') {
        mFacts.versions[mSession] = step.versionClue == "1.0" ? '0' : '1';
    }
    if (step.closesSession) mSession = kNoSession;
}

void ScenarioWriter::write(Step step) {
    if (step.command.empty()) return;
    if (step.opensSession) {
        const char version = mSessions < mGiven->versions.size() ? mGiven->versions[mSessions] : '?';
        ++mSessions;
        if (version == '?') step.picks.push_back("the callback's version is not logged");
        step.command += version == '0' ? " 1.0" : " 1.1";
    }
    for (const ScenarioLine& line : mWorld.settle(step.needs)) mOutput(lineText(line));
    mOutput(lineText(ScenarioLine{step.command, joined(step.picks)}));
}

void ScenarioWriter::finish() {
    close(&mCall);
    close(&mEvent);
    drain(true);
}

std::string scenarioHeader(const LogCounts& counts, const std::string& origin) {
    std::string out = "# Replayed by tetheroffload-replay from " + origin + ":\n# ";
    const std::string tag = "tag \"" + std::string(kServiceTag) + "\"";
    if (counts.serviceLines == 0) {
        out += "no line of " + tag +
               (counts.pid != 0 ? " from process " + std::to_string(counts.pid) : "") + ".\n";
    } else {
        out += "the lines of " + tag + " from process " + std::to_string(counts.pid) + ".\n";
    }
    out += "# Left out: " + counted(counts.otherTagLines, "line") + " of other tags, " +
           counted(counts.banners, "logcat banner");
    for (const auto& [pid, count] : counts.otherProcesses) {
        out += ", " + counted(count, "line") + " from process " + std::to_string(pid) + " (--pid " +
               std::to_string(pid) + " replays them)";
    }
    if (counts.unlistedProcessLines > 0) {
        out += ", " + counted(counts.unlistedProcessLines, "line") + " from further processes";
    }
    return out + ".\n";
}

}  // namespace hostreplay
