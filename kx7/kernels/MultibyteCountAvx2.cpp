// kx7text - counting the characters of multibyte sets with AVX2.
//
// Takes 64 bytes at a time. Which bytes continue a character follows from which may lead and which may trail, by
// arithmetic on bit sets (MultibyteStructure.h). The types of the bytes are looked up by shuffles: the low four bits
// choose a set of high halves, and the high half is looked for in it.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstring>

#include "kx7/kernels/SingleByteAvx2.h"
#include "kx7/tables/ByteTypeTables.h"

#define KX7_TARGET KX7_AVX2
#include "kx7/kernels/MultibyteCountLoops.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t HALF = 32;

/** 64 bytes of text, zeros where it has ended. */
struct Block {
    __m256i low;
    __m256i high;

    KX7_AVX2 Block(unsigned char const* in, std::ptrdiff_t left)
    {
        unsigned char rest[STRUCTURE_BLOCK];
        if (left < STRUCTURE_BLOCK) {
            memset(rest, 0, sizeof rest);
            memcpy(rest, in, static_cast<size_t>(left));
            in = rest;
        }
        low = load256(in);
        high = load256(in + HALF);
    }
};

/** The bytes that have a type. */
struct TypeSet {
    __m256i lows;   ///< by the low four bits of bytes below 0x80: a bit for each value of the three above
    __m256i highs;  ///< of bytes from 0x80

    KX7_AVX2 TypeSet(unsigned char const* types, unsigned char type)
    {
        __m128i const wanted = _mm_set1_epi8(static_cast<char>(type));
        __m128i sets[2] = {_mm_setzero_si128(), _mm_setzero_si128()};
        for (int row = 0; row < 16; ++row) {
            __m128i const entries = load128(types + 16 * row);
            __m128i const has = _mm_cmpeq_epi8(_mm_and_si128(entries, wanted), wanted);
            sets[row / 8] =
                _mm_or_si128(sets[row / 8], _mm_and_si128(has, _mm_set1_epi8(static_cast<char>(1 << row % 8))));
        }
        lows = _mm256_broadcastsi128_si256(sets[0]);
        highs = _mm256_broadcastsi128_si256(sets[1]);
    }

    /** @param lowBits, highBits for bytes below 0x80 and from there on: a bit for each value of the three above the low
     * four */
    KX7_AVX2 TypeSet(__m256i lowBits, __m256i highBits) : lows(lowBits), highs(highBits) {}

    /** @param bit for each byte that of its three bits above the low four */
    KX7_AVX2 __m256i contains(__m256i bytes, __m256i low, __m256i bit) const
    {
        __m256i const set = _mm256_blendv_epi8(_mm256_shuffle_epi8(lows, low), _mm256_shuffle_epi8(highs, low), bytes);
        return hasBits(set, bit);
    }
};

/** Which of 32 bytes two sets contain. */
struct Types {
    __m256i leads;
    __m256i others;

    KX7_AVX2 Types(__m256i bytes, TypeSet const& leadSet, TypeSet const& otherSet)
    {
        __m256i const low = _mm256_and_si256(bytes, _mm256_set1_epi8(0xF));
        __m256i const bit = bitOfRow(highNibbles(bytes));
        leads = leadSet.contains(bytes, low, bit);
        others = otherSet.contains(bytes, low, bit);
    }
};

KX7_AVX2 inline uint64_t within(Block const& block, int first, int last)
{
    return signsOf(isWithin(block.low, first, last), isWithin(block.high, first, last));
}

/** As countPairsBy has it. */
struct TypeTable {
    TypeSet mayLead;
    TypeSet mayTrail;

    KX7_AVX2 explicit TypeTable(unsigned char const* types) : mayLead(types, LEAD_BYTE), mayTrail(types, TRAIL_BYTE) {}

    KX7_AVX2 TypedBytes find(unsigned char const* in, std::ptrdiff_t left) const
    {
        Block const block(in, left);
        Types const low(block.low, mayLead, mayTrail);
        Types const high(block.high, mayLead, mayTrail);
        return {signsOf(low.leads, high.leads), signsOf(low.others, high.others)};
    }
};

/** Pairs that PairUnits::mappedTrails does not have. */
KX7_AVX2 inline __m256i isUnsure(PairUnits const& pairs, __m256i leads, __m256i trails)
{
    __m256i const codes = _mm256_and_si256(leads, _mm256_set1_epi8(0x7F));
    __m256i const mapped = lookUp(pairs.mappedTrails(), codes, RowBits(codes));
    __m256i const place = _mm256_sub_epi8(trails, _mm256_set1_epi8(static_cast<char>(PairUnits::FIRST_TRAIL)));
    return _mm256_cmpeq_epi8(_mm256_max_epu8(place, mapped), place);
}

/** As countMappedPairsBy has it. */
struct PairTable {
    PairUnits const& pairs;
    TypeSet mayLead;
    TypeSet same;

    KX7_AVX2 explicit PairTable(PairUnits const& units)
        : pairs(units), mayLead(_mm256_setzero_si256(), inBothHalves(units.leadBits())),
          same(inBothHalves(units.sameBits()), _mm256_setzero_si256())
    {
    }

    KX7_AVX2 MappedBytes find(unsigned char const* in) const
    {
        Block const block(in, STRUCTURE_BLOCK);
        Block const next(in + 1, STRUCTURE_BLOCK);
        Types const low(block.low, mayLead, same);
        Types const high(block.high, mayLead, same);
        return {signsOf(low.leads, high.leads), signsOf(low.others, high.others),
                signsOf(isUnsure(pairs, block.low, next.low), isUnsure(pairs, block.high, next.high))};
    }
};

}  // namespace

KX7_AVX2 size_t countPairsAvx2(unsigned char const* types, unsigned char const*& in, unsigned char const* end)
{
    return countPairsBy<TypeTable>(types, in, end);
}

KX7_AVX2 size_t countMappedPairsAvx2(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end)
{
    return countMappedPairsBy<PairTable>(pairs, in, end);
}

KX7_AVX2 size_t countUnitsOfGB18030Avx2(unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    size_t count = 0;
    while (in != end) {
        Block const block(in, end - in);
        uint64_t const trails = within(block, 0x40, 0xFE) & ~within(block, 0x7F, 0x7F);
        GB18030Begins const begins =
            beginsOfGB18030({within(block, 0x81, 0xFE), within(block, '0', '9')}, trails, end - in);
        count += static_cast<size_t>(__builtin_popcountll(begins.all));
        if (begins.ofFour != 0) {
            count += static_cast<size_t>(__builtin_popcountll(begins.ofFour & within(block, 0x90, 0xE2)));
            for (uint64_t last = begins.ofFour & within(block, 0xE3, 0xE3); last != 0; last &= last - 1)
                count += memcmp(in + __builtin_ctzll(last), LAST_SUPPLEMENTARY, 4) <= 0;
        }
        in += begins.bytes;
    }
    inOut = in;
    return count;
}

}  // namespace kx7

#endif
