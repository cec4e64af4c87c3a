#!/usr/bin/env bash
# Fails when a C++ source of the project differs from what clang-format makes of it, or when
# Android.bp differs from what bpfmt makes of it (the device tree's upload check).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
git ls-files '*.cpp' '*.h' | xargs -r clang-format --dry-run -Werror
# bpfmt exits 0 whatever it finds, so its diff is the verdict.
bp_diff="$(git ls-files '*.bp' | xargs -r bpfmt -d)"
if [ -n "$bp_diff" ]; then
    printf '%s\n' "$bp_diff"
    echo "Android.bp is not formatted as bpfmt formats it: run bpfmt -w on it." >&2
    exit 1
fi
