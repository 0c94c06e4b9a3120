#!/usr/bin/env bash
# Builds everything and runs the tests.
#
#   ./test.sh                   all tests but the slow ones
#   ./test.sh --preset asan     the same under AddressSanitizer and UndefinedBehaviorSanitizer
#   ./test.sh --all             the slow ones too
#   ./test.sh -R locks          any further words go to ctest
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

usage() { sed -n '2,7s/^# \{0,1\}//p' "$0"; }

preset=dev
exclude=(-LE slow)
more=()
while [ $# -gt 0 ]; do
    case "$1" in
        --preset) preset=${2:?--preset wants a name}; shift 2 ;;
        --all) exclude=(); shift ;;
        --help | -h) usage; exit 0 ;;
        *) more+=("$1"); shift ;;
    esac
done

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --parallel "$(nproc)" -- --quiet
ctest --test-dir "build/$preset" --output-on-failure --parallel "$(nproc)" "${exclude[@]}" "${more[@]}"
