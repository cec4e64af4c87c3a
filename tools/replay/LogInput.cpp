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

#include "LogInput.h"

#include <fcntl.h>
#include <iconv.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>

namespace hostreplay {
namespace {

constexpr size_t kChunk = 64 * 1024;
constexpr char kSectionStart[] = "------ SYSTEM LOG (";
constexpr char kSectionEnd[] = "was the duration of 'SYSTEM LOG' ------";
constexpr char kMainEntryList[] = "main_entry.txt";

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

class StringSource : public ByteSource {
public:
    explicit StringSource(std::string text) : mText(std::move(text)) {}
    long read(char* buffer, size_t size) override {
        const size_t n = std::min(size, mText.size() - mPos);
        mText.copy(buffer, n, mPos);
        mPos += n;
        return static_cast<long>(n);
    }
    bool rewind() override {
        mPos = 0;
        return true;
    }

private:
    std::string mText;
    size_t mPos = 0;
};

class FdSource : public ByteSource {
public:
    explicit FdSource(int fd) : mFd(fd) {}
    ~FdSource() override { close(mFd); }
    long read(char* buffer, size_t size) override {
        ssize_t n;
        do {
            n = ::read(mFd, buffer, size);
        } while (n < 0 && errno == EINTR);
        return n;
    }
    bool rewind() override { return lseek(mFd, 0, SEEK_SET) == 0; }
    int fd() const { return mFd; }

private:
    int mFd;
};

// Standard input, or a file that cannot be read twice (a pipe), copied to an unnamed temporary
// file: the copy is what both passes read.
int copiedToTemporaryFile(int in) {
    const char* dir = getenv("TMPDIR");
    int out = open(dir != nullptr && *dir != '\0' ? dir : "/tmp", O_TMPFILE | O_RDWR, 0600);
    if (out < 0) {
        FILE* file = tmpfile();
        if (file == nullptr) return -1;
        out = dup(fileno(file));
        fclose(file);
    }
    char buffer[kChunk];
    for (;;) {
        ssize_t n = read(in, buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (n < 0 || lseek(out, 0, SEEK_SET) != 0) break;
            return out;
        }
        for (ssize_t done = 0; done < n;) {
            ssize_t w = write(out, buffer + done, n - done);
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0) {
                close(out);
                return -1;
            }
            done += w;
        }
    }
    close(out);
    return -1;
}

using Zip = std::shared_ptr<zip_t>;

// One entry of a zip, inflated as it is read; read again by opening it again.
class ZipEntrySource : public ByteSource {
public:
    ZipEntrySource(Zip zip, zip_uint64_t index) : mZip(std::move(zip)), mIndex(index) {}
    ~ZipEntrySource() override { closeEntry(); }
    bool start() {
        mFile = zip_fopen_index(mZip.get(), mIndex, 0);
        return mFile != nullptr;
    }
    long read(char* buffer, size_t size) override {
        return mFile == nullptr ? -1 : static_cast<long>(zip_fread(mFile, buffer, size));
    }
    bool rewind() override {
        closeEntry();
        return start();
    }

private:
    void closeEntry() {
        if (mFile != nullptr) zip_fclose(mFile);
        mFile = nullptr;
    }
    Zip mZip;
    zip_uint64_t mIndex;
    zip_file_t* mFile = nullptr;
};

std::string baseName(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The bug report's main text file: the one main_entry.txt names, else the one bugreport-*.txt.
std::optional<zip_uint64_t> mainEntry(zip_t* zip, std::string* why) {
    const zip_int64_t list = zip_name_locate(zip, kMainEntryList, 0);
    if (list >= 0) {
        zip_file_t* file = zip_fopen_index(zip, list, 0);
        char name[1024] = {};
        const zip_int64_t n = file == nullptr ? -1 : zip_fread(file, name, sizeof(name) - 1);
        if (file != nullptr) zip_fclose(file);
        std::string entry(name, n > 0 ? static_cast<size_t>(n) : 0);
        while (!entry.empty() && isspace(static_cast<unsigned char>(entry.back())))
            entry.pop_back();
        const zip_int64_t index = zip_name_locate(zip, entry.c_str(), 0);
        if (index >= 0) return index;
        *why = std::string(kMainEntryList) + " names \"" + entry + "\", which the zip lacks";
        return std::nullopt;
    }
    std::optional<zip_uint64_t> found;
    const zip_int64_t count = zip_get_num_entries(zip, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* path = zip_get_name(zip, i, 0);
        const std::string name = path == nullptr ? "" : baseName(path);
        if (!startsWith(name, "bugreport-") || !endsWith(name, ".txt")) continue;
        if (found) {
            *why = "it holds several bugreport-*.txt and no " + std::string(kMainEntryList);
            return std::nullopt;
        }
        found = i;
    }
    if (!found) *why = "it holds no " + std::string(kMainEntryList) + " and no bugreport-*.txt";
    return found;
}

enum class Encoding { kUnknown, kUtf8, kUtf16Le, kUtf16Be };

// What the first bytes tell: a byte-order mark, or text of which every other byte is NUL (ASCII
// in UTF-16, as a Windows shell's redirection writes it). `skip`: the mark's length.
Encoding detectEncoding(const char* data, size_t size, size_t* skip) {
    const auto* b = reinterpret_cast<const unsigned char*>(data);
    *skip = 0;
    if (size >= 3 && b[0] == 0xef && b[1] == 0xbb && b[2] == 0xbf) {
        *skip = 3;
        return Encoding::kUtf8;
    }
    if (size >= 2 && b[0] == 0xff && b[1] == 0xfe) {
        *skip = 2;
        return Encoding::kUtf16Le;
    }
    if (size >= 2 && b[0] == 0xfe && b[1] == 0xff) {
        *skip = 2;
        return Encoding::kUtf16Be;
    }
    const size_t pairs = std::min<size_t>(size, 512) / 2;
    size_t evenNul = 0, oddNul = 0;
    for (size_t i = 0; i < pairs; ++i) {
        evenNul += b[2 * i] == 0;
        oddNul += b[2 * i + 1] == 0;
    }
    if (pairs >= 2 && evenNul == 0 && oddNul * 2 >= pairs) return Encoding::kUtf16Le;
    if (pairs >= 2 && oddNul == 0 && evenNul * 2 >= pairs) return Encoding::kUtf16Be;
    return Encoding::kUtf8;
}

}  // namespace

std::unique_ptr<ByteSource> textSource(std::string text) {
    return std::make_unique<StringSource>(std::move(text));
}

struct LogInput::State {
    std::string name;
    std::string error;
    std::string entry;  // the main text file of a zip
    std::unique_ptr<ByteSource> bytes;

    // Decoding.
    Encoding encoding = Encoding::kUnknown;  // kUnknown again for the second pass
    Encoding found = Encoding::kUnknown;
    iconv_t utf16 = reinterpret_cast<iconv_t>(-1);  // to UTF-8, for a UTF-16 capture
    std::string carry;   // the start of a character that the next chunk ends
    std::string buffer;  // decoded bytes
    size_t bufferPos = 0;
    size_t offset = 0;  // of the buffer's first byte in the decoded text
    bool sawBytes = false;

    // Lines.
    int lineNo = 0;
    std::deque<InputLine> ahead;  // the first lines, read to tell a bug report

    // A bug report: only the lines of its SYSTEM LOG section are the log.
    bool bugReport = false;
    bool inSection = false;
    bool sawSection = false;

    bool fail(const std::string& why) {
        error = why;
        return false;
    }
    bool notALog(const std::string& why) { return fail(name + " is not a log: " + why); }

    ~State() { closeTranscoder(); }

    void closeTranscoder() {
        if (utf16 != reinterpret_cast<iconv_t>(-1)) iconv_close(utf16);
        utf16 = reinterpret_cast<iconv_t>(-1);
        carry.clear();
    }

    // UTF-16 to UTF-8 with glibc's iconv; a unit that is no character (a lone surrogate) becomes
    // U+FFFD.
    bool transcode(const char* data, size_t size) {
        if (utf16 == reinterpret_cast<iconv_t>(-1)) {
            utf16 = iconv_open("UTF-8", encoding == Encoding::kUtf16Le ? "UTF-16LE" : "UTF-16BE");
            if (utf16 == reinterpret_cast<iconv_t>(-1))
                return fail(name + ": cannot transcode UTF-16");
        }
        carry.append(data, size);
        char* in = carry.data();
        size_t inLeft = carry.size();
        char out[kChunk];
        while (inLeft > 0) {
            char* to = out;
            size_t outLeft = sizeof(out);
            const size_t done = iconv(utf16, &in, &inLeft, &to, &outLeft);
            buffer.append(out, to - out);
            if (done != static_cast<size_t>(-1) || errno == E2BIG) continue;
            if (errno == EINVAL) break;  // the rest comes with the next chunk
            buffer += "\xef\xbf\xbd";
            const size_t skip = std::min<size_t>(2, inLeft);
            in += skip;
            inLeft -= skip;
        }
        carry.erase(0, carry.size() - inLeft);
        return true;
    }

    // The next decoded bytes into `buffer`; false at the end or on an error.
    bool fill() {
        char raw[kChunk];
        offset += buffer.size();
        buffer.clear();
        bufferPos = 0;
        while (buffer.empty()) {
            const long n = bytes->read(raw, sizeof(raw));
            if (n < 0) return fail(name + ": cannot read the log");
            if (n == 0) return false;
            sawBytes = true;
            size_t skip = 0;
            if (encoding == Encoding::kUnknown) {
                encoding = found = detectEncoding(raw, static_cast<size_t>(n), &skip);
            }
            if (encoding == Encoding::kUtf8) {
                buffer.assign(raw + skip, static_cast<size_t>(n) - skip);
            } else {
                if (!transcode(raw + skip, static_cast<size_t>(n) - skip)) return false;
            }
        }
        const size_t nul = buffer.find('\0');
        if (nul != std::string::npos) {
            return notALog("it holds binary data (a NUL byte at offset " +
                           std::to_string(offset + nul) + ")");
        }
        return true;
    }

    // One line of the text, bounded; false at the end or on an error.
    bool readLine(InputLine* line) {
        line->text.clear();
        line->length = 0;
        line->printable = false;
        bool any = false;
        for (;;) {
            if (bufferPos == buffer.size() && !fill()) break;
            any = true;
            const size_t newline = buffer.find('\n', bufferPos);
            const size_t end = newline == std::string::npos ? buffer.size() : newline;
            const size_t size = end - bufferPos;
            if (line->text.size() < kMaxLineBytes) {
                line->text.append(buffer, bufferPos,
                                  std::min(size, kMaxLineBytes - line->text.size()));
            }
            line->length += size;
            bufferPos = end;
            if (newline != std::string::npos) {
                ++bufferPos;
                break;
            }
        }
        if (!any || !error.empty()) return false;
        if (!line->tooLong() && !line->text.empty() && line->text.back() == '\r') {
            line->text.pop_back();
        }
        line->lineNo = ++lineNo;
        return true;
    }

    bool nextLine(InputLine* line) {
        if (ahead.empty()) return readLine(line);
        *line = std::move(ahead.front());
        ahead.pop_front();
        return true;
    }

    // A bug report's text begins with dumpstate's banner.
    void tellBugReport() {
        for (int i = 0; i < 2; ++i) {
            InputLine line;
            if (!readLine(&line)) break;
            ahead.push_back(std::move(line));
        }
        if (ahead.size() == 2 && ahead[0].text.size() >= 8 &&
            ahead[0].text.find_first_not_of('=') == std::string::npos &&
            startsWith(ahead[1].text, "== dumpstate")) {
            bugReport = true;
        }
    }

    void reset() {
        encoding = Encoding::kUnknown;
        closeTranscoder();
        buffer.clear();
        bufferPos = 0;
        offset = 0;
        lineNo = 0;
        ahead.clear();
        inSection = false;
    }
};

LogInput::LogInput() : mState(std::make_unique<State>()) {}
LogInput::~LogInput() = default;

bool LogInput::open(const std::string& path) {
    mState = std::make_unique<State>();
    State& s = *mState;
    const bool stdinput = path.empty() || path == "-";
    s.name = stdinput ? "<stdin>" : path;
    int fd = stdinput ? dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        if (fd >= 0) close(fd);
        return s.fail(s.name + ": cannot read the log");
    }
    if (!S_ISREG(st.st_mode)) {
        const int copy = copiedToTemporaryFile(fd);
        close(fd);
        if (copy < 0) return s.fail(s.name + ": cannot read the log");
        fd = copy;
    }
    char magic[4] = {};
    if (pread(fd, magic, sizeof(magic), 0) == 4 && std::string(magic, 4) == "PK\x03\x04") {
        int error = 0;
        zip_t* zip = zip_fdopen(fd, ZIP_RDONLY, &error);
        if (zip == nullptr) {
            close(fd);
            zip_error_t e;
            zip_error_init_with_code(&e, error);
            const std::string why = zip_error_strerror(&e);
            zip_error_fini(&e);
            return s.notALog("a zip that cannot be opened (" + why + ")");
        }
        Zip owned(zip, zip_close);
        std::string why;
        const std::optional<zip_uint64_t> index = mainEntry(zip, &why);
        if (!index) return s.notALog("a zip, but not a bug report: " + why);
        s.entry = zip_get_name(zip, *index, 0);
        auto entry = std::make_unique<ZipEntrySource>(owned, *index);
        if (!entry->start()) return s.fail(s.name + ": cannot read " + s.entry + " in the zip");
        s.bytes = std::move(entry);
        s.bugReport = true;
        return true;
    }
    const std::string name = s.name;  // open() starts a new state
    return open(std::make_unique<FdSource>(fd), name);
}

bool LogInput::open(std::unique_ptr<ByteSource> bytes, const std::string& name) {
    mState = std::make_unique<State>();
    State& s = *mState;
    s.name = name;
    s.bytes = std::move(bytes);
    s.tellBugReport();
    return s.error.empty();
}

bool LogInput::next(InputLine* line) {
    State& s = *mState;
    while (s.nextLine(line)) {
        if (!s.bugReport) return true;
        if (!s.inSection) {
            s.inSection = startsWith(line->text, kSectionStart);
            s.sawSection = s.sawSection || s.inSection;
        } else if (startsWith(line->text, "------ ") && endsWith(line->text, kSectionEnd)) {
            s.inSection = false;
        } else {
            line->printable = true;
            return true;
        }
    }
    if (!s.error.empty()) return false;
    if (!s.sawBytes) return s.notALog("it is empty");
    if (s.bugReport && !s.sawSection) {
        return s.notALog("a bug report without a SYSTEM LOG section");
    }
    return false;
}

bool LogInput::rewind() {
    State& s = *mState;
    s.reset();
    if (!s.bytes->rewind()) return s.fail(s.name + ": cannot read the log again");
    return true;
}

std::string LogInput::origin() const {
    const State& s = *mState;
    std::string details;
    if (s.found == Encoding::kUtf16Le) details = "UTF-16LE";
    if (s.found == Encoding::kUtf16Be) details = "UTF-16BE";
    if (!s.entry.empty()) details += (details.empty() ? "" : ", ") + s.entry;
    if (s.bugReport) details += (details.empty() ? "" : ", ") + std::string("SYSTEM LOG");
    return details.empty() ? s.name : s.name + " (" + details + ")";
}

const std::string& LogInput::error() const {
    return mState->error;
}

const std::string& LogInput::name() const {
    return mState->name;
}

}  // namespace hostreplay
