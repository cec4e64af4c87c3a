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

#include "TextTrace.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "Values.h"
#include "VexaDecoder.h"
#include "datapath/vexa_protocol.h"

namespace hostrunner {
namespace {

constexpr const char* kRed = "31";
constexpr const char* kGreen = "32";
constexpr const char* kYellow = "33";
constexpr const char* kBlue = "34";
constexpr const char* kMagenta = "35";
constexpr const char* kCyan = "36";
constexpr const char* kDim = "2";

// Wide enough for a thread name of 15 characters in brackets.
constexpr size_t kKindWidth = 17;

char prioLetter(int prio) {
    static const char kLetters[] = "??VDIWEFS";
    return prio >= 0 && prio <= 8 ? kLetters[prio] : '?';
}

const char* prioColour(int prio) {
    if (prio >= 6) return kRed;
    if (prio == 5) return kYellow;
    return nullptr;
}

std::string quoted(const std::string& text) {
    return "\"" + escapeText(text) + "\"";
}

// Scenario words as they could be typed again: quoted only when they need it.
std::string word(const std::string& text) {
    bool plain = !text.empty() && text.find_first_of(" \t\"\\#") == std::string::npos &&
                 escapeText(text) == text;
    return plain ? text : quoted(text);
}

std::string errnoText(int errnum) {
    std::string name = errnoName(errnum);
    return name.empty() ? "errno " + std::to_string(errnum) : name;
}

std::string okText(bool ok) {
    return ok ? "ok" : "failed in transport";
}

// The lines of a text that ends with a newline or not: "a\nb\n" and "a\nb" are both "a", "b".
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    if (start < text.size() || lines.empty()) lines.push_back(text.substr(start));
    return lines;
}

// Control characters but the tab as \xHH, so that a line of text cannot move the cursor.
std::string escapeControls(const std::string& text) {
    std::string out;
    for (char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && c != '\t') || byte == 0x7f) {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02x", byte);
            out += hex;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace

// Formats the part after the time and the kind column: one line, or none for a record the text
// trace leaves out, or several.
struct TextFields {
    TextTrace* trace;
    std::string kind;
    std::string text;
    std::vector<std::string> moreLines;
    bool headOnEveryLine = false;  // the lines of a log message each look like a log line

    void setLines(const std::vector<std::string>& lines) {
        text = lines.front();
        moreLines.assign(lines.begin() + 1, lines.end());
    }

    void operator()(const hostplatform::ThreadpoolRecord& r) {
        kind = "threadpool";
        text = "max=" + std::to_string(r.max) +
               " callerWillJoin=" + (r.callerWillJoin ? "true" : "false");
    }
    void operator()(const hostplatform::RegisterRecord& r) {
        kind = "register";
        text = r.interface + " as " + quoted(r.name);
    }
    // As logcat shows it: without its final newline, a line of output for each of its lines.
    void operator()(const hostplatform::LogRecord& r) {
        kind = "[" + r.thread + "]";
        headOnEveryLine = true;
        const char* colour = prioColour(r.prio);
        std::vector<std::string> lines;
        for (const std::string& part : linesOf(r.msg)) {
            std::string line =
                    std::string(1, prioLetter(r.prio)) + " " + r.tag + ": " + escapeControls(part);
            lines.push_back(colour ? trace->paint(colour, line) : line);
        }
        setLines(lines);
    }
    void operator()(const hostplatform::OpenRecord& r) {
        kind = "open";
        text = r.path + (r.fd >= 0 ? " -> fd " + std::to_string(r.fd)
                                   : " -> " + trace->paint(kRed, errnoText(r.errnum)));
    }
    void operator()(const hostplatform::IoctlRecord& r) {
        kind = "ioctl";
        std::string result = r.ret == 0 ? "0" : std::to_string(r.ret) + " " + errnoText(r.errnum);
        text = "fd " + std::to_string(r.fd) + " req " + std::to_string(r.req) + " " +
               trace->paint(kBlue, describeVexaRequest(r.bytes.data(), r.bytes.size())) + " -> " +
               (r.ret == 0 ? result : trace->paint(kRed, result)) + "  " +
               trace->paint(kDim, toShortHex(r.bytes));
    }
    void operator()(const hostplatform::ReadRecord& r) {
        kind = "read";
        if (r.ret < 0) {
            text = trace->paint(kRed, std::to_string(r.ret) + " " + errnoText(r.errnum));
            return;
        }
        text = std::to_string(r.ret) + " bytes " +
               trace->paint(kBlue, describeVexaEvent(r.bytes.data(), r.bytes.size())) + "  " +
               trace->paint(kDim, toShortHex(r.bytes));
    }
    void operator()(const hostplatform::AgentRecord& r) {
        kind = "agent";
        text = quoted(r.cmd) + " " + (r.ok ? okText(true) : trace->paint(kRed, okText(false)));
    }
    void operator()(const hostplatform::CallbackRecord& r) {
        kind = "callback";
        std::string call = r.op == "updateTimeout"
                                   ? r.op + "(src " + r.src.addr + ":" +
                                             std::to_string(r.src.port) + " dst " + r.dst.addr +
                                             ":" + std::to_string(r.dst.port) + " proto " +
                                             (r.proto == 6    ? "TCP"
                                              : r.proto == 17 ? "UDP"
                                                              : std::to_string(r.proto)) +
                                             ")"
                                   : r.op + "(" + callbackEventName(r.event) + ")";
        text = trace->paint(kMagenta, call) + " " +
               (r.ok ? okText(true) : trace->paint(kRed, okText(false)));
    }
    void operator()(const hostplatform::CallRecord& r) {
        trace->mLastCallLine = r.line;
        kind = "call";
        std::string call = "--> " + std::to_string(r.line) + ": " + r.op;
        for (const std::string& arg : r.args) call += " " + word(arg);
        text = trace->paint(kCyan, call);
    }
    void operator()(const hostplatform::ReplyRecord& r) {
        kind = "reply";
        std::string reply = "<-- " + std::to_string(trace->mLastCallLine) + ": " + r.op + " ";
        if (r.isStats) {
            text = trace->paint(
                    kGreen, reply + "rx=" + std::to_string(r.rx) + " tx=" + std::to_string(r.tx));
            return;
        }
        reply += (r.ok ? "true " : "false ") + quoted(r.msg);
        text = trace->paint(r.ok ? kGreen : kYellow, reply);
    }
    void operator()(const hostplatform::ExitRecord& r) {
        kind = "exit";
        text = "status " + std::to_string(r.status);
    }
    // The console has shown the message on standard error.
    void operator()(const hostplatform::ErrorRecord&) {}
    // The report as lshal shows it, under the record's line.
    void operator()(const hostplatform::DumpRecord& r) {
        kind = "dump";
        std::vector<std::string> lines;
        for (const std::string& line : linesOf(r.text)) lines.push_back(escapeControls(line));
        setLines(lines);
    }
};

std::string TextTrace::format(const hostplatform::Record& record) {
    TextFields fields{this, "", "", {}};
    std::visit(fields, record.body);
    if (fields.kind.empty()) return "";
    char time[32];
    snprintf(time, sizeof(time), "%4lld.%06lld", static_cast<long long>(record.tMicros / 1000000),
             static_cast<long long>(record.tMicros % 1000000));
    std::string kind = fields.kind;
    if (kind.size() < kKindWidth) kind.resize(kKindWidth, ' ');
    const std::string head = paint(kDim, time) + " " + kind + " ";
    const std::string next =
            fields.headOnEveryLine ? head : std::string(strlen(time) + 1 + kind.size() + 1, ' ');
    std::string out = head + fields.text;
    for (const std::string& line : fields.moreLines) out += "\n" + next + line;
    return out;
}

std::string TextTrace::paint(const char* colour, const std::string& text) const {
    if (!mColour) return text;
    return std::string("\033[") + colour + "m" + text + "\033[0m";
}

std::string escapeText(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '"':
                out += "\\\"";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
                    char hex[8];
                    snprintf(hex, sizeof(hex), "\\x%02x", static_cast<unsigned char>(c));
                    out += hex;
                } else {
                    out += c;
                }
        }
    }
    return out;
}

}  // namespace hostrunner
