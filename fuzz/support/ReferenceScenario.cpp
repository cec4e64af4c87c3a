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

#include "fuzz/support/ReferenceScenario.h"

#include <arpa/inet.h>
#include <errno.h>
#include <stdlib.h>

#include <set>

namespace reference {
namespace {

using Words = std::vector<ScenarioWord>;

constexpr uint64_t kU8 = 0xff;
constexpr uint64_t kU16 = 0xffff;
constexpr uint64_t kU32 = 0xffffffff;
constexpr uint64_t kU64 = ~0ull;

bool blank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A quoted word from just after its opening quote; `i` ends after the closing quote.
bool quotedWord(const std::string& line, size_t& i, std::string* text) {
    while (i < line.size()) {
        const char c = line[i++];
        if (c == '"') return i == line.size() || blank(line[i]) || line[i] == '#';
        if (c != '\\') {
            *text += c;
            continue;
        }
        if (i == line.size()) return false;
        const char e = line[i++];
        if (e == '"' || e == '\\') {
            *text += e;
        } else if (e == 'n') {
            *text += '\n';
        } else if (e == 't') {
            *text += '\t';
        } else if (e == 'x' && i + 1 < line.size() && hexDigit(line[i]) >= 0 &&
                   hexDigit(line[i + 1]) >= 0) {
            *text += static_cast<char>(hexDigit(line[i]) * 16 + hexDigit(line[i + 1]));
            i += 2;
        } else {
            return false;
        }
    }
    return false;
}

bool errnoText(const std::string& text) {
    static const std::set<std::string> names = {
            "EPERM",   "ENOENT", "EINTR",     "EIO",     "ENXIO",    "E2BIG",      "EBADF",
            "EAGAIN",  "ENOMEM", "EACCES",    "EFAULT",  "EBUSY",    "EEXIST",     "ENODEV",
            "EINVAL",  "ENOSPC", "EPIPE",     "ERANGE",  "ENOTTY",   "ENOSYS",     "ETIMEDOUT",
            "ENODATA", "EPROTO", "EOVERFLOW", "ENOTSUP", "ENETDOWN", "ECONNRESET", "ESHUTDOWN"};
    uint64_t value = 0;
    return names.count(text) > 0 || (number(text, 4095, &value) && value > 0);
}

bool num(const std::string& text, uint64_t max) {
    uint64_t value;
    return number(text, max, &value);
}

bool oneOf(const std::string& text, std::initializer_list<const char*> choices) {
    for (const char* c : choices) {
        if (text == c) return true;
    }
    return false;
}

bool ipv4(const std::string& text) {
    unsigned char buf[4];
    return inet_pton(AF_INET, text.c_str(), buf) == 1;
}

bool hexBytes(const std::string& text) {
    if (text.size() % 2 != 0 || text.size() > 2 * 256) return false;
    for (char c : text) {
        if (hexDigit(c) < 0) return false;
    }
    return true;
}

// key=value words from `from` on: known keys, each once, each value good for its key.
using ValueCheck = bool (*)(const std::string&);
struct Option {
    const char* key;
    ValueCheck check;
};

bool options(const Words& w, size_t from, std::initializer_list<Option> known) {
    std::set<std::string> seen;
    for (size_t i = from; i < w.size(); ++i) {
        const size_t eq = w[i].text.find('=');
        if (eq == std::string::npos) return false;
        const std::string key = w[i].text.substr(0, eq);
        const std::string value = w[i].text.substr(eq + 1);
        bool good = false;
        for (const Option& o : known) {
            if (key == o.key) good = o.check(value);
        }
        if (!good || !seen.insert(key).second) return false;
    }
    return true;
}

bool u8(const std::string& t) {
    return num(t, kU8);
}
bool u16(const std::string& t) {
    return num(t, kU16);
}
bool u32(const std::string& t) {
    return num(t, kU32);
}
bool readSize(const std::string& t) {
    return num(t, 272);
}

bool eventStatus(const std::string& text) {
    const std::string name = text.rfind("VEXA_", 0) == 0 ? text.substr(5) : text;
    return oneOf(name, {"STARTED", "STOPPED_ERROR", "STOPPED_UNSUPPORTED", "SUPPORT_AVAILABLE",
                        "STOPPED_LIMIT_REACHED", "CONNECT_UPDATE", "WARNING_REACHED"}) ||
           num(text, kU16);
}

// `w` holds the words after "modem".
bool modem(const Words& w) {
    if (w.empty()) return false;
    const std::string& what = w[0].text;
    const size_t n = w.size() - 1;
    if (what == "event") {
        return n >= 1 && n <= 7 && eventStatus(w[1].text) &&
               options(w, 2,
                       {{"mcode", u16},
                        {"msg", u32},
                        {"app", u32},
                        {"len", u32},
                        {"payload", hexBytes},
                        {"read", readSize}});
    }
    if (what == "conn") {
        return options(w, 1,
                       {{"dst_nat", u8},
                        {"ip0", ipv4},
                        {"ip1", ipv4},
                        {"ip2", ipv4},
                        {"port0", u16},
                        {"port1", u16},
                        {"port2", u16},
                        {"proto", u8},
                        {"len", u32}});
    }
    if (what == "readfail") return n == 1 && errnoText(w[1].text);
    if (what == "stats") {
        return (n == 2 || n == 3) && num(w[1].text, kU64) && num(w[2].text, kU64) &&
               options(w, 3, {{"len", u32}});
    }
    if (what == "ioctl") {
        return (n == 1 && w[1].text == "ok") ||
               (n == 2 && w[1].text == "fail" && errnoText(w[2].text));
    }
    return false;
}

bool handleCount(const std::string& text) {
    return text == "none" || num(text, 2);
}

bool command(const std::string& name, const Words& w, Where where) {
    const size_t n = w.size();
    if (name == "setHandles") return n == 2 && handleCount(w[0].text) && handleCount(w[1].text);
    if (name == "initOffload") return n == 1 && oneOf(w[0].text, {"1.0", "1.1", "null"});
    if (name == "stopOffload" || name == "dump") return n == 0;
    if (name == "setLocalPrefixes") return true;
    if (name == "getForwardedStats") return n == 1;
    if (name == "setDataLimit") return n == 2 && num(w[1].text, kU64);
    if (name == "setDataWarningAndLimit") {
        return n == 3 && num(w[1].text, kU64) && num(w[2].text, kU64);
    }
    if (name == "setUpstreamParameters") return n >= 3;
    if (name == "addDownstream" || name == "removeDownstream") return n == 2;
    if (name == "modem") return modem(w);
    if (name == "agent") return n == 1 && oneOf(w[0].text, {"up", "absent", "failing"});
    if (name == "framework") return n == 1 && oneOf(w[0].text, {"alive", "dead"});
    if (name == "prop") return n == 2 && !w[0].text.empty();
    if (name == "proc") return n == 2 && oneOf(w[0].text, {"tcp", "udp"});
    if (name == "stderr") return n == 1 && oneOf(w[0].text, {"closed", "open"});
    if (name == "wait") return n == 1 && num(w[0].text, 3600 * 1000);
    if (name == "device") return n == 1 && w[0].text == "absent";
    if (name == "help" || name == "quit") return n == 0 && where == Where::kConsole;
    return false;
}

}  // namespace

bool splitLine(const std::string& line, std::vector<ScenarioWord>* words) {
    words->clear();
    size_t i = 0;
    for (;;) {
        while (i < line.size() && blank(line[i])) ++i;
        if (i == line.size() || line[i] == '#') return true;
        ScenarioWord word;
        if (line[i] == '"') {
            word.quoted = true;
            ++i;
            if (!quotedWord(line, i, &word.text)) return false;
        } else {
            while (i < line.size() && !blank(line[i]) && line[i] != '#') {
                if (line[i] == '"') return false;
                word.text += line[i++];
            }
        }
        words->push_back(word);
    }
}

bool wellFormed(const std::string& line, Where where) {
    Words words;
    if (!splitLine(line, &words)) return false;
    if (words.empty()) return true;
    if (words[0].quoted) return false;
    return command(words[0].text, Words(words.begin() + 1, words.end()), where);
}

bool number(const std::string& text, uint64_t max, uint64_t* value) {
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const std::string digits = hex ? text.substr(2) : text;
    if (digits.empty()) return false;
    for (char c : digits) {
        const int d = hexDigit(c);
        if (d < 0 || d >= (hex ? 16 : 10)) return false;
    }
    errno = 0;
    const unsigned long long v = strtoull(digits.c_str(), nullptr, hex ? 16 : 10);
    if (errno == ERANGE || v > max) return false;
    *value = v;
    return true;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t nl = text.find('\n', start);
        if (nl == std::string::npos) nl = text.size();
        lines.push_back(text.substr(start, nl - start));
        start = nl + 1;
    }
    return lines;
}

}  // namespace reference
