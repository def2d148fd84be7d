// kx7text - UTF-8 with AVX2.
//
// Decoding takes 32 bytes at a time, checked as with AVX-512. Each byte becomes a 16-bit lane, with the bytes after it
// in two more registers, so that the lane of a lead byte can be turned into its unit; a four-byte sequence keeps the
// lane after its lead for the low surrogate. The lanes of continuation bytes are dropped, eight at a time, by
// a shuffle from a table of 256, by the mask of the lanes to keep.
//
// Encoding takes 16 units that need up to two bytes each, or 8 that need up to four, builds the bytes of each unit in
// a lane of its own and compresses away the unused ones by shuffles from tables. Each half of a surrogate pair makes
// two bytes; where all 16 units are pairs nothing has to be dropped.
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

/** For each mask the shuffle that keeps the low byte of each 16-bit lane, and the high byte of those in the mask. */
struct KeepPairs {
    alignas(16) unsigned char shuffles[256][16];
    constexpr KeepPairs() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 8; ++lane) {
                shuffles[mask][at++] = static_cast<unsigned char>(2 * lane);
                if (mask >> lane & 1)
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane + 1);
            }
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

/**
 * For four 32-bit lanes the shuffle that keeps the first byte of each, the second of those in the low four bits of the
 * mask and the third of those in the high four.
 */
struct KeepTriples {
    alignas(16) unsigned char shuffles[256][16];
    constexpr KeepTriples() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 4; ++lane) {
                shuffles[mask][at++] = static_cast<unsigned char>(4 * lane);
                if (mask >> lane & 1)
                    shuffles[mask][at++] = static_cast<unsigned char>(4 * lane + 1);
                if (mask >> (lane + 4) & 1)
                    shuffles[mask][at++] = static_cast<unsigned char>(4 * lane + 2);
            }
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

constexpr KeepPairs KEEP_PAIRS;
constexpr KeepTriples KEEP_TRIPLES;

/** Bytes of a decoder's block, units of an encoder's. */
constexpr std::ptrdiff_t BYTES = 32;
constexpr std::ptrdiff_t UNITS = 16;

/** Values that one store reaches after those that count. */
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
 * Decodes the characters that begin in 32 bytes, of which `kept` has the leads and, after those of four, the second
 * bytes. Reads 3 bytes more; stores up to SPILL units after those that count.
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

/** Stores eight of the units in `kept` of which there are fewer, nothing after `textEnd`, and returns where they end.
 */
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
        bool inPair = false;   // of which the low surrogate is not written yet
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

namespace {

KX7_AVX2 inline bool hasSurrogates(__m256i units)
{
    __m256i const kind = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800)));
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(kind, _mm256_set1_epi16(static_cast<short>(0xD800)))) != 0;
}

/** None of the 16 units is a high surrogate without its partner; looks at one unit more. */
KX7_AVX2 inline bool wellPaired(unsigned short const* in)
{
    __m256i const kindBits = _mm256_set1_epi16(static_cast<short>(0xFC00));
    __m256i const isHigh =
        _mm256_cmpeq_epi16(_mm256_and_si256(load256(in), kindBits), _mm256_set1_epi16(static_cast<short>(0xD800)));
    __m256i const isLowNext =
        _mm256_cmpeq_epi16(_mm256_and_si256(load256(in + 1), kindBits), _mm256_set1_epi16(static_cast<short>(0xDC00)));
    return _mm256_testc_si256(isLowNext, isHigh) != 0;
}

/** A bit for each 32-bit lane that is a surrogate pair. */
KX7_AVX2 inline uint32_t pairLanes(__m256i units)
{
    __m256i const kinds = _mm256_and_si256(units, _mm256_set1_epi32(static_cast<int>(0xFC00FC00)));
    __m256i const isPair = _mm256_cmpeq_epi32(kinds, _mm256_set1_epi32(static_cast<int>(0xDC00D800)));
    return signsOfLanes(isPair);
}

KX7_AVX2 inline __m256i masked(__m256i lanes, int bits)
{
    return _mm256_and_si256(lanes, _mm256_set1_epi32(bits));
}

/** The four bytes of each 32-bit lane that is a surrogate pair. */
KX7_AVX2 inline __m256i bytesOfPairs(__m256i units)
{
    __m256i const plane = _mm256_add_epi32(masked(units, 0x3FF), _mm256_set1_epi32(0x40));
    __m256i const front = _mm256_or_si256(_mm256_srli_epi32(plane, 8), masked(_mm256_slli_epi32(plane, 6), 0x3F00));
    __m256i const third =
        _mm256_or_si256(masked(_mm256_slli_epi32(plane, 20), 0x300000), masked(_mm256_srli_epi32(units, 6), 0x0F0000));
    __m256i const last = masked(_mm256_slli_epi32(units, 8), 0x3F000000);
    return _mm256_or_si256(_mm256_or_si256(front, third),
                           _mm256_or_si256(last, _mm256_set1_epi32(static_cast<int>(0x808080F0))));
}

/** Encodes 16 units below U+0800; stores up to SPILL bytes after those that count. */
KX7_AVX2 inline unsigned char* encodePairs(__m256i units, unsigned char* out)
{
    // The lead in the low byte of a lane, the continuation byte in the high one.
    __m256i const tail = _mm256_slli_epi16(_mm256_and_si256(units, _mm256_set1_epi16(0x3F)), 8);
    __m256i const pairs = _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(units, 6), tail),
                                          _mm256_set1_epi16(static_cast<short>(0x80C0)));
    __m256i const isPair = _mm256_cmpgt_epi16(units, _mm256_set1_epi16(0x7F));
    __m256i const bytes = _mm256_blendv_epi8(units, pairs, isPair);
    auto const mask = static_cast<uint32_t>(
        _mm_movemask_epi8(_mm_packs_epi16(_mm256_castsi256_si128(isPair), _mm256_extracti128_si256(isPair, 1))));
    store128(out, shuffled(_mm256_castsi256_si128(bytes), KEEP_PAIRS.shuffles[mask & 0xFF]));
    out += 8 + __builtin_popcount(mask & 0xFF);
    store128(out, shuffled(_mm256_extracti128_si256(bytes, 1), KEEP_PAIRS.shuffles[mask >> 8]));
    return out + 8 + __builtin_popcount(mask >> 8);
}

/** Encodes the first `available` of 8 units below U+0800. */
KX7_AVX2 inline CountedBytes pairsOf(__m128i units, std::ptrdiff_t available)
{
    __m128i const tail = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    __m128i const pairs =
        _mm_or_si128(_mm_or_si128(_mm_srli_epi16(units, 6), tail), _mm_set1_epi16(static_cast<short>(0x80C0)));
    __m128i const isPair = _mm_cmpgt_epi16(units, _mm_set1_epi16(0x7F));
    auto const mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(isPair, _mm_setzero_si128())));
    return {shuffled(_mm_blendv_epi8(units, pairs, isPair), KEEP_PAIRS.shuffles[mask]),
            available + __builtin_popcount(mask)};
}

/** The bytes of four units and of the four after them. */
struct EncodedEight {
    CountedBytes front;
    CountedBytes back;
};

/**
 * Encodes the first `used` of 8 units; HAS_PAIRS: up to an unpaired high surrogate or one whose partner is not among
 * them.
 */
template <bool HAS_PAIRS>
KX7_AVX2 inline EncodedEight eightOf(__m128i units, std::ptrdiff_t& used)
{
    __m256i const codes = _mm256_cvtepu16_epi32(units);
    __m256i const sixBits = _mm256_set1_epi32(0x3F);
    __m256i const tail = _mm256_and_si256(codes, sixBits);
    __m256i const rest = _mm256_srli_epi32(codes, 6);
    __m256i const isTwo = _mm256_cmpgt_epi32(codes, _mm256_set1_epi32(0x7F));
    __m256i const isThree = _mm256_cmpgt_epi32(codes, _mm256_set1_epi32(0x7FF));
    __m256i const two = _mm256_or_si256(_mm256_or_si256(rest, _mm256_slli_epi32(tail, 8)), _mm256_set1_epi32(0x80C0));
    __m256i const three = _mm256_or_si256(
        _mm256_or_si256(_mm256_srli_epi32(codes, 12), _mm256_set1_epi32(0x8080E0)),
        _mm256_or_si256(_mm256_slli_epi32(_mm256_and_si256(rest, sixBits), 8), _mm256_slli_epi32(tail, 16)));
    __m256i bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(codes, two, isTwo), three, isThree);
    auto twos = signsOfLanes(isTwo);
    auto threes = signsOfLanes(isThree);
    if (HAS_PAIRS) {
        __m256i const kind = _mm256_and_si256(codes, _mm256_set1_epi32(0xFC00));
        __m256i const isHigh = _mm256_cmpeq_epi32(kind, _mm256_set1_epi32(0xD800));
        __m256i const isLow = _mm256_cmpeq_epi32(kind, _mm256_set1_epi32(0xDC00));
        auto highs = signsOfLanes(isHigh);
        uint32_t const lows = signsOfLanes(isLow) & lowBits<uint32_t>(used);
        uint32_t const unpaired = highs & ~(lows >> 1) & lowBits<uint32_t>(used);
        if (unpaired != 0)
            used = __builtin_ctz(unpaired);
        // Two bytes from each half: 11110ppp 10pppppp of the high one plus 0x40, 10ppllll 10llllll of the low one.
        __m256i const plane =
            _mm256_add_epi32(_mm256_and_si256(codes, _mm256_set1_epi32(0x3FF)), _mm256_set1_epi32(0x40));
        __m256i const rotate = _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6);
        __m256i const before = _mm256_permutevar8x32_epi32(plane, rotate);
        __m256i const isAfterLead =
            _mm256_permutevar8x32_epi32(_mm256_blend_epi32(isHigh, _mm256_setzero_si256(), 0x80), rotate);
        __m256i const front =
            _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi32(plane, 8), _mm256_set1_epi32(0x80F0)),
                            _mm256_slli_epi32(_mm256_and_si256(_mm256_srli_epi32(plane, 2), sixBits), 8));
        __m256i const back =
            _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi32(_mm256_and_si256(before, _mm256_set1_epi32(3)), 4),
                                            _mm256_and_si256(rest, _mm256_set1_epi32(0xF))),
                            _mm256_or_si256(_mm256_slli_epi32(tail, 8), _mm256_set1_epi32(0x8080)));
        bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(bytes, front, isHigh), back, isAfterLead);
        highs &= lowBits<uint32_t>(used);
        threes &= ~(highs | highs << 1) & lowBits<uint32_t>(used);
        twos &= lowBits<uint32_t>(used);
    }
    auto const countOf = [&](std::ptrdiff_t units4, uint32_t lanes) {
        return units4 + __builtin_popcount(twos & lanes) + __builtin_popcount(threes & lanes);
    };
    std::ptrdiff_t const front = std::min<std::ptrdiff_t>(used, 4);
    return {{shuffled(_mm256_castsi256_si128(bytes), KEEP_TRIPLES.shuffles[(twos & 0xF) | (threes & 0xF) << 4]),
             countOf(front, 0xF)},
            {shuffled(_mm256_extracti128_si256(bytes, 1), KEEP_TRIPLES.shuffles[twos >> 4 | (threes & 0xF0)]),
             countOf(used - front, 0xF0)}};
}

/** Encodes 8 units as eightOf does; stores up to SPILL bytes after those that count. */
template <bool HAS_PAIRS>
KX7_AVX2 inline unsigned char* encodeEight(__m128i units, std::ptrdiff_t& used, unsigned char* out)
{
    EncodedEight const encoded = eightOf<HAS_PAIRS>(units, used);
    store128(out, encoded.front.bytes);
    store128(out + encoded.front.count, encoded.back.bytes);
    return out + encoded.front.count + encoded.back.count;
}

/**
 * Encodes up to 8 units of a text that begins at `begin` and writes nothing after them; none where they do not fit or
 * the whole text is shorter. Of units with surrogates only the pairs in front: beyond these, plain loops are faster.
 * @return the units consumed
 */
KX7_AVX2 inline std::ptrdiff_t encodeLastUnits(unsigned short const* begin, unsigned short const* in,
                                               unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    if (end - begin < 8)
        return 0;
    std::ptrdiff_t used = std::min<std::ptrdiff_t>(8, end - in);
    __m128i const units = used == 8 ? load128(in) : bytesFrom(load128(end - 8), 2 * (8 - used));
    if (_mm_testz_si128(units, _mm_set1_epi16(static_cast<short>(0xF800))) != 0) {
        CountedBytes const encoded = pairsOf(units, used);
        if (encoded.count > outEnd - out)
            return 0;
        out = storeExactly(out, encoded);
        return used;
    }
    __m256i const wide = _mm256_zextsi128_si256(units);
    if (hasSurrogates(wide)) {
        std::ptrdiff_t const pairs = __builtin_ctz(~pairLanes(wide));
        if (4 * pairs > outEnd - out)
            return 0;
        out = storeExactly(out, {_mm256_castsi256_si128(bytesOfPairs(wide)), 4 * pairs});
        return 2 * pairs;
    }
    EncodedEight const encoded = eightOf<false>(units, used);
    std::ptrdiff_t const count = encoded.front.count + encoded.back.count;
    if (count > outEnd - out)
        return 0;
    // What lies after the front is overwritten.
    if (count >= 16)
        store128(out, encoded.front.bytes);
    else
        storeExactly(out, encoded.front);
    storeExactly(out + encoded.front.count, encoded.back);
    out += count;
    return used;
}

KX7_AVX2 void encodeBlocks(unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                           unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
    while (end - in > 0) {
        while (end - in >= 2 * UNITS && outEnd - out >= 2 * UNITS) {
            __m256i const front = load256(in);
            __m256i const back = load256(in + UNITS);
            if (!_mm256_testz_si256(_mm256_or_si256(front, back), _mm256_set1_epi16(static_cast<short>(0xFF80))))
                break;
            store256(out, narrowed(front, back));
            in += 2 * UNITS;
            out += 2 * UNITS;
        }
        if (end - in >= UNITS && outEnd - out >= UNITS) {
            __m256i const units = load256(in);
            __m128i const low = _mm256_castsi256_si128(units);
            __m128i const high = _mm256_extracti128_si256(units, 1);
            if (_mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF80)))) {
                store128(out, _mm_packus_epi16(low, high));
                in += UNITS;
                out += UNITS;
                continue;
            }
            bool const isTwoByte = _mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800))) != 0;
            bool const isThreeByte = !isTwoByte && !hasSurrogates(units);
            if (!isTwoByte && !isThreeByte && outEnd - out >= 2 * UNITS && pairLanes(units) == 0xFF) {
                store256(out, bytesOfPairs(units));
                in += UNITS;
                out += 2 * UNITS;
                continue;
            }
            // What is stored after the text is overwritten by that of the next units: all of them can be encoded.
            if (end - in > 2 * UNITS && outEnd - out >= 6 * UNITS + SPILL && wellPaired(in + UNITS)) {
                std::ptrdiff_t used = 8;
                if (isTwoByte) {
                    out = encodePairs(units, out);
                    in += UNITS;
                    continue;
                }
                if (isThreeByte) {
                    out = encodeEight<false>(low, used, out);
                    out = encodeEight<false>(high, used, out);
                    in += UNITS;
                    continue;
                }
                if (wellPaired(in)) {
                    out = encodeEight<true>(low, used, out);
                    in += used;
                    used = 8;
                    out = encodeEight<true>(load128(in), used, out);
                    in += used;
                    continue;
                }
            }
        }
        std::ptrdiff_t const used = encodeLastUnits(inOut, in, end, out, outEnd);
        if (used == 0)
            break;
        in += used;
    }
    inOut = in;
    outOut = out;
}

}  // namespace

void encodeUTF8Avx2(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    if (end - in >= UTF8_ENCODE_MINIMUM_AVX2)
        encodeBlocks(in, end, out, outEnd);
    if (in != end)
        encodeUTF8Baseline(in, end, out, outEnd);
}

}  // namespace kx7

#endif
