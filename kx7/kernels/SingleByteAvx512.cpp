// kx7text - single-byte sets with AVX-512 (VBMI).
//
// A permutation of two registers looks 64 bytes up at once in a table of 128, by their low seven bits. Under a mask it
// leaves the other bytes as they are, so that the tables are gone through one after the other.
//
// Decoding looks up the low and the high bytes of the units, for the lower half of the codes only where that is not
// ASCII itself. Encoding goes through the windows of the set; the few units elsewhere, punctuation mostly, are looked
// up one by one.
//
// ISO 8859-1 needs no table: its units are its bytes.
//
// The last block of a range is loaded and stored under a mask, so that short texts are as quick as long ones. A block
// with a code that is not mapped is converted up to that.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 64;
// The blocks of a loop are worth keeping their tables in registers.
#define KX7_INLINE_AVX512 KX7_AVX512 __attribute__((always_inline))

constexpr uint64_t ALL = ~UINT64_C(0);

/** The units of a window: a byte for each, and what the high byte and the highest bit of the low one are. */
struct Window {
    ByteTable bytes;
    __m512i high;
    __mmask64 upper;

    KX7_AVX512 explicit Window(UnitWindow const& window)
        : bytes(window.bytes), high(_mm512_set1_epi8(static_cast<char>(window.first >> 8))),
          upper((window.first & UnitWindow::SIZE) != 0 ? ALL : 0)
    {
    }

    KX7_AVX512 __mmask64 has(__m512i highs, __mmask64 uppers) const
    {
        return _mm512_mask_cmpeq_epi8_mask(~(uppers ^ upper), highs, high);
    }
};

/** Bytes 0, 2, 4 and so on of two registers. */
KX7_AVX512 inline __m512i evenBytes()
{
    __m512i const firsts =
        _mm512_set_epi64(0x0E0C0A0806040200, 0x0E0C0A0806040200, 0x0E0C0A0806040200, 0x0E0C0A0806040200,
                         0x0E0C0A0806040200, 0x0E0C0A0806040200, 0x0E0C0A0806040200, 0x0E0C0A0806040200);
    return _mm512_add_epi8(firsts, _mm512_set_epi64(0x7070707070707070, 0x6060606060606060, 0x5050505050505050,
                                                    0x4040404040404040, 0x3030303030303030, 0x2020202020202020,
                                                    0x1010101010101010, 0));
}

/** The quarters of a block in an order in which unpacking, which works within 128 bits, makes them come out in order.
 */
KX7_AVX512 inline __m512i ordered(__m512i bytes)
{
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), bytes);
}

KX7_AVX512 inline __m512i loadBytes(unsigned char const* in, uint64_t lanes)
{
    return lanes == ALL ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lanes, in);
}

/** 32 of 64 units. */
KX7_AVX512 inline __m512i loadUnits(unsigned short const* in, int half, uint64_t lanes)
{
    return lanes == ALL ? _mm512_loadu_si512(in + half * BLOCK / 2)
                        : _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lanes >> (32 * half)), in + half * BLOCK / 2);
}

KX7_AVX512 inline void storeBytes(unsigned char* out, __m512i bytes, uint64_t lanes)
{
    if (lanes == ALL)
        _mm512_storeu_si512(out, bytes);
    else
        _mm512_mask_storeu_epi8(out, lanes, bytes);
}

KX7_AVX512 inline void storeUnits(unsigned short* out, __m512i a, __m512i b, uint64_t lanes)
{
    if (lanes == ALL) {
        _mm512_storeu_si512(out, a);
        _mm512_storeu_si512(out + BLOCK / 2, b);
        return;
    }
    _mm512_mask_storeu_epi16(out, static_cast<__mmask32>(lanes), a);
    _mm512_mask_storeu_epi16(out + BLOCK / 2, static_cast<__mmask32>(lanes >> 32), b);
}

/** The lanes before the first of `unmapped`, which is not empty. */
constexpr uint64_t before(uint64_t unmapped)
{
    return (unmapped & (0 - unmapped)) - 1;
}

/**
 * Converts a range block by block: `block` (in, out, lanes) returns 0 or a bit for each of the `lanes` that is not
 * mapped, having written what comes before. The last lanes are fewer than a block.
 */
template <class Block, class From, class To>
KX7_AVX512 inline void convertBlocks(Block block, From const*& inOut, From const* end, To*& outOut, To* outEnd)
{
    From const* in = inOut;
    To* out = outOut;
    std::ptrdiff_t left = end - in < outEnd - out ? end - in : outEnd - out;
    uint64_t unmapped = 0;
    for (; left >= BLOCK && unmapped == 0; left -= BLOCK) {
        unmapped = block(in, out, ALL);
        in += BLOCK;
        out += BLOCK;
    }
    if (unmapped != 0) {
        in -= BLOCK - __builtin_ctzll(unmapped);
        out -= BLOCK - __builtin_ctzll(unmapped);
    }
    else if (left > 0) {
        unmapped = block(in, out, lowLanes64(left));
        std::ptrdiff_t const done = unmapped != 0 ? __builtin_ctzll(unmapped) : left;
        in += done;
        out += done;
    }
    inOut = in;
    outOut = out;
}

/** Encodes `COUNT` units if they are ASCII without a 0. */
template <std::ptrdiff_t COUNT>
KX7_AVX512 inline bool encodeASCII(unsigned short const* in, unsigned char* out, __m512i even)
{
    constexpr std::ptrdiff_t UNITS = BLOCK / 2;
    __m512i all = _mm512_setzero_si512();
    __m512i least = _mm512_set1_epi16(-1);
    for (std::ptrdiff_t i = 0; i < COUNT; i += UNITS) {
        __m512i const units = _mm512_loadu_si512(in + i);
        all = _mm512_or_si512(all, units);
        least = _mm512_min_epu16(least, units);
    }
    if (_mm512_test_epi16_mask(all, _mm512_set1_epi16(static_cast<short>(0xFF80))) != 0 ||
        _mm512_testn_epi16_mask(least, least) != 0)
        return false;
    for (std::ptrdiff_t i = 0; i < COUNT; i += BLOCK)
        _mm512_storeu_si512(
            out + i, _mm512_permutex2var_epi8(_mm512_loadu_si512(in + i), even, _mm512_loadu_si512(in + i + UNITS)));
    return true;
}

}  // namespace

KX7_AVX512 void decodeSingleByteAvx512(SingleByteTables const& tables, unsigned char const*& in,
                                       unsigned char const* end, unsigned short*& out, unsigned short* outEnd)
{
    if (tables.isLatin1) {
        auto const latin1 = [](unsigned char const* from, unsigned short* to, uint64_t lanes) KX7_INLINE_AVX512 {
            __m512i const bytes = loadBytes(from, lanes);
            uint64_t const zeros = _mm512_testn_epi8_mask(bytes, bytes) & lanes;
            storeUnits(to, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)),
                       _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)), zeros != 0 ? before(zeros) : lanes);
            return zeros;
        };
        convertBlocks(latin1, in, end, out, outEnd);
        return;
    }
    ByteTable const lows[2] = {ByteTable(tables.lowBytes), ByteTable(tables.lowBytes + 0x80)};
    ByteTable const highs[2] = {ByteTable(tables.highBytes), ByteTable(tables.highBytes + 0x80)};
    bool const isASCII = tables.byteIdentity == Identity::ASCII;
    auto const block = [&](unsigned char const* from, unsigned short* to, uint64_t lanes) KX7_INLINE_AVX512 {
        __m512i const bytes = ordered(loadBytes(from, lanes));
        __mmask64 const isUpper = _mm512_movepi8_mask(bytes);
        __m512i low = lows[1].lookUp(bytes, isUpper);
        __m512i high = highs[1].lookUp(_mm512_maskz_mov_epi8(isUpper, bytes), isUpper);
        if (!isASCII) {
            low = lows[0].lookUp(low, ~isUpper);
            high = highs[0].lookUp(_mm512_mask_mov_epi8(high, ~isUpper, bytes), ~isUpper);
        }
        __m512i const a = _mm512_unpacklo_epi8(low, high);
        __m512i const b = _mm512_unpackhi_epi8(low, high);
        uint64_t unmapped = 0;
        if (_mm512_testn_epi8_mask(low, low) != 0)
            unmapped = _mm512_kunpackd(_mm512_testn_epi16_mask(b, b), _mm512_testn_epi16_mask(a, a)) & lanes;
        storeUnits(to, a, b, unmapped != 0 ? before(unmapped) : lanes);
        return unmapped;
    };
    convertBlocks(block, in, end, out, outEnd);
}

KX7_AVX512 void encodeSingleByteAvx512(SingleByteTables const& tables, unsigned short const*& in,
                                       unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    __m512i const even = evenBytes();
    if (tables.isLatin1) {
        auto const latin1 = [&](unsigned short const* from, unsigned char* to, uint64_t lanes) KX7_INLINE_AVX512 {
            __m512i const a = loadUnits(from, 0, lanes);
            __m512i const b = loadUnits(from, 1, lanes);
            // 0 becomes the largest of all.
            __m512i const one = _mm512_set1_epi16(1);
            __m512i const most = _mm512_set1_epi16(0xFE);
            uint64_t const others = _mm512_kunpackd(_mm512_cmpgt_epu16_mask(_mm512_sub_epi16(b, one), most),
                                                    _mm512_cmpgt_epu16_mask(_mm512_sub_epi16(a, one), most)) &
                                    lanes;
            storeBytes(to, _mm512_permutex2var_epi8(a, even, b), others != 0 ? before(others) : lanes);
            return others;
        };
        convertBlocks(latin1, in, end, out, outEnd);
        return;
    }
    Window const first(tables.windows[0]);
    Window const second(tables.windows[1]);
    Window const third(tables.windows[2]);
    bool const isASCII = tables.unitIdentity == Identity::ASCII;
    __m512i const odd = _mm512_add_epi8(even, _mm512_set1_epi8(1));
    auto const block = [&](unsigned short const* from, unsigned char* to, uint64_t lanes) KX7_INLINE_AVX512 {
        __m512i const a = loadUnits(from, 0, lanes);
        __m512i const b = loadUnits(from, 1, lanes);
        __m512i bytes = _mm512_permutex2var_epi8(a, even, b);
        __m512i const highs = _mm512_permutex2var_epi8(a, odd, b);
        __mmask64 const uppers = _mm512_movepi8_mask(bytes);
        // The windows have no unit in common: a lookup leaves the low bytes for the others.
        __mmask64 const inFirst = first.has(highs, uppers);
        __mmask64 const inSecond = second.has(highs, uppers);
        __mmask64 const inThird = third.has(highs, uppers);
        if (!isASCII)
            bytes = first.bytes.lookUp(bytes, inFirst);
        bytes = second.bytes.lookUp(bytes, inSecond);
        if (inThird != 0)
            bytes = third.bytes.lookUp(bytes, inThird);
        uint64_t others = (~(inFirst | inSecond | inThird) | _mm512_testn_epi8_mask(bytes, bytes)) & lanes;
        for (; others != 0; others &= others - 1) {
            int const at = __builtin_ctzll(others);
            unsigned char const byte = tables.get(from[at]);
            if (byte == 0)
                break;
            bytes = _mm512_mask_set1_epi8(bytes, UINT64_C(1) << at, static_cast<char>(byte));
        }
        storeBytes(to, bytes, others != 0 ? before(others) : lanes);
        return others;
    };
    // ASCII needs no windows.
    constexpr std::ptrdiff_t RUN = BLOCKS_AT_ONCE * BLOCK;
    for (;;) {
        bool const isLong = end - in >= RUN && outEnd - out >= RUN;
        if (isASCII && isLong && in[0] < 0x80 && in[RUN / 2] < 0x80 && encodeASCII<RUN>(in, out, even)) {
            in += RUN;
            out += RUN;
            continue;
        }
        unsigned short const* const runEnd = isLong ? in + RUN : end;
        convertBlocks(block, in, runEnd, out, outEnd);
        if (in != runEnd || runEnd == end)
            return;
    }
}

}  // namespace kx7

#endif
