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

#include "EditLineReader.h"

#include <editline/readline.h>
#include <errno.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <new>
#include <vector>

#include "Completion.h"
#include "Interrupt.h"
#include "ScenarioParser.h"

namespace hostrunner {
namespace {

constexpr int kHistoryLines = 1000;

// $XDG_STATE_HOME/tetheroffload/history, else ~/.local/state/tetheroffload/history. A relative
// XDG_STATE_HOME is ignored, as the base-directory rules say.
std::string historyPath() {
    const char* state = getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') return std::string(state) + "/tetheroffload/history";
    const char* home = getenv("HOME");
    if (home == nullptr || home[0] != '/') return "";
    return std::string(home) + "/.local/state/tetheroffload/history";
}

// The folders above `path` that are missing. What cannot be made only means no history file.
void makeFoldersFor(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0700);
    }
}

// Whether readKey ended the line for a Ctrl-C. A Ctrl-C that comes once the line is complete is
// for the command it holds, and stays pending. Keys are read on the console's thread alone.
bool gLineInterrupted = false;

// libedit's source of keys: a byte from the terminal, or -1, which ends the line, at the end of
// input or at a Ctrl-C.
int readKey(FILE* in) {
    for (;;) {
        pollfd fds[2] = {{fileno(in), POLLIN, 0}, {interruptDescriptor(), POLLIN, 0}};
        if (poll(fds, fds[1].fd < 0 ? 1 : 2, -1) < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (fds[1].revents != 0) {
            gLineInterrupted = true;
            return -1;
        }
        unsigned char key;
        const ssize_t n = read(fds[0].fd, &key, 1);
        if (n == 1) return key;
        if (n < 0 && errno == EINTR) continue;
        return -1;
    }
}

// The candidates of the completion under way, handed to libedit one by one. Never destroyed.
std::vector<std::string>& candidates() {
    static auto* list = new std::vector<std::string>();
    return *list;
}

char* nextCandidate(const char*, int index) {
    const size_t i = static_cast<size_t>(index);
    return i < candidates().size() ? strdup(candidates()[i].c_str()) : nullptr;
}

// Called by libedit, which no exception may cross.
char** complete(const char* word, int start, int) {
    rl_attempted_completion_over = 1;  // never file names
    try {
        candidates() = completions(std::string(rl_line_buffer, static_cast<size_t>(start)), word);
    } catch (const std::bad_alloc&) {
        candidates().clear();
    }
    return rl_completion_matches(word, nextCandidate);
}

}  // namespace

EditLineReader::EditLineReader(std::string prompt)
    : mPrompt(std::move(prompt)), mHistoryPath(historyPath()) {
    rl_readline_name = "tetheroffload";
    rl_getc_function = readKey;
    rl_attempted_completion_function = complete;
    rl_basic_word_break_characters = " \t";
    rl_completion_append_character = '\0';  // each candidate brings its own blank
    rl_initialize();
    stifle_history(kHistoryLines);
    if (mHistoryPath.empty()) return;
    makeFoldersFor(mHistoryPath);
    read_history(mHistoryPath.c_str());
}

LineReader::Input EditLineReader::readLine(std::string* line) {
    gLineInterrupted = false;
    char* text = readline(mPrompt.c_str());
    if (gLineInterrupted) {
        takeInterrupt();
        free(text);
        fputs("^C\n", stdout);
        fflush(stdout);
        return Input::kInterrupted;
    }
    if (text == nullptr) {
        fputc('\n', stdout);  // what follows the prompt goes on a line of its own
        fflush(stdout);
        return Input::kEnd;
    }
    // One byte past the limit is enough for the parser to call the line too long.
    line->assign(text, strnlen(text, kMaxLineBytes + 1));
    free(text);
    if (!line->empty() && line->size() <= kMaxLineBytes) {
        add_history(line->c_str());
        // Written at once, so that a session that ends badly keeps its lines too.
        if (!mHistoryPath.empty()) write_history(mHistoryPath.c_str());
    }
    return Input::kLine;
}

}  // namespace hostrunner
