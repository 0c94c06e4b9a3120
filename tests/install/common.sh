# Sourced by the tests of this folder, which run in an empty folder of their own:
#   ZMFB_SOURCE, ZMFB_BUILD   the source and the build folder
#   ZMFB_VERSION, ZMFB_LIBDIR  the version, and the folder of libraries under a prefix
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
