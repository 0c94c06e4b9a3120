#!/usr/bin/env bash
# Checks the layout of the code and runs the static checks.
#
#   scripts/lint.sh            clang-format, and that the README shows the examples as they are (the tests run this)
#   scripts/lint.sh --full     clang-tidy as well, over build/dev
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(host conn sql catalog locks schema transfer matrix c udf tool include examples tests bench fuzz)
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' -o -name '*.h' -o -name '*.c' | sort)
clang-format --dry-run --Werror "${sources[@]}"
echo "clang-format: ${#sources[@]} files are laid out"

# The README shows one example whole.
sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;$d' | diff - examples/import_and_query.cpp ||
    { echo "README.md shows another text than examples/import_and_query.cpp" >&2; exit 1; }

# The client's header stays behind sql/; the other folders reach the database by method name.
if grep -rlE '#include <(ibase|firebird/)' host conn catalog locks schema transfer matrix c tool include examples; then
    echo "these files include the Firebird client's header; only sql/ and udf/ do" >&2
    exit 1
fi

[ "${1:-}" = --full ] || exit 0
mapfile -t units < <(find "${folders[@]}" -name '*.cpp' -not -path 'tests/*' -not -path 'bench/*' | sort)
clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option "${units[@]}"
echo "clang-tidy: ${#units[@]} files"
