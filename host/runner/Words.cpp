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

#include "Words.h"

#include <cstdio>

namespace hostrunner {
namespace {

constexpr size_t kExcerptBytes = 40;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

class Splitter {
public:
    explicit Splitter(const std::string& line) : mLine(line) {}

    SplitResult run() {
        SplitResult result;
        while (skipBlanks()) {
            Word word;
            std::string error = mLine[mPos] == '"' ? readQuoted(&word) : readPlain(&word);
            if (!error.empty()) {
                result.error = error;
                result.words.clear();
                return result;
            }
            result.words.push_back(word);
        }
        return result;
    }

private:
    // False at the end of the line or at a comment.
    bool skipBlanks() {
        while (mPos < mLine.size() && isBlank(mLine[mPos])) ++mPos;
        return mPos < mLine.size() && mLine[mPos] != '#';
    }

    bool atWordEnd() const {
        return mPos >= mLine.size() || isBlank(mLine[mPos]) || mLine[mPos] == '#';
    }

    std::string readPlain(Word* word) {
        while (!atWordEnd()) {
            if (mLine[mPos] == '"') return "unexpected quote inside a word";
            word->text += mLine[mPos++];
        }
        return "";
    }

    std::string readQuoted(Word* word) {
        word->quoted = true;
        ++mPos;  // opening quote
        while (mPos < mLine.size()) {
            char c = mLine[mPos++];
            if (c == '"') {
                return atWordEnd() ? "" : "text after a closing quote";
            }
            if (c != '\\') {
                word->text += c;
                continue;
            }
            std::string error = readEscape(word);
            if (!error.empty()) return error;
        }
        return "unterminated quote";
    }

    std::string readEscape(Word* word) {
        if (mPos >= mLine.size()) return "unterminated quote";
        char c = mLine[mPos++];
        switch (c) {
            case '"':
            case '\\':
                word->text += c;
                return "";
            case 'n':
                word->text += '\n';
                return "";
            case 't':
                word->text += '\t';
                return "";
            case 'x':
                return readHexEscape(word);
            default:
                return "unknown escape \\" + excerpt(std::string(1, c));
        }
    }

    std::string readHexEscape(Word* word) {
        int high = mPos < mLine.size() ? hexValue(mLine[mPos]) : -1;
        int low = mPos + 1 < mLine.size() ? hexValue(mLine[mPos + 1]) : -1;
        if (high < 0 || low < 0) return "\\x needs two hex digits";
        mPos += 2;
        word->text += static_cast<char>(high * 16 + low);
        return "";
    }

    const std::string& mLine;
    size_t mPos = 0;
};

}  // namespace

SplitResult splitWords(const std::string& line) {
    return Splitter(line).run();
}

std::string excerpt(const std::string& word) {
    std::string out;
    for (size_t i = 0; i < word.size() && i < kExcerptBytes; ++i) {
        const unsigned char c = static_cast<unsigned char>(word[i]);
        if (c >= 0x20 && c < 0x7f) {
            out += static_cast<char>(c);
        } else {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02X", c);
            out += hex;
        }
    }
    if (word.size() > kExcerptBytes) out += "...";
    return out;
}

}  // namespace hostrunner
