#!/usr/bin/env bash
# Builds tetheroffload-replay and turns a captured log into a scenario on standard output.
# Arguments go to the tool: [--pid PID] [LOGCAT|BUGREPORT] (standard input without a file).
#   adb logcat -v threadtime -d > capture.txt && scripts/replay.sh capture.txt > replay.scenario
#   adb bugreport bugreport.zip && scripts/replay.sh bugreport.zip > replay.scenario
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

install_missing_packages >&2
configure_tree build g++ >&2
cmake --build "$TETHEROFFLOAD_ROOT/build" --target tetheroffload-replay -j "$(nproc)" >&2
exec "$TETHEROFFLOAD_ROOT/build/tools/replay/tetheroffload-replay" "$@"
