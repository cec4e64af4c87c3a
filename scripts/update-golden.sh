#!/usr/bin/env bash
# Rewrites the expected traces of the example scenarios (tests/scenarios/golden/NAME.jsonl) from
# what the service does now. Run it after a deliberate change of behaviour, then read the diff:
# every changed line must be what the change meant to do.
#
#   scripts/update-golden.sh            all examples
#   scripts/update-golden.sh NAME ...   only these (file names without .scenario)
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

install_missing_packages >&2
configure_tree build g++ >&2
cmake --build "$TETHEROFFLOAD_ROOT/build" --target scenario_test -j "$(nproc)" >&2

filter="Examples/*"
if [ $# -gt 0 ]; then
    filter=""
    for name in "$@"; do
        name="$(basename "$name" .scenario)"
        filter+="${filter:+:}Examples/GoldenTest.*/${name//[^A-Za-z0-9]/_}"
    done
fi
TETHEROFFLOAD_UPDATE_GOLDEN=1 "$TETHEROFFLOAD_ROOT/build/tests/scenarios/scenario_test" \
    --gtest_filter="$filter"
git -C "$TETHEROFFLOAD_ROOT" status --short tests/scenarios/golden
