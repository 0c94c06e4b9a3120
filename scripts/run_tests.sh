#!/usr/bin/env bash
# Runs the tests of a build folder. At the end stand the names of what was skipped, each with its reason, what failed,
# and then ctest's closing lines.
#
#   scripts/run_tests.sh FOLDER [ARGUMENT...]     further arguments go to ctest
set -euo pipefail
folder=${1:?the build folder}
shift
results=$(mktemp) closing=$(mktemp)
trap 'rm -f "$results" "$closing"' EXIT

# until_closing passes on what ctest writes, and puts its closing lines aside.
until_closing() {
    local line
    while IFS= read -r line || [ -n "$line" ]; do
        if [ -s "$closing" ] || [[ $line =~ ^[0-9]+%\ tests\ passed, ]]; then
            printf '%s\n' "$line" >>"$closing"
        else
            printf '%s\n' "$line"
        fi
    done
}

status=0
ctest --test-dir "$folder" --output-on-failure --parallel "$(nproc)" \
    --output-junit "$results" --test-output-size-passed 1000000000 "$@" | until_closing || status=$?
[ ! -s "$results" ] || python3 -B "${0%/*}/report_tests.py" "$results" || status=$?
cat "$closing"
exit "$status"
