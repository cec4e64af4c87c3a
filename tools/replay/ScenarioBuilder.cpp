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
#include <optional>
#include <vector>

#include "CallReplay.h"
#include "EventReplay.h"
#include "ScenarioText.h"
#include "World.h"

namespace hostreplay {
namespace {

struct Episode {
    bool isEvent = false;
    std::vector<const ServiceLine*> lines;
};

Note noteFor(const ServiceLine& line, const std::string& why) {
    return Note{line.lineNo, why + ": " + line.level + " " + quotedForComment(line.text)};
}

// The calls that log a last line of their own; after it, nothing more is theirs.
bool isClosingLine(Msg id) {
    return id == Msg::kInitEnd || id == Msg::kStopDone || id == Msg::kUpstreamEnd ||
           id == Msg::kAddEnd || id == Msg::kRemoveEnd;
}

// Sorts the service's lines into framework calls and passes of the event thread. Binder and
// event-thread lines may interleave on a phone, so each kind has its own open episode.
class EpisodeSplitter {
public:
    void add(const ServiceLine& line) {
        if (!line.message) {
            mNotes.push_back(noteFor(line, "not a line of this service's"));
            return;
        }
        const ServiceMessage& m = *line.message;
        if (!canBeReplayed(m)) mNotes.push_back(noteFor(line, "cannot be made to happen here"));
        switch (contextOf(m)) {
            case Context::kAnywhere:
                break;
            case Context::kStartup:
                if (m.id == Msg::kOpenDevFail || m.id == Msg::kNoDevice) mDeviceAbsent = true;
                break;
            case Context::kExit:
                mCall.reset();
                break;
            case Context::kCallEntry:
                mCall = open(false, line);
                // setHandles logs one line, its last.
                if (m.id == Msg::kSetHandlesOk || m.id == Msg::kSetHandlesFd1Empty ||
                    m.id == Msg::kSetHandlesFd2Empty) {
                    mCall.reset();
                }
                break;
            case Context::kCall:
                append(mCall, line, "outside any call");
                if (isClosingLine(m.id)) mCall.reset();
                break;
            case Context::kEventStart:
                if (m.id == Msg::kReadSize && continuesFailedRead()) {
                    mEpisodes[*mEvent].lines.push_back(&line);
                } else {
                    mEvent = open(true, line);
                }
                break;
            case Context::kEvent:
                append(mEvent, line, "part of an event whose read is not in the log");
                break;
        }
    }

    const std::vector<Episode>& episodes() const { return mEpisodes; }
    const std::vector<Note>& notes() const { return mNotes; }
    bool deviceAbsent() const { return mDeviceAbsent; }

private:
    size_t open(bool isEvent, const ServiceLine& line) {
        mEpisodes.push_back(Episode{isEvent, {&line}});
        return mEpisodes.size() - 1;
    }
    void append(std::optional<size_t> episode, const ServiceLine& line, const char* orphan) {
        if (episode) {
            mEpisodes[*episode].lines.push_back(&line);
        } else {
            mNotes.push_back(noteFor(line, orphan));
        }
    }
    // A failed read logs its own size line right after.
    bool continuesFailedRead() const {
        if (!mEvent) return false;
        const auto& lines = mEpisodes[*mEvent].lines;
        return lines.size() == 1 && lines[0]->message->id == Msg::kReadFail;
    }

    std::vector<Episode> mEpisodes;
    std::vector<Note> mNotes;
    std::optional<size_t> mCall;
    std::optional<size_t> mEvent;
    bool mDeviceAbsent = false;
};

// A capture that begins in the middle of a session: the service's first steps show it
// initialised before any initOffload. An initOffload in front puts the replay in the same state;
// what the framework set before the capture (upstream, downstreams) is not in the log.
void openSessionBeforeTheLog(std::vector<Step>* steps) {
    const auto shown = std::find_if(steps->begin(), steps->end(), [](const Step& s) {
        return s.initialised != Step::Initialised::kUnknown;
    });
    if (shown == steps->end() || shown->initialised == Step::Initialised::kNo) return;
    Step init;
    init.command = "initOffload";
    init.opensSession = true;
    init.picks.push_back("the log begins after the service was initialised");
    init.need(Requirement::Key::kFramework, "framework alive");
    steps->insert(steps->begin(), init);
}

// The callback's version shows only when a delivery fails in transport and its line names the
// method; the first such line between an initOffload and its stopOffload decides.
void settleCallbackVersions(std::vector<Step>* steps) {
    Step* session = nullptr;
    for (Step& step : *steps) {
        if (step.opensSession) {
            session = &step;
        } else if (session != nullptr && session->versionClue.empty()) {
            session->versionClue = step.versionClue;
        }
        if (step.closesSession) session = nullptr;
    }
    for (Step& step : *steps) {
        if (!step.opensSession) continue;
        if (step.versionClue.empty()) step.picks.push_back("the callback's version is not logged");
        step.command += " " + (step.versionClue.empty() ? std::string("1.1") : step.versionClue);
    }
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

std::string header(const ServiceLog& log, const std::string& source) {
    std::string out = "# Replayed by tetheroffload-replay from " + source + ":\n# ";
    const std::string tag = "tag \"" + std::string(kServiceTag) + "\"";
    if (log.lines.empty()) {
        out += "no line of " + tag +
               (log.pid != 0 ? " from process " + std::to_string(log.pid) : "") + ".\n";
    } else {
        out += "the lines of " + tag + " from process " + std::to_string(log.pid) + ".\n";
    }
    out += "# Left out: " + counted(log.otherTagLines, "line") + " of other tags, " +
           counted(log.banners, "logcat banner");
    for (const auto& [pid, count] : log.otherProcesses) {
        out += ", " + counted(count, "line") + " from process " + std::to_string(pid) + " (--pid " +
               std::to_string(pid) + " replays them)";
    }
    return out + ".\n";
}

}  // namespace

std::string buildScenario(const ServiceLog& log, const std::string& source) {
    EpisodeSplitter splitter;
    for (const ServiceLine& line : log.lines) splitter.add(line);

    std::vector<Step> steps;
    bool deviceAbsent = splitter.deviceAbsent();
    std::vector<Note> notes = splitter.notes();
    for (const Episode& episode : splitter.episodes()) {
        steps.push_back(episode.isEvent ? replayEvent(episode.lines) : replayCall(episode.lines));
        deviceAbsent = deviceAbsent || steps.back().deviceAbsent;
        notes.insert(notes.end(), steps.back().notes.begin(), steps.back().notes.end());
    }
    for (const UnreadableLine& line : log.unreadable) {
        notes.push_back(Note{line.lineNo, "not a log line: " + quotedForComment(line.text)});
    }
    std::stable_sort(notes.begin(), notes.end(),
                     [](const Note& a, const Note& b) { return a.lineNo < b.lineNo; });
    openSessionBeforeTheLog(&steps);
    settleCallbackVersions(&steps);

    std::string out = header(log, source);
    if (deviceAbsent) out += "device absent\n";
    World world;
    auto note = notes.begin();
    for (const Step& step : steps) {
        for (; note != notes.end() && note->lineNo <= step.lineNo; ++note) {
            out += "# log line " + std::to_string(note->lineNo) + ": " + note->text + "\n";
        }
        if (step.command.empty()) continue;
        for (const ScenarioLine& line : world.settle(step.needs)) out += lineText(line);
        out += lineText(ScenarioLine{step.command, joined(step.picks)});
    }
    for (; note != notes.end(); ++note) {
        out += "# log line " + std::to_string(note->lineNo) + ": " + note->text + "\n";
    }
    return out;
}

}  // namespace hostreplay
