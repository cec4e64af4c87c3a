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

// Runs every example scenario and compares its JSONL trace with the expectation checked in
// beside this test. With TETHEROFFLOAD_UPDATE_GOLDEN=1 in the environment it writes the
// expectation instead (scripts/update-golden.sh).

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>

#include "ServiceRun.h"
#include "TraceLines.h"

namespace scenariotest {
namespace {

std::vector<std::string> exampleNames() {
    std::vector<std::string> names;
    const std::string suffix = ".scenario";
    if (DIR* dir = opendir(TETHEROFFLOAD_EXAMPLES)) {
        while (dirent* entry = readdir(dir)) {
            std::string name = entry->d_name;
            if (name.size() > suffix.size() &&
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0) {
                names.push_back(name.substr(0, name.size() - suffix.size()));
            }
        }
        closedir(dir);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// The first difference, with a little context, rather than two whole traces.
std::string firstDifference(const std::string& expected, const std::string& actual) {
    std::vector<std::string> want = lines(expected);
    std::vector<std::string> got = lines(actual);
    size_t i = 0;
    while (i < want.size() && i < got.size() && want[i] == got[i]) ++i;
    std::ostringstream out;
    out << "first difference at record " << i + 1 << " (expected " << want.size()
        << " records, got " << got.size() << ")\n";
    out << "  expected: " << (i < want.size() ? want[i] : "<end>") << "\n";
    out << "  actual:   " << (i < got.size() ? got[i] : "<end>") << "\n";
    return out.str();
}

class GoldenTest : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenTest, TraceMatchesTheExpectation) {
    const std::string scenario =
            std::string(TETHEROFFLOAD_EXAMPLES) + "/" + GetParam() + ".scenario";
    const std::string golden = std::string(TETHEROFFLOAD_GOLDEN) + "/" + GetParam() + ".jsonl";
    ServiceRun run = runService({"--trace=jsonl", scenario});
    ASSERT_EQ(run.status, 0) << run.err;

    std::vector<Json> records = parseTrace(run.out);
    ASSERT_FALSE(records.empty());
    int64_t lastTime = 0;
    for (const Json& r : records) {
        ASSERT_TRUE(r.contains("k") && r["k"].is_string()) << r.dump();
        ASSERT_TRUE(r.contains("t") && r["t"].is_number_integer()) << r.dump();
        EXPECT_GE(r["t"].get<int64_t>(), lastTime) << r.dump();
        lastTime = r["t"].get<int64_t>();
    }
    EXPECT_EQ(records.back().dump(), Json({{"k", "exit"}, {"t", lastTime}, {"status", 0}}).dump());

    const std::string actual = stableTrace(records);
    const char* update = getenv("TETHEROFFLOAD_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") {
        writeFile(golden, actual);
        return;
    }
    const std::string expected = readFile(golden);
    ASSERT_FALSE(expected.empty()) << golden << " is missing: see tests/scenarios/README.md";
    EXPECT_TRUE(expected == actual) << GetParam() << ": " << firstDifference(expected, actual);
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
    // What CMake's MAKE_C_IDENTIFIER makes of the file name, for the ctest filter.
    std::string name = info.param;
    for (char& c : name) {
        if (!isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Examples, GoldenTest, ::testing::ValuesIn(exampleNames()), testName);

}  // namespace
}  // namespace scenariotest
