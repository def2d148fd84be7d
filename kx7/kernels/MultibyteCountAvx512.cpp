// kx7text - counting the characters of double-byte sets with AVX-512 (VBMI).
//
// Takes up to 64 bytes at a time. Which bytes continue a character follows from which may lead and which may trail, by
// arithmetic on bit sets (MultibyteStructure.h). Where pairs count only if they are mapped, those of rows that are not
// filled are looked up.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/MultibyteStructure.h"
#include "kx7/tables/ByteTypeTables.h"

namespace kx7 {

namespace {

KX7_AVX512 inline __m512i loadBlock(unsigned char const* in, std::ptrdiff_t left)
{
    return left >= STRUCTURE_BLOCK ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lowBits<uint64_t>(left), in);
}

/** 128 entries, by the low seven bits of bytes. */
struct HalfTable {
    __m512i entries[2];

    KX7_AVX512 explicit HalfTable(unsigned char const* from)
        : entries{_mm512_loadu_si512(from), _mm512_loadu_si512(from + 64)}
    {
    }

    KX7_AVX512 __m512i lookUp(__m512i bytes) const { return _mm512_permutex2var_epi8(entries[0], bytes, entries[1]); }
};

}  // namespace

KX7_AVX512 size_t countPairsAvx512(unsigned char const* types, unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    __m512i table[4];
    for (int i = 0; i < 4; ++i)
        table[i] = _mm512_loadu_si512(types + i * 64);
    size_t count = 0;
    uint64_t leadsBefore = 0;   // the byte before the block may lead
    uint64_t trailsBefore = 0;  // and it trails, so it does not
    while (in != end) {
        std::ptrdiff_t const left = end - in < STRUCTURE_BLOCK ? end - in : STRUCTURE_BLOCK;
        __m512i const bytes = loadBlock(in, left);
        __m512i const typesOf =
            _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), _mm512_permutex2var_epi8(table[0], bytes, table[1]),
                                   _mm512_permutex2var_epi8(table[2], bytes, table[3]));
        uint64_t const leads = _mm512_test_epi8_mask(typesOf, _mm512_set1_epi8(LEAD_BYTE));
        uint64_t const mayTrail = _mm512_movepi8_mask(typesOf) & lowBits<uint64_t>(left);
        uint64_t const trails = everySecond(mayTrail & (leads << 1 | leadsBefore) & ~trailsBefore);
        count += static_cast<size_t>(left - __builtin_popcountll(trails));
        leadsBefore = leads >> 63;
        trailsBefore = trails >> 63;
        in += left;
    }
    inOut = in;
    return count;
}

KX7_AVX512 size_t countMappedPairsAvx512(PairUnits const& pairs, unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    HalfTable const isLead(pairs.isLead());
    HalfTable const isSame(pairs.isSame());
    HalfTable const sureTrails(pairs.sureTrails());
    size_t count = 0;
    uint64_t isCarried = 0;
    // One byte more, because the last one in the block is looked at with the one behind it.
    for (; end - in > STRUCTURE_BLOCK; in += STRUCTURE_BLOCK) {
        __m512i const bytes = _mm512_loadu_si512(in);
        __m512i const behind = _mm512_loadu_si512(in + 1);
        uint64_t const upper = _mm512_movepi8_mask(bytes);
        PairBegins const begins(_mm512_movepi8_mask(isLead.lookUp(bytes)) & upper, isCarried);
        uint64_t const same = _mm512_movepi8_mask(isSame.lookUp(bytes)) & ~upper;
        __m512i const trails = _mm512_sub_epi8(behind, _mm512_set1_epi8(static_cast<char>(PairUnits::FIRST_TRAIL)));
        uint64_t const unsure = begins.leads & _mm512_cmpge_epu8_mask(trails, sureTrails.lookUp(bytes));
        int const taken = firstWithoutUnit(begins, same, unsure, pairs.units(), in);
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
