// kx7text - four-byte characters of GB 18030 with AVX-512 (VBMI).
//
// Takes up to 64 bytes at a time. Where four bytes begin follows from which bytes are leads and digits, by arithmetic
// on bit sets (MultibyteStructure.h). Each four are brought to a 32-bit lane, of which two multiplications by tens make
// the place in the sequence of codes; those that lie in one run of consecutive units become units, those above the
// Basic Multilingual Plane two of them, and these are spread among the ASCII between them: a unit takes the place of
// the first byte, a second unit that of the third. Nothing is branched on where words end: nobody can predict that.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"

#include "kx7/kernels/MultibyteStructure.h"

namespace kx7 {

namespace {

KX7_AVX512 inline __m512i lanes(unsigned int value)
{
    return _mm512_set1_epi32(static_cast<int>(value));
}

#ifdef __x86_64__
KX7_AVX512 inline uint64_t spread(uint64_t bits, uint64_t places)
{
    return _pdep_u64(bits, places);
}
KX7_AVX512 inline uint64_t gathered(uint64_t bits, uint64_t places)
{
    return _pext_u64(bits, places);
}
#else
KX7_AVX512 inline uint64_t spread(uint64_t bits, uint64_t places)
{
    auto const low = static_cast<uint32_t>(places);
    return _pdep_u32(static_cast<uint32_t>(bits), low) |
           static_cast<uint64_t>(
               _pdep_u32(static_cast<uint32_t>(bits >> __builtin_popcount(low)), static_cast<uint32_t>(places >> 32)))
               << 32;
}
KX7_AVX512 inline uint64_t gathered(uint64_t bits, uint64_t places)
{
    auto const low = static_cast<uint32_t>(places);
    return _pext_u32(static_cast<uint32_t>(bits), low) |
           static_cast<uint64_t>(_pext_u32(static_cast<uint32_t>(bits >> 32), static_cast<uint32_t>(places >> 32)))
               << __builtin_popcount(low);
}
#endif

constexpr unsigned char FIRST_SUPPLEMENTARY_LEAD = 0x90;

/** The four bytes that begin at each of up to 16 `places` of `bytes`, which are the first lanes of a register. */
KX7_AVX512 inline __m512i fourBytesAt(__m128i places, __m512i bytes)
{
    __m512i const lane =
        _mm512_set_epi32(0x0F0F0F0F, 0x0E0E0E0E, 0x0D0D0D0D, 0x0C0C0C0C, 0x0B0B0B0B, 0x0A0A0A0A, 0x09090909, 0x08080808,
                         0x07070707, 0x06060606, 0x05050505, 0x04040404, 0x03030303, 0x02020202, 0x01010101, 0);
    __m512i const first = _mm512_shuffle_epi8(_mm512_broadcast_i32x4(places), lane);
    return _mm512_permutexvar_epi8(_mm512_add_epi8(first, _mm512_set1_epi32(0x03020100)), bytes);
}

/** Up to 16 characters of four bytes. */
struct FourByteUnits {
    uint32_t found;  ///< those that have units
    __m512i units;   ///< of all before the first that has none

    KX7_AVX512 FourByteUnits(FourByteRun const& run, __m512i bytes)
    {
        constexpr unsigned int SUPPLEMENTARY = 0x100000;
        __m512i const digits = _mm512_sub_epi8(bytes, lanes(0x30813081));
        __m512i const halves = _mm512_maddubs_epi16(digits, _mm512_set1_epi16(0x010A));
        __m512i const codes = _mm512_madd_epi16(halves, lanes(1 << 16 | 1260));
        __m512i const within = _mm512_sub_epi32(codes, lanes(run.first));
        __m512i const above = _mm512_sub_epi32(codes, lanes(run.firstSupplementary));
        __mmask16 const isPair = _mm512_cmplt_epu32_mask(above, lanes(SUPPLEMENTARY));
        found = isPair | _mm512_cmplt_epu32_mask(within, lanes(run.length));
        __m512i const high = _mm512_srli_epi32(above, 10);
        __m512i const low = _mm512_slli_epi32(_mm512_and_si512(above, lanes(0x3FF)), 16);
        __m512i const values = _mm512_mask_add_epi32(_mm512_add_epi32(within, lanes(run.unit)), isPair,
                                                     _mm512_or_si512(high, low), lanes(0xDC00D800));
        // No unit is 0, and above a single one there are zeros.
        units = _mm512_maskz_compress_epi16(_mm512_test_epi16_mask(values, values), values);
    }
};

}  // namespace

KX7_AVX512 void decodeFourBytesAvx512(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& inOut,
                                      unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr int MOST_UNITS = 32;  // a register
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    ByteTable const sameTable(pairs.isSame());
    __m512i const indexes =
        _mm512_set_epi64(0x3F3E3D3C3B3A3938, 0x3736353433323130, 0x2F2E2D2C2B2A2928, 0x2726252423222120,
                         0x1F1E1D1C1B1A1918, 0x1716151413121110, 0x0F0E0D0C0B0A0908, 0x0706050403020100);
    while (in != end) {
        __m512i const bytes =
            end - in >= STRUCTURE_BLOCK ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lowLanes64(end - in), in);
        GB18030Bytes const is = {
            _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(static_cast<char>(0x81))),
                                   _mm512_set1_epi8(0x7D)),
            _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(0x30)), _mm512_set1_epi8(9))};
        uint64_t const ofFour = beginsOfFour(is.candidatesOfFour());
        // Longer runs of ASCII are left to who is faster at them.
        if (ofFour == 0)
            break;
        uint64_t const same = sameTable.contains(bytes) & ~_mm512_movepi8_mask(bytes);
        __m128i const places = _mm512_castsi512_si128(compressBytes(ofFour, indexes));
        FourByteUnits const four(run, fourBytesAt(places, bytes));
        uint64_t const others = ~four.found & lowLanes64(__builtin_popcountll(ofFour));
        uint64_t found = ofFour;
        if (others != 0)
            found &= lowLanes64(__builtin_ctzll(spread(others, ofFour)));
        uint64_t const following = found << 1 | found << 2 | found << 3;
        uint64_t const sure = found | following | same;
        uint64_t before = (~sure & (sure + 1)) - 1;
        // As long as all have units, where the next block begins is known without these.
        uint64_t const above =
            _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(FIRST_SUPPLEMENTARY_LEAD)));
        uint64_t const seconds = (found & above) << 2;
        uint64_t begins = (found | seconds | (same & ~following)) & before;
        int count = __builtin_popcountll(begins);
        if (count > MOST_UNITS) {
            uint64_t next = spread(UINT64_C(1) << MOST_UNITS, begins);
            if ((next & seconds) != 0)
                next >>= 2;
            before = next - 1;
            begins &= before;
            count = __builtin_popcountll(begins);
        }
        if (count == 0 || count > outEnd - out)
            break;
        auto const areFour = static_cast<__mmask32>(gathered(found | seconds, begins));
        __m512i const singles = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(compressBytes(begins, bytes)));
        _mm512_mask_storeu_epi16(out, static_cast<__mmask32>(lowLanes64(count)),
                                 _mm512_mask_expand_epi16(singles, areFour, four.units));
        in += __builtin_popcountll(before);
        out += count;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
