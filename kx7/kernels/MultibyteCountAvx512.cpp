// kx7text - counting the characters of double-byte sets with AVX-512 (VBMI).
//
// The types of bytes are looked up by permutations. Where pairs count only if they are mapped, those of rows that are
// not filled are looked up.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"
#include "kx7/tables/ByteTypeTables.h"

#define KX7_TARGET KX7_AVX512
#include "kx7/kernels/MultibyteCountLoops.h"

namespace kx7 {

namespace {

KX7_AVX512 inline __m512i loadBlock(unsigned char const* in, std::ptrdiff_t left)
{
    return left >= STRUCTURE_BLOCK ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lowLanes64(left), in);
}

/** As countPairsBy has it. */
struct TypeTable {
    ByteTable low;
    ByteTable high;

    KX7_AVX512 explicit TypeTable(unsigned char const* types) : low(types), high(types + 128) {}

    KX7_AVX512 TypedBytes find(unsigned char const* in, std::ptrdiff_t left) const
    {
        static_assert(TRAIL_BYTE == 0x80, "the type that is the sign of a byte");
        __m512i const bytes = loadBlock(in, left);
        __m512i const types = _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), low.lookUp(bytes), high.lookUp(bytes));
        return {_mm512_test_epi8_mask(types, _mm512_set1_epi8(LEAD_BYTE)), _mm512_movepi8_mask(types)};
    }
};

/** As countMappedPairsBy has it. */
struct PairTable {
    ByteTable isLead;
    ByteTable isSame;
    ByteTable mappedTrails;

    KX7_AVX512 explicit PairTable(PairUnits const& pairs)
        : isLead(pairs.isLead()), isSame(pairs.isSame()), mappedTrails(pairs.mappedTrails())
    {
    }

    KX7_AVX512 MappedBytes find(unsigned char const* in) const
    {
        __m512i const bytes = _mm512_loadu_si512(in);
        __m512i const next = _mm512_loadu_si512(in + 1);
        uint64_t const upper = _mm512_movepi8_mask(bytes);
        __m512i const trails = _mm512_sub_epi8(next, _mm512_set1_epi8(static_cast<char>(PairUnits::FIRST_TRAIL)));
        return {isLead.contains(bytes) & upper, isSame.contains(bytes) & ~upper,
                _mm512_cmpge_epu8_mask(trails, mappedTrails.lookUp(bytes))};
    }
};

}  // namespace

KX7_AVX512 size_t countPairsAvx512(unsigned char const* types, unsigned char const*& in, unsigned char const* end)
{
    return countPairsBy<TypeTable>(types, in, end);
}

KX7_AVX512 size_t countMappedPairsAvx512(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end)
{
    return countMappedPairsBy<PairTable>(pairs, in, end);
}

}  // namespace kx7

#endif
