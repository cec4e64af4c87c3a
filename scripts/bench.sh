#!/usr/bin/env bash
# Builds the benchmarks in an optimised tree of their own (build-bench/) and runs them: the event
# path, the framework calls, one USB activation and the host executable end to end. Google
# Benchmark's table comes first, then a summary with each figure beside its baseline from the
# same run. Arguments go to the benchmark program (for example --benchmark_filter=calls/).
# Never part of the tests: nothing here fails on a time.
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

install_missing_packages >&2
configure_tree build-bench g++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >&2
cmake --build "$TETHEROFFLOAD_ROOT/build-bench" --target tetheroffload-bench -j "$(nproc)" >&2

echo "Machine: $(nproc) cores, $(uname -sr), load average $(cut -d' ' -f1-3 /proc/loadavg)"
exec "$TETHEROFFLOAD_ROOT/build-bench/bench/tetheroffload-bench" "$@"
