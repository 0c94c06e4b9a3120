#!/usr/bin/env bash
# build_test.sh TOP: what a build shows while it goes on.
. "${0%/*}/../support/common.sh"
. "$1/scripts/build.sh"

cat >CMakePresets.json <<'END'
{
    "version": 6,
    "configurePresets": [{"name": "many", "generator": "Ninja", "binaryDir": "${sourceDir}/made"}],
    "buildPresets": [{"name": "many", "configurePreset": "many"}]
}
END
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(many LANGUAGES NONE)
foreach(step RANGE 1 120)
    add_custom_command(OUTPUT step${step} COMMAND "${CMAKE_COMMAND}" -E touch step${step})
    list(APPEND steps step${step})
endforeach()
add_custom_target(all_steps ALL DEPENDS ${steps})
add_custom_target(fails COMMAND sh -c "echo these words; exit 3" DEPENDS ${steps})
END

echo "in a log: a step now and then"
build many >log
same "the steps" "1/120 50/120 100/120 120/120" "$(sed -n 's/^\[\([0-9/]*\)\] .*/\1/p' log | paste -sd ' ')"

echo "in a log: the words and the status of a step that fails"
status=0
(build many --target fails >log 2>&1) || status=$?
[ "$status" -ne 0 ] || fail "a build that failed ended well"
grep -qx "these words" log || fail "$(cat log)"

echo "on a terminal: one line, kept up to date"
rm -rf made
export TERM=xterm
script -qec "bash -c 'set -euo pipefail; . \"$1/scripts/build.sh\"; build many'" typescript >/dev/null
grep -q $'\r\\[60/120\\] ' typescript || fail "$(cat typescript)"
