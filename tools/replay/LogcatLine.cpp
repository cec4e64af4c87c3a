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

#include "LogcatLine.h"

#include <cctype>

namespace hostreplay {
namespace {

bool isLevel(char c) {
    return std::string("VDIWEFSA").find(c) != std::string::npos;
}

// A cursor over one line; each reader moves past what it read or leaves the cursor alone.
class Scanner {
public:
    explicit Scanner(const std::string& text) : mText(text) {}

    bool atEnd() const { return mPos >= mText.size(); }
    size_t pos() const { return mPos; }
    void reset(size_t pos) { mPos = pos; }

    void skipBlanks() {
        while (mPos < mText.size() && mText[mPos] == ' ') ++mPos;
    }
    bool take(char c) {
        if (mPos >= mText.size() || mText[mPos] != c) return false;
        ++mPos;
        return true;
    }
    // At least `min` decimal digits.
    bool digits(size_t min, std::string* out) {
        size_t end = mPos;
        while (end < mText.size() && isdigit(static_cast<unsigned char>(mText[end]))) ++end;
        if (end - mPos < min) return false;
        *out = mText.substr(mPos, end - mPos);
        mPos = end;
        return true;
    }
    bool number(int* out) {
        std::string text;
        if (!digits(1, &text) || text.size() > 9) return false;
        *out = std::stoi(text);
        return true;
    }
    // A user's name as `-v uid` writes it: at most five letters, digits or '_'.
    bool name() {
        size_t end = mPos;
        while (end < mText.size() && end - mPos < 6 &&
               (isalnum(static_cast<unsigned char>(mText[end])) || mText[end] == '_')) {
            ++end;
        }
        if (end == mPos || end - mPos > 5) return false;
        mPos = end;
        return true;
    }
    bool level(char* out) {
        if (mPos >= mText.size() || !isLevel(mText[mPos])) return false;
        *out = mText[mPos++];
        return true;
    }

private:
    const std::string& mText;
    size_t mPos = 0;
};

// "[YYYY-]MM-DD HH:MM:SS.fff": the date and the time as one stamp.
bool readStamp(Scanner* s, const std::string& text, std::string* stamp) {
    const size_t start = s->pos();
    std::string part;
    if (!s->digits(2, &part) || !s->take('-') || !s->digits(2, &part)) return false;
    if (s->take('-') && !s->digits(2, &part)) return false;
    if (!s->take(' ')) return false;
    if (!s->digits(2, &part) || !s->take(':') || !s->digits(2, &part) || !s->take(':') ||
        !s->digits(2, &part) || !s->take('.') || !s->digits(3, &part)) {
        return false;
    }
    *stamp = text.substr(start, s->pos() - start);
    return true;
}

// "TAG: MESSAGE" from the cursor on; logcat pads a short tag with blanks. A line cut right
// after the colon (or stripped of its trailing blank) has an empty message.
bool readTagAndMessage(const std::string& text, size_t from, LogcatLine* line) {
    size_t colon = text.find(": ", from);
    size_t messageStart = colon + 2;
    if (colon == std::string::npos) {
        if (text.size() <= from || text.back() != ':') return false;
        colon = text.size() - 1;
        messageStart = text.size();
    }
    size_t end = colon;
    while (end > from && text[end - 1] == ' ') --end;
    if (end == from) return false;
    line->tag = text.substr(from, end - from);
    line->message = text.substr(messageStart);
    return true;
}

// "PID TID L " from the cursor on.
bool readIds(Scanner* s, LogcatLine* line) {
    if (!s->number(&line->pid)) return false;
    s->skipBlanks();
    return s->number(&line->tid) && s->take(' ') && s->level(&line->level) && s->take(' ');
}

// "STAMP [UID] PID TID L TAG: MESSAGE": `-v uid` (as in a bug report) puts the uid, a number or
// a name, before the pid.
std::optional<LogcatLine> parseThreadtime(const std::string& text) {
    LogcatLine line;
    Scanner s(text);
    if (!readStamp(&s, text, &line.stamp)) return std::nullopt;
    s.skipBlanks();
    const size_t ids = s.pos();
    if (!readIds(&s, &line)) {
        s.reset(ids);
        if (!s.name()) return std::nullopt;
        s.skipBlanks();
        if (!readIds(&s, &line)) return std::nullopt;
    }
    if (!readTagAndMessage(text, s.pos(), &line)) return std::nullopt;
    return line;
}

// "L/TAG(  PID): MESSAGE": the tag ends at the last "(" before "):".
std::optional<LogcatLine> parseBrief(const std::string& text) {
    LogcatLine line;
    Scanner s(text);
    if (!s.level(&line.level) || !s.take('/')) return std::nullopt;
    const size_t close = text.find("):", s.pos());
    if (close == std::string::npos) return std::nullopt;
    const size_t open = text.rfind('(', close);
    if (open == std::string::npos || open < s.pos()) return std::nullopt;
    const std::string pidText = text.substr(open + 1, close - open - 1);
    Scanner pid(pidText);
    pid.skipBlanks();
    if (!pid.number(&line.pid) || !pid.atEnd()) return std::nullopt;
    // The same rule as the threadtime format from the tag on: "TAG(PID)" stands for the tag.
    const std::string tagged = text.substr(s.pos(), open - s.pos()) + text.substr(close + 1);
    if (!readTagAndMessage(tagged, 0, &line)) return std::nullopt;
    return line;
}

}  // namespace

std::string LogcatLine::header() const {
    return stamp + " " + std::to_string(pid) + " " + std::to_string(tid) + " " + level + " " + tag;
}

std::optional<LogcatLine> parseLogcatLine(const std::string& text) {
    if (auto line = parseThreadtime(text)) return line;
    return parseBrief(text);
}

std::string decodePrintable(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '\\') {
            out += '\\';
            ++i;
        } else if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x' &&
                   isxdigit(static_cast<unsigned char>(text[i + 2])) &&
                   isxdigit(static_cast<unsigned char>(text[i + 3]))) {
            out += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            out += text[i];
        }
    }
    return out;
}

bool isLogcatBanner(const std::string& text) {
    return text.rfind("--------- ", 0) == 0;
}

}  // namespace hostreplay
