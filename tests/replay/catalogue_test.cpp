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

// The replay's catalogue of the service's messages stays true to the service: every text the
// service's sources can log has an entry, and every entry matches a text they log. The texts are
// read from the sources (service/ hal/ datapath/ timeout/ bridge/): the format literal of each
// ALOGx(...) call, and the two indirect forms, the string literals of the `RequestLines`
// initialisers (datapath/OffloadEventHandle.cpp) and the literal arguments of
// `sendBridgeCommand(...)` (bridge/VexaBridge.cpp). A %s whose argument is a literal, or a constant
// of the file, takes its text; a bare name (an operation's parameter) takes each literal the file
// passes first to a function; anything else "wanif0". %d is 7, %x 1f, %p 0x7f00.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "ServiceMessages.h"

namespace hostreplay {
namespace {

struct Token {
    enum Kind { kString, kWord, kPunct } kind;
    std::string text;
};
using Tokens = std::vector<Token>;

// C++ as far as the logging calls need: comments and preprocessor lines dropped, adjacent string
// literals joined with their escapes read.
Tokens tokenize(const std::string& src) {
    Tokens out;
    for (size_t i = 0; i < src.size();) {
        const char c = src[i];
        if (isspace(static_cast<unsigned char>(c))) {
            ++i;
        } else if (src.compare(i, 2, "//") == 0 || c == '#') {
            i = src.find('\n', i);
        } else if (src.compare(i, 2, "/*") == 0) {
            i = src.find("*/", i) + 2;
        } else if (c == '"') {
            std::string text;
            for (++i; src[i] != '"'; ++i) {
                if (src[i] != '\\') {
                    text += src[i];
                    continue;
                }
                const char e = src[++i];
                text += e == 'n' ? '\n' : e == 't' ? '\t' : e;
            }
            ++i;
            if (!out.empty() && out.back().kind == Token::kString) {
                out.back().text += text;
            } else {
                out.push_back({Token::kString, text});
            }
        } else if (isalnum(static_cast<unsigned char>(c)) || c == '_') {
            size_t end = i;
            while (end < src.size() && (isalnum(static_cast<unsigned char>(src[end])) ||
                                        src[end] == '_' || src.compare(end, 2, "::") == 0)) {
                end += src[end] == ':' ? 2 : 1;
            }
            out.push_back({Token::kWord, src.substr(i, end - i)});
            i = end;
        } else {
            out.push_back({Token::kPunct, std::string(1, c)});
            i += c == '\'' ? src.find('\'', i + 1) + 1 - i : 1;
        }
        if (i == std::string::npos) break;
    }
    return out;
}

// The arguments of the call whose "(" is at `open`, each as its tokens.
std::vector<Tokens> arguments(const Tokens& tokens, size_t open) {
    std::vector<Tokens> args(1);
    int depth = 0;
    for (size_t i = open + 1; i < tokens.size(); ++i) {
        const std::string& t = tokens[i].text;
        if (tokens[i].kind == Token::kPunct && (t == "(" || t == "{" || t == "[")) ++depth;
        if (tokens[i].kind == Token::kPunct && (t == ")" || t == "}" || t == "]")) {
            if (depth-- == 0) break;
        }
        if (depth == 0 && tokens[i].kind == Token::kPunct && t == ",") {
            args.emplace_back();
        } else {
            args.back().push_back(tokens[i]);
        }
    }
    return args;
}

bool isCall(const Tokens& tokens, size_t i, const std::string& name) {
    return tokens[i].kind == Token::kWord && tokens[i].text == name && i + 1 < tokens.size() &&
           tokens[i + 1].text == "(";
}

bool isLogCall(const Tokens& tokens, size_t i) {
    const std::string& t = tokens[i].text;
    return t.size() == 5 && t.compare(0, 4, "ALOG") == 0 && isCall(tokens, i, t);
}

class SourceFile {
public:
    explicit SourceFile(const std::filesystem::path& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        mTokens = tokenize(text.str());
        for (size_t i = 0; i + 2 < mTokens.size(); ++i) {
            // NAME = "..." and NAME[] = "...": the file's constants.
            if (mTokens[i].kind == Token::kWord && mTokens[i + 1].text == "=" &&
                mTokens[i + 2].kind == Token::kString) {
                mConstants[mTokens[i].text] = mTokens[i + 2].text;
            }
            if (i + 4 < mTokens.size() && mTokens[i + 1].text == "[" && mTokens[i + 2].text == "]" &&
                mTokens[i + 3].text == "=" && mTokens[i + 4].kind == Token::kString) {
                mConstants[mTokens[i].text] = mTokens[i + 4].text;
            }
            if (mTokens[i].kind == Token::kWord && !isLogCall(mTokens, i) &&
                mTokens[i + 1].text == "(" && mTokens[i + 2].kind == Token::kString) {
                mFirstArguments.push_back(mTokens[i + 2].text);
            }
        }
    }

    // Every text the file logs, rendered with sample values.
    std::vector<std::string> texts() const {
        std::vector<std::string> out;
        for (size_t i = 0; i + 1 < mTokens.size(); ++i) {
            if (isLogCall(mTokens, i)) {
                const std::vector<Tokens> args = arguments(mTokens, i + 1);
                // A format that is not a literal, or only "%s" of a line held elsewhere, is one
                // of the indirect forms.
                if (args[0].size() != 1 || args[0][0].kind != Token::kString) continue;
                if (args[0][0].text == "%s" && !literal(args[1])) continue;
                render(args[0][0].text, args, 1, "", &out);
            } else if (isCall(mTokens, i, "sendBridgeCommand")) {
                for (const Tokens& arg : arguments(mTokens, i + 1)) {
                    if (auto text = literal(arg)) render(*text, {}, 0, "", &out);
                }
            } else if (mTokens[i].text == "RequestLines" && mTokens[i + 1].kind == Token::kWord) {
                for (size_t j = i + 2; j < mTokens.size() && mTokens[j].text != ";"; ++j) {
                    if (mTokens[j].kind == Token::kString) render(mTokens[j].text, {}, 0, "", &out);
                }
            }
        }
        return out;
    }

private:
    std::optional<std::string> literal(const Tokens& arg) const {
        if (arg.size() != 1) return std::nullopt;
        if (arg[0].kind == Token::kString) return arg[0].text;
        auto constant = mConstants.find(arg[0].text);
        if (constant != mConstants.end()) return constant->second;
        return std::nullopt;
    }

    std::vector<std::string> values(char conversion, const Tokens& arg) const {
        if (conversion == 'd' || conversion == 'u') return {"7"};
        if (conversion == 'x') return {"1f"};
        if (conversion == 'p') return {"0x7f00"};
        if (auto text = literal(arg)) return {*text};
        if (arg.size() == 1 && arg[0].kind == Token::kWord && !mFirstArguments.empty()) {
            return mFirstArguments;
        }
        return {"wanif0"};
    }

    // `format` from `pos` on, its conversions taking arguments from `next` on.
    void render(const std::string& format, const std::vector<Tokens>& args, size_t next,
                std::string done, std::vector<std::string>* out) const {
        const size_t percent = format.find('%');
        if (percent == std::string::npos || percent + 1 == format.size()) {
            done += format;
            if (!done.empty() && done.back() == '\n') done.pop_back();
            out->push_back(done);
            return;
        }
        done += format.substr(0, percent);
        const char conversion = format[percent + 1];
        const std::string rest = format.substr(percent + 2);
        if (conversion == '%') return render(rest, args, next, done + "%", out);
        const Tokens arg = next < args.size() ? args[next] : Tokens{};
        for (const std::string& value : values(conversion, arg)) {
            render(rest, args, next + 1, done + value, out);
        }
    }

    Tokens mTokens;
    std::map<std::string, std::string> mConstants;
    std::vector<std::string> mFirstArguments;
};

TEST(CatalogueTest, HoldsEveryMessageTheServiceLogsAndNoOther) {
    std::set<Msg> matched;
    size_t texts = 0;
    for (const char* dir : {"service", "hal", "datapath", "timeout", "bridge"}) {
        for (const auto& entry : std::filesystem::directory_iterator(
                     std::string(TETHEROFFLOAD_SOURCE_DIR) + "/" + dir)) {
            if (entry.path().extension() != ".cpp") continue;
            for (const std::string& text : SourceFile(entry.path()).texts()) {
                ++texts;
                const std::optional<ServiceMessage> m = matchServiceMessage(text);
                EXPECT_TRUE(m) << entry.path().filename() << " logs \"" << text
                               << "\", which the replay's catalogue lacks";
                if (m) matched.insert(m->id);
            }
        }
    }
    EXPECT_GT(texts, 100u);
    for (Msg id : allMessages()) {
        EXPECT_TRUE(matched.count(id))
                << "the catalogue's \"" << formatOf(id) << "\" matches no message of the service";
    }
}

}  // namespace
}  // namespace hostreplay
