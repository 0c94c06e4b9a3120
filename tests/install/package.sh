#!/usr/bin/env bash
# The Debian package: made from the build folder, unpacked by dpkg into a root of its own, and used there.
. "${0%/*}/../support/common.sh"

cpack --config "$ZMFB_BUILD/CPackConfig.cmake" -B packages >cpack.log 2>&1 || fail "$(cat cpack.log)"
package=$(echo packages/*.deb)
architecture=$(dpkg --print-architecture)
same "its file" "packages/zmfbconn_${ZMFB_VERSION}_$architecture.deb" "$package"
same "its name, version and architecture" "zmfbconn $ZMFB_VERSION $architecture" \
    "$(dpkg-deb --show --showformat='${Package} ${Version} ${Architecture}' "$package")"
depends=$(dpkg-deb --field "$package" Depends)
for library in firebird3.0-server-core libfbclient2 libfmt9 libib-util libedit2 libmd0 libncurses6 libncursesw6 libstdc++6; do
    grep -qxF -e "$library" <<<"$(tr ',' '\n' <<<"$depends" | awk '{print $1}')" || fail "it does not depend on $library: $depends"
done

root=$PWD/root
mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
touch "$root"/var/lib/dpkg/{status,available}
dpkg --force-not-root,depends,bad-path --root="$root" --log="$PWD/dpkg.log" --unpack "$package" >unpack.log 2>&1 ||
    fail "$(cat unpack.log)"
same "its state" "install ok unpacked $ZMFB_VERSION" \
    "$(dpkg-query --admindir="$root/var/lib/dpkg" --show --showformat='${Status} ${Version}' zmfbconn)"
usr=$root/usr
folder=$ZMFB_LIBDIR
for file in bin/zmfb include/zmfbconn.h include/zmfbconn/connection.h "$folder/libzmfbconn.so.$ZMFB_VERSION" \
    "$folder/libzmfbconn.a" "$folder/cmake/zmfbconn/zmfbconn-config.cmake" "$folder/pkgconfig/zmfbconn.pc" \
    "$folder/firebird/3.0/UDF/zmrddudfs.so" "$folder/zmfbconn/zmrddudfs.so" share/zmfbconn/zmrddudfs.sql \
    share/zmfbconn/stored_functions.sql \
    share/man/man1/zmfb.1 share/bash-completion/completions/zmfb share/zsh/vendor-completions/_zmfb \
    share/fish/vendor_completions.d/zmfb.fish share/doc/zmfbconn/CHANGELOG.md \
    lib/python3/dist-packages/zmfbconn/__init__.py; do
    [ -s "$usr/$file" ] || fail "the package has no $file"
done
[ -d "/usr/$folder/firebird/3.0/UDF" ] || fail "Firebird's folder of functions is elsewhere"
for file in bin/zmfb "$folder/libzmfbconn.so" "$folder/zmfbconn/zmrddudfs.so"; do
    if grep -qF -e "$ZMFB_SOURCE" -e "$ZMFB_BUILD" "$usr/$file"; then fail "$file names the machine's folders"; fi
done

echo "the tool"
zmfb() { "$usr/bin/zmfb" --log-level -1 --db shop.fdb "$@"; }
same "its version" "zmfb $ZMFB_VERSION" "$("$usr/bin/zmfb" --version | sed -n 1p)"
zmfb create >create.log
zmfb import "$ZMFB_SOURCE/examples/data/customers.dbf" >import.log
same "the rows" 10 "$(zmfb call 'gettablereccount("customers")')"
grep -qxF "UdfAccess = Restrict $usr/$folder/zmfbconn" "$XDG_CACHE_HOME"/zmfbconn/firebird-*/firebird.conf ||
    fail "the tool took its functions from elsewhere"

echo "the module for Python"
same "what it says" "$ZMFB_VERSION 42" "$(PYTHONPATH=$usr/lib/python3/dist-packages LD_LIBRARY_PATH=$usr/$folder \
    python3 -B -c 'import zmfbconn; print(zmfbconn.__version__, zmfbconn.Block(lambda n: 2 * n)(21))')"
same "its files" "$(cd "$ZMFB_SOURCE/python" && find . -name '*.py' | sort)" \
    "$(cd "$usr/lib/python3/dist-packages" && find . -type f | sort)"

echo "the completions and the manual page"
same "what bash completes" "struct" "$(
    bash -c '. "$1"; COMP_WORDS=(zmfb str) COMP_CWORD=1; _zmfb; echo "${COMPREPLY[*]}"' - \
        "$usr/share/bash-completion/completions/zmfb"
)"
page=$(MANWIDTH=80 man --warnings --local-file "$usr/share/man/man1/zmfb.1" 2>man.log)
same "warnings of man" "" "$(cat man.log)"
grep -q "^NAME" <<<"$page" && grep -q "zmfb" <<<"$page" || fail "the manual page does not render"
