#!/usr/bin/env bash
# Programs in C++ and C are built against an installation that was moved after it was made, by find_package and by
# pkg-config, with the shared and with the static library; and they run.
. "${0%/*}/../support/common.sh"

cmake --install "$ZMFB_BUILD" --prefix "$PWD/made" >install.log
mv made prefix
if grep -rIlF -e "$ZMFB_SOURCE" -e "$PWD/made" prefix; then fail "these files name the machine's folders"; fi
same "headers besides those of include/" "Only in prefix/include/zmfbconn: version.h" \
    "$(diff -r -x '*.in' "$ZMFB_SOURCE/include" prefix/include || true)"

cpp_says="zmfbconn $ZMFB_VERSION
trimmed: text
thrown: [FBCONN Error];zmFBConn has no Method named: nosuch"
attached="$cpp_says
attached: 1, 11 functions
SQLSTATE 42000"
c_says="zmfbconn $ZMFB_VERSION
zmFBConn has no Method named: nosuch"

# needs PROGRAM yes|no: whether it is linked to the shared library
needs() {
    local found=no
    if readelf -d "$1" | grep -q "NEEDED.*libzmfbconn.so.${ZMFB_VERSION%%.*}"; then found=yes; fi
    same "$1 needs the shared library" "$2" "$found"
}

echo "find_package"
cmake -S "${0%/*}/consumer" -B by_cmake -G Ninja -DCMAKE_PREFIX_PATH="$PWD/prefix" >cmake.log || fail "$(cat cmake.log)"
ninja -C by_cmake >ninja.log || fail "$(cat ninja.log)"
same "C++, shared" "$attached" "$(by_cmake/cpp_shared shared.fdb)"
same "C++, static" "$attached" "$(ZMFB_UDF_DIR=$PWD/prefix/$ZMFB_LIBDIR/zmfbconn by_cmake/cpp_static static.fdb)"
same "C, shared" "$c_says" "$(by_cmake/c_shared)"
needs by_cmake/cpp_shared yes
needs by_cmake/cpp_static no
needs by_cmake/c_shared yes

echo "pkg-config"
export PKG_CONFIG_PATH=$PWD/prefix/$ZMFB_LIBDIR/pkgconfig LD_LIBRARY_PATH=$PWD/prefix/$ZMFB_LIBDIR
same "its version" "$ZMFB_VERSION" "$(pkg-config --modversion zmfbconn)"
read -ra flags <<<"${CFLAGS-} $(pkg-config --cflags zmfbconn)"
read -ra shared <<<"${CFLAGS-} $(pkg-config --libs zmfbconn)"
# The linker takes the shared library where it has the choice.
read -ra static <<<"${CFLAGS-} $(pkg-config --static --libs zmfbconn | sed 's/-lzmfbconn/-l:libzmfbconn.a/')"
"$CXX" -std=c++20 -Wall -Wextra -Wpedantic -Werror "${flags[@]}" -c "${0%/*}/consumer/consumer.cpp" -o cpp.o
"$CC" -std=c11 -Wall -Wextra -Wpedantic -Werror "${flags[@]}" -c "${0%/*}/consumer/consumer.c" -o c.o
"$CXX" cpp.o -o cpp "${shared[@]}"
"$CC" c.o -o c "${shared[@]}"
"$CC" c.o -o c_static "${static[@]}"
same "C++, shared" "$cpp_says" "$(./cpp)"
same "C, shared" "$c_says" "$(./c)"
same "C, static" "$c_says" "$(env -u LD_LIBRARY_PATH ./c_static)"
needs ./cpp yes
needs ./c yes
needs ./c_static no

echo "the programs of docs/c-interface.md: the first is whole, the others are functions"
awk '/^```c$/ {file = "page" ++count ".c"; next} /^```$/ {file = ""} file {print > file}' "$ZMFB_SOURCE/docs/c-interface.md"
same "their number" 3 "$(find . -maxdepth 1 -name 'page*.c' | wc -l)"
"$CC" -std=c11 -Wall -Wextra -Wpedantic -Werror page1.c -o page1 "${flags[@]}" "${shared[@]}"
for page in page2 page3; do
    "$CC" -std=c11 -Wall -Wextra -Wpedantic -Werror -c $page.c -o $page.o "${flags[@]}"
done
