#!/usr/bin/env bash
# prints.sh FILE COMMAND... runs a program and compares what it prints with the file. ZMFB_PRELOAD names libraries to
# preload into it.
set -euo pipefail
expected=$1
shift
[ -z "${ZMFB_PRELOAD:-}" ] || set -- env LD_PRELOAD="$ZMFB_PRELOAD" "$@"
printed=$("$@")
diff "$expected" - <<<"$printed"
