#!/bin/sh
# kx7text tests - compiles every public header alone, and twice in a row, as each language standard from C++11 on.
#
#     check.sh [COMPILER...]    g++ and clang++ where none is given
#
# FLAGS in the environment adds compiler flags, JOBS sets how many compilers run at once.
set -eu
cd "$(dirname "$0")/../.."

[ $# -ne 0 ] || set -- g++ clang++

headers=$(tests/headers/list.sh public)

# The text is two includes: what a header leaves undone shows in the first, a missing guard in the second.
compile='
    printf "#include \"%s\"\n#include \"%s\"\n" "$3" "$3" |
        $1 -std=$2 -I. -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror ${FLAGS-} -fsyntax-only -x c++ - ||
        { echo "check.sh: $3 with $1 -std=$2"; exit 1; }
'
for compiler in "$@"; do
    for standard in c++11 c++14 c++17 c++20 c++2b; do
        for header in $headers; do
            echo "$compiler $standard $header"
        done
    done
done | xargs -P "${JOBS:-2}" -n 3 sh -c "$compile" compile
