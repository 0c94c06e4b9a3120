# Sourced by tests that are shell scripts; they run in an empty folder of their own (in_scratch_folder.sh).
set -euo pipefail
trap 'echo "failed: ${BASH_SOURCE[0]##*/}, line $LINENO: $BASH_COMMAND" >&2' ERR

fail() {
    echo "$*" >&2
    exit 1
}

# same WHAT EXPECTED FOUND
same() {
    [ "$2" = "$3" ] || fail "$1: expected
$2
but found
$3"
}
