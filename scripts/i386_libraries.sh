#!/usr/bin/env bash
# Makes the folder from which a 32-bit build links those libraries whose development packages Debian installs for
# one architecture only.
#
#   scripts/i386_libraries.sh FOLDER
set -euo pipefail
folder=${1:?the folder to make}
installed=/usr/lib/i386-linux-gnu
mkdir -p "$folder"
ln -sf "$installed/libfbclient.so.2" "$folder/libfbclient.so"
ln -sf "$installed/libedit.so.2" "$folder/libedit.so"
ln -sf "$installed/libmd.so.0" "$folder/libmd.so"
for curses in libncurses libncursesw; do
    echo "INPUT($installed/$curses.so.6 $installed/libtinfo.so.6)" >"$folder/$curses.so"
done

# This one's package does not even install beside that of another architecture: both own one file that differs.
if [ ! -e "$folder/libib_util.so" ]; then
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    (cd "$scratch" && apt-get download -qq -o APT::Sandbox::User=root libib-util:i386 && dpkg-deb -x ./*.deb .)
    cp "$scratch$installed/libib_util.so" "$folder/"
fi
