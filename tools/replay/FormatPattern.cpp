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

#include "FormatPattern.h"

#include <cctype>

namespace hostreplay {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string trimmed(const std::string& text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && isBlank(text[begin])) ++begin;
    while (end > begin && isBlank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

bool allBlank(const std::string& text, size_t from) {
    for (size_t i = from; i < text.size(); ++i) {
        if (!isBlank(text[i])) return false;
    }
    return true;
}

// How far a conversion other than %s can reach from `pos`: its longest possible text.
size_t longestRun(char conversion, const std::string& text, size_t pos) {
    size_t end = pos;
    if (conversion == 'd' && end < text.size() && text[end] == '-') ++end;
    const size_t digits = end;
    while (end < text.size()) {
        unsigned char c = static_cast<unsigned char>(text[end]);
        bool fits = conversion == 'x'   ? isxdigit(c) != 0
                    : conversion == 'p' ? !isspace(c)
                                        : isdigit(c) != 0;
        if (!fits) break;
        ++end;
    }
    return end > digits ? end : pos;
}

}  // namespace

FormatPattern::FormatPattern(const std::string& format) {
    Piece literal;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] == '%' && i + 1 < format.size() && format[i + 1] != '%') {
            if (!literal.literal.empty()) mPieces.push_back(literal);
            literal = Piece();
            Piece conversion;
            conversion.conversion = format[++i];
            mPieces.push_back(conversion);
            continue;
        }
        if (format[i] == '%' && i + 1 < format.size()) ++i;  // "%%"
        literal.literal += format[i];
    }
    if (!literal.literal.empty()) mPieces.push_back(literal);
}

std::optional<std::vector<std::string>> FormatPattern::match(const std::string& text) const {
    if (text.size() > kMaxText) return std::nullopt;
    std::vector<std::string> out;
    if (matchFrom(0, text, 0, Mode::kExact, &out)) return out;
    out.clear();
    if (matchFrom(0, trimmed(text), 0, Mode::kTolerant, &out)) return out;
    return std::nullopt;
}

bool FormatPattern::beginsWith(const std::string& text) const {
    // Only a format that opens with words of its own has a beginning to recognise.
    if (mPieces.empty() || mPieces[0].conversion != 0 || allBlank(mPieces[0].literal, 0)) {
        return false;
    }
    std::vector<std::string> out;
    return text.size() <= kMaxText && matchFrom(0, text, 0, Mode::kBeginning, &out);
}

bool FormatPattern::isCutFrom(const std::string& text) const {
    if (text.empty() || text.size() > kMaxText || mPieces.empty() || mPieces[0].conversion != 0 ||
        allBlank(mPieces[0].literal, 0) || match(text)) {
        return false;
    }
    std::vector<std::string> out;
    return matchFrom(0, text, 0, Mode::kCut, &out);
}

bool FormatPattern::matchFrom(size_t piece, const std::string& text, size_t pos, Mode mode,
                              std::vector<std::string>* out) const {
    if (piece == mPieces.size()) return pos == text.size();
    if (mPieces[piece].conversion == 0) return matchLiteral(piece, text, pos, mode, out);
    return matchConversion(piece, text, pos, mode, out);
}

bool FormatPattern::matchLiteral(size_t piece, const std::string& text, size_t pos, Mode mode,
                                 std::vector<std::string>* out) const {
    const std::string& literal = mPieces[piece].literal;
    // A trimmed text has lost the blanks the format begins with.
    size_t from = 0;
    if (mode == Mode::kTolerant && piece == 0) {
        while (from < literal.size() && isBlank(literal[from])) ++from;
    }
    size_t matched = from;
    size_t at = pos;
    while (matched < literal.size() && at < text.size() && text[at] == literal[matched]) {
        ++matched;
        ++at;
    }
    if (matched == literal.size()) return matchFrom(piece + 1, text, at, mode, out);
    if (mode == Mode::kCut && at == text.size()) return true;
    // A trimmed text may end where the format still has blanks and empty strings to write.
    if (mode == Mode::kTolerant && at == text.size() && allBlank(literal, matched) &&
        restMayBeMissing(piece + 1)) {
        for (size_t p = piece + 1; p < mPieces.size(); ++p) {
            if (mPieces[p].conversion != 0) out->push_back("");
        }
        return true;
    }
    return false;
}

bool FormatPattern::matchConversion(size_t piece, const std::string& text, size_t pos, Mode mode,
                                    std::vector<std::string>* out) const {
    const char conversion = mPieces[piece].conversion;
    // The cut came at or inside this value: %s takes whatever is left, a number its digits.
    if (mode == Mode::kCut && (pos == text.size() || conversion == 's' ||
                               longestRun(conversion, text, pos) == text.size())) {
        return true;
    }
    // The line was cut inside a value that follows the format's opening words.
    if (mode == Mode::kBeginning && conversion == 's' && piece > 0 && pos < text.size()) {
        out->push_back(text.substr(pos));
        return true;
    }
    const size_t first = conversion == 's' ? pos : pos + 1;
    const size_t last = conversion == 's' ? text.size() : longestRun(conversion, text, pos);
    if (conversion != 's' && last == pos) return false;
    // Shortest first. A %s followed by text can only end where that text begins, or at the end
    // of a trimmed line.
    const bool literalNext =
            conversion == 's' && piece + 1 < mPieces.size() && mPieces[piece + 1].conversion == 0;
    size_t end = first;
    while (end <= last) {
        out->push_back(text.substr(pos, end - pos));
        if (matchFrom(piece + 1, text, end, mode, out)) return true;
        out->pop_back();
        if (!literalNext) {
            ++end;
            continue;
        }
        size_t next = text.find(mPieces[piece + 1].literal[0], end + 1);
        if (next != std::string::npos) {
            end = next;
        } else if (end < text.size()) {
            end = text.size();
        } else {
            break;
        }
    }
    return false;
}

bool FormatPattern::restMayBeMissing(size_t piece) const {
    for (size_t p = piece; p < mPieces.size(); ++p) {
        const Piece& rest = mPieces[p];
        if (rest.conversion == 0 ? !allBlank(rest.literal, 0) : rest.conversion != 's') {
            return false;
        }
    }
    return true;
}

}  // namespace hostreplay
