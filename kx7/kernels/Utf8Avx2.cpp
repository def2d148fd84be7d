// kx7text - UTF-8 with AVX2.
//
// Decoding takes 16 bytes at a time and works as with AVX-512: each byte becomes a 16-bit lane, with the bytes behind
// it in two more registers, so that the lane of a lead byte can be turned into its unit. The lanes of continuation
// bytes are squeezed out of each half by a shuffle from a table of 256, by the mask of the lanes to keep.
//
// Encoding takes 16 units that need up to two bytes each, or 8 that need up to three, builds the bytes of each unit in
// a lane of its own and squeezes out the unused ones by shuffles from tables. Surrogates are handed back.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstdint>
#include <cstring>

namespace kx7 {

namespace {

/** For each mask the shuffle that moves the 16-bit lanes in it to the front. */
struct KeepLanes {
    alignas(16) unsigned char shuffles[256][16];
    constexpr KeepLanes() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 8; ++lane)
                if (mask >> lane & 1) {
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane);
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane + 1);
                }
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

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

constexpr KeepLanes KEEP_LANES;
constexpr KeepPairs KEEP_PAIRS;
constexpr KeepTriples KEEP_TRIPLES;

/** Collects the text of blocks that are stored whole, and passes on just the text. */
template <class T>
class Collector {
public:
    explicit Collector(T*& out) : m_out(out), m_end(m_buffer) {}
    ~Collector() { flush(); }
    Collector(Collector const&) = delete;
    Collector& operator=(Collector const&) = delete;

    /** Where the next block goes; 64 bytes may be written there. */
    T* end() const { return m_end; }

    /** The text ends at `end` now. */
    void moveTo(T* end)
    {
        m_end = end;
        if (m_end - m_buffer >= SIZE)
            flush();
    }

    void flush()
    {
        memcpy(m_out, m_buffer, static_cast<size_t>(m_end - m_buffer) * sizeof(T));
        m_out += m_end - m_buffer;
        m_end = m_buffer;
    }

    /** Values collected and not passed on yet. */
    std::ptrdiff_t size() const { return m_end - m_buffer; }

private:
    static constexpr std::ptrdiff_t SIZE = 1024 / sizeof(T);

    T*& m_out;
    T* m_end;
    T m_buffer[SIZE + 64];
};

constexpr std::ptrdiff_t BLOCK = 16;
constexpr std::ptrdiff_t LOOKAHEAD = 3;

KX7_AVX2 inline __m128i load(void const* p)
{
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}

KX7_AVX2 inline void store(void* p, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(p), value);
}

KX7_AVX2 inline __m128i squeeze(__m128i value, unsigned char const (&shuffle)[16])
{
    return _mm_shuffle_epi8(value, _mm_load_si128(reinterpret_cast<__m128i const*>(shuffle)));
}

/** A bit for each byte that is at least `least`, both taken as unsigned. */
KX7_AVX2 inline uint32_t atLeast(__m128i bytes, unsigned char least)
{
    __m128i const bound = _mm_set1_epi8(static_cast<char>(least));
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(bytes, bound), bytes)));
}

/** A continuation byte, taken as signed, is below 0xC0. */
KX7_AVX2 inline uint32_t continuationsOf(__m128i bytes)
{
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC0)))));
}

/** A lane of ones for each byte that is at least `least`. */
KX7_AVX2 inline __m256i lanesAtLeast(__m256i words, unsigned short least)
{
    return _mm256_cmpgt_epi16(words, _mm256_set1_epi16(static_cast<short>(least - 1)));
}

}  // namespace

KX7_AVX2 void decodeUTF8Avx2(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                             unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    Collector<unsigned short> collected(outOut);
    uint32_t carried = 0;  // the bytes at the front that belong to a character of the block before
    __m256i const sixBits = _mm256_set1_epi16(0x3F);
    for (;;) {
        while (carried == 0 && end - in >= 2 * BLOCK && outEnd - outOut - collected.size() >= 2 * BLOCK) {
            __m256i const bytes = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
            if (_mm256_movemask_epi8(bytes) != 0)
                break;
            unsigned short* const out = collected.end();
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + BLOCK),
                                _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
            in += 2 * BLOCK;
            collected.moveTo(out + 2 * BLOCK);
        }
        if (end - in < BLOCK + LOOKAHEAD || outEnd - outOut - collected.size() < BLOCK)
            break;
        unsigned short* const out = collected.end();
        __m128i const bytes = load(in);
        __m256i const first = _mm256_cvtepu8_epi16(bytes);
        uint32_t const notASCII = static_cast<uint32_t>(_mm_movemask_epi8(bytes));
        if (notASCII == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), first);
            in += BLOCK;
            collected.moveTo(out + BLOCK);
            continue;
        }
        __m128i const behind = load(in + 1);
        __m256i const second = _mm256_and_si256(_mm256_cvtepu8_epi16(behind), sixBits);
        uint32_t leads = atLeast(bytes, 0xC0);
        uint32_t leads3 = atLeast(bytes, 0xE0);
        uint32_t leads4 = leads3 != 0 ? atLeast(bytes, 0xF0) : 0;
        // The low surrogate of a lead in the last lane would come from the next block: leave it there whole.
        std::ptrdiff_t const used = leads4 >> 15 ? BLOCK - 1 : BLOCK;
        uint32_t const lanes = (UINT32_C(1) << used) - 1;
        leads &= lanes;
        leads3 &= lanes;
        leads4 &= lanes;
        uint32_t const continuations = notASCII & ~leads & lanes;
        uint32_t const expected = leads << 1 | leads3 << 2 | leads4 << 3 | carried;
        if ((leads & ~continuationsOf(behind)) != 0 || continuations != (expected & lanes))
            break;
        __m256i const two =
            _mm256_or_si256(second, _mm256_and_si256(_mm256_slli_epi16(first, 6), _mm256_set1_epi16(0x7C0)));
        __m256i units = _mm256_blendv_epi8(first, two, lanesAtLeast(first, 0xC0));
        uint32_t kept = ~continuations & lanes;
        if (leads3 != 0) {
            __m128i const behind2 = load(in + 2);
            if ((leads3 & ~continuationsOf(behind2)) != 0)
                break;
            __m256i const third = _mm256_and_si256(_mm256_cvtepu8_epi16(behind2), sixBits);
            __m256i const three =
                _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(first, 12), third), _mm256_slli_epi16(second, 6));
            units = _mm256_blendv_epi8(units, three, lanesAtLeast(first, 0xE0));
            if (leads4 != 0) {
                if ((leads4 & ~continuationsOf(load(in + 3))) != 0)
                    break;
                // Four bits of the lead count, as in the plain decoder.
                __m256i const lead = _mm256_slli_epi16(_mm256_and_si256(first, _mm256_set1_epi16(0xF)), 8);
                __m256i const high = _mm256_add_epi16(
                    _mm256_or_si256(_mm256_or_si256(lead, _mm256_slli_epi16(second, 2)), _mm256_srli_epi16(third, 4)),
                    _mm256_set1_epi16(static_cast<short>(0xD7C0)));
                // In the lane behind the lead, `second` is the third byte of the sequence and `third` the fourth.
                __m256i const low = _mm256_add_epi16(
                    _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(second, _mm256_set1_epi16(0xF)), 6), third),
                    _mm256_set1_epi16(static_cast<short>(0xDC00)));
                __m256i const isLead = lanesAtLeast(first, 0xF0);
                __m128i const isBehindLow = _mm_slli_si128(_mm256_castsi256_si128(isLead), 2);
                __m128i const isBehindHigh =
                    _mm_alignr_epi8(_mm256_extracti128_si256(isLead, 1), _mm256_castsi256_si128(isLead), 14);
                __m256i const isBehind = _mm256_inserti128_si256(_mm256_castsi128_si256(isBehindLow), isBehindHigh, 1);
                units = _mm256_blendv_epi8(_mm256_blendv_epi8(units, high, isLead), low, isBehind);
                kept |= leads4 << 1;
            }
        }
        store(out, squeeze(_mm256_castsi256_si128(units), KEEP_LANES.shuffles[kept & 0xFF]));
        unsigned short* const middle = out + __builtin_popcount(kept & 0xFF);
        store(middle, squeeze(_mm256_extracti128_si256(units, 1), KEEP_LANES.shuffles[kept >> 8]));
        collected.moveTo(middle + __builtin_popcount(kept >> 8));
        in += used;
        carried = expected >> used;
    }
    inOut = in + __builtin_popcount(carried);
}

KX7_AVX2 void encodeUTF8Avx2(unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                             unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    Collector<unsigned char> collected(outOut);
    while (end - in >= BLOCK && outEnd - outOut - collected.size() >= 3 * BLOCK) {
        unsigned char* out = collected.end();
        __m256i const units = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
        __m128i const low = _mm256_castsi256_si128(units);
        __m128i const high = _mm256_extracti128_si256(units, 1);
        if (_mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF80)))) {
            store(out, _mm_packus_epi16(low, high));
            in += BLOCK;
            collected.moveTo(out + BLOCK);
            continue;
        }
        if (_mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800)))) {
            // The lead in the low byte of a lane, the continuation byte in the high one.
            __m256i const tail = _mm256_slli_epi16(_mm256_and_si256(units, _mm256_set1_epi16(0x3F)), 8);
            __m256i const pairs = _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(units, 6), tail),
                                                  _mm256_set1_epi16(static_cast<short>(0x80C0)));
            __m256i const isPair = _mm256_cmpgt_epi16(units, _mm256_set1_epi16(0x7F));
            __m256i const bytes = _mm256_blendv_epi8(units, pairs, isPair);
            auto const mask = static_cast<uint32_t>(_mm_movemask_epi8(
                _mm_packs_epi16(_mm256_castsi256_si128(isPair), _mm256_extracti128_si256(isPair, 1))));
            store(out, squeeze(_mm256_castsi256_si128(bytes), KEEP_PAIRS.shuffles[mask & 0xFF]));
            out += 8 + __builtin_popcount(mask & 0xFF);
            store(out, squeeze(_mm256_extracti128_si256(bytes, 1), KEEP_PAIRS.shuffles[mask >> 8]));
            collected.moveTo(out + 8 + __builtin_popcount(mask >> 8));
            in += BLOCK;
            continue;
        }
        __m128i const isSurrogate = _mm_cmpeq_epi16(_mm_and_si128(low, _mm_set1_epi16(static_cast<short>(0xF800))),
                                                    _mm_set1_epi16(static_cast<short>(0xD800)));
        if (_mm_movemask_epi8(isSurrogate) != 0)
            break;
        __m256i const codes = _mm256_cvtepu16_epi32(low);
        __m256i const sixBits = _mm256_set1_epi32(0x3F);
        __m256i const tail = _mm256_and_si256(codes, sixBits);
        __m256i const rest = _mm256_srli_epi32(codes, 6);
        __m256i const isTwo = _mm256_cmpgt_epi32(codes, _mm256_set1_epi32(0x7F));
        __m256i const isThree = _mm256_cmpgt_epi32(codes, _mm256_set1_epi32(0x7FF));
        __m256i const two =
            _mm256_or_si256(_mm256_or_si256(rest, _mm256_slli_epi32(tail, 8)), _mm256_set1_epi32(0x80C0));
        __m256i const three = _mm256_or_si256(
            _mm256_or_si256(_mm256_srli_epi32(codes, 12), _mm256_set1_epi32(0x8080E0)),
            _mm256_or_si256(_mm256_slli_epi32(_mm256_and_si256(rest, sixBits), 8), _mm256_slli_epi32(tail, 16)));
        __m256i const bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(codes, two, isTwo), three, isThree);
        auto const twos = static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(isTwo)));
        auto const threes = static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(isThree)));
        store(out, squeeze(_mm256_castsi256_si128(bytes), KEEP_TRIPLES.shuffles[(twos & 0xF) | (threes & 0xF) << 4]));
        out += 4 + __builtin_popcount(twos & 0xF) + __builtin_popcount(threes & 0xF);
        store(out, squeeze(_mm256_extracti128_si256(bytes, 1), KEEP_TRIPLES.shuffles[twos >> 4 | (threes & 0xF0)]));
        collected.moveTo(out + 4 + __builtin_popcount(twos >> 4) + __builtin_popcount(threes >> 4));
        in += BLOCK / 2;
    }
    inOut = in;
}

}  // namespace kx7

#endif
