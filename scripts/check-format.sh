#!/usr/bin/env bash
# Fails when a C++ source of the project differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
git ls-files '*.cpp' '*.h' | xargs -r clang-format --dry-run -Werror
