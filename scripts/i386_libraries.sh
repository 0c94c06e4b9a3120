#!/usr/bin/env bash
# Makes the folder that a 32-bit build links from and that its tests run from: the libraries whose development packages
# are there for one architecture only; and the engine with its utilities, which it installs for one only, too, and
# Python, which has to be of one version in both, from their packages without installing them. The client library loads
# the engine and its character sets from the one folder that it was compiled for, and through no link: they are copied there.
#
#   scripts/i386_libraries.sh FOLDER
set -euo pipefail
folder=${1:?the folder to make}
installed=/usr/lib/i386-linux-gnu
mkdir -p "$folder/bin"
folder=$(realpath "$folder")
cd "${0%/*}/.."
. scripts/packages.sh
ln -sf "$installed/libedit.so.2" "$folder/libedit.so"
ln -sf "$installed/libmd.so.0" "$folder/libmd.so"
ln -sf "$installed/libtinfo.so.6" "$folder/libtinfo.so"
for curses in libncurses libncursesw; do
    echo "INPUT($installed/$curses.so.6 $installed/libtinfo.so.6)" >"$folder/$curses.so"
done

if [ ! -e "$folder/libib-util" ]; then
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    cd "$scratch"
    apt-get download -qq -o APT::Sandbox::User=root \
        {libib-util,firebird3.0-utils,firebird3.0-server-core,libexpat1,zlib1g,libpython3.11,libpython3.11-minimal,libpython3.11-stdlib}:i386
    for package in ./*.deb; do dpkg-deb -x "$package" .; done
    cd - >/dev/null
    # The client library looks for the engine beside itself.
    cp "$installed/libfbclient.so.2" "$scratch$installed/libib_util.so" "$folder/"
    ln -sf libfbclient.so.2 "$folder/libfbclient.so"
    cp "$scratch"/usr/bin/* "$folder/bin/"
    cp -r "$scratch$installed/firebird" "$folder/"
    # Its interpreter is made by the tests, in python/bin.
    mkdir -p "$folder/python"
    cp -r "$scratch/usr/lib" "$folder/python/"
    # With what it tells of itself: packages of ours depend on it.
    dpkg-deb -R "$scratch"/libib-util_*.deb "$folder/libib-util"
    find "$scratch" -name 'libexpat.so.1*' -o -name 'libz.so.1*' | xargs cp -Pt "$folder"
    ln -sf python/lib/i386-linux-gnu/libpython3.11.so.1.0 "$folder/"
    ln -sf libpython3.11.so.1.0 "$folder/libpython3.so"
fi

engine=("$folder"/firebird/3.0/{plugins,intl})
if [ ! -e "$installed/firebird/3.0/intl" ]; then
    become_root || { echo "As root, run: cp -r ${engine[*]} $installed/firebird/3.0/" >&2; exit 1; }
    $as_root cp -r "${engine[@]}" "$installed/firebird/3.0/"
fi
