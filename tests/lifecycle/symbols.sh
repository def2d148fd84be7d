#!/bin/sh
# kx7text tests - compares the symbols that the shared library exports with the committed list beside this script.
#
#     symbols.sh LIBRARY             fails and shows the difference when the two are not the same
#     symbols.sh --update LIBRARY    writes the list anew
set -eu
export LC_ALL=C

list=$(dirname "$0")/symbols.txt
update=no
if [ "${1-}" = --update ]; then
    update=yes
    shift
fi
[ $# -eq 1 ] || {
    echo "usage: symbols.sh [--update] LIBRARY" >&2
    exit 2
}

actual=$(mktemp)
trap 'rm -f "$actual" "$actual.nm"' EXIT
nm -D --defined-only "$1" >"$actual.nm"
# Instantiations of the standard library's templates come and go with the optimiser; they are no interface.
awk '{ print $3 }' "$actual.nm" | grep -Ev '^_Z(N|NK)?St' | sort -u >"$actual"
[ -s "$actual" ] || {
    echo "symbols.sh: $1 exports nothing" >&2
    exit 1
}

if [ $update = yes ]; then
    cp "$actual" "$list"
elif ! difference=$(diff -u "$list" "$actual"); then
    echo "$1 does not export what $list lists; symbols.sh --update takes it over:"
    if command -v c++filt >/dev/null; then
        echo "$difference" | sed -n '1,2d; /^[-+]/p' | sed 's/^\([-+]\)/\1 /' | c++filt
    else
        echo "$difference"
    fi
    exit 1
fi
