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

// Matches a logged text against the printf format that wrote it (%s, %d, %u, %x, %p) and gives
// back the text of each conversion. Captured logs lose blanks at the ends of a line now and then,
// so a text that does not match exactly is tried again without them.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hostreplay {

class FormatPattern {
public:
    explicit FormatPattern(const std::string& format);

    // The conversions' texts, in order, when `text` is what the format writes.
    std::optional<std::vector<std::string>> match(const std::string& text) const;

    // Whether `text` is how the format's output begins when a value of a %s that follows the
    // format's opening words holds a newline: the first line of a message logcat split.
    bool beginsWith(const std::string& text) const;

    // Whether `text` is how the format's output begins when the line was cut short anywhere (the
    // end of a capture, logcat's own limit). Only a format that opens with words of its own has a
    // beginning to recognise; a text the format writes whole is no cut.
    bool isCutFrom(const std::string& text) const;

    // Longer texts are not tried: the Android log cuts a message at about 4 KiB anyway.
    static constexpr size_t kMaxText = 4096;

private:
    struct Piece {
        char conversion = 0;  // 's', 'd', 'u', 'x', 'p'; 0 for literal text
        std::string literal;
    };

    enum class Mode {
        kExact,
        kTolerant,   // blanks lost at either end
        kBeginning,  // the text may stop inside a %s
        kCut,        // the text may stop anywhere
    };

    bool matchFrom(size_t piece, const std::string& text, size_t pos, Mode mode,
                   std::vector<std::string>* out) const;
    bool matchLiteral(size_t piece, const std::string& text, size_t pos, Mode mode,
                      std::vector<std::string>* out) const;
    bool matchConversion(size_t piece, const std::string& text, size_t pos, Mode mode,
                         std::vector<std::string>* out) const;
    bool restMayBeMissing(size_t piece) const;

    std::vector<Piece> mPieces;
};

}  // namespace hostreplay
