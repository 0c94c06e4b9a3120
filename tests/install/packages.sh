#!/usr/bin/env bash
# The Debian packages: made of the build folder's files, unpacked by dpkg into a root of their own, and used there.
#   ZMFB_PACKAGES   where they are left, for lintian.sh
. "${0%/*}/../support/common.sh"

for program in dh dh_python3 mkdocs; do
    command -v "$program" >/dev/null || { echo "$program is missing: Debian's debhelper, dh-python, mkdocs"; exit 77; }
done
mkdir zmfbconn
cp -r "$ZMFB_SOURCE"/{debian,packaging,CHANGELOG.md} zmfbconn
here=${ZMFB_ARCHITECTURE:-$(dpkg --print-architecture)}
# Packages depend on libraries as they are installed.
(
    cd zmfbconn
    env -u LD_LIBRARY_PATH DEB_BUILD_OPTIONS=noautodbgsym DEB_RULES_REQUIRES_ROOT=no \
        dpkg-architecture -a "$here" -c debian/rules binary
) >packages.log 2>&1 || fail "$(cat packages.log)"
rm -rf "$ZMFB_PACKAGES"
mkdir "$ZMFB_PACKAGES"
mv ./*.deb "$ZMFB_PACKAGES"

# field PACKAGE FIELD...: the values of its fields
field() { dpkg-deb --field "$ZMFB_PACKAGES/$1"_*.deb "${@:2}"; }

library=libzmfbconn${ZMFB_VERSION%%.*}
# Each with what it cannot be without.
declare -A needs=(
    [$library]="libfbclient2 libfmt9 libncurses6 libstdc++6"
    [libzmfbconn-dev]="$library"
    [zmfb]="firebird3.0-server-core libedit2 libfbclient2 libfmt9 libmd0 libncursesw6 libstdc++6"
    [zmfbconn-udf]="libc6 libib-util"
    [python3-zmfbconn]="$library python3"
    [zmfbconn-doc]=""
)
files=()
for name in "${!needs[@]}"; do
    architecture=$here
    case "$name" in python3-* | *-doc) architecture=all ;; esac
    files+=("$ZMFB_PACKAGES/${name}_$ZMFB_VERSION-1_$architecture.deb")
    same "version and architecture of $name" "Version: $ZMFB_VERSION-1
Architecture: $architecture" "$(field "$name" Version Architecture)"
    depends=$(field "$name" Depends)
    for other in ${needs[$name]}; do
        tr ',' '\n' <<<"$depends" | grep -qE "^ ?${other//+/\\+}(:any)?( |$)" || fail "$name does not depend on $other: $depends"
    done
done
same "the packages" "$(printf '%s\n' "${files[@]}" | sort)" "$(printf '%s\n' "$ZMFB_PACKAGES"/* | sort)"
same "what the library has dpkg do" "activate-noawait ldconfig" \
    "$(dpkg-deb --info "$ZMFB_PACKAGES/$library"_*.deb triggers | grep -v '^#')"
same "what programs linked to it depend on" "$library #MINVER#" \
    "$(dpkg-deb --info "$ZMFB_PACKAGES/$library"_*.deb symbols | sed -n '1s/^libzmfbconn.so.[0-9]* //p')"

root=$PWD/root
mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
touch "$root"/var/lib/dpkg/{status,available}
printf '%s\n' "$(dpkg --print-architecture)" "$here" >"$root/var/lib/dpkg/arch"
dpkg --force-not-root,depends,bad-path --root="$root" --log="$PWD/dpkg.log" --unpack "${files[@]}" >unpack.log 2>&1 ||
    fail "$(cat unpack.log)"
for name in "${!needs[@]}"; do
    same "the state of $name" "install ok unpacked" \
        "$(dpkg-query --admindir="$root/var/lib/dpkg" --show --showformat='${Status}' "$name")"
done
usr=$root/usr
folder=$ZMFB_LIBDIR
for file in bin/zmfb include/zmfbconn.h include/zmfbconn/connection.h "$folder/libzmfbconn.so.$ZMFB_VERSION" \
    "$folder/libzmfbconn.a" "$folder/cmake/zmfbconn/zmfbconn-config.cmake" "$folder/pkgconfig/zmfbconn.pc" \
    "$folder/firebird/3.0/UDF/zmrddudfs.so" "$folder/zmfbconn/zmrddudfs.so" share/zmfbconn/zmrddudfs.sql \
    share/zmfbconn/stored_functions.sql \
    share/man/man1/zmfb.1.gz share/bash-completion/completions/zmfb share/zsh/vendor-completions/_zmfb \
    share/fish/vendor_completions.d/zmfb.fish share/doc/zmfb/changelog.gz \
    share/doc/zmfbconn/html/index.html share/doc/zmfbconn/html/docs/tool.html \
    lib/python3/dist-packages/zmfbconn/__init__.py; do
    [ -s "$usr/$file" ] || fail "no package has $file"
done
[ -d "/usr/$folder/firebird/3.0/UDF" ] || [ -d "$ZMFB_BUILD/libraries/firebird/3.0/UDF" ] ||
    fail "Firebird's folder of functions is elsewhere"
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

echo "the pages"
pages=$usr/share/doc/zmfbconn
python3 -B "$ZMFB_SOURCE/tests/docs/links.py" "$pages"
while read -r page; do
    [ -s "$pages/$page" ] || fail "the tool names $page, which is in no package"
done < <(strings "$usr/bin/zmfb" | grep -oE 'docs/[a-z0-9/-]+\.md' | sort -u)
zmfb exec "create table outside external '/etc/passwd' (line char(80))" >exec.log
outside=$(zmfb query "select * from outside" 2>&1 || true)
grep -qF "must allow that folder; $pages/docs/deployment.md says how" <<<"$outside" || fail "no page is named: $outside"
for linked in $(field zmfb Depends | tr ',' '\n' | awk '/^ ?lib/ {print $1}'); do
    grep -qwF -e "$linked" "$usr/share/doc/zmfb/copyright" || fail "the copyright file does not tell of $linked"
done

echo "the module for Python"
same "what it says" "$ZMFB_VERSION 42" "$(
    export PYTHONPATH=$usr/lib/python3/dist-packages LD_LIBRARY_PATH=$usr/$folder${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
    "$ZMFB_PYTHON" -B -c 'import zmfbconn; print(zmfbconn.__version__, zmfbconn.Block(lambda n: 2 * n)(21))'
)"
same "its files" "$(cd "$ZMFB_SOURCE/python" && find . -name '*.py' | sort)" \
    "$(cd "$usr/lib/python3/dist-packages" && find . -type f | sort)"

echo "the completions and the manual page"
same "what bash completes" "struct" "$(
    bash -c '. "$1"; COMP_WORDS=(zmfb str) COMP_CWORD=1; _zmfb; echo "${COMPREPLY[*]}"' - \
        "$usr/share/bash-completion/completions/zmfb"
)"
page=$(MANWIDTH=80 man --warnings --local-file "$usr/share/man/man1/zmfb.1.gz" 2>man.log)
same "warnings of man" "" "$(cat man.log)"
grep -q "^NAME" <<<"$page" && grep -q "zmfb" <<<"$page" || fail "the manual page does not render"
