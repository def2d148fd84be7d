#!/bin/sh
# kx7text tests - compares the symbols that the shared library exports, with their versions, with the committed list of
# its word size beside this script.
#
#     symbols.sh LIBRARY...             fails and shows the difference when the two are not the same
#     symbols.sh --update LIBRARY...    writes the list anew; both build/release and build/m32 have one
set -eu
export LC_ALL=C

update=no
if [ "${1-}" = --update ]; then
    update=yes
    shift
fi
[ $# -ge 1 ] || {
    echo "usage: symbols.sh [--update] LIBRARY..." >&2
    exit 2
}

actual=$(mktemp)
trap 'rm -f "$actual" "$actual.nm"' EXIT
for library in "$@"; do
    # The fifth byte of an ELF file: 1 for 32-bit, 2 for 64-bit.
    case $(od -An -tu1 -j4 -N1 "$library" | tr -d ' ') in
        1) list=$(dirname "$0")/symbols-32.txt ;;
        2) list=$(dirname "$0")/symbols-64.txt ;;
        *)
            echo "symbols.sh: $library is no ELF file" >&2
            exit 1
            ;;
    esac
    nm -D --defined-only "$library" >"$actual.nm"
    awk '$2 != "A" { print $3 }' "$actual.nm" | sort -u >"$actual"
    [ -s "$actual" ] || {
        echo "symbols.sh: $library exports nothing" >&2
        exit 1
    }

    if [ $update = yes ]; then
        cp "$actual" "$list"
    elif ! difference=$(diff -u "$list" "$actual"); then
        echo "$library does not export what $list lists; symbols.sh --update takes it over:"
        if command -v c++filt >/dev/null; then
            echo "$difference" | sed -n '1,2d; /^[-+]/p' | sed 's/^\([-+]\)/\1 /' | c++filt
        else
            echo "$difference"
        fi
        exit 1
    fi
done
