#!/usr/bin/env bash
# Builds everything and runs the tests.
#
#   ./test.sh                   all tests but the slow ones
#   ./test.sh --preset asan     the same under AddressSanitizer and UndefinedBehaviorSanitizer
#   ./test.sh --arch i386       as 32-bit programs against the 64-bit server; what is left out is listed at the end
#   ./test.sh --all             the slow ones too
#   ./test.sh -R locks          any further words go to ctest
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

usage() { sed -n '2,8s/^# \{0,1\}//p' "$0"; }

preset=dev
exclude=(-LE slow)
more=()
while [ $# -gt 0 ]; do
    case "$1" in
        --preset) preset=${2:?--preset wants a name}; shift 2 ;;
        --arch)
            [ "${2:-}" = i386 ] || { echo "--arch wants i386" >&2; exit 2; }
            preset=i386; shift 2 ;;
        --all) exclude=(); shift ;;
        --help | -h) usage; exit 0 ;;
        *) more+=("$1"); shift ;;
    esac
done

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
if [ "$preset" = i386 ]; then
    ensure_architecture i386
    ensure_packages "${i386_packages[@]}"
    scripts/i386_libraries.sh build/i386/libraries
fi
build "$preset"
ctest --test-dir "build/$preset" --output-on-failure --parallel "$(nproc)" "${exclude[@]}" "${more[@]}"
if [ "$preset" = i386 ]; then
    skipped=$(sed -n 's/^\[  SKIPPED \] \(.*\) (.*/    \1/p' "build/$preset/Testing/Temporary/LastTest.log" | sort -u)
    if [ -n "$skipped" ]; then
        echo "$(wc -l <<<"$skipped") single tests were skipped, each with its reason in the log of the run:"
        echo "$skipped"
    fi
fi
