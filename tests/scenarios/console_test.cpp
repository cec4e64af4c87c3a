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

// The console as a person uses it, on a pseudo-terminal: Tab completion, an error shown once,
// Ctrl-C abandoning the line being typed and a running wait, Ctrl-D and quit ending the session
// with the exit record, and the history kept across sessions in the user's state folder.

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "ProgramRun.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Far beyond what any step takes: a console that stops answering fails the test instead of
// hanging it.
constexpr auto kDeadline = 10s;

constexpr const char* kPrompt = "offload> ";

// The host executable with all its standard streams on a pseudo-terminal.
class Terminal {
public:
    explicit Terminal(const std::string& stateHome) {
        mPid = forkpty(&mMaster, nullptr, nullptr, nullptr);
        if (mPid == 0) {
            setenv("XDG_STATE_HOME", stateHome.c_str(), 1);
            setenv("TERM", "xterm", 1);
            execl(TETHEROFFLOAD_SERVICE, TETHEROFFLOAD_SERVICE, nullptr);
            _exit(127);
        }
    }

    ~Terminal() {
        if (mPid > 0) {
            kill(mPid, SIGKILL);
            waitpid(mPid, nullptr, 0);
        }
        if (mMaster >= 0) close(mMaster);
    }

    void type(const std::string& keys) {
        ASSERT_EQ(static_cast<ssize_t>(keys.size()), write(mMaster, keys.data(), keys.size()));
    }

    // Reads on until `text` shows after what the calls before took, and takes the output up to
    // its end. False when the deadline or the end of the output comes first.
    bool expect(const std::string& text) {
        const Clock::time_point deadline = Clock::now() + kDeadline;
        for (;;) {
            const size_t at = mOutput.find(text, mTaken);
            if (at != std::string::npos) {
                mTaken = at + text.size();
                return true;
            }
            if (!readSome(deadline)) return false;
        }
    }

    // Reads on until the next prompt, and waits until the console reads keys: libedit shows the
    // prompt before it leaves the terminal's line mode, where a Ctrl-D would be lost.
    bool prompted() {
        if (!expect(kPrompt)) return false;
        const Clock::time_point deadline = Clock::now() + kDeadline;
        termios modes;
        while (tcgetattr(mMaster, &modes) == 0 && (modes.c_lflag & ICANON) != 0) {
            if (Clock::now() > deadline) return false;
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }

    // Types `keys`, and reads on until `shows` and then the next prompt show.
    bool answers(const std::string& keys, const std::string& shows) {
        type(keys);
        return expect(shows) && prompted();
    }

    // The exit status once the program has ended, or -1 when it did not by the deadline.
    int exitStatus() {
        const Clock::time_point deadline = Clock::now() + kDeadline;
        while (readSome(deadline)) {
        }
        int status = 0;
        while (waitpid(mPid, &status, WNOHANG) == 0) {
            if (Clock::now() > deadline) return -1;
            std::this_thread::sleep_for(10ms);
        }
        mPid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // What the expectations have not taken yet, for a failure's message.
    std::string rest() const { return mOutput.substr(mTaken); }

    const std::string& output() const { return mOutput; }

private:
    bool readSome(Clock::time_point deadline) {
        const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        pollfd readable = {mMaster, POLLIN, 0};
        if (poll(&readable, 1, static_cast<int>(left.count())) <= 0) return false;
        char bytes[4096];
        const ssize_t n = read(mMaster, bytes, sizeof(bytes));
        if (n <= 0) return false;  // EIO once the program has closed the terminal
        mOutput.append(bytes, static_cast<size_t>(n));
        return true;
    }

    pid_t mPid = -1;
    int mMaster = -1;
    std::string mOutput;
    size_t mTaken = 0;
};

TEST(ConsoleTest, CompletesInterruptsEndsAndKeepsItsHistory) {
    const std::string stateHome = scenariotest::scratch("state/not/made/yet");
    {
        Terminal console(stateHome);
        ASSERT_TRUE(console.expect("Type help for the commands") && console.prompted())
                << console.rest();
        // Tab completes a command, a keyword and an event status: modem event STARTED.
        ASSERT_TRUE(console.answers("mo\te\tSTA\t\r", "16 bytes")) << console.rest();
        console.type("initOffload \t\t");  // a second Tab lists the choices
        ASSERT_TRUE(console.expect("\r\n1.0 ") && console.expect("1.1 ") && console.expect("null "))
                << console.rest();
        ASSERT_TRUE(console.answers("1.1\r", "--> 2: initOffload 1.1")) << console.rest();
        ASSERT_TRUE(console.answers("launch\r", "<stdin>:3: unknown command 'launch'"))
                << console.rest();

        // Abandoned by Ctrl-C: it neither runs nor joins the next line, nor counts as a line.
        ASSERT_TRUE(console.answers("stopOff\x03", "^C")) << console.rest();
        console.type("wait 100000\r");
        ASSERT_TRUE(console.expect("wait 100000\r\n")) << console.rest();
        std::this_thread::sleep_for(100ms);  // into the wait, mostly: a Ctrl-C sooner ends it too
        ASSERT_TRUE(console.answers("\x03", "")) << "the wait went on: " << console.rest();
        ASSERT_TRUE(console.answers("stopOffload\r", "--> 5: stopOffload")) << console.rest();

        console.type("\x04");
        ASSERT_TRUE(console.expect("exit              status 0")) << console.rest();
        EXPECT_EQ(0, console.exitStatus());
        const std::string& all = console.output();
        EXPECT_EQ(all.find("unknown command"), all.rfind("unknown command")) << "shown twice";
    }
    EXPECT_NE(std::string::npos,
              scenariotest::readFile(stateHome + "/tetheroffload/history").find("stopOffload"));
    {
        Terminal console(stateHome);
        ASSERT_TRUE(console.prompted()) << console.rest();
        // Ctrl-P: the line before, from the session before.
        ASSERT_TRUE(console.answers("\x10\r", "--> 1: stopOffload")) << console.rest();
        console.type("quit\r");
        ASSERT_TRUE(console.expect("exit              status 0")) << console.rest();
        EXPECT_EQ(0, console.exitStatus());
    }
}

}  // namespace
