// kx7text - four-byte characters of GB 18030 with AVX-512 (VBMI).
//
// Takes up to 64 bytes at a time. Where four bytes begin follows from which bytes are leads and digits, by arithmetic
// on bit sets (MultibyteStructure.h). Each four are brought to a 32-bit lane, of which two multiplications by tens make
// the place in the sequence of codes; those that lie in one run of consecutive units become units, and these are spread
// among the ASCII between them. Nothing is branched on where words end: nobody can predict that.
//
// Above the Basic Multilingual Plane, eight characters at a time, and then as many bytes of ASCII as follow them.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/MultibyteStructure.h"

namespace kx7 {

namespace {

KX7_AVX512 inline __m256i lanes(unsigned int value)
{
    return _mm256_set1_epi32(static_cast<int>(value));
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
constexpr unsigned char LAST_LEAD = 0xFE;

/** Bytes that are their own units. */
struct SameTable {
    __m512i low;
    __m512i high;

    KX7_AVX512 explicit SameTable(PairUnits const& pairs)
        : low(_mm512_loadu_si512(pairs.isSame())), high(_mm512_loadu_si512(pairs.isSame() + 64))
    {
    }

    KX7_AVX512 uint64_t contains(__m512i bytes) const
    {
        return _mm512_movepi8_mask(_mm512_permutex2var_epi8(low, bytes, high)) & ~_mm512_movepi8_mask(bytes);
    }
};

/** How many characters and bytes of ASCII were converted. */
struct Converted {
    int characters;
    int singles;
};

/** Up to eight characters above the Basic Multilingual Plane, and up to 16 bytes of ASCII behind them. */
KX7_AVX512 inline Converted supplementary(FourByteRun const& run, SameTable const& same, unsigned char const*& in,
                                          unsigned short*& out)
{
    constexpr unsigned int SUPPLEMENTARY = 0x100000;
    // From the first byte of a character: 0x81 to 0xFE, 0x30 to 0x39, and the same again.
    __m256i const digits = _mm256_sub_epi8(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(in)), lanes(0x30813081));
    __m256i const inSpan = _mm256_movm_epi8(_mm256_cmple_epu8_mask(digits, lanes(0x097D097D)));
    unsigned int const whole = _mm256_cmpeq_epi32_mask(inSpan, _mm256_set1_epi32(-1));
    __m256i const halves = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(0x010A));
    __m256i const places = _mm256_madd_epi16(halves, _mm256_set1_epi32(1 << 16 | 1260));
    __m256i const above = _mm256_sub_epi32(places, lanes(run.firstSupplementary));
    unsigned int const found = whole & _mm256_cmplt_epu32_mask(above, lanes(SUPPLEMENTARY));
    int const count = __builtin_ctz(~found);
    __m256i const high = _mm256_add_epi32(_mm256_srli_epi32(above, 10), lanes(0xD800));
    __m256i const low = _mm256_add_epi32(_mm256_and_si256(above, lanes(0x3FF)), lanes(0xDC00));
    _mm256_mask_storeu_epi32(out, static_cast<__mmask8>((1U << count) - 1),
                             _mm256_or_si256(high, _mm256_slli_epi32(low, 16)));
    out += 2 * count;
    in += 4 * count;
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    auto const singles = static_cast<unsigned int>(same.contains(_mm512_castsi128_si512(bytes)));
    int const singleCount = __builtin_ctz(~(singles & 0xFFFF));
    _mm256_mask_storeu_epi16(out, static_cast<__mmask16>((1U << singleCount) - 1), _mm256_cvtepu8_epi16(bytes));
    in += singleCount;
    out += singleCount;
    return {count, singleCount};
}

/** The four bytes that begin at each of up to 16 `places` of `bytes`, which are the first lanes of a register. */
KX7_AVX512 inline __m512i fourBytesAt(__m128i places, __m512i bytes)
{
    __m512i const lane =
        _mm512_set_epi32(0x0F0F0F0F, 0x0E0E0E0E, 0x0D0D0D0D, 0x0C0C0C0C, 0x0B0B0B0B, 0x0A0A0A0A, 0x09090909, 0x08080808,
                         0x07070707, 0x06060606, 0x05050505, 0x04040404, 0x03030303, 0x02020202, 0x01010101, 0);
    __m512i const first = _mm512_shuffle_epi8(_mm512_broadcast_i32x4(places), lane);
    return _mm512_permutexvar_epi8(_mm512_add_epi8(first, _mm512_set1_epi32(0x03020100)), bytes);
}

}  // namespace

KX7_AVX512 void decodeFourBytesAvx512(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& inOut,
                                      unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr std::ptrdiff_t SUPPLEMENTARY_BYTES = 4 * 8 + 16;
    constexpr std::ptrdiff_t SUPPLEMENTARY_UNITS = 2 * 8 + 16;
    constexpr int MOST_UNITS = 32;  // a register
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    SameTable const sameTable(pairs);
    __m512i const indexes =
        _mm512_set_epi64(0x3F3E3D3C3B3A3938, 0x3736353433323130, 0x2F2E2D2C2B2A2928, 0x2726252423222120,
                         0x1F1E1D1C1B1A1918, 0x1716151413121110, 0x0F0E0D0C0B0A0908, 0x0706050403020100);
    while (in != end) {
        if (in[0] >= FIRST_SUPPLEMENTARY_LEAD && in[0] <= LAST_LEAD) {
            if (end - in < SUPPLEMENTARY_BYTES || outEnd - out < SUPPLEMENTARY_UNITS)
                break;
            Converted const converted = supplementary(run, sameTable, in, out);
            // Longer runs of ASCII are left to who is faster at them.
            if (converted.characters == 0 || converted.singles == 16)
                break;
            continue;
        }
        __m512i const bytes =
            end - in >= STRUCTURE_BLOCK ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lowBits(end - in), in);
        GB18030Bytes const is = {
            _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(static_cast<char>(0x81))),
                                   _mm512_set1_epi8(0x7D)),
            _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(0x30)), _mm512_set1_epi8(9))};
        uint64_t const ofFour = beginsOfFour(is.candidatesOfFour());
        // Longer runs of ASCII are left to who is faster at them.
        if (ofFour == 0)
            break;
        uint64_t const same = sameTable.contains(bytes);
        __m128i const places = _mm512_castsi512_si128(squeezeBytes(ofFour, indexes));
        __m512i const digits = _mm512_sub_epi8(fourBytesAt(places, bytes), _mm512_set1_epi32(0x30813081));
        __m512i const halves = _mm512_maddubs_epi16(digits, _mm512_set1_epi16(0x010A));
        __m512i const codes = _mm512_madd_epi16(halves, _mm512_set1_epi32(1 << 16 | 1260));
        __m512i const within = _mm512_sub_epi32(codes, _mm512_set1_epi32(static_cast<int>(run.first)));
        __m512i const units = _mm512_add_epi32(within, _mm512_set1_epi32(static_cast<int>(run.unit)));
        uint64_t const others = _mm512_cmpge_epu32_mask(within, _mm512_set1_epi32(static_cast<int>(run.length))) &
                                lowBits(__builtin_popcountll(ofFour));
        uint64_t found = ofFour;
        if (others != 0)
            found &= lowBits(__builtin_ctzll(spread(others, ofFour)));
        uint64_t const behind = found << 1 | found << 2 | found << 3;
        uint64_t const sure = found | behind | same;
        uint64_t before = (~sure & (sure + 1)) - 1;
        uint64_t begins = (found | (same & ~behind)) & before;
        int count = __builtin_popcountll(begins);
        if (count > MOST_UNITS) {
            before = spread(UINT64_C(1) << MOST_UNITS, begins) - 1;
            begins &= before;
            count = MOST_UNITS;
        }
        if (count == 0 || count > outEnd - out)
            break;
        auto const areFour = static_cast<__mmask32>(gathered(found, begins));
        __m512i const singles = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(squeezeBytes(begins, bytes)));
        _mm512_mask_storeu_epi16(
            out, static_cast<__mmask32>(lowBits(count)),
            _mm512_mask_expand_epi16(singles, areFour, _mm512_castsi256_si512(_mm512_cvtepi32_epi16(units))));
        in += __builtin_popcountll(before);
        out += count;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
