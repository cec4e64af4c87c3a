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

// The scenario language: arbitrary text given to the script parser, and each of its lines to the
// console's line handling. Checked on every input, against an independent reading of the
// language (support/ReferenceScenario): a malformed script is refused whole, with an error that
// names its first malformed line, and runs nothing; a well-formed one gives one command a line,
// with the values its words say; the console accepts exactly the well-formed lines. No crash and
// no sanitizer report.

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "ScenarioParser.h"
#include "fuzz/support/Finding.h"
#include "fuzz/support/ReferenceScenario.h"

using hostrunner::Command;
using reference::ScenarioWord;
using reference::Where;

namespace {

constexpr const char* kName = "fuzz.scenario";

std::vector<ScenarioWord> wordsOf(const std::string& line) {
    std::vector<ScenarioWord> words;
    reference::splitLine(line, &words);
    return words;
}

bool isDeviceAbsent(const std::vector<ScenarioWord>& words) {
    return !words.empty() && words[0].text == "device" && !words[0].quoted;
}

uint64_t numberOf(const std::string& text) {
    uint64_t value = 0;
    reference::number(text, ~0ull, &value);
    return value;
}

void expect(bool ok, int line, const std::string& what) {
    if (!ok) fuzzsupport::finding("line " + std::to_string(line) + ": " + what);
}

// key=value words from `from` on.
std::map<std::string, std::string> optionsOf(const std::vector<ScenarioWord>& w, size_t from) {
    std::map<std::string, std::string> out;
    for (size_t i = from; i < w.size(); ++i) {
        const size_t eq = w[i].text.find('=');
        out[w[i].text.substr(0, eq)] = w[i].text.substr(eq + 1);
    }
    return out;
}

template <typename T>
T fieldAt(const std::vector<uint8_t>& record, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= record.size()) memcpy(&value, record.data() + offset, sizeof(T));
    return value;
}

uint16_t statusOf(const std::string& text) {
    static const std::map<std::string, uint16_t> names = {
            {"STARTED", 1},           {"STOPPED_ERROR", 2},         {"STOPPED_UNSUPPORTED", 3},
            {"SUPPORT_AVAILABLE", 4}, {"STOPPED_LIMIT_REACHED", 5}, {"CONNECT_UPDATE", 6},
            {"WARNING_REACHED", 7}};
    const std::string name = text.rfind("VEXA_", 0) == 0 ? text.substr(5) : text;
    auto it = names.find(name);
    return it != names.end() ? it->second : static_cast<uint16_t>(numberOf(text));
}

// The record of `modem event` or `modem conn`: header fields, payload and read size as given.
void checkModemRecord(const hostrunner::ModemEvent& e, const std::vector<ScenarioWord>& w,
                      int line) {
    const bool conn = w[1].text == "conn";
    auto opts = optionsOf(w, conn ? 2 : 3);
    const size_t payload = conn ? 28 : opts["payload"].size() / 2;
    expect(e.record.size() == 16 + payload, line, "record size");
    expect(fieldAt<uint16_t>(e.record, 0) ==
                   (opts.count("mcode") ? numberOf(opts["mcode"]) : 0x2454),
           line, "mcode");
    expect(fieldAt<uint16_t>(e.record, 2) == (conn ? 6 : statusOf(w[2].text)), line, "status");
    expect(fieldAt<uint32_t>(e.record, 4) == numberOf(opts["app"]), line, "app");
    expect(fieldAt<uint32_t>(e.record, 8) == numberOf(opts["msg"]), line, "msg");
    expect(fieldAt<uint32_t>(e.record, 12) == (opts.count("len") ? numberOf(opts["len"]) : payload),
           line, "data_len");
    const size_t read =
            opts.count("read") ? numberOf(opts["read"]) : std::min<size_t>(16 + payload, 272);
    expect(e.readSize == read, line, "read size");
    if (conn) {
        expect(fieldAt<uint16_t>(e.record, 28) == numberOf(opts["port0"]), line, "port0");
        expect(fieldAt<uint8_t>(e.record, 34) == numberOf(opts["proto"]), line, "proto");
        expect(fieldAt<uint8_t>(e.record, 40) == numberOf(opts["dst_nat"]), line, "dst_nat");
    }
}

// The command and values the words of a well-formed line give.
void checkValues(const Command& c, const std::vector<ScenarioWord>& w, int line) {
    expect(c.name == w[0].text && c.args.size() + 1 == w.size(), line, "name and arguments");
    for (size_t i = 0; i < c.args.size(); ++i) {
        expect(c.args[i] == w[i + 1].text, line, "argument " + std::to_string(i + 1));
    }
    if (auto* h = std::get_if<hostrunner::SetHandles>(&c.body)) {
        for (int i = 0; i < 2; ++i) {
            const std::string& t = w[1 + i].text;
            const int fds =
                    t == "none" ? hostrunner::SetHandles::kNoHandle : static_cast<int>(numberOf(t));
            expect((i == 0 ? h->fds1 : h->fds2) == fds, line, "descriptor count");
        }
    } else if (auto* l = std::get_if<hostrunner::SetDataLimit>(&c.body)) {
        expect(l->upstream == w[1].text && l->limit == numberOf(w[2].text), line, "limit");
    } else if (auto* wl = std::get_if<hostrunner::SetDataWarningAndLimit>(&c.body)) {
        expect(wl->warning == numberOf(w[2].text) && wl->limit == numberOf(w[3].text), line,
               "warning and limit");
    } else if (auto* wait = std::get_if<hostrunner::Wait>(&c.body)) {
        expect(wait->millis == numberOf(w[1].text), line, "wait");
    } else if (auto* e = std::get_if<hostrunner::ModemEvent>(&c.body)) {
        checkModemRecord(*e, w, line);
    } else if (auto* st = std::get_if<hostrunner::ModemStats>(&c.body)) {
        auto opts = optionsOf(w, 4);
        expect(st->rx == numberOf(w[2].text) && st->tx == numberOf(w[3].text) &&
                       st->dataLen == (opts.count("len") ? numberOf(opts["len"]) : 128),
               line, "statistics answer");
    }
}

// The first malformed line, or `device absent` after another command; 0 when there is none.
int firstRefusedLine(const std::vector<std::string>& lines) {
    bool otherCommandSeen = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::vector<ScenarioWord> words = wordsOf(lines[i]);
        if (!reference::wellFormed(lines[i], Where::kScript) ||
            (isDeviceAbsent(words) && otherCommandSeen)) {
            return static_cast<int>(i + 1);
        }
        if (!words.empty() && !isDeviceAbsent(words)) otherCommandSeen = true;
    }
    return 0;
}

// A script is refused whole at its first refused line; otherwise every non-blank line is one
// command.
void checkScript(const std::string& text) {
    const hostrunner::ScriptResult result = hostrunner::parseScript(text, kName);
    const std::vector<std::string> lines = reference::linesOf(text);
    const int refused = firstRefusedLine(lines);
    if (refused != 0) {
        const std::string head = std::string(kName) + ":" + std::to_string(refused) + ": ";
        expect(result.error.rfind(head, 0) == 0 && result.error.size() > head.size(), refused,
               "refused by the rules, but the parser said \"" + result.error + "\"");
        expect(result.commands.empty(), refused, "a refused script still has commands");
        return;
    }
    expect(result.error.empty(), 0, "a well-formed script refused: " + result.error);
    size_t commands = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        const int line = static_cast<int>(i + 1);
        const std::vector<ScenarioWord> words = wordsOf(lines[i]);
        if (words.empty()) continue;
        expect(commands < result.commands.size() && result.commands[commands].line == line, line,
               "no command for this line");
        checkValues(result.commands[commands], words, line);
        ++commands;
    }
    expect(result.commands.size() == commands, 0, "more commands than lines");
}

// The console takes each line on its own; help and quit are its own.
void checkConsole(const std::string& text) {
    int line = 0;
    for (const std::string& l : reference::linesOf(text)) {
        ++line;
        const hostrunner::LineResult r =
                hostrunner::parseLine(l, line, hostrunner::Source::kConsole);
        const bool good = reference::wellFormed(l, Where::kConsole);
        expect(r.error.empty() == good, line,
               good ? "well formed, but the console said " + r.error : "malformed, but accepted");
        expect(!good || r.blank == wordsOf(l).empty(), line, "blank line");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkScript(text);
    checkConsole(text);
    return 0;
}
