#!/usr/bin/env bash
# Runs the whole test suite: plain with g++ and plain with clang (every target of each, the
# benchmarks too), under AddressSanitizer + UndefinedBehaviorSanitizer with clang (the device's
# compiler) and an unsigned char (as on the device's arm64), the threaded tests under
# ThreadSanitizer with g++, and a short run of every fuzz target. Style covers the C++ sources
# and Android.bp. Installs what it needs first.
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

install_missing_packages

echo "== style"
"$TETHEROFFLOAD_ROOT/scripts/check-format.sh"

echo "== plain build (g++)"
configure_and_build build g++
ctest --test-dir "$TETHEROFFLOAD_ROOT/build" --output-on-failure -j "$(nproc)"

# The sanitizer trees leave the benchmarks out: this one builds everything with clang.
echo "== plain build (clang)"
configure_and_build build-clang clang++
ctest --test-dir "$TETHEROFFLOAD_ROOT/build-clang" --output-on-failure -j "$(nproc)"

echo "== AddressSanitizer + UndefinedBehaviorSanitizer (clang, unsigned char)"
configure_and_build build-asan clang++ -DCMAKE_CXX_FLAGS=-funsigned-char \
    -DTETHEROFFLOAD_SANITIZE=address -DCMAKE_BUILD_TYPE=Debug
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    ctest --test-dir "$TETHEROFFLOAD_ROOT/build-asan" --output-on-failure -j "$(nproc)"

echo "== ThreadSanitizer (threaded tests, g++)"
configure_and_build build-tsan g++ -DTETHEROFFLOAD_SANITIZE=thread -DCMAKE_BUILD_TYPE=Debug
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    ctest --test-dir "$TETHEROFFLOAD_ROOT/build-tsan" --output-on-failure -j "$(nproc)"

echo "== fuzz targets (smoke run from the checked-in corpus)"
"$TETHEROFFLOAD_ROOT/scripts/fuzz.sh" --smoke

echo "All tests passed."
