#!/usr/bin/env bash
# Shows the main job: a database is made, a DBF file becomes a table in it, its structure and rows come back, a record is
# locked, the structure is changed through a text file, and the table goes out again as a DBF file.
# Everything happens in a folder of its own under build/; no service, no configuration.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

ensure_packages "${build_packages[@]}"
echo "Building (release) ..."
build release

folder=$PWD/build/demo
rm -rf "$folder"
mkdir -p "$folder/out"
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
step "Its rows" zmfb query "select recno, name, city, credit, since, active from customers order by name"
step "Any method of the object, by name" \
    zmfb call 'istable("customers")' 'gettablereccount("customers")' 'getrow("customers", "credit < 0", "recno", "", 0)'

step "A work area locks record 3" \
    zmfb call 'setrecordaslocked("customers", "CUSTOMERS:A1:4242:desk", "3")'
step "Another process asks for the same record: refused" \
    zmfb call 'setrecordaslocked("customers", "CUSTOMERS:B7:4300:till", "3")'
step "Who has it" zmfb locks
step "It is given back" zmfb call 'setrecordasunlocked("customers", "CUSTOMERS:A1:4242:desk", "3")'

step "The structure goes into a text file, to be edited" zmfb matrix extract customers -o customers.tf
sed -i 's/=> 002::NAME::C::24::0/=> 002::FULLNAME::C::40::0/' customers.tf
printf '(the right-hand NAME, 24 long, becomes FULLNAME, 40 long, with an editor)\n'
step "What applying it would do" zmfb matrix check customers.tf
step "It is done, and the data kept" zmfb matrix apply --yes customers.tf
step "Out again as a DBF file that other programs open" zmfb export customers -o "$folder/out"

printf '\nThe database is %s. Try: build/release/bin/zmfb --db %s query "select count(*) from customers"\n' \
    "$ZMFB_DB" "build/demo/shop.fdb"
