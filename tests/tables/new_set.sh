#!/usr/bin/env bash
# kx7text tests - adds a made-up character set to a copy of the tree, as CONTRIBUTING.md says: one row. The copy is
# generated anew and built, and its kx7conv converts from the set and to it, by number, name and label.
#
#     new_set.sh FOLDER    the copy and its build lie in FOLDER, which is emptied; always the same is best for ccache
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../copy.sh"

# Of this number the quick lookup would have the slot taken, so that it has to be laid out anew.
row='    single_byte("TOY", 99002, "Toy", "made up", icu("ibm-866_P100-1995"), 255, iana="X-Toy x-another-toy"),'
awk -v row="$row" '/^SINGLE_BYTE = \[/ { inside = 1 } inside && /^\]/ { print row; inside = 0 } { print }' \
    tools/tables/charsets.py >"$work/charsets.py"
mv "$work/charsets.py" tools/tables/charsets.py
! tools/tables/generate.py --check >"$work/differences" || fail "--check sees no difference to the row"
grep -q '^kx7/tables/oTOYmap.cpp: is missing' "$work/differences" || fail "the mapping list is not missed"
tools/tables/generate.py >"$work/written"
tools/tables/generate.py --check >/dev/null || fail "generated twice, it is not the same"
grep -q '^| `KX7CS_TOY` made up | 99002 | `X-Toy` |' docs/charsets/windows.md || fail "docs/charsets does not have it"
! grep -q 'SLOT_FACTOR.*0x3017241F' kx7/charset/ConverterObjects.inc || fail "the quick lookup is laid out as before"

cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKX7_BUILD_TESTS=OFF -DKX7_WERROR=ON >"$work/log" 2>&1 &&
    cmake --build "$work/build" --target kx7conv >>"$work/log" 2>&1 </dev/null || { cat "$work/log" >&2 && fail "no build"; }
kx7conv=$work/build/cli/kx7conv

# "Привет" in the set and in UTF-8.
printf '\217\340\250\242\245\342' >"$work/toy"
printf '\320\237\321\200\320\270\320\262\320\265\321\202' >"$work/utf8"
for name in toy KX7CS_TOY 99002 cp99002 x-toy X-Another-Toy; do
    "$kx7conv" -f "$name" "$work/toy" | cmp - "$work/utf8" || fail "wrong from $name"
    "$kx7conv" -f utf8 -t "$name" "$work/utf8" | cmp - "$work/toy" || fail "wrong to $name"
done
"$kx7conv" --list | grep -q "^99002	KX7CS_TOY" || fail "--list does not have it"
"$kx7conv" --list=json | grep -q '"KX7CS_TOY"' || fail "--list=json does not have it"
"$kx7conv" -f 1251 -t utf8 samples/russian.1251.txt | cmp - samples/russian.utf8.txt || fail "1251 is wrong beside it"
echo "a new set takes one row: $(grep -c . "$work/written") files written"
