#!/usr/bin/env bash
# Checks the layout of the code and runs the static checks.
#
#   scripts/lint.sh            clang-format only (what the tests run too)
#   scripts/lint.sh --full     clang-tidy as well, over build/dev
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t sources < <(git ls-files '*.cpp' '*.h' '*.c')
clang-format --dry-run --Werror "${sources[@]}"
echo "clang-format: ${#sources[@]} files are laid out"
[ "${1:-}" = --full ] || exit 0
mapfile -t units < <(git ls-files '*.cpp' | grep -v '^tests/')
clang-tidy -p build/dev --quiet "${units[@]}"
echo "clang-tidy: ${#units[@]} files"
