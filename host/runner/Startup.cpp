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

// The host executable's start: runs before main (glibc hands .init_array functions the program's
// arguments), because main is the service's own and ignores them. It reads the command line,
// checks the whole scenario, applies the start-up setting, installs the trace and hands the
// scenario to joinRpcThreadpool. Everything it touches is reached through function-local statics,
// so the order of other files' static constructors does not matter.

#include <android/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "Arguments.h"
#include "Console.h"
#include "EditLineReader.h"
#include "Executor.h"
#include "Interrupt.h"
#include "JsonTrace.h"
#include "LogcatTrace.h"
#include "ScriptFile.h"
#include "TextTrace.h"
#include "TraceWriter.h"
#include "fakes/FakeVexaDevice.h"
#include "hostplatform/Recorder.h"
#include "hostplatform/ServiceRegistry.h"

namespace hostrunner {
namespace {

// The checked script, until joinRpcThreadpool runs it. Never destroyed.
ScriptFile* gScript = nullptr;

// Bad command line or script: nothing has run, nothing is on standard output.
[[noreturn]] void refuseToStart(const std::string& message) {
    fprintf(stderr, "%s\n", message.c_str());
    fflush(stderr);
    _exit(2);
}

using hostplatform::Record;

TraceWriter::Format formatFor(TraceFormat format) {
    if (format == TraceFormat::kJsonl) {
        return [](const Record& r, std::string* out) {
            appendJsonLine(r, out);
            out->push_back('\n');
        };
    }
    if (format == TraceFormat::kLogcat) {
        // Never destroyed, like the text trace below.
        auto* logcat = new LogcatTrace();
        return [logcat](const Record& r, std::string* out) {
            const std::string lines = logcat->format(r);
            if (lines.empty()) return;  // not a log line
            out->append(lines);
            out->push_back('\n');
        };
    }
    // Never destroyed: the event thread may still record while the process exits.
    auto* trace = new TextTrace(isatty(STDOUT_FILENO) == 1);
    return [trace](const Record& r, std::string* out) {
        const std::string lines = trace->format(r);
        if (lines.empty()) return;  // a console error, shown on standard error
        out->append(lines);
        out->push_back('\n');
    };
}

// A fatal line is followed by an abort: everything up to it must be out first.
bool isFatalLine(const Record& r) {
    const auto* log = std::get_if<hostplatform::LogRecord>(&r.body);
    return log != nullptr && log->prio >= ANDROID_LOG_FATAL;
}

// A person at a terminal sees each line as it happens, in step with the console's prompt and
// with standard error. Otherwise the lines are formatted and written off the recording threads.
void installTrace(TraceFormat format, bool interactive) {
    TraceWriter::Format text = formatFor(format);
    hostplatform::Recorder& recorder = hostplatform::Recorder::instance();
    if (interactive) {
        recorder.addSink([text](const Record& r) {
            std::string line;
            text(r, &line);
            fwrite(line.data(), 1, line.size(), stdout);
            fflush(stdout);
        });
        return;
    }
    // Never destroyed, like the recorder that calls it.
    auto* writer = new TraceWriter(std::move(text), stdout);
    recorder.addSink([writer](const Record& r) {
        writer->push(r);
        if (std::holds_alternative<hostplatform::ExitRecord>(r.body)) {
            writer->finish();  // the exit record stays the last line
        } else if (isFatalLine(r)) {
            writer->flush();
        }
    });
}

void runScript() {
    waitForEventThread();
    ScriptRunner runner;
    const std::string error =
            gScript->run([&runner](const Command& command) { runner.run(command); });
    runner.finish();
    // The rest of the script was not run: that is no success.
    if (!error.empty()) {
        fprintf(stderr, "%s\n", error.c_str());
        fflush(stderr);
        exit(2);
    }
}

void runConsole() {
    waitForEventThread();
    catchInterrupts();
    EditLineReader reader("offload> ");
    Console(&reader, stdout, stderr).run();
}

void recordExit(int status, void*) {
    hostplatform::Recorder::instance().add(hostplatform::ExitRecord{status});
    fflush(stdout);
}

ScriptFile* checkedScript(const std::string& path) {
    std::string error;
    std::unique_ptr<ScriptFile> script = ScriptFile::open(path, &error);
    if (script == nullptr) refuseToStart(error);
    error = script->check();
    if (!error.empty()) refuseToStart(error);
    if (script->startsWithDeviceAbsent()) {
        fakes::FakeVexaDevice::instance().setPresent(false);
    }
    return script.release();
}

void startHostRunner(int argc, char** argv, char**) {
    Arguments args = parseArguments(argc, argv);
    if (!args.error.empty()) refuseToStart(args.error + "\n" + kUsage);
    const bool console = args.scenario.empty() && isatty(STDIN_FILENO) == 1;
    if (console) keepInterruptsForTheConsole();
    if (!console) gScript = checkedScript(args.scenario);
    installTrace(args.trace, console || isatty(STDOUT_FILENO) == 1);
    hostplatform::Threadpool::setServer(console ? runConsole : runScript);
    on_exit(recordExit, nullptr);
}

}  // namespace

// glibc calls .init_array entries with (argc, argv, envp).
__attribute__((section(".init_array"),
               used)) static void (*gStartHostRunner)(int, char**, char**) = startHostRunner;

}  // namespace hostrunner
