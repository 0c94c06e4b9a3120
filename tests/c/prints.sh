#!/usr/bin/env bash
# prints.sh FILE COMMAND... runs a program and compares what it prints with the file.
set -euo pipefail
expected=$1
shift
printed=$("${0%/*}/../support/preloaded.sh" "$@")
diff "$expected" - <<<"$printed"
