#!/usr/bin/env bash
# Checks the layout of the code, that the README shows the example as it is, that only sql/ and udf/ see the client's
# header, and that tests look at nothing beside the sources. The tests run this; scripts/analyse.sh has the static checks that take minutes.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(dbf host conn sql catalog locks schema transfer matrix rdd c udf tool include examples tests bench fuzz)
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' -o -name '*.h' -o -name '*.c' | sort)
clang-format --dry-run --Werror "${sources[@]}"
echo "clang-format: ${#sources[@]} files are laid out"

# The README shows one example whole.
sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;$d' | diff - examples/import_and_query.cpp ||
    { echo "README.md shows another text than examples/import_and_query.cpp" >&2; exit 1; }

# The client's header stays behind sql/; the other folders reach the database by method name.
if grep -rlE '#include <(ibase|firebird/)' host conn catalog locks schema transfer matrix rdd c tool include examples; then
    echo "these files include the Firebird client's header; only sql/ and udf/ do" >&2
    exit 1
fi

# The parser of the command line takes seconds to compile: who adds a command sees tool/command_line.h alone.
if grep -rl '#include <CLI/' tool | grep -vxE 'tool/(command_line|generate/help)\.cpp'; then
    echo "these files include the parser of the command line" >&2
    exit 1
fi

# clang 14, which fuzz/run.sh compiles with, does not know the views of the library of GCC 12.
if grep -rn 'std::views::' dbf host conn sql catalog locks schema transfer matrix rdd c udf tool include fuzz; then
    echo "these lines do not compile with clang: loop without a view" >&2
    exit 1
fi

# What lies beside the sources is named by the environment (.ci/run does), never found by itself.
if grep -rnE '\.\./shared|/ "shared"' tests bench fuzz; then
    echo "these lines look beside the sources" >&2
    exit 1
fi
