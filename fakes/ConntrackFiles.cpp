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

#include "fakes/ConntrackFiles.h"

#include <errno.h>
#include <string.h>

#include <mutex>

#include "fakes/RealLibc.h"

namespace fakes {
namespace {

constexpr const char* kTcpPath = "/proc/sys/net/netfilter/nf_conntrack_tcp_timeout_established";
constexpr const char* kUdpPath = "/proc/sys/net/netfilter/nf_conntrack_udp_timeout_stream";

enum class Source { kReal, kContent, kAbsent };

struct File {
    Source source = Source::kReal;
    std::string content;
};

struct Files {
    std::mutex lock;
    File tcp;
    File udp;

    File& of(ConntrackFiles::Proto proto) {
        return proto == ConntrackFiles::Proto::kTcp ? tcp : udp;
    }
};

Files& files() {
    // Never destroyed: a thread may still open the files while the process exits.
    static Files* instance = new Files();
    return *instance;
}

void set(ConntrackFiles::Proto proto, Source source, const std::string& content) {
    Files& f = files();
    std::lock_guard<std::mutex> lock(f.lock);
    f.of(proto) = File{source, content};
}

// A stream of its own over a copy of the content, freed when it is closed. fmemopen cannot make
// an empty stream, so an empty content reads from /dev/null. The byte of room after the content
// takes the NUL that fmemopen writes after what was written.
FILE* openContent(const std::string& content) {
    if (content.empty()) return realFopen("/dev/null", "r");
    FILE* stream = fmemopen(nullptr, content.size() + 1, "w+");
    if (stream == nullptr) return nullptr;
    if (fwrite(content.data(), 1, content.size(), stream) != content.size() ||
        fseek(stream, 0, SEEK_SET) != 0) {
        fclose(stream);
        errno = EIO;
        return nullptr;
    }
    return stream;
}

}  // namespace

void ConntrackFiles::setContent(Proto proto, const std::string& content) {
    set(proto, Source::kContent, content);
}

void ConntrackFiles::setAbsent(Proto proto) {
    set(proto, Source::kAbsent, "");
}

void ConntrackFiles::useRealFile(Proto proto) {
    set(proto, Source::kReal, "");
}

void ConntrackFiles::reset() {
    useRealFile(Proto::kTcp);
    useRealFile(Proto::kUdp);
}

bool ConntrackFiles::open(const char* path, const char* /*mode*/, FILE** file) {
    if (path == nullptr) return false;
    Proto proto;
    if (strcmp(path, kTcpPath) == 0) {
        proto = Proto::kTcp;
    } else if (strcmp(path, kUdpPath) == 0) {
        proto = Proto::kUdp;
    } else {
        return false;
    }
    File wanted;
    {
        Files& f = files();
        std::lock_guard<std::mutex> lock(f.lock);
        wanted = f.of(proto);
    }
    switch (wanted.source) {
        case Source::kReal:
            return false;
        case Source::kAbsent:
            *file = nullptr;
            errno = ENOENT;
            return true;
        case Source::kContent:
            *file = openContent(wanted.content);
            return true;
    }
    return false;
}

}  // namespace fakes
