// kx7text - decoding of double-byte sets with AVX2.
//
// Takes 64 bytes at a time. Two shuffles by either half of the byte tell which bytes may lead and which are their own
// unit; which of those that may lead do lead follows from the parity of their place in their run, as an addition that
// carries through the run shows (MultibyteStructure.h). The code at each place is made in vectors, and those where
// characters begin are brought together. Only the codes of a batch of blocks are looked up, eight at a time: how many
// characters a block has the processor cannot foresee, and to be wrong once a batch costs little. Blocks of ASCII are
// copied.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/DoubleByteEncode.h"
#include "kx7/kernels/KeepLanes.h"
#include "kx7/kernels/MultibyteStructure.h"
#include "kx7/kernels/vector/Avx2.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = STRUCTURE_BLOCK;
constexpr std::ptrdiff_t HALF = 32;

/** What the bytes of half a block are, as bit sets, and the code that would begin at each. */
struct Half {
    uint32_t same;
    uint32_t mayLead;
    __m256i even;  ///< the codes of the first and third eight places
    __m256i odd;   ///< of the second and fourth
};

KX7_AVX2 inline void append(unsigned short*& out, Half const& half, uint32_t places)
{
    out = storeKept(out, _mm256_castsi256_si128(half.even), places & 0xFF);
    out = storeKept(out, _mm256_castsi256_si128(half.odd), places >> 8 & 0xFF);
    out = storeKept(out, _mm256_extracti128_si256(half.even, 1), places >> 16 & 0xFF);
    out = storeKept(out, _mm256_extracti128_si256(half.odd, 1), places >> 24);
}

struct Tables {
    __m256i same;
    __m256i lead;

    KX7_AVX2 explicit Tables(PairUnits const& set)
        : same(inBothHalves(set.sameBits())), lead(inBothHalves(set.leadBits()))
    {
    }

    /** Looks at 32 bytes. A byte that may lead makes a code with the one after it: none that trails is asked for. */
    KX7_AVX2 Half look(unsigned char const* in) const
    {
        __m256i const bytes = load256(in);
        __m256i const next = load256(in + 1);
        __m256i const low = _mm256_and_si256(bytes, _mm256_set1_epi8(0xF));
        __m256i const bit = bitOfRow(highNibbles(bytes));
        __m256i const isSame = hasBits(_mm256_shuffle_epi8(same, low), bit);
        __m256i const mayLead = _mm256_and_si256(hasBits(_mm256_shuffle_epi8(lead, low), bit),
                                                 _mm256_cmpgt_epi8(_mm256_setzero_si256(), bytes));
        __m256i const first = _mm256_and_si256(bytes, mayLead);
        __m256i const second = _mm256_blendv_epi8(bytes, next, mayLead);
        auto const upper = signsOf(bytes);
        return {signsOf(isSame) & ~upper, signsOf(mayLead), _mm256_unpacklo_epi8(second, first),
                _mm256_unpackhi_epi8(second, first)};
    }
};

KX7_AVX2 inline void widen16(unsigned short* out, unsigned char const* in)
{
    __m128i const bytes = load128(in);
    store256(out, _mm256_cvtepu8_epi16(bytes));
}

/** The characters of a few blocks. */
struct Batch {
    static constexpr std::ptrdiff_t BLOCKS = BATCH_BLOCKS;

    /** Takes up to `most` blocks from `in` on, as long as they are not all ASCII. */
    KX7_AVX2 Batch(Tables const& tables, unsigned char const* in, std::ptrdiff_t most)
    {
        unsigned short* codesEnd = codes;
        uint64_t isCarried = 0;  // 1: the first byte of the block trails
        for (; blocks < most; ++blocks) {
            Half const low = tables.look(in + blocks * BLOCK);
            Half const high = tables.look(in + blocks * BLOCK + HALF);
            if ((low.same & high.same) == ~UINT32_C(0) && isCarried == 0)
                break;
            uint64_t const mayLead = low.mayLead | static_cast<uint64_t>(high.mayLead) << HALF;
            PairBegins const begins(mayLead, isCarried);
            isCarried = begins.carries();
            append(codesEnd, low, static_cast<uint32_t>(begins.all));
            append(codesEnd, high, static_cast<uint32_t>(begins.all >> HALF));
            characters[blocks] = begins.all;
        }
        count = codesEnd - codes;
        bytes = blocks * BLOCK + static_cast<std::ptrdiff_t>(isCarried);
    }

    /** Where a character begins, counted from the first byte. */
    std::ptrdiff_t placeOf(std::ptrdiff_t character) const
    {
        uint64_t const* block = characters;
        for (; character >= __builtin_popcountll(*block); ++block)
            character -= __builtin_popcountll(*block);
        uint64_t rest = *block;
        for (; character != 0; --character)
            rest &= rest - 1;
        return (block - characters) * BLOCK + __builtin_ctzll(rest);
    }

    uint64_t characters[BLOCKS];  ///< the places where they begin, block by block
    unsigned short codes[BLOCKS * BLOCK];
    std::ptrdiff_t count;
    std::ptrdiff_t blocks = 0;
    std::ptrdiff_t bytes;
};

/**
 * Looks up `count` codes, at least 8.
 * @return the place of the first that has no unit, or `count`; what is written are the units before it
 */
KX7_AVX2 inline std::ptrdiff_t lookUp(unsigned short const* units, unsigned short const* codes, std::ptrdiff_t count,
                                      unsigned short* out)
{
    constexpr std::ptrdiff_t EIGHT = 8;
    for (std::ptrdiff_t i = 0;;) {
        __m128i const found = codesOfEight(units, codes + i);
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(found, _mm_setzero_si128())) != 0) {
            for (; units[codes[i]] != 0; ++i)
                out[i] = units[codes[i]];
            return i;
        }
        store128(out + i, found);
        i += EIGHT;
        if (i == count)
            return count;
        // What the last two have in common is the same in both.
        i = std::min(i, count - EIGHT);
    }
}

}  // namespace

KX7_AVX2 void decodePairsAvx2(PairUnits const& set, unsigned char const*& inOut, unsigned char const* end,
                              unsigned short*& outOut, unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    if (!beginsWell(set, in, end, out, outEnd)) {
        inOut = in;
        outOut = out;
        return;
    }
    unsigned short const* const units = set.units();
    Tables const tables(set);
    // One byte more, because the last one in the block is looked at with the one after it.
    while (end - in > BLOCK && outEnd - out >= BLOCK) {
        std::ptrdiff_t const most = std::min((end - in - 1) / BLOCK, (outEnd - out) / BLOCK);
        Batch const batch(tables, in, std::min(most, Batch::BLOCKS));
        if (batch.blocks == 0) {
            for (std::ptrdiff_t i = 0; i < BLOCK; i += 16)
                widen16(out + i, in + i);
            in += BLOCK;
            out += BLOCK;
            continue;
        }
        std::ptrdiff_t const found = lookUp(units, batch.codes, batch.count, out);
        out += found;
        if (found != batch.count) {
            inOut = in + batch.placeOf(found);
            outOut = out;
            return;
        }
        in += batch.bytes;
    }
    decodePairsBaseline(set, in, end, out, outEnd);
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
