#!/bin/sh
# kx7text tests - compiles every public header alone, and twice in a row, as each language standard from C++11 on, and
# the header of the entry points as C.
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
    printf "#include \"%s\"\n#include \"%s\"\n" "$4" "$4" |
        $1 -std=$2 -I. -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror ${FLAGS-} -fsyntax-only -x $3 - ||
        { echo "check.sh: $4 with $1 -std=$2"; exit 1; }
'
for compiler in "$@"; do
    for standard in c++11 c++14 c++17 c++20 c++2b; do
        for header in $headers; do
            # A header whose first line says "(C++17)" is for that and later standards.
            case $standard:$(head -n 1 "$header") in
                c++1[14]:*'(C++17)'*) continue ;;
            esac
            echo "$compiler $standard c++ $header"
        done
    done
    for standard in c99 c11 c2x; do
        echo "$compiler $standard c kx7/charset/KX7CharSet.h"
    done
done | xargs -P "${JOBS:-2}" -n 4 sh -c "$compile" compile
