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

#include "JsonFormatBench.h"

#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cctype>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "JsonTrace.h"
#include "VexaDecoder.h"

namespace bench {
namespace {

using namespace hostplatform;
using hostrunner::toHex;
using Format = std::function<void(const Record&, std::string*)>;

// What the trace holds for one `modem event STARTED`.
std::vector<Record> statusEvent() {
    const std::vector<uint8_t> started = {0x54, 0x24, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const char* lines[] = {"handleEvent: readsize 16 \n",
                           " parsingEvent : recv a msg from MD: status:1 ,msg: 0\n",
                           " recv VEXA_STARTED msg from MD\n"};
    std::vector<Record> records = {{3357, ReadRecord{16, started, 0}}};
    for (const char* line : lines) {
        records.push_back({3372, LogRecord{4, "TetherOffload", line, "HandleEvent"}});
    }
    records.push_back({3385, CallbackRecord{"onEvent_1_1", 1, {}, {}, 0, true}});
    return records;
}

// The same kinds with text a formatter can get wrong: escapes, control characters, and bytes
// that are not UTF-8 (a lone continuation byte, an overlong form, a surrogate, a cut sequence).
std::vector<Record> awkwardRecords() {
    const char kText[] =
            "\"q\" \\ \b\f\n\r\t nul\0 \x01\x0b\x1f\x7f \xc3\xa9 \x80 \xc0\xaf \xed\xa0\x80 "
            "\xe2\x82";
    std::vector<Record> records = statusEvent();
    for (Record& record : records) {
        if (auto* log = std::get_if<LogRecord>(&record.body)) {
            log->msg = std::string(kText, sizeof(kText) - 1);
        }
    }
    return records;
}

// RapidJSON's Writer keeps bytes that are not UTF-8 as they are (or refuses the string, when it
// validates), and writes \u00XX in upper case where the trace has lower case. So a string that is
// not plain UTF-8 without such an escape is repaired first, and its escapes lowered after.
namespace rj = rapidjson;
using RapidWriter = rj::Writer<rj::StringBuffer>;

// The length of the well-formed UTF-8 sequence at `at`; otherwise 0, with `*bad` the length of
// the ill-formed part that one U+FFFD replaces.
size_t wellFormedAt(const std::string& s, size_t at, size_t* bad) {
    const auto lead = static_cast<uint8_t>(s[at]);
    size_t length = 0;
    uint8_t low = 0x80, high = 0xBF;  // the second byte's range: no overlong form, no surrogate
    if (lead >= 0xC2 && lead <= 0xDF) length = 2;
    if (lead >= 0xE0 && lead <= 0xEF) length = 3;
    if (lead >= 0xF0 && lead <= 0xF4) length = 4;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
    *bad = 1;
    for (size_t k = 1; k < length; ++k) {
        const auto next = at + k < s.size() ? static_cast<uint8_t>(s[at + k]) : 0;
        if (next < (k == 1 ? low : 0x80) || next > (k == 1 ? high : 0xBF)) {
            *bad = k;
            return 0;
        }
    }
    return length;
}

bool plain(const std::string& s) {
    size_t bad = 0;
    for (size_t at = 0; at < s.size();) {
        const auto c = static_cast<uint8_t>(s[at]);
        if (c >= 0x80) {
            const size_t length = wellFormedAt(s, at, &bad);
            if (length == 0) return false;
            at += length;
            continue;
        }
        if (c < 0x20 && c != '\b' && c != '\f' && c != '\n' && c != '\r' && c != '\t') return false;
        ++at;
    }
    return true;
}

void rapidString(RapidWriter& w, const std::string& s) {
    if (plain(s)) {
        w.String(s.data(), static_cast<rj::SizeType>(s.size()));
        return;
    }
    std::string repaired;
    for (size_t at = 0; at < s.size();) {
        size_t bad = 1;
        const size_t length = static_cast<uint8_t>(s[at]) < 0x80 ? 1 : wellFormedAt(s, at, &bad);
        if (length > 0) {
            repaired.append(s, at, length);
            at += length;
        } else {
            repaired.append("\xEF\xBF\xBD");  // U+FFFD
            at += bad;
        }
    }
    rj::StringBuffer escaped;
    RapidWriter(escaped).String(repaired.data(), static_cast<rj::SizeType>(repaired.size()));
    std::string text(escaped.GetString(), escaped.GetSize());
    for (size_t at = 0; at + 1 < text.size(); ++at) {
        if (text[at] != '\\') continue;
        if (text[++at] != 'u') continue;
        for (size_t k = at + 1; k < at + 5; ++k) text[k] = static_cast<char>(tolower(text[k]));
    }
    w.RawValue(text.data(), text.size(), rj::kStringType);
}

void rapidjsonLine(const Record& record, std::string* out) {
    thread_local rj::StringBuffer buffer;
    buffer.Clear();
    RapidWriter w(buffer);
    w.StartObject();
    const auto head = [&](const char* kind) {
        w.Key("k");
        w.String(kind);
        w.Key("t");
        w.Int64(record.tMicros);
    };
    if (const auto* r = std::get_if<ReadRecord>(&record.body)) {
        head("read");
        w.Key("ret");
        w.Int64(r->ret);
        w.Key("hex");
        rapidString(w, toHex(r->bytes));
    } else if (const auto* r = std::get_if<LogRecord>(&record.body)) {
        head("log");
        w.Key("prio");
        w.Int(r->prio);
        w.Key("tag");
        rapidString(w, r->tag);
        w.Key("msg");
        rapidString(w, r->msg);
        w.Key("thread");
        rapidString(w, r->thread);
    } else if (const auto* r = std::get_if<CallbackRecord>(&record.body)) {
        head("callback");
        w.Key("op");
        rapidString(w, r->op);
        w.Key("event");
        w.Uint(r->event);
        w.Key("ok");
        w.Bool(r->ok);
    }
    w.EndObject();
    out->append(buffer.GetString(), buffer.GetSize());
    out->push_back('\n');
}

// The baseline: the records' text and numbers, unquoted and unescaped.
void copyLine(const Record& record, std::string* out) {
    const auto number = [out](int64_t n) { out->append(std::to_string(n)); };
    number(record.tMicros);
    if (const auto* r = std::get_if<ReadRecord>(&record.body)) {
        number(r->ret);
        out->append(toHex(r->bytes));
    } else if (const auto* r = std::get_if<LogRecord>(&record.body)) {
        number(r->prio);
        out->append(r->tag).append(r->msg).append(r->thread);
    } else if (const auto* r = std::get_if<CallbackRecord>(&record.body)) {
        number(r->event);
        out->append(r->op);
    }
    out->push_back('\n');
}

void traceLine(const Record& record, std::string* out) {
    hostrunner::appendJsonLine(record, out);
    out->push_back('\n');
}

std::string formatAll(const Format& format, const std::vector<Record>& records) {
    std::string text;
    for (const Record& record : records) format(record, &text);
    return text;
}

void formatEvents(benchmark::State& state, const Format& format, bool sameBytes) {
    const std::vector<Record> event = statusEvent();
    if (sameBytes) {
        for (const auto& records : {event, awkwardRecords()}) {
            if (formatAll(format, records) != formatAll(traceLine, records)) {
                return state.SkipWithError("writes other bytes than the trace");
            }
        }
    }
    std::string text;
    for (auto _ : state) {
        text.clear();
        for (const Record& record : event) format(record, &text);
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["events_per_s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                        benchmark::Counter::kIsRate);
}

}  // namespace

void registerJsonFormats() {
    benchmark::RegisterBenchmark("json/trace", formatEvents, Format(traceLine), false);
    benchmark::RegisterBenchmark("json/rapidjson", formatEvents, Format(rapidjsonLine), true);
    benchmark::RegisterBenchmark("json/copy", formatEvents, Format(copyLine), false);
}

}  // namespace bench
