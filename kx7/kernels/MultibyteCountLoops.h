// kx7text - counting the characters of double-byte sets, for any instruction set (internal).
//
// Takes up to 64 bytes at a time. Which bytes continue a character follows from which may lead and which may trail, by
// arithmetic on bit masks (MultibyteStructure.h).
//
// A source file includes this after it has defined KX7_TARGET, the attribute of what it is compiled for.
#ifndef KX7_KERNELS_MULTIBYTECOUNTLOOPS_H
#define KX7_KERNELS_MULTIBYTECOUNTLOOPS_H

#ifndef KX7_TARGET
#error "KX7_TARGET is not defined"
#endif

#include <algorithm>

#include "kx7/kernels/MultibyteStructure.h"
#include "kx7/kernels/PairUnits.h"

namespace kx7 {

/** What the bytes of a block may be, by their types. */
struct TypedBytes {
    uint64_t mayLead;
    uint64_t mayTrail;
};

/** What the bytes of a block may be, by the characters of a set. */
struct MappedBytes {
    uint64_t mayLead;
    uint64_t same;    ///< bytes that are their own units
    uint64_t unsure;  ///< as lead bytes of pairs that may have no unit
};

/**
 * As Kernels::countPairs. `Types` is made of the 256 types and finds the TypedBytes of up to 64 bytes; those after the
 * end are zeros, or count as such.
 */
template <class Types>
KX7_TARGET inline size_t countPairsBy(unsigned char const* types, unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    Types const table(types);
    size_t count = 0;
    uint64_t leadsBefore = 0;   // the byte before the block may lead
    uint64_t trailsBefore = 0;  // and it trails, so it does not
    while (in != end) {
        std::ptrdiff_t const left = std::min(end - in, STRUCTURE_BLOCK);
        TypedBytes const bytes = table.find(in, left);
        uint64_t const followers = (bytes.mayLead << 1 | leadsBefore) & ~trailsBefore & lowBits<uint64_t>(left);
        uint64_t const trails = everySecond(bytes.mayTrail & followers);
        count += static_cast<size_t>(left - __builtin_popcountll(trails));
        leadsBefore = bytes.mayLead >> 63;
        trailsBefore = trails >> 63;
        in += left;
    }
    inOut = in;
    return count;
}

/** As Kernels::countMappedPairs. `Table` is made of the characters and finds the MappedBytes of 64 bytes and the next.
 */
template <class Table>
KX7_TARGET inline size_t countMappedPairsBy(PairUnits const& pairs, unsigned char const*& inOut,
                                            unsigned char const* end)
{
    unsigned char const* in = inOut;
    Table const table(pairs);
    size_t count = 0;
    uint64_t isCarried = 0;
    // One byte more, because the last one in the block is looked at with the one after it.
    for (; end - in > STRUCTURE_BLOCK; in += STRUCTURE_BLOCK) {
        MappedBytes const bytes = table.find(in);
        PairBegins const begins(bytes.mayLead, isCarried);
        int const taken = firstWithoutUnit(begins, bytes.same, begins.leads & bytes.unsure, pairs.units(), in);
        count += static_cast<size_t>(__builtin_popcountll(begins.all & lowBits<uint64_t>(taken)));
        if (taken != STRUCTURE_BLOCK) {
            inOut = in + taken;
            return count;
        }
        isCarried = begins.carries();
    }
    inOut = in + isCarried;
    return count;
}

}  // namespace kx7

#endif
