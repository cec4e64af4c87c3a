#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, build-fuzz/) and runs each for a while, then prints the
# executions and findings of every target.
#
#   scripts/fuzz.sh [SECONDS] [TARGET ...]   every target (or those named) for SECONDS each
#                                            (default 180); the corpus grows in
#                                            build-fuzz/corpus/TARGET, findings go to
#                                            build-fuzz/findings/
#   scripts/fuzz.sh --smoke                  the test command's smoke run: a few seconds each,
#                                            from the checked-in corpus only
#
# A finding is an input that crashed a target or failed one of its checks; reproduce it with
# build-fuzz/fuzz/TARGET_fuzzer FILE. The exit status is 1 when there was one.
set -euo pipefail
TETHEROFFLOAD_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$TETHEROFFLOAD_ROOT/scripts/deps.sh"

TARGETS=(modem_records framework_calls argument_checks scenario)
SMOKE_SECONDS=7

seconds=180
smoke=0
selected=()
for arg in "$@"; do
    case "$arg" in
        --smoke) smoke=1 ;;
        [0-9]*) seconds="$arg" ;;
        *) selected+=("$arg") ;;
    esac
done
if [ "$smoke" -eq 1 ]; then
    seconds=$SMOKE_SECONDS
fi
if [ ${#selected[@]} -eq 0 ]; then
    selected=("${TARGETS[@]}")
fi

install_missing_packages
build="$TETHEROFFLOAD_ROOT/build-fuzz"
configure_tree build-fuzz clang++ -DTETHEROFFLOAD_FUZZ=ON
cmake --build "$build" --target fuzz_targets -j "$(nproc)"

# run_target NAME: one run; prints "NAME EXECS EXEC/S FINDINGS".
run_target() {
    local name="$1"
    local seeds="$TETHEROFFLOAD_ROOT/fuzz/corpus/$name"
    local findings="$build/findings"
    local corpus log
    mkdir -p "$findings"
    if [ "$smoke" -eq 1 ]; then
        corpus="$(mktemp -d)"
    else
        corpus="$build/corpus/$name"
        mkdir -p "$corpus"
    fi
    log="$build/$name.log"
    local dict=()
    if [ -f "$TETHEROFFLOAD_ROOT/fuzz/$name.dict" ]; then
        dict=("-dict=$TETHEROFFLOAD_ROOT/fuzz/$name.dict")
    fi
    local status=0
    # Standard error is closed for the service (the agent channel echoes every command there);
    # libFuzzer and the targets report on a copy of it.
    "$build/fuzz/${name}_fuzzer" -max_total_time="$seconds" -print_final_stats=1 -timeout=30 \
        -close_fd_mask=2 -artifact_prefix="$findings/$name-" "${dict[@]}" \
        "$corpus" "$seeds" >"$log" 2>&1 || status=$?
    if [ "$smoke" -eq 1 ]; then
        rm -rf "$corpus"
    fi
    local execs rate found
    execs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    rate="$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")"
    found=0
    if [ "$status" -ne 0 ]; then
        found=1
        grep -E '==FINDING==|^SUMMARY|Test unit written' "$log" >&2 || tail -20 "$log" >&2
    fi
    printf '%-18s %12s %10s %9s\n' "$name" "${execs:-?}" "${rate:-?}" "$found"
    return "$status"
}

printf '%-18s %12s %10s %9s\n' target executions exec/s findings
failed=0
for name in "${selected[@]}"; do
    run_target "$name" || failed=1
done
if [ "$failed" -ne 0 ]; then
    echo "Findings: see above and $build/findings/" >&2
    exit 1
fi
