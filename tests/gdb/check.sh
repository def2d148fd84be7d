#!/bin/sh
# kx7text tests - what gdb prints for strings.
#
#     check.sh PROGRAM    the program of strings.cpp, built with debug information
set -eu
cd "$(dirname "$0")/../.."

actual=$(LC_ALL=C.UTF-8 gdb -nx -batch -q \
    -ex 'set debuginfod enabled off' -ex 'set charset UTF-8' \
    -ex 'source tools/gdb/kx7text.py' \
    -ex 'break here' -ex 'run' \
    -ex 'up' \
    -ex 'print plain' -ex 'print empty' -ex 'print wide' \
    -ex 'set print elements 5' -ex 'print longText' -ex 'set print elements 2' -ex 'print wide' \
    "$1" 2>&1 | grep '^\$')
expected='$1 = u"Straße \"\\\012"
$2 = u""
$3 = u"中😀\ud800\000z"
$4 = u"xxxxx"...
$5 = u"中\ud83d"...'
[ "$actual" = "$expected" ] || {
    printf '%s\n' "check.sh: gdb printed" "$actual" "instead of" "$expected" >&2
    exit 1
}
