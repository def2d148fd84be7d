// kx7text - decoding of double-byte sets with AVX2.
//
// Takes 64 bytes at a time. Two shuffles by either half of the byte tell which bytes may lead and which are their own
// unit; which of those that may lead do lead follows from the parity of their place in their run, as an addition that
// carries through the run shows. The code at each place is made in vectors, and the characters are then walked bit by
// bit: where the next one is depends on no byte that has to be loaded first. Runs of ASCII are copied in one piece.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstdint>

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 64;
constexpr std::ptrdiff_t HALF = 32;

/** 16 entries in both halves of the register. */
KX7_AVX2 inline __m256i loadNibbles(unsigned char const* entries)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(entries)));
}

KX7_AVX2 inline __m256i loadBytes(unsigned char const* p)
{
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
}

/** What the bytes of half a block are, as bit sets, and the code that would begin at each. */
struct Half {
    uint32_t same;
    uint32_t mayLead;
};

struct Tables {
    __m256i same;
    __m256i lead;
    __m256i bits;  ///< a bit for each value of the three bits above the low four

    KX7_AVX2 explicit Tables(PairUnits const& set)
        : same(loadNibbles(set.sameBits())), lead(loadNibbles(set.leadBits())),
          bits(_mm256_set1_epi64x(static_cast<int64_t>(0x8040201008040201)))
    {
    }

    /** Looks at 32 bytes. A byte that may lead makes a code with the one behind it: none that trails is asked for. */
    KX7_AVX2 Half look(unsigned char const* in, unsigned short* codes) const
    {
        __m256i const bytes = loadBytes(in);
        __m256i const behind = loadBytes(in + 1);
        __m256i const nibble = _mm256_set1_epi8(0xF);
        __m256i const low = _mm256_and_si256(bytes, nibble);
        __m256i const bit = _mm256_shuffle_epi8(bits, _mm256_and_si256(_mm256_srli_epi16(bytes, 4), nibble));
        __m256i const isSame = _mm256_cmpeq_epi8(_mm256_and_si256(_mm256_shuffle_epi8(same, low), bit), bit);
        __m256i const mayLead =
            _mm256_and_si256(_mm256_cmpeq_epi8(_mm256_and_si256(_mm256_shuffle_epi8(lead, low), bit), bit),
                             _mm256_cmpgt_epi8(_mm256_setzero_si256(), bytes));
        __m256i const first = _mm256_and_si256(bytes, mayLead);
        __m256i const second = _mm256_blendv_epi8(bytes, behind, mayLead);
        __m256i const even = _mm256_unpacklo_epi8(second, first);
        __m256i const odd = _mm256_unpackhi_epi8(second, first);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(codes), _mm256_permute2x128_si256(even, odd, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(codes + 16), _mm256_permute2x128_si256(even, odd, 0x31));
        auto const upper = static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
        return {static_cast<uint32_t>(_mm256_movemask_epi8(isSame)) & ~upper,
                static_cast<uint32_t>(_mm256_movemask_epi8(mayLead))};
    }
};

KX7_AVX2 inline void widen16(unsigned short* out, unsigned char const* in)
{
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_cvtepu8_epi16(bytes));
}

KX7_AVX2 inline void widen8(unsigned short* out, unsigned char const* in)
{
    __m128i const bytes = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_cvtepu8_epi16(bytes));
}

/** Copies a run of at least 8 bytes that are their own units; what two stores share is the same in both. */
KX7_AVX2 inline void widen(unsigned short* out, unsigned char const* in, std::ptrdiff_t count)
{
    if (count < 16) {
        widen8(out, in);
        widen8(out + count - 8, in + count - 8);
        return;
    }
    for (std::ptrdiff_t i = 0; i < count - 16; i += 16)
        widen16(out + i, in + i);
    widen16(out + count - 16, in + count - 16);
}

}  // namespace

KX7_AVX2 void decodePairsAvx2(PairUnits const& set, unsigned char const*& inOut, unsigned char const* end,
                              unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr uint64_t ODD = UINT64_C(0xAAAAAAAAAAAAAAAA);
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    if (!beginsWell(set, in, end, out, outEnd)) {
        inOut = in;
        outOut = out;
        return;
    }
    unsigned short const* const units = set.units();
    Tables const tables(set);
    unsigned short codes[BLOCK];
    // One byte more, because the last one in the block is looked at with the one behind it.
    while (end - in > BLOCK && outEnd - out >= BLOCK) {
        Half const low = tables.look(in, codes);
        Half const high = tables.look(in + HALF, codes + HALF);
        uint64_t const same = low.same | static_cast<uint64_t>(high.same) << HALF;
        if (same == ~UINT64_C(0)) {
            widen(out, in, BLOCK);
            in += BLOCK;
            out += BLOCK;
            continue;
        }
        uint64_t const mayLead = low.mayLead | static_cast<uint64_t>(high.mayLead) << HALF;
        uint64_t const sums = (((mayLead << 1) | ODD) - mayLead) ^ ODD;
        // A lead byte in the last place is left to the next block.
        uint64_t const cut = (sums & mayLead) >> 63;
        uint64_t chars = ~(sums ^ mayLead) & ~(cut << 63);
        uint64_t const copied = chars & same;
        uint64_t longRuns = copied & copied >> 1;
        longRuns &= longRuns >> 2;
        longRuns &= longRuns >> 4;
        while (chars != 0) {
            int const place = __builtin_ctzll(chars);
            if (longRuns >> place & 1) {
                uint64_t const others = ~(copied >> place);
                std::ptrdiff_t const count = others != 0 ? __builtin_ctzll(others) : BLOCK;
                widen(out, in + place, count);
                out += count;
                chars = place + count < BLOCK ? chars >> (place + count) << (place + count) : 0;
                continue;
            }
            unsigned short const unit = units[codes[place]];
            if (unit == 0) {
                inOut = in + place;
                outOut = out;
                return;
            }
            *out++ = unit;
            chars &= chars - 1;
        }
        in += BLOCK - static_cast<std::ptrdiff_t>(cut);
    }
    BASELINE_KERNELS.decodePairs(set, in, end, out, outEnd);
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
