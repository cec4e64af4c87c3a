#!/usr/bin/env bash
# Builds the host executable and runs the service on a scenario (the USB tethering road unless
# told otherwise). Arguments go to the executable: [--trace=text|jsonl|logcat] [SCENARIO].
# With no scenario and a terminal, `scripts/run.sh -` opens the interactive console.
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

install_missing_packages >&2
configure_tree build g++ >&2
cmake --build "$TETHEROFFLOAD_ROOT/build" --target tetheroffload-service -j "$(nproc)" >&2

service="$TETHEROFFLOAD_ROOT/build/service/tetheroffload-service"
args=()
scenario="$TETHEROFFLOAD_ROOT/examples/usb-tethering.scenario"
for arg in "$@"; do
    case "$arg" in
        --trace=*) args+=("$arg") ;;
        -) scenario="" ;;
        *) scenario="$arg" ;;
    esac
done
if [ -n "$scenario" ]; then
    args+=("$scenario")
fi
exec "$service" "${args[@]}"
