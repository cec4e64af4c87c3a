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

#include "Console.h"

#include "Executor.h"
#include "Interrupt.h"
#include "ScenarioParser.h"
#include "hostplatform/Recorder.h"

namespace hostrunner {

const char* helpText() {
    return "Framework calls:\n"
           "  setHandles N1 N2                      N: 0, 1 or 2 descriptors, or none\n"
           "  initOffload 1.0|1.1|null\n"
           "  stopOffload\n"
           "  setLocalPrefixes [PREFIX ...]\n"
           "  getForwardedStats UPSTREAM\n"
           "  setDataLimit UPSTREAM LIMIT\n"
           "  setDataWarningAndLimit UPSTREAM WARNING LIMIT\n"
           "  setUpstreamParameters IFACE V4ADDR V4GW [V6GW ...]\n"
           "  addDownstream IFACE PREFIX\n"
           "  removeDownstream IFACE PREFIX\n"
           "The service's state, as lshal debug shows it:\n"
           "  dump\n"
           "The modem:\n"
           "  modem event STATUS [mcode=N] [msg=N] [app=N] [len=N] [payload=HEX] [read=N]\n"
           "  modem conn [dst_nat=N] [ip0=A.B.C.D] [ip1=..] [ip2=..] [port0=N] [port1=N]\n"
           "             [port2=N] [proto=N] [len=N]\n"
           "  modem readfail ERRNO\n"
           "  modem stats RX TX [len=N]\n"
           "  modem ioctl ok | modem ioctl fail ERRNO\n"
           "The rest of the world:\n"
           "  agent up|absent|failing\n"
           "  framework alive|dead\n"
           "  prop NAME VALUE\n"
           "  proc tcp|udp TEXT|absent\n"
           "  stderr closed|open\n"
           "  wait MS\n"
           "Start-up setting (a script's first lines only):\n"
           "  device absent\n"
           "Console:\n"
           "  help\n"
           "  quit                                  (or end of input)\n"
           "Words in double quotes may hold blanks and \\\" \\\\ \\n \\t \\xHH; # starts a "
           "comment.\n";
}

void Console::run() {
    fputs("Type help for the commands; quit or Ctrl-D ends the session.\n", mOut);
    fflush(mOut);
    std::string text;
    int line = 0;
    for (;;) {
        const LineReader::Input input = mReader->readLine(&text);
        if (input == LineReader::Input::kEnd) return;
        if (input == LineReader::Input::kInterrupted) continue;
        ++line;
        LineResult parsed = parseLine(text, line, Source::kConsole);
        if (!parsed.error.empty()) {
            reject(line, parsed.error);
            continue;
        }
        if (parsed.blank) continue;
        const CommandBody& body = parsed.command.body;
        if (std::holds_alternative<Quit>(body)) return;
        if (std::holds_alternative<Help>(body)) {
            fputs(helpText(), mOut);
            fflush(mOut);
        } else if (std::holds_alternative<DeviceAbsent>(body)) {
            reject(line, "device absent: only at the start of a script");
        } else {
            execute(parsed.command);
        }
        // A Ctrl-C that ended a wait, or came while a call ran: the prompt goes on a new line.
        if (takeInterrupt()) {
            fputc('\n', mOut);
            fflush(mOut);
        }
    }
}

void Console::reject(int line, const std::string& what) {
    hostplatform::Recorder::instance().add(hostplatform::ErrorRecord{line, what});
    fprintf(mErr, "<stdin>:%d: %s\n", line, what.c_str());
    fflush(mErr);
}

}  // namespace hostrunner
