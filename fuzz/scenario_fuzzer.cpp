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

// The scenario language as a hostile script meets it: arbitrary text given to the script parser,
// to its streaming reader line by line, and each line to the console. Properties only, no second
// reading of the language; checked on every input besides the sanitizers and libFuzzer's timeout:
// - a script passes, or is refused with exactly "NAME:LINE: message", LINE being a line of the
//   input, a non-empty message and no command left to run;
// - the streaming reader hands out the same commands and stops at that same line;
// - a refused line is never blank;
// - a command's words written back in scenario quoting read as the same command, with the same
//   values;
// - a comment appended to a line changes nothing: the same command, or still refused;
// - the console accepts every line a script accepts, as the same command, and besides only its
//   own help and quit.

#include <stddef.h>
#include <stdint.h>

#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "ScenarioParser.h"
#include "ScenarioText.h"
#include "VexaDecoder.h"
#include "fuzz/support/Finding.h"

namespace hr = hostrunner;

namespace {

constexpr char kName[] = "fuzz.scenario";
// Lines written back or lengthened stay well below the reader's line limit.
constexpr size_t kMaxRewritten = 16 * 1024;

template <class... Ts>
struct Overloaded : Ts... {
    using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

void expect(bool ok, const std::string& what) {
    if (!ok) fuzzsupport::finding(what);
}

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const std::string& w : words) out += w + '\x1f';
    return out;
}

// The values a command carries, to compare two readings of it. Those of `proc` are left out: a
// file content of "absent" written back plain would become the keyword.
std::string valuesOf(const hr::CommandBody& body) {
    auto n = [](auto v) { return std::to_string(static_cast<uint64_t>(v)) + '\x1f'; };
    return std::to_string(body.index()) + ":" +
           std::visit(
                   Overloaded{
                           [&](const hr::SetHandles& b) { return n(b.fds1) + n(b.fds2); },
                           [&](const hr::InitOffload& b) { return n(b.callback); },
                           [&](const hr::SetLocalPrefixes& b) { return joined(b.prefixes); },
                           [&](const hr::GetForwardedStats& b) { return b.upstream; },
                           [&](const hr::SetDataLimit& b) { return b.upstream + n(b.limit); },
                           [&](const hr::SetDataWarningAndLimit& b) {
                               return b.upstream + n(b.warning) + n(b.limit);
                           },
                           [&](const hr::SetUpstreamParameters& b) {
                               return joined({b.iface, b.v4Addr, b.v4Gw}) + joined(b.v6Gws);
                           },
                           [&](const hr::AddDownstream& b) {
                               return joined({b.iface, b.prefix});
                           },
                           [&](const hr::RemoveDownstream& b) {
                               return joined({b.iface, b.prefix});
                           },
                           [&](const hr::ModemEvent& b) {
                               return hr::toHex(b.record) + n(b.readSize);
                           },
                           [&](const hr::ModemReadFail& b) { return n(b.errnum); },
                           [&](const hr::ModemStats& b) { return n(b.rx) + n(b.tx) + n(b.dataLen); },
                           [&](const hr::ModemIoctl& b) { return n(b.errnum); },
                           [&](const hr::Agent& b) { return n(b.mode); },
                           [&](const hr::FrameworkState& b) { return n(b.alive); },
                           [&](const hr::Prop& b) {
                               return joined({b.name, b.value});
                           },
                           [&](const hr::Stderr& b) { return n(b.closed); },
                           [&](const hr::Wait& b) { return n(b.millis); },
                           [](const auto&) { return std::string(); },
                   },
                   body);
}

bool same(const hr::Command& a, const hr::Command& b) {
    return a.line == b.line && a.name == b.name && a.args == b.args &&
           valuesOf(a.body) == valuesOf(b.body);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// LINE of "NAME:LINE: message" with a message; 0 for any other form.
size_t refusedLine(const std::string& error) {
    const std::string head = std::string(kName) + ":";
    if (error.compare(0, head.size(), head) != 0) return 0;
    size_t line = 0;
    size_t at = head.size();
    for (; at < error.size() && error[at] >= '0' && error[at] <= '9' && line < 1e9; ++at) {
        line = line * 10 + (error[at] - '0');
    }
    if (error.compare(at, 2, ": ") != 0 || error.size() == at + 2) return 0;
    return line;
}

void checkRewritten(const hr::Command& c) {
    std::string text = hostreplay::scenarioWord(c.name);
    for (const std::string& arg : c.args) text += " " + hostreplay::scenarioWord(arg);
    if (text.size() > kMaxRewritten) return;
    const hr::LineResult again = hr::parseLine(text, c.line, hr::Source::kScript);
    expect(again.error.empty() && same(again.command, c),
           "line " + std::to_string(c.line) + " written back as " + text + " reads otherwise " +
                   again.error);
}

void checkLine(const std::string& text, int line) {
    const hr::LineResult script = hr::parseLine(text, line, hr::Source::kScript);
    const hr::LineResult console = hr::parseLine(text, line, hr::Source::kConsole);
    const std::string where = "line " + std::to_string(line) + ": ";
    expect(script.error.empty() || !script.blank, where + "refused, yet blank");
    expect(console.error.empty() || !console.blank, where + "refused by the console, yet blank");
    if (script.error.empty()) {
        expect(console.error.empty() && console.blank == script.blank &&
                       (script.blank || same(console.command, script.command)),
               where + "a script takes it, the console not as the same command");
        if (!script.blank) checkRewritten(script.command);
    } else if (console.error.empty()) {
        const hr::CommandBody& body = console.command.body;
        expect(std::holds_alternative<hr::Help>(body) || std::holds_alternative<hr::Quit>(body),
               where + "the console takes it, a script not: " + script.error);
    }
    if (text.size() > kMaxRewritten) return;
    const hr::LineResult commented = hr::parseLine(text + " # appended", line, hr::Source::kScript);
    expect(commented.error.empty() == script.error.empty() && commented.blank == script.blank &&
                   (!script.error.empty() || script.blank ||
                    same(commented.command, script.command)),
           where + "reads otherwise with a comment appended");
}

void checkScript(const std::string& text) {
    const hr::ScriptResult whole = hr::parseScript(text, kName);
    const std::vector<std::string> lines = linesOf(text);
    hr::ScriptLines reader;
    std::vector<hr::Command> handedOut;
    size_t refusedAt = 0;
    for (const std::string& line : lines) {
        const hr::LineResult r = reader.next(line);
        if (!r.error.empty()) {
            refusedAt = static_cast<size_t>(reader.line());
            break;
        }
        if (!r.blank) handedOut.push_back(r.command);
    }
    if (whole.error.empty()) {
        expect(refusedAt == 0,
               "the reader refuses line " + std::to_string(refusedAt) + " of a script that passes");
        bool sameCommands = whole.commands.size() == handedOut.size();
        for (size_t i = 0; sameCommands && i < handedOut.size(); ++i) {
            sameCommands = same(whole.commands[i], handedOut[i]);
        }
        expect(sameCommands, "the script and its reader give other commands");
        return;
    }
    const size_t line = refusedLine(whole.error);

    expect(line >= 1 && line <= lines.size(), "refused as \"" + whole.error + "\"");
    expect(whole.commands.empty(), "a refused script still has commands to run");
    expect(line == refusedAt, "refused at line " + std::to_string(line) + ", the reader at " +
                                      std::to_string(refusedAt));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzsupport::keepReportChannel();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkScript(text);
    int line = 0;
    for (const std::string& l : linesOf(text)) checkLine(l, ++line);
    return 0;
}
