#!/bin/sh
# kx7text tests - the binary interface is that of the last release, or has more: abi.sh [--update] LIBRARY...
#
# Compares a library with debug information with the baseline of its word size, the layout of types included. At a
# release --update takes the interface over.
set -eu
export LC_ALL=C
folder=$(dirname "$0")

update=no
if [ "${1-}" = --update ]; then
    update=yes
    shift
fi
baseline=$(mktemp)
trap 'rm -f "$baseline"' EXIT
for library in "$@"; do
    # The fifth byte of an ELF file: 1 for 32-bit, 2 for 64-bit.
    case $(od -An -tu1 -j4 -N1 "$library" | tr -d ' ') in
        1) stored=$folder/abi-32.xml.xz ;;
        2) stored=$folder/abi-64.xml.xz ;;
        *)
            echo "abi.sh: $library is no ELF file" >&2
            exit 1
            ;;
    esac
    if [ $update = yes ]; then
        abidw --exported-interfaces-only --drop-undefined-syms --no-corpus-path --no-comp-dir-path --no-show-locs \
            "$library" | xz -9 >"$stored"
        continue
    fi
    xz -dc "$stored" >"$baseline"
    if ! abidiff --exported-interfaces-only --suppressions "$folder/abi.suppr" --no-added-syms "$baseline" "$library"; then
        echo "abi.sh: $library differs from $stored: a program built with the last release may break" >&2
        exit 1
    fi
done
