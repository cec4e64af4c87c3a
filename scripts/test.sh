#!/usr/bin/env bash
# Runs the whole test suite: plain with g++, under AddressSanitizer + UndefinedBehaviorSanitizer
# with clang (the device's compiler) and an unsigned char (as on the device's arm64), the threaded
# tests under ThreadSanitizer with g++, and a short run of every fuzz target. Installs what it
# needs first.
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

# build_with DIR COMPILER [cmake options...]: configure_and_build with that compiler. CMake cannot
# switch the compiler of a configured tree (it would start over without the other options), so a
# tree made with another one is removed first.
build_with() {
    local dir="$1" compiler="$2"
    local cache="$TETHEROFFLOAD_ROOT/$dir/CMakeCache.txt" cached=""
    shift 2
    if [ -f "$cache" ]; then
        cached="$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$cache")"
    fi
    if [ -n "$cached" ] && [ "$cached" != "$(command -v "$compiler")" ]; then
        rm -rf "${TETHEROFFLOAD_ROOT:?}/$dir"
    fi
    configure_and_build "$dir" -DCMAKE_CXX_COMPILER="$compiler" "$@"
}

install_missing_packages

echo "== style"
"$TETHEROFFLOAD_ROOT/scripts/check-format.sh"

echo "== plain build (g++)"
build_with build g++
ctest --test-dir "$TETHEROFFLOAD_ROOT/build" --output-on-failure -j "$(nproc)"

echo "== AddressSanitizer + UndefinedBehaviorSanitizer (clang, unsigned char)"
build_with build-asan clang++ -DCMAKE_CXX_FLAGS=-funsigned-char \
    -DTETHEROFFLOAD_SANITIZE=address -DCMAKE_BUILD_TYPE=Debug
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    ctest --test-dir "$TETHEROFFLOAD_ROOT/build-asan" --output-on-failure -j "$(nproc)"

echo "== ThreadSanitizer (threaded tests, g++)"
build_with build-tsan g++ -DTETHEROFFLOAD_SANITIZE=thread -DCMAKE_BUILD_TYPE=Debug
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    ctest --test-dir "$TETHEROFFLOAD_ROOT/build-tsan" --output-on-failure -j "$(nproc)"

echo "== fuzz targets (smoke run from the checked-in corpus)"
"$TETHEROFFLOAD_ROOT/scripts/fuzz.sh" --smoke

echo "All tests passed."
