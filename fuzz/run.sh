#!/usr/bin/env bash
# Builds the fuzz targets and runs them one after another, each from its kept corpus.
#
#   fuzz/run.sh                          every target for 60 seconds
#   fuzz/run.sh --seconds 600 matrix     one of them, for ten minutes
#   fuzz/run.sh --keep                   afterwards keeps those new inputs that reach new code
#
# What is found on the way is kept in build/fuzz/found; an input that a target fails on goes to build/fuzz/failed, and
# is replayed with: build/fuzz/fuzz/<target>_fuzz build/fuzz/failed/<file>
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

seconds=60
keep=
targets=()
while [ $# -gt 0 ]; do
    case "$1" in
        --seconds) seconds=${2:?--seconds wants a number}; shift 2 ;;
        --keep) keep=yes; shift ;;
        --help | -h) sed -n '2,9s/^# \{0,1\}//p' "$0"; exit 0 ;;
        *) targets+=("$1"); shift ;;
    esac
done
[ "${#targets[@]}" -gt 0 ] || mapfile -t targets < <(ls fuzz/corpus)
for target in "${targets[@]}"; do
    [ -e "fuzz/${target}_fuzz.cpp" ] || { echo "there is no target $target; there are: $(ls -m fuzz/corpus)" >&2; exit 2; }
done

ensure_packages "${build_packages[@]}" "${fuzz_packages[@]}"
build fuzz --target "${targets[@]/%/_fuzz}"

# Files of the targets go where they cost nothing, and away at the end whatever happened.
TMPDIR=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")" zmfb-fuzz-XXXXXX)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

status=0
for target in "${targets[@]}"; do
    program=build/fuzz/fuzz/${target}_fuzz
    found=build/fuzz/found/$target
    log=build/fuzz/$target.log
    mkdir -p "$found" build/fuzz/failed
    options=(-max_len=4096 -timeout=20 -rss_limit_mb=3000 -print_final_stats=1 "-artifact_prefix=build/fuzz/failed/$target-")
    [ -e "fuzz/dictionaries/$target.dict" ] && options+=("-dict=fuzz/dictionaries/$target.dict")
    if "$program" "${options[@]}" "-max_total_time=$seconds" "$found" "fuzz/corpus/$target" >"$log" 2>&1; then
        verdict=
    else
        verdict="FAILED, see $log"
        status=1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    reached=$(sed -n 's/.*\(cov: [0-9]* ft: [0-9]*\).*/\1/p' "$log" | tail -n 1)
    echo "$target: ${runs:-no} runs, $reached $verdict"
    [ -z "$keep" ] || "$program" -merge=1 -use_counters=0 "fuzz/corpus/$target" "$found" >>"$log" 2>&1
done
exit "$status"
