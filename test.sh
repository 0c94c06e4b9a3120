#!/usr/bin/env bash
# Builds everything and runs the tests.
#
#   ./test.sh                   all tests but the slow ones
#   ./test.sh --preset asan     the same under AddressSanitizer and UndefinedBehaviorSanitizer
#   ./test.sh --arch i386       as 32-bit programs against the 64-bit server
#   ./test.sh --all             the slow ones too
#   ./test.sh -R locks          any further words go to ctest
#
# What was skipped is listed at the end, with reasons. ZMFB_SAMPLES names folders of DBF files of others, with ":" between
# them, and ZMFB_HOST_CASES a file of cases, for the tests that use such.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

usage() { sed -n '2,11s/^# \{0,1\}//p' "$0"; }

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
exec scripts/run_tests.sh "build/$preset" "${exclude[@]}" "${more[@]}"
