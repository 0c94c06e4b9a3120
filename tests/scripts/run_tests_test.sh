#!/usr/bin/env bash
# run_tests_test.sh TOP: how a run of tests ends.
. "${0%/*}/../support/common.sh"

cat >CTestTestfile.cmake <<'END'
add_test(program "sh" "-c" "printf '[ RUN      ] A.B\n/x/y.cpp:9: Skipped\nonly root <may>\n\n[  SKIPPED ] A.B (0 ms)\n[       OK ] A.C (3 ms)\n[  FAILED  ] A.D (1 ms)\n[  FAILED  ] A.D\n'")
add_test(whole "sh" "-c" "echo some words; echo not installed; exit 77")
set_tests_properties(whole PROPERTIES SKIP_RETURN_CODE 77)
add_test(left_out "echo" "only root <may>")
set_tests_properties(left_out PROPERTIES SKIP_REGULAR_EXPRESSION ".")
add_test(disabled "true")
set_tests_properties(disabled PROPERTIES DISABLED ON)
add_test(good "true")
add_test(bad "sh" "-c" "printf '[ RUN      ] A.E\nwell\n[       OK ] A.E (1 ms)\n[ RUN      ] A.F\n/x/y.cpp:9: Failure\n[  FAILED  ] A.F (2 ms)\n'; exit 3")
add_test(worse "sh" "-c" "echo what it wrote; exit 3")
END
skips="4 skipped:
  disabled in this build
      disabled
  not installed
      whole
  only root <may>
      left_out
      program: A.B

"
single="3 single tests ran: 1 passed, 1 failed, 1 skipped

"

echo "a good run"
"$1/scripts/run_tests.sh" . -E 'bad|worse' >log
[[ $(cat log) == *$'\n'"$skips${single}100% tests passed, 0 tests failed out of 4"$'\n'* ]] || fail "$(cat log)"

echo "a run with tests that fail"
failed="5 single tests ran: 2 passed, 2 failed, 1 skipped

bad:
[ RUN      ] A.F
/x/y.cpp:9: Failure
[  FAILED  ] A.F (2 ms)

worse:
what it wrote

"
status=0
"$1/scripts/run_tests.sh" . >log 2>&1 || status=$?
[ "$status" -ne 0 ] || fail "a run with a failed test ended well"
[[ $(cat log) == *$'\n'"$skips${failed}67% tests passed, 2 tests failed out of 6"$'\n'*"worse (Failed)" ]] || fail "$(cat log)"
grep -qx "what it wrote" log || fail "$(cat log)"

echo "a run without a skipped test"
"$1/scripts/run_tests.sh" . -R good >log
if grep skipped log; then fail "$(cat log)"; fi
same "the first of the closing lines" "100% tests passed, 0 tests failed out of 1" "$(grep 'tests passed' log)"
