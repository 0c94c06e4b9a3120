#!/usr/bin/env bash
# packages_test.sh TOP: packages are installed by an apt-get of our own, which only notes what it was asked for.
. "${0%/*}/../support/common.sh"
cd "$1"
. scripts/packages.sh
cd "$OLDPWD"

mkdir bin
export PATH=$PWD/bin:$PATH NOTES=$PWD/notes
# stand_in NAME: a program for this test, its text on the standard input.
stand_in() {
    { echo "#!/bin/sh"; cat; } >"bin/$1"
    chmod +x "bin/$1"
}
stand_in dpkg-query <<'END'
exit 1
END
# An ordinary user who may run commands by sudo; of those only apt-get's are run.
stand_in id <<'END'
echo 1000
END
stand_in sudo <<'END'
[ "$1" != -n ] || exit 0
[ "$1" != env ] || shift 2
case "$1" in apt-get) exec "$@" ;; tee) cat >/dev/null ;; esac
END
stand_in apt-get <<'END'
echo "$*" >>"$NOTES"
case "$1" in
    update) echo "E: The repository is not there."; exit "${UPDATE:-0}" ;;
    install)
        echo "0 upgraded, 45 newly installed, 0 to remove and 1 not upgraded."
        for n in $(seq 45); do echo "Get:$n http://mirror.example stable/main amd64 lib$n amd64 1.0 [1 kB]"; done
        for n in $(seq 45); do echo "Unpacking lib$n:amd64 (1.0) ..."; done
        for n in $(seq 45); do echo "Setting up lib$n:amd64 (1.0) ..."; done
        [ "${INSTALL:-0}" = 0 ] || echo "E: dpkg was not happy"
        exit "${INSTALL:-0}" ;;
esac
END
asked="update -q
install -y -q --no-install-recommends one two"
steps="Installing: one two
[1/45] Fetching lib1
[20/45] Fetching lib20
[40/45] Fetching lib40
[45/45] Fetching lib45
[1/45] Unpacking lib1:amd64
[20/45] Unpacking lib20:amd64
[40/45] Unpacking lib40:amd64
[45/45] Unpacking lib45:amd64
[1/45] Setting up lib1:amd64
[20/45] Setting up lib20:amd64
[40/45] Setting up lib40:amd64
[45/45] Setting up lib45:amd64"

echo "what is installed is shown with a count"
same "what is said" "$steps" "$(ensure_packages one two 2>&1)"
same "what apt-get was asked" "$asked" "$(cat notes)"

echo "a list that cannot be refreshed keeps nothing from being installed"
rm notes
said=$(UPDATE=100 ensure_packages one two 2>&1)
same "what is said" "${steps/$'\n'/$'\nNot all lists of packages could be refreshed; going on with what they have.\n'}" "$said"
same "what apt-get was asked" "$asked" "$(cat notes)"

echo "packages that cannot be installed end the script, with apt-get's words"
status=0
said=$(INSTALL=100 ensure_packages one two 2>&1) || status=$?
same "the status" 1 "$status"
grep -qx "E: dpkg was not happy" <<<"$said" || fail "$said"
same "the last line" "The packages could not be installed." "$(tail -n 1 <<<"$said")"

echo "without a way to become root it says what to run"
stand_in sudo <<'END'
exit 1
END
status=0
said=$(ensure_packages one two 2>&1 </dev/null) || status=$?
same "the status" 1 "$status"
same "the last line" "  apt-get install -y --no-install-recommends one two" "$(tail -n 1 <<<"$said")"
