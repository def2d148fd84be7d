// kx7text - counting the characters of multibyte sets with AVX2.
//
// Takes 64 bytes at a time. Which bytes continue a character follows from which may lead and which may trail, by
// arithmetic on bit sets (MultibyteStructure.h). The types of the bytes are looked up by shuffles: the low four bits
// choose a set of high halves, and the high half is looked for in it.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstring>

#include "kx7/kernels/MultibyteStructure.h"
#include "kx7/kernels/SingleByteAvx2.h"
#include "kx7/tables/ByteTypeTables.h"

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
        low = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
        high = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in + HALF));
    }
};

KX7_AVX2 inline uint64_t bitsOf(__m256i low, __m256i high)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(low)) |
           static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(high))) << HALF;
}

/** The bytes that have a type. */
struct TypeSet {
    __m256i lows;   ///< by the low four bits of bytes below 0x80: a bit for each value of the three above
    __m256i highs;  ///< of bytes from 0x80

    KX7_AVX2 TypeSet(unsigned char const* types, unsigned char type)
    {
        __m128i const wanted = _mm_set1_epi8(static_cast<char>(type));
        __m128i sets[2] = {_mm_setzero_si128(), _mm_setzero_si128()};
        for (int row = 0; row < 16; ++row) {
            __m128i const entries = _mm_loadu_si128(reinterpret_cast<__m128i const*>(types + 16 * row));
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

KX7_AVX2 inline __m256i within(__m256i bytes, int first, int last)
{
    __m256i const distance = _mm256_sub_epi8(bytes, _mm256_set1_epi8(static_cast<char>(first)));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, _mm256_set1_epi8(static_cast<char>(last - first))), distance);
}

KX7_AVX2 inline uint64_t within(Block const& block, int first, int last)
{
    return bitsOf(within(block.low, first, last), within(block.high, first, last));
}

/** Pairs that PairUnits::sureTrails does not have. */
KX7_AVX2 inline __m256i isUnsure(PairUnits const& pairs, __m256i leads, __m256i trails)
{
    __m256i const codes = _mm256_and_si256(leads, _mm256_set1_epi8(0x7F));
    __m256i const sure = lookUp(pairs.sureTrails(), codes, RowBits(codes));
    __m256i const place = _mm256_sub_epi8(trails, _mm256_set1_epi8(static_cast<char>(PairUnits::FIRST_TRAIL)));
    return _mm256_cmpeq_epi8(_mm256_max_epu8(place, sure), place);
}

}  // namespace

KX7_AVX2 size_t countPairsAvx2(unsigned char const* types, unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    TypeSet const mayLead(types, LEAD_BYTE);
    TypeSet const mayTrail(types, TRAIL_BYTE);
    size_t count = 0;
    uint64_t leadsBefore = 0;   // the byte before the block may lead
    uint64_t trailsBefore = 0;  // and it trails, so it does not
    while (in != end) {
        std::ptrdiff_t const left = end - in < STRUCTURE_BLOCK ? end - in : STRUCTURE_BLOCK;
        Block const block(in, left);
        Types const low(block.low, mayLead, mayTrail);
        Types const high(block.high, mayLead, mayTrail);
        uint64_t const leads = bitsOf(low.leads, high.leads);
        uint64_t const followers = (leads << 1 | leadsBefore) & ~trailsBefore & lowBits<uint64_t>(left);
        uint64_t const trails = everySecond(bitsOf(low.others, high.others) & followers);
        count += static_cast<size_t>(left - __builtin_popcountll(trails));
        leadsBefore = leads >> 63;
        trailsBefore = trails >> 63;
        in += left;
    }
    inOut = in;
    return count;
}

KX7_AVX2 size_t countMappedPairsAvx2(PairUnits const& pairs, unsigned char const*& inOut, unsigned char const* end)
{
    unsigned char const* in = inOut;
    TypeSet const mayLead(_mm256_setzero_si256(), rowOf(pairs.leadBits()));
    TypeSet const isSame(rowOf(pairs.sameBits()), _mm256_setzero_si256());
    size_t count = 0;
    uint64_t isCarried = 0;
    // One byte more, because the last one in the block is looked at with the one behind it.
    for (; end - in > STRUCTURE_BLOCK; in += STRUCTURE_BLOCK) {
        Block const block(in, STRUCTURE_BLOCK);
        Block const behind(in + 1, STRUCTURE_BLOCK);
        Types const low(block.low, mayLead, isSame);
        Types const high(block.high, mayLead, isSame);
        PairBegins const begins(bitsOf(low.leads, high.leads), isCarried);
        uint64_t const unsure = begins.leads & bitsOf(isUnsure(pairs, block.low, behind.low),  //
                                                      isUnsure(pairs, block.high, behind.high));
        uint64_t const same = bitsOf(low.others, high.others);
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
