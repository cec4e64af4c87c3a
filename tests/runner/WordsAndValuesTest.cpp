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

#include <errno.h>
#include <gtest/gtest.h>

#include "Values.h"
#include "Words.h"

namespace hostrunner {
namespace {

std::vector<std::string> texts(const SplitResult& r) {
    std::vector<std::string> out;
    for (const Word& w : r.words) out.push_back(w.text);
    return out;
}

TEST(SplitWordsTest, SplitsQuotesEscapesAndComments) {
    struct Case {
        std::string line;
        std::vector<std::string> words;
    };
    const Case cases[] = {
            {"", {}},
            {"   \t ", {}},
            {"# only a comment", {}},
            {"stopOffload", {"stopOffload"}},
            {"  prop  a\tb  ", {"prop", "a", "b"}},
            {"prop a b # and a comment", {"prop", "a", "b"}},
            {"prop a b#tight", {"prop", "a", "b"}},
            {"proc tcp \"432000\\n\"", {"proc", "tcp", "432000\n"}},
            {"x \"a b\" \"\"", {"x", "a b", ""}},
            {"x \"say \\\"hi\\\" \\\\ \\t\"", {"x", "say \"hi\" \\ \t"}},
            {"x \"\\x41\\x7a\\x00\"", {"x", std::string("Az\0", 3)}},
            {"x \"# not a comment\"", {"x", "# not a comment"}},
            {"x a\\b", {"x", "a\\b"}},
            {"x y\r", {"x", "y"}},
    };
    for (const Case& c : cases) {
        SplitResult r = splitWords(c.line);
        EXPECT_EQ(r.error, "") << c.line;
        EXPECT_EQ(texts(r), c.words) << c.line;
    }
}

TEST(SplitWordsTest, MarksQuotedWords) {
    SplitResult r = splitWords("proc tcp \"absent\" absent");
    ASSERT_EQ(r.words.size(), 4u);
    EXPECT_FALSE(r.words[1].quoted);
    EXPECT_TRUE(r.words[2].quoted);
    EXPECT_FALSE(r.words[3].quoted);
}

TEST(SplitWordsTest, RejectsMalformedQuotes) {
    struct Case {
        std::string line;
        std::string error;
    };
    const Case cases[] = {
            {"x \"open", "unterminated quote"},
            {"x \"ends in escape\\", "unterminated quote"},
            {"x \"a\"b", "text after a closing quote"},
            {"x a\"b\"", "unexpected quote inside a word"},
            {"x \"\\q\"", "unknown escape \\q"},
            {"x \"\\x4\"", "\\x needs two hex digits"},
            {"x \"\\xzz\"", "\\x needs two hex digits"},
    };
    for (const Case& c : cases) {
        SplitResult r = splitWords(c.line);
        EXPECT_EQ(r.error, c.error) << c.line;
        EXPECT_TRUE(r.words.empty()) << c.line;
    }
}

TEST(ValuesTest, ReadsNumbersWithinTheirRange) {
    struct Case {
        std::string text;
        uint64_t max;
        bool ok;
        uint64_t value;
    };
    const Case cases[] = {
            {"0", 10, true, 0},
            {"42", 100, true, 42},
            {"0x2454", 0xffff, true, 0x2454},
            {"0XfF", 0xff, true, 255},
            {"18446744073709551615", UINT64_MAX, true, UINT64_MAX},
            {"18446744073709551616", UINT64_MAX, false, 0},
            {"0x10000000000000000", UINT64_MAX, false, 0},
            {"256", 255, false, 0},
            {"", 10, false, 0},
            {"0x", 10, false, 0},
            {"-1", 10, false, 0},
            {"12a", 1000, false, 0},
            {"0x1g", 1000, false, 0},
            {" 1", 10, false, 0},
    };
    for (const Case& c : cases) {
        uint64_t value = 7;
        EXPECT_EQ(parseNumber(c.text, c.max, &value), c.ok) << c.text;
        EXPECT_EQ(value, c.ok ? c.value : 7) << c.text;
    }
}

TEST(ValuesTest, ReadsErrnoByNameOrNumber) {
    int value = 0;
    ASSERT_TRUE(parseErrno("EIO", &value));
    EXPECT_EQ(value, EIO);
    ASSERT_TRUE(parseErrno("EBADF", &value));
    EXPECT_EQ(value, EBADF);
    ASSERT_TRUE(parseErrno("0x5", &value));
    EXPECT_EQ(value, 5);
    for (const char* bad : {"0", "eio", "EWHAT", "-5", "4096"}) {
        EXPECT_FALSE(parseErrno(bad, &value)) << bad;
    }
    EXPECT_EQ(errnoName(ENOENT), "ENOENT");
    EXPECT_EQ(errnoName(4000), "");
}

}  // namespace
}  // namespace hostrunner
