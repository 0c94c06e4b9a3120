#!/usr/bin/env bash
# Shows the main job: a database is made, a DBF file becomes a table in it, and its structure and rows come back.
# Everything happens in a folder of its own under build/; no service, no configuration.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

ensure_packages "${build_packages[@]}"
echo "Building (release) ..."
cmake --preset release >/dev/null
cmake --build --preset release --parallel "$(nproc)" -- --quiet

folder=$PWD/build/demo
rm -rf "$folder"
mkdir -p "$folder"
cp examples/data/customers.dbf "$folder"
cd "$folder"
unset FIREBIRD FIREBIRD_LOCK ISC_USER ISC_PASSWORD
export ZMFB_DB=$folder/shop.fdb XDG_CACHE_HOME=$folder/cache
PATH=$OLDPWD/build/release/bin:$PATH

bold= plain=
if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then bold=$(printf '\033[1m') plain=$(printf '\033[0m'); fi

# step TEXT COMMAND... says what comes, shows the command as a person would type it, and runs it.
step() {
    printf '\n%s%s%s\n' "$bold" "$1" "$plain"
    shift
    printf '$'
    local word
    for word in "$@"; do
        case "$word" in
            *[!A-Za-z0-9_./-]*) printf " '%s'" "${word//\'/\'\\\'\'}" ;;
            *) printf ' %s' "$word" ;;
        esac
    done
    printf '\n'
    "$@"
}

step "A new database, with what the driver needs in it" zmfb create
step "A DBF file comes in as a table" zmfb import customers.dbf
step "Its structure, as xBase sees it: the file's fields, then the driver's two" zmfb struct customers
step "Its rows, through the object" \
    zmfb query "select recno, code, name, city, credit, since, active from customers order by name"
step "Any method of the object, by name" \
    zmfb call 'istable("customers")' 'gettablereccount("customers")' 'getrow("customers", "credit < 0", "recno", "", 0)'
step "The tables there are now" zmfb tables

printf '\nThe database is %s. Try: build/release/bin/zmfb --db %s query "select count(*) from customers"\n' \
    "$ZMFB_DB" "build/demo/shop.fdb"
