// kx7text - decoding of double-byte sets with AVX-512 (VBMI, VBMI2).
//
// Takes up to 64 bytes at a time. Two byte permutations tell which bytes may lead and which are their own unit;
// MultibyteStructure.h says which of the former do lead. The codes to look up are compressed together (vpcompressb),
// looked up by gathers, and spread again among the bytes that are their own unit, if any; the lanes of trail bytes are
// dropped. The kernel stops at a code without a unit, or with one that the converters have to judge.
//
// Loads and stores of the last block are masked: short texts are as quick as long ones.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/DoubleByteEncode.h"
#include "kx7/kernels/MultibyteStructure.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 64;
constexpr int UNITS = 32;  // in a register

KX7_AVX512 inline __m512i words(__m256i bytes)
{
    return _mm512_cvtepu8_epi16(bytes);
}

/** The units of up to 32 codes, of which `first` has the high bytes and `second` the low ones. */
KX7_AVX512 inline __m512i lookUp(unsigned short const* units, __m256i first, __m256i second, int count)
{
    alignas(64) unsigned short codes[32];
    _mm512_store_si512(codes, _mm512_or_si512(_mm512_slli_epi16(words(first), 8), words(second)));
    __m512i const low = _mm512_castsi256_si512(codesOfSixteen(units, codes));
    return count <= 16 ? low : _mm512_inserti64x4(low, codesOfSixteen(units, codes + 16), 1);
}

KX7_AVX512 inline void store(unsigned short* out, __m512i units, int count)
{
    _mm512_mask_storeu_epi16(out, static_cast<__mmask32>(lowLanes64(count)), units);
}

}  // namespace

KX7_AVX512 void decodePairsAvx512(PairUnits const& set, unsigned char const*& inOut, unsigned char const* end,
                                  unsigned short*& outOut, unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    if (!beginsWell(set, in, end, out, outEnd)) {
        inOut = in;
        outOut = out;
        return;
    }
    unsigned short const* const table = set.units();
    ByteTable const leadTable(set.isLead());
    ByteTable const sameTable(set.isSame());
    bool more = true;
    while (more && in != end) {
        __m512i bytes;
        __m512i next;
        uint64_t valid = ~UINT64_C(0);
        if (end - in > BLOCK) {
            bytes = _mm512_loadu_si512(in);
            next = _mm512_loadu_si512(in + 1);
        }
        else {
            valid = lowLanes64(end - in);
            bytes = _mm512_maskz_loadu_epi8(valid, in);
            next = _mm512_maskz_loadu_epi8(valid >> 1, in + 1);
        }
        uint64_t const upper = _mm512_movepi8_mask(bytes);
        uint64_t const same = sameTable.contains(bytes) & ~upper;
        if (same == ~UINT64_C(0) && outEnd - out >= BLOCK) {
            _mm512_storeu_si512(out, words(_mm512_castsi512_si256(bytes)));
            _mm512_storeu_si512(out + UNITS, words(_mm512_extracti64x4_epi64(bytes, 1)));
            in += BLOCK;
            out += BLOCK;
            continue;
        }
        uint64_t const mayLead = leadTable.contains(bytes) & upper;
        uint64_t leads = everySecond(mayLead);
        uint64_t const trails = leads << 1;
        // A lead byte in the last place waits for the next block, or for who knows what follows.
        uint64_t const cut = leads & (valid ^ valid >> 1);
        valid &= ~cut;
        leads &= ~cut;
        uint64_t chars = valid & ~trails;
        uint64_t sought = chars & ~same;
        int const soughtCount = __builtin_popcountll(sought);
        __m512i const first = compressBytes(sought, _mm512_maskz_mov_epi8(leads, bytes));
        __m512i const second = compressBytes(sought, _mm512_mask_mov_epi8(bytes, leads, next));
        __m512i const units = lookUp(table, _mm512_castsi512_si256(first), _mm512_castsi512_si256(second), soughtCount);
        __m512i units2 = _mm512_setzero_si512();
        uint64_t missing = _mm512_testn_epi16_mask(units, units);
        if (soughtCount > UNITS) {
            units2 = lookUp(table, _mm512_extracti64x4_epi64(first, 1), _mm512_extracti64x4_epi64(second, 1),
                            soughtCount - UNITS);
            missing |= static_cast<uint64_t>(_mm512_testn_epi16_mask(units2, units2)) << UNITS;
        }
        missing &= lowLanes64(soughtCount);
        if (missing != 0) {
            // Up to the first character that was not found.
            uint64_t const places = _mm512_movepi8_mask(_mm512_maskz_expand_epi8(sought, _mm512_movm_epi8(missing)));
            valid = lowLanes64(__builtin_ctzll(places));
            chars &= valid;
            sought &= valid;
            more = false;
        }
        int const count = __builtin_popcountll(chars);
        if (count > outEnd - out)
            break;
        if (sought == chars) {
            store(out, units, count);
            if (count > UNITS)
                store(out + UNITS, units2, count - UNITS);
        }
        else {
            auto const lowSought = static_cast<uint32_t>(sought);
            auto const lowChars = static_cast<uint32_t>(chars);
            int const inLow = __builtin_popcount(lowSought);
            __m512i const places =
                _mm512_add_epi16(_mm512_set1_epi16(static_cast<short>(inLow)),
                                 _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15,
                                                  14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
            __m512i const unitsOfHigh = _mm512_permutex2var_epi16(units, places, units2);
            __m512i const low = _mm512_mask_expand_epi16(words(_mm512_castsi512_si256(bytes)), lowSought, units);
            __m512i const high = _mm512_mask_expand_epi16(words(_mm512_extracti64x4_epi64(bytes, 1)),
                                                          static_cast<uint32_t>(sought >> 32), unitsOfHigh);
            int const lowCount = __builtin_popcount(lowChars);
            store(out, _mm512_maskz_compress_epi16(lowChars, low), lowCount);
            store(out + lowCount, _mm512_maskz_compress_epi16(static_cast<uint32_t>(chars >> 32), high),
                  count - lowCount);
        }
        if (valid == 0)
            break;
        in += __builtin_popcountll(valid);
        out += count;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
