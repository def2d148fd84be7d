// kx7text - UTF-8 with AVX2: decoding, validation and counting.
//
// Decoding takes 32 bytes at a time, checked as with AVX-512. Each byte becomes a 16-bit lane, with the bytes after it
// in two more registers, so that the lane of a lead byte can be turned into its unit; a four-byte sequence keeps the
// lane after its lead for the low surrogate. The lanes of continuation bytes are dropped, eight at a time, by
// a shuffle from a table of 256, by the mask of the lanes to keep.
//
// A block is converted once the next one is known to be good: what its stores write after its text is then covered by
// the text of the next. What is left is stored in parts that may overlap, so that nothing stays after the text.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/Bits.h"
#include "kx7/kernels/KeepLanes.h"
#include "kx7/kernels/Utf8Structure.h"
#include "kx7/kernels/vector/Avx2.h"

#define KX7_TARGET KX7_AVX2
#include "kx7/kernels/Utf8Loops.h"

namespace kx7 {

namespace {

/** Bytes of a block. */
constexpr std::ptrdiff_t BYTES = 32;

/** Units that one store reaches after those that count. */
constexpr std::ptrdiff_t SPILL = 16;

/** A lane of ones for each byte that is at least `least`. */
KX7_AVX2 inline __m256i lanesAtLeast(__m256i words, unsigned short least)
{
    return _mm256_cmpgt_epi16(words, _mm256_set1_epi16(static_cast<short>(least - 1)));
}

/** The structure of 32 bytes. */
struct Structure : Leads<uint32_t> {
    uint32_t continuations;
};

KX7_AVX2 inline Structure structureOf(__m256i bytes)
{
    uint32_t const notASCII = BytesAvx2::notASCII(bytes);
    Leads<uint32_t> const leads = BytesAvx2::leads(bytes, notASCII);
    return {leads, notASCII & ~leads.two};
}

/** Stores 32 bytes as units. */
KX7_AVX2 inline void storeASCII(unsigned short* out, __m256i bytes)
{
    store256(out, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    store256(out + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}

/** 16 bytes as lanes, and the bytes one and two after each. */
struct Lanes {
    __m256i first;
    __m256i second;
    __m256i third;
};

KX7_AVX2 inline Lanes lanesOf(__m128i bytes, __m128i oneAfter, __m128i twoAfter)
{
    return {_mm256_cvtepu8_epi16(bytes), _mm256_cvtepu8_epi16(oneAfter), _mm256_cvtepu8_epi16(twoAfter)};
}

/** Turns the lanes of leads, and those after leads of four, into units. `leadBefore`: the leads of four before. */
KX7_AVX2 inline __m256i unitsOf(Lanes const& lanes, Structure const& s, bool beginsInPair, __m256i& leadBefore)
{
    __m256i const sixBits = _mm256_set1_epi16(0x3F);
    __m256i const first = lanes.first;
    __m256i const second = _mm256_and_si256(lanes.second, sixBits);
    __m256i const two =
        _mm256_or_si256(second, _mm256_and_si256(_mm256_slli_epi16(first, 6), _mm256_set1_epi16(0x7C0)));
    __m256i units = _mm256_blendv_epi8(first, two, lanesAtLeast(first, 0xC0));
    if (s.three != 0 || beginsInPair) {
        __m256i const third = _mm256_and_si256(lanes.third, sixBits);
        __m256i const three =
            _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(first, 12), third), _mm256_slli_epi16(second, 6));
        units = _mm256_blendv_epi8(units, three, lanesAtLeast(first, 0xE0));
        if (s.four != 0 || beginsInPair) {
            // Four bits of the lead count, as in the plain decoder.
            __m256i const lead = _mm256_slli_epi16(_mm256_and_si256(first, _mm256_set1_epi16(0xF)), 8);
            __m256i const high = _mm256_add_epi16(
                _mm256_or_si256(_mm256_or_si256(lead, _mm256_slli_epi16(second, 2)), _mm256_srli_epi16(third, 4)),
                _mm256_set1_epi16(static_cast<short>(0xD7C0)));
            // In the lane after the lead, `second` is the third byte of the sequence and `third` the fourth.
            __m256i const low = _mm256_add_epi16(
                _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(second, _mm256_set1_epi16(0xF)), 6), third),
                _mm256_set1_epi16(static_cast<short>(0xDC00)));
            __m256i const isLead = lanesAtLeast(first, 0xF0);
            __m256i const isAfterLead =
                _mm256_alignr_epi8(isLead, _mm256_permute2x128_si256(leadBefore, isLead, 0x21), 14);
            units = _mm256_blendv_epi8(_mm256_blendv_epi8(units, high, isLead), low, isAfterLead);
            leadBefore = isLead;
        }
    }
    return units;
}

/**
 * Decodes the characters that begin in 32 bytes. Reads 3 bytes more; stores up to SPILL units after those that count.
 * @param kept the bytes in whose lanes units are: lead bytes, and the second bytes of sequences of four
 */
KX7_AVX2 inline unsigned short* decodeBytes(unsigned char const* in, Structure const& s, uint32_t kept,
                                            bool beginsInPair, unsigned short* out)
{
    __m256i leadBefore = beginsInPair ? _mm256_set1_epi16(-1) : _mm256_setzero_si256();
    for (int half = 0; half < 2; ++half, in += 16, kept >>= 16) {
        __m256i const units =
            unitsOf(lanesOf(load128(in), load128(in + 1), load128(in + 2)), s, beginsInPair, leadBefore);
        out = storeKept(out, _mm256_castsi256_si128(units), kept & 0xFF);
        out = storeKept(out, _mm256_extracti128_si256(units, 1), kept >> 8 & 0xFF);
    }
    return out;
}

/** Stores those of eight units that `kept` has, writing nothing after `textEnd`, and returns where they end. */
KX7_AVX2 inline unsigned short* storeWithin(unsigned short* out, __m128i units, uint32_t kept,
                                            unsigned short const* textEnd)
{
    if (textEnd - out >= 8)
        return storeKept(out, units, kept);
    std::ptrdiff_t const count = __builtin_popcount(kept);
    storeExactly(reinterpret_cast<unsigned char*>(out), {shuffled(units, KEEP_LANES.shuffles[kept]), 2 * count});
    return out + count;
}

/**
 * Decodes the `available` bytes at `in`, 16 to 32, which begin a character, up to what is truncated or malformed, and
 * writes nothing after them.
 * @return the bytes consumed
 */
KX7_AVX2 inline std::ptrdiff_t decodeLastBlock(unsigned char const* in, std::ptrdiff_t available, unsigned short*& out)
{
    unsigned char const* const last16 = in + available - 16;
    __m128i const front = load128(in);
    __m128i const back = bytesFrom(load128(last16), 32 - available);
    Structure const s = structureOf(_mm256_set_m128i(back, front));
    if ((s.two | s.continuations) == 0) {
        // In two halves, which may overlap.
        store256(out, _mm256_cvtepu8_epi16(front));
        store256(out + available - 16, _mm256_cvtepu8_epi16(load128(last16)));
        out += available;
        return available;
    }
    std::ptrdiff_t used = available;
    uint32_t const last = UINT32_C(1) << (available - 1);
    uint32_t const cut = (s.two & last) | (s.three & (last | last >> 1)) | (s.four & (last | last >> 1 | last >> 2));
    if (cut != 0)
        used = __builtin_ctz(cut);
    // One more byte, for what the character before it lacks.
    uint32_t const wrong = (s.continuations ^ s.wanted()) & lowBits<uint32_t>(used + 1);
    if (wrong != 0) {
        // A continuation byte that nothing leads, or one that is missing: then the last lead in front is at fault.
        used = __builtin_ctz(wrong);
        if (!(s.continuations >> used & 1))
            used = 31 - __builtin_clz(s.two & lowBits<uint32_t>(used));
    }
    uint32_t kept = (~s.continuations | s.four << 1) & lowBits<uint32_t>(used);
    unsigned short* const textEnd = out + __builtin_popcount(kept);
    __m256i leadBefore = _mm256_setzero_si256();
    Lanes lanes = lanesOf(front, _mm_alignr_epi8(back, front, 1), _mm_alignr_epi8(back, front, 2));
    for (;;) {
        __m256i const units = unitsOf(lanes, s, false, leadBefore);
        out = storeWithin(out, _mm256_castsi256_si128(units), kept & 0xFF, textEnd);
        out = storeWithin(out, _mm256_extracti128_si256(units, 1), kept >> 8 & 0xFF, textEnd);
        kept >>= 16;
        if (kept == 0)
            return used;
        lanes = lanesOf(back, _mm_srli_si128(back, 1), _mm_srli_si128(back, 2));
    }
}

KX7_AVX2 void decodeBlocks(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                           unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    while (end - in >= BYTES && outEnd - out >= BYTES) {
        __m256i const bytes = load256(in);
        if (_mm256_movemask_epi8(bytes) != 0)
            break;
        storeASCII(out, bytes);
        in += BYTES;
        out += BYTES;
    }
    if (end - in >= 2 * BYTES) {
        // A block is converted when the next is known to be well-formed: what is stored after the one is then
        // overwritten by the text of the other.
        auto const* blocks = reinterpret_cast<__m256i const*>(in);
        Structure block = structureOf(load256(blocks));
        uint32_t carried = 0;  // the bytes at the front that belong to a character of the block before
        bool inPair = false;   // the low surrogate of that character is not written yet
        bool good = block.continuations == block.wanted();
        while (good && end - in >= 2 * BYTES && outEnd - out >= 2 * BYTES + SPILL) {
            if ((block.two | carried) == 0) {
                storeASCII(out, load256(in));
                in += BYTES;
                out += BYTES;
                block = structureOf(load256(in));
                good = block.continuations == block.wanted();
                continue;
            }
            Structure const next = structureOf(load256(in + BYTES));
            uint32_t const carriedNext = block.wantedAfter();
            good = next.continuations == (next.wanted() | carriedNext);
            if (!good)
                break;
            uint32_t const kept = ~block.continuations | block.four << 1 | (inPair ? 1 : 0);
            out = decodeBytes(in, block, kept, inPair, out);
            inPair = block.four >> 31 != 0;
            in += BYTES;
            block = next;
            carried = carriedNext;
        }
        if (inPair)
            *out++ = static_cast<unsigned short>(0xDC00 | (in[1] & 0xF) << 6 | (in[2] & 0x3F));
        in += __builtin_popcount(carried);
    }
    for (;;) {
        std::ptrdiff_t const available = std::min({BYTES, end - in, outEnd - out});
        if (available < 16)
            break;
        std::ptrdiff_t const used = decodeLastBlock(in, available, out);
        if (used == 0)
            break;
        in += used;
    }
    inOut = in;
    outOut = out;
}

}  // namespace

void decodeUTF8Avx2(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd)
{
    // What is shorter, and what the blocks leave, goes to the baseline.
    if (end - in >= UTF8_DECODE_MINIMUM_AVX2)
        decodeBlocks(in, end, out, outEnd);
    if (in != end)
        decodeUTF8Baseline(in, end, out, outEnd);
}

KX7_AVX2 size_t wellFormedUTF8Avx2(unsigned char const* in, unsigned char const* end)
{
    return wellFormedUTF8By<BytesAvx2>(in, end);
}

KX7_AVX2 size_t countUTF8Avx2(unsigned char const*& in, unsigned char const* end)
{
    return countUTF8By<BytesAvx2>(in, end);
}

KX7_AVX2 size_t countAsUTF8Avx2(unsigned short const*& in, unsigned short const* end)
{
    return countAsUTF8By<UnitsAvx2>(in, end);
}

}  // namespace kx7

#endif
