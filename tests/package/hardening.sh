#!/bin/sh
# kx7text tests - the protections that built programs and shared libraries have: hardening.sh ARCHIVE FILE...
#
# Read-only relocations, binding at load, a stack that cannot be executed, position independence; and in the code
# itself stack protection and checked calls of the C library. On x86 the targets of indirect jumps are marked: that is
# said by the objects of the archive, as a linked file says it only where all of the C library's objects do. There, too,
# a frame larger than a page touches each page that it takes, so that none steps over the guard page.
set -eu
export LC_ALL=C

failed=0
need() {
    if ! echo "$2" | grep -Eq "$3"; then
        echo "hardening.sh: $file: no $1" >&2
        failed=1
    fi
}

file=$1
shift
if readelf -h "$file" | grep -Eq 'Machine: .*(X86-64|80386)'; then
    objects=$(ar t "$file" | wc -l)
    marked=$(readelf -nW "$file" | grep -c 'x86 feature: IBT, SHSTK') || true
    if [ "$marked" -ne "$objects" ] || [ "$objects" -eq 0 ]; then
        echo "hardening.sh: $file: $marked of $objects objects mark the targets of indirect jumps" >&2
        failed=1
    fi
    need "probes of large frames" "$(objdump -d --no-show-raw-insn "$file")" '[[:space:]]or[ql] +\$0x0,(0x[0-9a-f]+)?\(%[er]sp\)'
fi

for file in "$@"; do
    headers=$(readelf -hlnW "$file")
    need "position independence" "$headers" 'Type: +DYN'
    need "read-only relocations" "$headers" 'GNU_RELRO'
    need "stack without execution" "$headers" 'GNU_STACK .* RW +0x'
    need "binding at load" "$(readelf -dW "$file")" 'BIND_NOW|FLAGS.* NOW'
    symbols=$(readelf --dyn-syms -W "$file")
    need "stack protection" "$symbols" '__stack_chk_fail'
    need "checked calls" "$symbols" '__[a-z]+_chk(@|$)'
done
exit $failed
