#!/usr/bin/env bash
# Another project has this one in it, by add_subdirectory and by FetchContent: it gets the library, and nothing besides.
. "${0%/*}/../support/common.sh"

says="zmfbconn $ZMFB_VERSION
trimmed: text
thrown: [FBCONN Error];zmFBConn has no Method named: nosuch"

# configure FOLDER ARGUMENT...
configure() {
    cmake -S "${0%/*}/subdirectory" -B "$1" -G Ninja -DZMFB_SOURCE="$ZMFB_SOURCE" -DCMAKE_CXX_FLAGS="${CXXFLAGS-} -O0" "${@:2}" \
        >cmake.log 2>&1 || fail "$(cat cmake.log)"
}

echo "FetchContent"
configure fetched -DBY_FETCH_CONTENT=ON
cmake --build fetched --target cpp_shared cpp_static c_shared -- -n >build.log || fail "$(cat build.log)"

echo "add_subdirectory"
configure by_cmake
same "tests" "Total Tests: 0" "$(ctest --test-dir by_cmake -N | tail -n 1)"
cmake --build by_cmake --parallel "$(nproc)" >build.log || fail "$(tail -n 40 build.log)"
same "what is built" "c_shared
cpp_shared
cpp_static
zmfbconn/lib/libzmfbconn.a
zmfbconn/lib/libzmfbconn.so.$ZMFB_VERSION" \
    "$(cd by_cmake && find . -type f \( -perm -u+x -o -name '*.a' \) ! -path '*/CMakeFiles/*' -printf '%P\n' | sort)"
same "C++, shared" "$says" "$(by_cmake/cpp_shared)"
same "C++, static" "$says" "$(by_cmake/cpp_static)"
same "C, shared" "${says%%$'\n'*}
zmFBConn has no Method named: nosuch" "$(by_cmake/c_shared)"

echo "the module of functions, when it is wanted"
cmake --build by_cmake --target zmrddudfs >build.log || fail "$(cat build.log)"
same "C++, attached" "$says
attached: 1, 11 functions
SQLSTATE 42000" "$(by_cmake/cpp_shared shared.fdb)"

echo "nothing is installed that the other project does not install itself"
cmake --install by_cmake --prefix "$PWD/prefix" >install.log
[ ! -e prefix ] || fail "$(find prefix)"
