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

#include "ScenarioParser.h"

#include <sstream>
#include <utility>

#include "CommandParsers.h"
#include "Words.h"

namespace hostrunner {
namespace {

LineResult lineTooLong() {
    LineResult result;
    result.blank = false;
    result.error = "line too long (more than " + std::to_string(kMaxLineBytes) + " bytes)";
    return result;
}

}  // namespace

LineResult parseLine(const std::string& text, int line, Source source) {
    if (text.size() > kMaxLineBytes) return lineTooLong();
    LineResult result;
    SplitResult split = splitWords(text);
    if (!split.error.empty()) {
        result.blank = false;
        result.error = split.error;
        return result;
    }
    if (split.words.empty()) return result;
    result.blank = false;
    result.command.line = line;
    result.command.name = split.words[0].text;
    std::vector<Word> rest(split.words.begin() + 1, split.words.end());
    for (const Word& w : rest) result.command.args.push_back(w.text);
    result.error = parseCommand(split.words[0], rest, &result.command.body);
    if (result.error.empty() && source == Source::kScript &&
        (std::holds_alternative<Help>(result.command.body) ||
         std::holds_alternative<Quit>(result.command.body))) {
        result.error = result.command.name + ": only in the console";
    }
    return result;
}

LineResult ScriptLines::next(const std::string& text) {
    LineResult parsed = parseLine(text, ++mLine, Source::kScript);
    if (!parsed.error.empty() || parsed.blank) return parsed;
    const bool startup = std::holds_alternative<DeviceAbsent>(parsed.command.body);
    if (startup && !mOnlyStartupSettings) {
        parsed.error = "device absent: only before any other command";
    }
    mOnlyStartupSettings = mOnlyStartupSettings && startup;
    return parsed;
}

LineResult ScriptLines::tooLong() {
    ++mLine;
    return lineTooLong();
}

ScriptResult parseScript(const std::string& text, const std::string& name) {
    ScriptResult result;
    ScriptLines lines;
    std::istringstream in(text);
    for (std::string lineText; std::getline(in, lineText);) {
        LineResult parsed = lines.next(lineText);
        if (!parsed.error.empty()) {
            result.commands.clear();
            result.error = name + ":" + std::to_string(lines.line()) + ": " + parsed.error;
            return result;
        }
        if (!parsed.blank) result.commands.push_back(std::move(parsed.command));
    }
    return result;
}

}  // namespace hostrunner
