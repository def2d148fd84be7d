// kx7text - UTF-8 with AVX2: encoding.
//
// Takes 16 units that need up to two bytes each, or 8 that need up to four, builds the bytes of each unit in
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
#include "kx7/kernels/vector/Avx2.h"

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

/** Units of a block. */
constexpr std::ptrdiff_t UNITS = 16;

/** Bytes that one store reaches after those that count. */
constexpr std::ptrdiff_t SPILL = 16;

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
