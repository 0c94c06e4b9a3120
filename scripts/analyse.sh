#!/usr/bin/env bash
# Looks for mistakes with tools: with one, or with all three.
#
#   scripts/analyse.sh valgrind   the unit tests under memcheck
#   scripts/analyse.sh tidy       clang-tidy over the product's folders, with .clang-tidy
#   scripts/analyse.sh cppcheck   cppcheck over the same folders
#
# Says what was found and how much was looked at; fails when anything was.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

usage() { sed -n '2,8s/^# \{0,1\}//p' "$0"; }

folders=(dbf host conn sql catalog locks schema transfer matrix rdd udf tool c)
mapfile -t units < <(find "${folders[@]}" -name '*.cpp' -o -name '*.c' | sort)

run_valgrind() {
    build valgrind
    scripts/run_tests.sh build/valgrind -L unit
}

run_tidy() {
    cmake --preset dev >/dev/null
    printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 1 clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option
    echo "clang-tidy: nothing found in ${#units[@]} files"
}

run_cppcheck() {
    cppcheck --quiet -j "$(nproc)" --enable=warning,performance,portability --std=c++20 --inline-suppr \
        --suppressions-list=scripts/cppcheck.txt --error-exitcode=1 -I . -I include -I include/zmfbconn "${folders[@]}"
    echo "cppcheck: nothing found in ${#units[@]} files"
}

case "${1:-all}" in
    valgrind | tidy | cppcheck) tools=("$1") ;;
    all) tools=(valgrind tidy cppcheck) ;;
    *) usage; exit 2 ;;
esac
ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${analysis_packages[@]}"
for tool in "${tools[@]}"; do "run_$tool"; done
