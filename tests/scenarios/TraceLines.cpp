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

#include "TraceLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

namespace scenariotest {

std::vector<Json> parseTrace(const std::string& text) {
    std::vector<Json> records;
    std::istringstream in(text);
    std::string line;
    for (int n = 1; std::getline(in, line); ++n) {
        Json record = Json::parse(line, nullptr, /*allow_exceptions=*/false);
        EXPECT_TRUE(record.is_object()) << "line " << n << " is not a JSON object: " << line;
        if (record.is_object()) records.push_back(record);
    }
    return records;
}

Json stableForm(Json record) {
    static const std::regex fdNumber("(fd\\s*=\\s*)-?[0-9]+");
    static const std::regex pointer("0x[0-9a-fA-F]{8,}");
    record.erase("t");
    record.erase("fd");
    if (record.value("k", "") == "log" && record.contains("msg") && record["msg"].is_string()) {
        std::string msg = record["msg"].get<std::string>();
        msg = std::regex_replace(msg, fdNumber, "$1<fd>");
        msg = std::regex_replace(msg, pointer, "0x<ptr>");
        record["msg"] = msg;
    }
    return record;
}

namespace {

// The first record that a scenario line caused: a call, a record read by the event thread, or
// (for a scenario that does neither) the service's last words.
bool endsStartup(const Json& record) {
    const std::string kind = record.value("k", "");
    return kind == "call" || kind == "read" || kind == "error" ||
           (kind == "log" && record.value("msg", "") == "tether offload exiting");
}

// Start-up order among the kinds of record (each kind is written by the main thread alone, in a
// fixed order, until the log lines of both threads).
int startupRank(const Json& record) {
    const std::string kind = record.value("k", "");
    if (kind == "threadpool") return 0;
    if (kind == "register") return 1;
    if (kind == "open") return 2;
    if (kind == "log") return 3;
    return 4;
}

// Without a device the event thread may end before the main thread names it, and the naming
// then fails. Whether it does is a matter of scheduling.
bool namingRace(const Json& record) {
    return record.value("msg", "") == "fail to change HandleEvent thread name\n";
}

std::vector<Json> stableStartup(const std::vector<Json>& records, size_t end) {
    std::vector<Json> startup;
    for (size_t i = 0; i < end; ++i) {
        if (namingRace(records[i])) continue;
        Json record = stableForm(records[i]);
        record.erase("thread");
        startup.push_back(record);
    }
    std::stable_sort(startup.begin(), startup.end(), [](const Json& a, const Json& b) {
        if (startupRank(a) != startupRank(b)) return startupRank(a) < startupRank(b);
        return startupRank(a) == 3 && a.value("msg", "") < b.value("msg", "");
    });
    return startup;
}

}  // namespace

std::string stableTrace(const std::vector<Json>& records) {
    // Start-up runs on two threads at once: the event thread may log before or after the main
    // thread's next line, and under its creator's name until it is renamed. That block is put in
    // a fixed order (threadpool, register, open, then log lines by text) without thread names;
    // everything after it is in the order it happened.
    size_t startEnd = 0;
    while (startEnd < records.size() && !endsStartup(records[startEnd])) ++startEnd;
    std::string out;
    for (const Json& record : stableStartup(records, startEnd)) out += record.dump() + "\n";
    for (size_t i = startEnd; i < records.size(); ++i) out += stableForm(records[i]).dump() + "\n";
    return out;
}

}  // namespace scenariotest
