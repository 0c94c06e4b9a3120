#!/usr/bin/env bash
# Which lines the tests reach: a table by folder, and every line that none reaches.
#
#   scripts/coverage.sh             the tests without the slow ones
#   scripts/coverage.sh -L unit     any further words go to ctest
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${analysis_packages[@]}"

build coverage
find build/coverage -name '*.gcda' -delete
scripts/run_tests.sh build/coverage -LE 'slow|install|docs' "$@" || failed=yes
gcovr --root . --exclude tests --exclude cmake --exclude bench --exclude examples --exclude fuzz \
    --exclude-throw-branches --json build/coverage/coverage.json build/coverage
python3 scripts/coverage_table.py build/coverage/coverage.json
[ -z "${failed:-}" ] || { echo "some tests failed: the figures are not those of a good run" >&2; exit 1; }
