#!/usr/bin/env bash
# A folder of libraries that is given when the project is configured, as Debian's tools do, stays one under the prefix.
. "${0%/*}/../support/common.sh"

cmake -S "$ZMFB_SOURCE" -B configured -G Ninja -DZMFB_BUILD_TESTS=OFF -DCMAKE_INSTALL_LIBDIR=lib/given >cmake.log 2>&1 ||
    fail "$(cat cmake.log)"
same "the folder" "CMAKE_INSTALL_LIBDIR:PATH=lib/given" "$(grep '^CMAKE_INSTALL_LIBDIR:' configured/CMakeCache.txt)"
