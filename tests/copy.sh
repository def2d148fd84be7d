# kx7text tests - sourced by scripts that try a change in a copy of the tree, with their argument, the folder for it.
#
# Empties the folder, which is $work from then on, copies the tree as it is, committed or not, and goes to the copy.

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

[ $# -eq 1 ] || fail "usage: ${0##*/} FOLDER"
cd "$(dirname "${BASH_SOURCE[0]}")/.."
rm -rf "$1"
mkdir -p "$1/tree"
work=$(cd "$1" && pwd)
{ git ls-files -co --exclude-standard && git ls-files -d; } | sort | uniq -u | tar -cf - -T - | tar -xf - -C "$work/tree"
cd "$work/tree"
