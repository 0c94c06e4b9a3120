#!/usr/bin/env bash
# in_scratch_folder.sh COMMAND... runs a program in a new folder, with nothing of Firebird's in its environment: what
# it makes, its log and the private environment of the engine lie there. The folder goes away when all went well.
set -uo pipefail
where=${TMPDIR:-/tmp}
[ ! -w /dev/shm ] || where=/dev/shm
folder=$(mktemp -d "$where/zmfb-test-XXXXXX")
cd "$folder" || exit 1
unset FIREBIRD FIREBIRD_LOCK ISC_USER ISC_PASSWORD ZMFB_DB
export XDG_CACHE_HOME=$folder/cache HOME=$folder ZMFB_TEST_LOG=$folder/zmrddfire.log
"$@"
status=$?
if [ $status -eq 0 ]; then rm -rf "$folder"; else echo "kept: $folder" >&2; fi
exit $status
