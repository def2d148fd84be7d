// kx7text - UTF-8 with AVX-512 (VBMI2).
//
// Decoding takes 32 bytes at a time. Each byte becomes a 16-bit lane, three times: the byte itself, the one behind it
// and the one behind that. A lane that holds a lead byte can then be turned into its unit without looking elsewhere;
// the lanes of continuation bytes are squeezed out (vpcompressw). Which bytes must be continuation bytes follows from
// the leads shifted by one, two and three; where that does not hold the block is handed back. A four-byte sequence
// keeps two lanes, the lead's for the high surrogate and the one behind it for the low.
//
// Encoding takes 32 units that need up to two bytes each, or 16 that need up to four, builds the bytes of each unit in
// a lane of its own with the unused ones empty, and squeezes those out (vpcompressb).
//
// Stores are masked: nothing is written behind the text. The last block of a range is loaded under a mask as well, so
// that short texts are as quick as long ones.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 32;
constexpr std::ptrdiff_t LOOKAHEAD = 3;

/** The lowest `count` bits. */
constexpr uint32_t lowBits(std::ptrdiff_t count)
{
    return count >= 32 ? ~UINT32_C(0) : (UINT32_C(1) << count) - 1;
}

KX7_AVX512 inline __m512i words(__m256i bytes)
{
    return _mm512_cvtepu8_epi16(bytes);
}

/** A continuation byte, taken as signed, is below 0xC0. */
KX7_AVX512 inline uint32_t continuationsOf(__m256i bytes)
{
    return _mm256_cmplt_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xC0)));
}

KX7_AVX512 inline uint32_t leadsOf(__m256i bytes, unsigned char least)
{
    return _mm256_cmpge_epu8_mask(bytes, _mm256_set1_epi8(static_cast<char>(least)));
}

/** The 32 bytes that begin `offset` bytes behind `in`; zeros from `available` on, where the last block is short. */
template <bool IS_LAST>
KX7_AVX512 inline __m256i loadBytes(unsigned char const* in, std::ptrdiff_t offset, std::ptrdiff_t available)
{
    if (!IS_LAST)
        return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in + offset));
    return available > offset ? _mm256_maskz_loadu_epi8(lowBits(available - offset), in + offset)
                              : _mm256_setzero_si256();
}

/** What decodeBlock did. */
struct Decoded {
    std::ptrdiff_t consumed;  ///< bytes, 0: the block is handed back
    std::ptrdiff_t written;
    uint32_t carried;  ///< the bytes behind those consumed that belong to a character that is written already
};

/**
 * Decodes up to 32 of the `available` bytes at `in`, of which the `carried` ones belong to a character before. Unless
 * IS_LAST there are 3 bytes more, and room for 32 units.
 */
template <bool IS_LAST>
KX7_AVX512 inline Decoded decodeBlock(unsigned char const* in, std::ptrdiff_t available, unsigned short* out,
                                      std::ptrdiff_t room, uint32_t carried)
{
    __m256i const bytes = loadBytes<IS_LAST>(in, 0, available);
    __m512i const first = words(bytes);
    __m256i const behind = loadBytes<IS_LAST>(in, 1, available);
    uint32_t leads = leadsOf(bytes, 0xC0);
    uint32_t leads3 = leadsOf(bytes, 0xE0);
    uint32_t leads4 = leadsOf(bytes, 0xF0);
    std::ptrdiff_t used = BLOCK;
    if (IS_LAST) {
        // Without the character that the end cuts off, if any.
        used = available;
        uint32_t const lastOne = UINT32_C(1) << (available - 1);
        uint32_t const cut = (leads & lastOne) | (leads3 & (lastOne | lastOne >> 1)) |
                             (leads4 & (lastOne | lastOne >> 1 | lastOne >> 2));
        if (cut != 0)
            used = __builtin_ctz(cut);
    }
    else if (leads4 >> 31) {
        // Its low surrogate would come from a lane of the next block: leave it there whole.
        used = BLOCK - 1;
    }
    uint32_t const lanes = lowBits(used);
    leads &= lanes;
    leads3 &= lanes;
    leads4 &= lanes;

    uint32_t const continuations = continuationsOf(bytes) & lanes;
    uint64_t const expected = static_cast<uint64_t>(leads) << 1 | static_cast<uint64_t>(leads3) << 2 |
                              static_cast<uint64_t>(leads4) << 3 | carried;
    if ((leads & ~continuationsOf(behind)) != 0 || continuations != (static_cast<uint32_t>(expected) & lanes))
        return {0, 0, carried};

    __m512i const sixBits = _mm512_set1_epi16(0x3F);
    __m512i const second = _mm512_and_si512(words(behind), sixBits);
    __m512i units = _mm512_mask_mov_epi16(
        first, leads, _mm512_or_si512(second, _mm512_and_si512(_mm512_slli_epi16(first, 6), _mm512_set1_epi16(0x7C0))));
    uint32_t kept = ~continuations & lanes;
    if (leads3 != 0) {
        __m256i const behind2 = loadBytes<IS_LAST>(in, 2, available);
        if ((leads3 & ~continuationsOf(behind2)) != 0)
            return {0, 0, carried};
        __m512i const third = _mm512_and_si512(words(behind2), sixBits);
        units = _mm512_mask_mov_epi16(
            units, leads3,
            _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(first, 12), third), _mm512_slli_epi16(second, 6)));
        if (leads4 != 0) {
            if ((leads4 & ~continuationsOf(loadBytes<IS_LAST>(in, 3, available))) != 0)
                return {0, 0, carried};
            // Four bits of the lead count, as in the plain decoder.
            __m512i const lead = _mm512_slli_epi16(_mm512_and_si512(first, _mm512_set1_epi16(0xF)), 8);
            __m512i const high =
                _mm512_or_si512(_mm512_or_si512(lead, _mm512_slli_epi16(second, 2)), _mm512_srli_epi16(third, 4));
            // In the lane behind the lead, `second` is the third byte of the sequence and `third` the fourth.
            __m512i const low =
                _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(second, _mm512_set1_epi16(0xF)), 6), third);
            units = _mm512_mask_add_epi16(units, leads4, high, _mm512_set1_epi16(static_cast<short>(0xD7C0)));
            units = _mm512_mask_add_epi16(units, leads4 << 1, low, _mm512_set1_epi16(static_cast<short>(0xDC00)));
            kept |= leads4 << 1;
        }
    }
    std::ptrdiff_t const count = __builtin_popcount(kept);
    __m512i const text = _mm512_maskz_compress_epi16(kept, units);
    if (IS_LAST && count > room)
        return {0, 0, carried};
    _mm512_mask_storeu_epi16(out, lowBits(count), text);
    return {used, count, static_cast<uint32_t>(expected >> used)};
}

}  // namespace

KX7_AVX512 void decodeUTF8Avx512(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                                 unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    uint32_t carried = 0;
    for (;;) {
        while (carried == 0 && end - in >= 2 * BLOCK && outEnd - out >= 2 * BLOCK) {
            __m512i const bytes = _mm512_loadu_si512(in);
            if (_mm512_movepi8_mask(bytes) != 0)
                break;
            _mm512_storeu_si512(out, words(_mm512_castsi512_si256(bytes)));
            _mm512_storeu_si512(out + BLOCK, words(_mm512_extracti64x4_epi64(bytes, 1)));
            in += 2 * BLOCK;
            out += 2 * BLOCK;
        }
        if (end - in < BLOCK + LOOKAHEAD || outEnd - out < BLOCK)
            break;
        // Two blocks before ASCII is looked for again.
        Decoded const block = decodeBlock<false>(in, BLOCK, out, BLOCK, carried);
        if (block.consumed == 0)
            goto done;
        in += block.consumed;
        out += block.written;
        carried = block.carried;
        if (end - in < BLOCK + LOOKAHEAD || outEnd - out < BLOCK)
            break;
        Decoded const next = decodeBlock<false>(in, BLOCK, out, BLOCK, carried);
        if (next.consumed == 0)
            goto done;
        in += next.consumed;
        out += next.written;
        carried = next.carried;
    }
    while (end - in > 0) {
        Decoded const block = decodeBlock<true>(in, end - in < BLOCK ? end - in : BLOCK, out, outEnd - out, carried);
        if (block.consumed == 0)
            break;
        in += block.consumed;
        out += block.written;
        carried = block.carried;
    }
done:
    inOut = in + __builtin_popcount(carried);
    outOut = out;
}

namespace {

/** Writes the `count` bytes that `kept` leaves of `bytes`. */
KX7_AVX512 inline void storeBytes(unsigned char* out, __m512i bytes, __m512i kept, unsigned int count)
{
    __m512i const text = _mm512_maskz_compress_epi8(_mm512_movepi8_mask(kept), bytes);
    _mm512_mask_storeu_epi8(out, count >= 64 ? ~UINT64_C(0) : (UINT64_C(1) << count) - 1, text);
}

/** Encodes 32 units below U+0800, those in `twoBytes` in two bytes. */
KX7_AVX512 inline unsigned int encodeTwoByteBlock(__m512i units, uint32_t twoBytes, unsigned char* out)
{
    // The lead in the low byte of a lane, the continuation byte in the high one.
    __m512i const tail = _mm512_slli_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3F)), 8);
    __m512i const pairs = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6), tail),
                                          _mm512_set1_epi16(static_cast<short>(0x80C0)));
    unsigned int const count = static_cast<unsigned int>(BLOCK + __builtin_popcount(twoBytes));
    storeBytes(out, _mm512_mask_mov_epi16(units, twoBytes, pairs),
               _mm512_mask_mov_epi16(_mm512_set1_epi16(0xFF), twoBytes, _mm512_set1_epi16(-1)), count);
    return count;
}

/** What encodeBlock did. */
struct Encoded {
    std::ptrdiff_t consumed;  ///< units, 0: the block is handed back
    unsigned int written;
};

/** Encodes `available` units (16 at most) of any kind. Unless IS_LAST there is room for 64 bytes. */
template <bool IS_LAST>
KX7_AVX512 inline Encoded encodeBlock(__m256i units, std::ptrdiff_t available, unsigned char* out, std::ptrdiff_t room)
{
    __m512i const codes = _mm512_cvtepu16_epi32(units);
    __m512i const sixBits = _mm512_set1_epi32(0x3F);
    __m512i const kind = _mm512_and_si512(codes, _mm512_set1_epi32(0xFC00));
    auto lanes = static_cast<uint32_t>(lowBits(available));
    uint32_t highs = _mm512_cmpeq_epi32_mask(kind, _mm512_set1_epi32(0xD800));
    if (highs >> (available - 1) & 1) {
        // Its partner is in the next block, if anywhere: leave it there.
        lanes >>= 1;
        highs &= lanes;
        --available;
        if (available == 0)
            return {0, 0};
    }
    auto const two = static_cast<__mmask16>(_mm512_cmpge_epu32_mask(codes, _mm512_set1_epi32(0x80)) & lanes);
    auto const three = static_cast<__mmask16>(_mm512_cmpge_epu32_mask(codes, _mm512_set1_epi32(0x800)) & lanes);
    __m512i const tail = _mm512_and_si512(codes, sixBits);
    __m512i const rest = _mm512_srli_epi32(codes, 6);
    __m512i bytes =
        _mm512_mask_or_epi32(codes, two, _mm512_or_si512(rest, _mm512_slli_epi32(tail, 8)), _mm512_set1_epi32(0x80C0));
    __m512i const middle = _mm512_slli_epi32(_mm512_and_si512(rest, sixBits), 8);
    bytes =
        _mm512_mask_or_epi32(bytes, three, _mm512_or_si512(_mm512_srli_epi32(codes, 12), _mm512_set1_epi32(0x8080E0)),
                             _mm512_or_si512(middle, _mm512_slli_epi32(tail, 16)));
    __m512i kept = _mm512_maskz_mov_epi32(static_cast<__mmask16>(lanes), _mm512_set1_epi32(0xFF));
    kept = _mm512_mask_mov_epi32(kept, two, _mm512_set1_epi32(0xFFFF));
    kept = _mm512_mask_mov_epi32(kept, three, _mm512_set1_epi32(0xFFFFFF));
    auto count = static_cast<unsigned int>(available + __builtin_popcount(two) + __builtin_popcount(three));

    if (highs != 0) {
        auto const partners = static_cast<__mmask16>(highs << 1);
        if ((partners & ~_mm512_cmpeq_epi32_mask(kind, _mm512_set1_epi32(0xDC00))) != 0)
            return {0, 0};
        // Two bytes from each half: 11110ppp 10pppppp of the high one plus 0x40, 10ppllll 10llllll of the low one.
        __m512i const plane =
            _mm512_add_epi32(_mm512_and_si512(codes, _mm512_set1_epi32(0x3FF)), _mm512_set1_epi32(0x40));
        __m512i const before = _mm512_alignr_epi32(plane, plane, 15);
        __m512i const front =
            _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(plane, 8), _mm512_set1_epi32(0x80F0)),
                            _mm512_slli_epi32(_mm512_and_si512(_mm512_srli_epi32(plane, 2), sixBits), 8));
        __m512i const back =
            _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi32(_mm512_and_si512(before, _mm512_set1_epi32(3)), 4),
                                            _mm512_and_si512(rest, _mm512_set1_epi32(0xF))),
                            _mm512_or_si512(_mm512_slli_epi32(tail, 8), _mm512_set1_epi32(0x8080)));
        auto const both = static_cast<__mmask16>(highs | partners);
        bytes =
            _mm512_mask_mov_epi32(_mm512_mask_mov_epi32(bytes, static_cast<__mmask16>(highs), front), partners, back);
        kept = _mm512_mask_mov_epi32(kept, both, _mm512_set1_epi32(0xFFFF));
        count -= static_cast<unsigned int>(__builtin_popcount(both));
    }
    if (IS_LAST && static_cast<std::ptrdiff_t>(count) > room)
        return {0, 0};
    storeBytes(out, bytes, kept, count);
    return {available, count};
}

}  // namespace

KX7_AVX512 void encodeUTF8Avx512(unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                                 unsigned char* outEnd)
{
    constexpr std::ptrdiff_t HALF = BLOCK / 2;
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
    while (end - in >= BLOCK && outEnd - out >= 2 * BLOCK) {
        __m512i const units = _mm512_loadu_si512(in);
        uint32_t const twoBytes = _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80));
        if (twoBytes == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            in += BLOCK;
            out += BLOCK;
            continue;
        }
        if (_mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x800)) == 0) {
            out += encodeTwoByteBlock(units, twoBytes, out);
            in += BLOCK;
            continue;
        }
        Encoded const block = encodeBlock<false>(_mm512_castsi512_si256(units), HALF, out, 2 * BLOCK);
        if (block.consumed == 0)
            goto done;
        in += block.consumed;
        out += block.written;
    }
    while (end - in > 0) {
        std::ptrdiff_t const available = end - in < HALF ? end - in : HALF;
        __m256i const units = _mm256_maskz_loadu_epi16(static_cast<__mmask16>(lowBits(available)), in);
        Encoded const block = encodeBlock<true>(units, available, out, outEnd - out);
        if (block.consumed == 0)
            break;
        in += block.consumed;
        out += block.written;
    }
done:
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
