#!/usr/bin/env bash
# kx7text tests - adds a made-up instruction set, operation of kernels and table to a copy of the tree, as CONTRIBUTING.md
# says. A program takes all three from the copy's library, and the binary interface is what it was.
#
#     new_kernel.sh FOLDER    the copy and its build lie in FOLDER, which is emptied; always the same is best for ccache
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../copy.sh"

# insert FILE PLACE TEXT: before the only line of the file that is PLACE.
insert() {
    [ "$(grep -cFx -e "$2" "$1")" -eq 1 ] || fail "$1: not one line is: $2"
    place=$2 text=$3 awk '$0 == ENVIRON["place"] { print ENVIRON["text"] } { print }' "$1" >"$1.new"
    mv "$1.new" "$1"
}

# A table.
insert kx7/kernels/SingleByte.h '    Identity byteIdentity = Identity::NONE;  ///< which of the bytes below 0x80 do' \
    '    unsigned char toys[32] = {7};  ///< made up'

# An operation: a member, its implementation, and the line that says which instruction sets have it.
insert kx7/kernels/Kernels.h '    /** UTF-8 whose sequences are as long as their leads say. */' \
    '    /** Units that are `unit`. */
    size_t (*unitCount)(unsigned short const* text, size_t count, unsigned short unit) = Nothing();
'
insert kx7/kernels/Kernels.cpp '    k.decodeUTF8 = decodeUTF8Baseline;' \
    '    k.unitCount = [](unsigned short const* text, size_t count, unsigned short unit) {
        size_t found = 0;
        for (size_t i = 0; i != count; ++i)
            found += text[i] == unit;
        return found;
    };'

# An instruction set: a vector header, its functions by the shared loops, and a table of kernels.
cat >kx7/kernels/vector/Toy.h <<'TOY'
// kx7text - a vector of one unit (internal).
#ifndef KX7_KERNELS_VECTOR_TOY_H
#define KX7_KERNELS_VECTOR_TOY_H
#include <cstddef>
#include <cstdint>
namespace kx7 {
struct UnitsToy {
    using Vector = unsigned short;
    static constexpr size_t COUNT = 1;
    static constexpr unsigned int BITS = 1;
    static constexpr bool LOADS_PARTS = false;
    static Vector load(unsigned short const* p) { return *p; }
    static Vector all(unsigned short unit) { return unit; }
    static uint32_t equal(Vector a, Vector b) { return a == b; }
};
}  // namespace kx7
#endif
TOY
cat >kx7/kernels/UnitsToy.cpp <<'TOY'
// kx7text - searches in UTF-16 text one by one.
#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/vector/Toy.h"
#define KX7_TARGET
#include "kx7/kernels/UnitLoops.h"
namespace kx7 {
size_t unitFindToy(unsigned short const* text, size_t count, unsigned short unit)
{
    return unitFindBy<UnitsToy>(text, count, unit, unitFindBaseline);
}
}  // namespace kx7
TOY
insert kx7/kernels/Kernels.h '    AVX512  ///< with VBMI and VBMI2' '    TOY,'
insert kx7/kernels/Baseline.h 'void decodeUTF8Baseline(unsigned char const*& in, unsigned char const* end, unsigned short*& out,' \
    'size_t unitFindToy(unsigned short const* text, size_t count, unsigned short unit);'
insert kx7/kernels/Kernels.cpp 'constexpr Kernels AVX512_KERNELS = [] {' \
    'constexpr Kernels TOY_KERNELS = [] {
    Kernels k = BASELINE_KERNELS;
    k.unitFind = unitFindToy;
    return k;
}();
'
insert kx7/kernels/Kernels.cpp '    if (set == InstructionSet::AVX512)' \
    '    if (set == InstructionSet::TOY)
        return TOY_KERNELS;'

cat >"$work/toy.cpp" <<'TOY'
#include "kx7/convert.h"
#include "kx7/kernels/Kernels.h"

int main()
{
    unsigned short const text[] = {'a', 'b', 'a', 'c'};
    kx7::Kernels const& toy = kx7::kernelsOf(kx7::InstructionSet::TOY);
    bool const isToy = toy.unitFind != kx7::kernelsOf(kx7::InstructionSet::BASELINE).unitFind;
    kx7::SingleByteTables const tables{};
    bool const finds = toy.unitFind(text, 4, 'c') == 3 && toy.unitFind(text, 4, 'd') == 4;
    bool const counts = toy.unitCount(text, 4, 'a') == 2;
    bool const converts = kx7::decode("\xCF", KX7CS_WCP1251).text == u"\u041F";
    return isToy && finds && counts && converts && tables.toys[0] == 7 ? 0 : 1;
}
TOY

cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKX7_BUILD_TESTS=OFF -DKX7_BUILD_CLI=OFF -DKX7_WERROR=ON \
    >"$work/log" 2>&1 && cmake --build "$work/build" >>"$work/log" 2>&1 </dev/null || { cat "$work/log" >&2 && fail "no build"; }
g++ -std=c++17 -I. "$work/toy.cpp" "$work/build/libkx7text.a" -o "$work/toy"
"$work/toy" || fail "the made-up kernels are not what they say"
tests/package/abi.py "$work/build/libkx7text.so"
echo "a table, an operation and an instruction set change nothing of the binary interface"
