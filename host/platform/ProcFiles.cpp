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

#include "hostplatform/ProcFiles.h"

#include <errno.h>
#include <string.h>

#include <algorithm>
#include <mutex>

#include "ProcFileHook.h"

namespace hostplatform {
namespace {

enum class Source { kReal, kContent, kAbsent };

struct Entry {
    Source source = Source::kReal;
    std::string content;
};

struct Files {
    std::mutex lock;
    Entry tcp;
    Entry udp;

    Entry& entry(ProcFiles::Proto proto) { return proto == ProcFiles::Proto::kTcp ? tcp : udp; }
};

Files& files() {
    // Never destroyed: a thread may still open the files while the process exits.
    static Files* files = new Files();
    return *files;
}

void set(ProcFiles::Proto proto, Source source, const std::string& content) {
    Files& f = files();
    std::lock_guard<std::mutex> lock(f.lock);
    f.entry(proto) = Entry{source, content};
}

// The stream's own copy of the content, freed when the stream is closed.
struct MemoryFile {
    std::string content;
    size_t offset = 0;
};

ssize_t readMemoryFile(void* cookie, char* buf, size_t size) {
    MemoryFile* file = static_cast<MemoryFile*>(cookie);
    const size_t n = std::min(size, file->content.size() - file->offset);
    memcpy(buf, file->content.data() + file->offset, n);
    file->offset += n;
    return static_cast<ssize_t>(n);
}

int closeMemoryFile(void* cookie) {
    delete static_cast<MemoryFile*>(cookie);
    return 0;
}

FILE* openMemoryFile(const std::string& content, const char* mode) {
    MemoryFile* file = new MemoryFile{content};
    cookie_io_functions_t io = {};
    io.read = readMemoryFile;
    io.close = closeMemoryFile;
    FILE* stream = fopencookie(file, mode, io);
    if (stream == nullptr) delete file;
    return stream;
}

bool procPath(const char* path, ProcFiles::Proto* proto) {
    if (path == nullptr) return false;
    if (strcmp(path, ProcFiles::kTcpPath) == 0) {
        *proto = ProcFiles::Proto::kTcp;
        return true;
    }
    if (strcmp(path, ProcFiles::kUdpPath) == 0) {
        *proto = ProcFiles::Proto::kUdp;
        return true;
    }
    return false;
}

}  // namespace

ProcFiles& ProcFiles::instance() {
    static ProcFiles* procFiles = new ProcFiles();
    return *procFiles;
}

void ProcFiles::setContent(Proto proto, const std::string& content) {
    set(proto, Source::kContent, content);
}

void ProcFiles::setAbsent(Proto proto) {
    set(proto, Source::kAbsent, "");
}

void ProcFiles::useRealFile(Proto proto) {
    set(proto, Source::kReal, "");
}

void ProcFiles::reset() {
    useRealFile(Proto::kTcp);
    useRealFile(Proto::kUdp);
}

bool openStandInProcFile(const char* path, const char* mode, FILE** file) {
    ProcFiles::Proto proto;
    if (!procPath(path, &proto)) return false;
    Entry entry;
    {
        Files& f = files();
        std::lock_guard<std::mutex> lock(f.lock);
        entry = f.entry(proto);
    }
    switch (entry.source) {
        case Source::kReal:
            return false;
        case Source::kAbsent:
            *file = nullptr;
            errno = ENOENT;
            return true;
        case Source::kContent:
            *file = openMemoryFile(entry.content, mode);
            return true;
    }
    return false;
}

}  // namespace hostplatform
