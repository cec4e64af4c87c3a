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

// What the golden traces cannot see, as they compare records parsed and dumped again without `t`
// and `fd`: the bytes of a line as programs read them, and the kinds no example writes.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "JsonTrace.h"

namespace hostrunner {
namespace {

using namespace hostplatform;
using namespace std::string_literals;

TEST(JsonTraceTest, EscapesAndOneReplacementForEachIllFormedPart) {
    const std::string msg =
            "\"q\" \\ \b\f\n\r\t \0\x01\x1f\x7f "  // escapes, NUL, control characters, DEL
            "\xc3\xa9 \xf0\x9f\x98\x80 "           // well-formed: kept
            "\x80 "                                // a lone continuation byte
            "\xc0\xaf \xe0\x80\xaf "               // overlong forms
            "\xed\xa0\x80 "                        // a surrogate
            "\xf4\x90\x80\x80 "                    // past U+10FFFF
            "\xf0\x9f\x98x "                       // cut short by another character
            "\xe2\x82"s;                           // cut short by the end
    const std::string want =
            R"({"k":"log","t":7,"prio":6,"tag":"T","msg":"\"q\" \\ \b\f\n\r\t \u0000\u0001\u001f)"
            "\x7f \u00e9 \U0001F600 \uFFFD \uFFFD\uFFFD \uFFFD\uFFFD\uFFFD \uFFFD\uFFFD\uFFFD "
            "\uFFFD\uFFFD\uFFFD\uFFFD \uFFFDx \uFFFD"
            R"(","thread":"HandleEvent"})";
    EXPECT_EQ(want, toJsonLine(Record{7, LogRecord{6, "T", msg, "HandleEvent"}}));
}

TEST(JsonTraceTest, FieldsTheGoldensLeaveOut) {
    EXPECT_EQ(R"({"k":"open","t":-1,"path":"/dev/vexa","fd":3})",
              toJsonLine(Record{-1, OpenRecord{"/dev/vexa", 3, 0}}));
    EXPECT_EQ(R"({"k":"ioctl","t":2,"fd":3,"req":3221507586,"hex":"5424","ret":-1,"errno":5})",
              toJsonLine(Record{2, IoctlRecord{3, 3221507586UL, {0x54, 0x24}, -1, 5}}));
    EXPECT_EQ(
            R"({"k":"reply","t":3,"op":"getForwardedStats","rx":0,"tx":18446744073709551615})",
            toJsonLine(Record{3, ReplyRecord{"getForwardedStats", true, "", true, 0, UINT64_MAX}}));
    EXPECT_EQ(R"({"k":"error","t":4,"line":12,"msg":"unknown command"})",
              toJsonLine(Record{4, ErrorRecord{12, "unknown command"}}));
    EXPECT_EQ(R"({"k":"dump","t":5,"text":"state: idle\n"})",
              toJsonLine(Record{5, DumpRecord{"state: idle\n"}}));
}

}  // namespace
}  // namespace hostrunner
