#!/usr/bin/env bash
# Which lines the tests reach and which branches they take: a table by folder, every line that none reaches, and every other
# of which a branch is never taken. Branches that throw, or that no code leads to, do not count; those that clean up behind
# an exception do, since nothing tells them from others.
#
#   scripts/coverage.sh             the tests without the slow ones, and two that take memory away
#   scripts/coverage.sh -L unit     any further words go to ctest
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${analysis_packages[@]}"

build coverage
find build/coverage -name '*.gcda' -delete
# Tests run the tool as other users besides, who add to the counts, too.
(umask 0 && find build/coverage -name '*.gcno' | sed 's/no$/da/' | xargs -d '\n' touch)
# GCC's counting dies in a process that has no memory.
scripts/run_tests.sh build/coverage -LE 'slow|install|docs' -E '^faults_(commands_memory|address_space)' "$@" || failed=yes
find build/coverage -name '*.gcda' -empty -delete
gcovr --root . --exclude tests --exclude cmake --exclude bench --exclude examples --exclude fuzz \
    --exclude-throw-branches --exclude-unreachable-branches --json build/coverage/coverage.json build/coverage
python3 scripts/coverage_table.py build/coverage/coverage.json
[ -z "${failed:-}" ] || { echo "some tests failed: the figures are not those of a good run" >&2; exit 1; }
