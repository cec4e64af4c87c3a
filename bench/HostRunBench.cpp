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

#include "HostRunBench.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>

extern char** environ;

namespace bench {
namespace {

struct HostRun {
    bool ok = false;
    double seconds = 0;
    long peakRssKb = 0;
};

// A script of `events` status events after initOffload, in a file of its own. Empty on failure.
std::string writeScript(long events) {
    const char* tmp = getenv("TMPDIR");
    std::string path = std::string(tmp != nullptr ? tmp : "/tmp") + "/tetheroffload-bench-XXXXXX";
    const int fd = mkstemp(path.data());
    if (fd < 0) return "";
    FILE* out = fdopen(fd, "w");
    fputs("initOffload 1.1\n", out);
    for (long i = 0; i < events; ++i) fputs("modem event STARTED\n", out);
    if (fclose(out) != 0) {
        unlink(path.c_str());
        return "";
    }
    return path;
}

// Runs the executable on the script, its trace to /dev/null; wall time and peak RSS.
HostRun runHost(const std::string& script) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char* argv[] = {const_cast<char*>(TETHEROFFLOAD_SERVICE), const_cast<char*>("--trace=jsonl"),
                    const_cast<char*>(script.c_str()), nullptr};
    HostRun run;
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return run;
    int status = 0;
    struct rusage usage = {};
    if (wait4(pid, &status, 0, &usage) != pid) return run;
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.peakRssKb = usage.ru_maxrss;
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

void hostRun(benchmark::State& state, long events) {
    const std::string script = writeScript(events);
    if (script.empty()) return state.SkipWithError("cannot write the script");
    HostRun run;
    for (auto _ : state) {
        run = runHost(script);
        if (!run.ok) break;
        state.SetIterationTime(run.seconds);
    }
    unlink(script.c_str());
    if (!run.ok) return state.SkipWithError("the host executable failed");
    state.counters["events_per_s"] = static_cast<double>(events) / run.seconds;
    state.counters["peak_rss_kb"] = static_cast<double>(run.peakRssKb);
}

}  // namespace

void registerHostRuns() {
    for (long events : {1000L, 1000000L}) {
        benchmark::RegisterBenchmark(("host/events:" + std::to_string(events)).c_str(), hostRun,
                                     events)
                ->UseManualTime()
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace bench
