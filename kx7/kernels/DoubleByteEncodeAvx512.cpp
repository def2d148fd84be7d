// kx7text - encoding of sets of one and two bytes, and GB 18030, with AVX-512 (VBMI, VBMI2).
//
// 32 units at a time: their codes are looked up one by one, which is faster than a gather, and collected in a register.
// There the bytes of each code are swapped, and the high bytes that are zero are dropped. Blocks of ASCII are
// looked up by permutation in the first 128 codes, as far as these are single bytes, so that it does not matter which
// of them the set writes otherwise. What is shorter than a block is taken 8 units at a time, then one by one.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"

#define KX7_TARGET KX7_AVX512
#include "kx7/kernels/DoubleByteEncodeLoops.h"

namespace kx7 {

namespace {

/** A shuffle that puts the high byte of each 16-bit lane first. */
KX7_AVX512 inline __m512i swapInBlock()
{
    return _mm512_set4_epi32(0x0E0F0C0D, 0x0A0B0809, 0x06070405, 0x02030001);
}

/** What ASCII is written as where that is one byte, else 0. */
struct AsciiTable {
    __m512i halves[2];

    KX7_AVX512 explicit AsciiTable(unsigned short const* codes)
    {
        for (int half = 0; half < 2; ++half)
            halves[half] = _mm512_inserti64x4(_mm512_castsi256_si512(singleBytes(codes + 64 * half)),
                                              singleBytes(codes + 64 * half + 32), 1);
    }

    /** The 32 units at `in` are ASCII that is written as single bytes, which are stored in `bytes`. */
    KX7_AVX512 bool find(unsigned short const* in, __m256i& bytes) const
    {
        __m512i const units = _mm512_loadu_si512(in);
        if (_mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80)) != 0)
            return false;
        __m512i const ascii = _mm512_castsi256_si512(_mm512_cvtepi16_epi8(units));
        bytes = _mm512_castsi512_si256(_mm512_permutex2var_epi8(halves[0], ascii, halves[1]));
        return _mm256_testn_epi8_mask(bytes, bytes) == 0;
    }

    /** All of ASCII but U+0000 is written as single bytes. */
    KX7_AVX512 bool isComplete() const
    {
        return _mm512_testn_epi8_mask(halves[0], halves[0]) <= 1 && _mm512_testn_epi8_mask(halves[1], halves[1]) == 0;
    }

    /** Of 16 bytes. */
    KX7_AVX512 __m128i lookUp(__m128i ascii) const
    {
        return _mm512_castsi512_si128(_mm512_permutex2var_epi8(halves[0], _mm512_castsi128_si512(ascii), halves[1]));
    }

private:
    KX7_AVX512 static __m256i singleBytes(unsigned short const* codes)
    {
        __m512i const values = _mm512_loadu_si512(codes);
        return _mm512_maskz_cvtepi16_epi8(_mm512_cmple_epu16_mask(values, _mm512_set1_epi16(0xFF)), values);
    }
};

/** The codes of 32 units. */
struct Codes {
    __m512i found;

    KX7_AVX512 Codes(unsigned short const* codes, unsigned short const* in)
        : found(
              _mm512_inserti64x4(_mm512_castsi256_si512(codesOfSixteen(codes, in)), codesOfSixteen(codes, in + 16), 1))
    {
    }

    KX7_AVX512 bool areComplete() const { return _mm512_testn_epi16_mask(found, found) == 0; }

    KX7_AVX512 size_t count() const
    {
        return static_cast<size_t>(CODES + __builtin_popcount(_mm512_cmpgt_epu16_mask(found, _mm512_set1_epi16(0xFF))));
    }

    KX7_AVX512 unsigned char* store(unsigned char* out) const
    {
        auto const length = static_cast<std::ptrdiff_t>(count());
        __m512i const bytes = _mm512_shuffle_epi8(found, swapInBlock());
        __mmask64 const kept = _mm512_test_epi8_mask(bytes, bytes) | UINT64_C(0xAAAAAAAAAAAAAAAA);
        _mm512_mask_storeu_epi8(out, ~UINT64_C(0) >> (2 * CODES - length), _mm512_maskz_compress_epi8(kept, bytes));
        return out + length;
    }
};

/** The codes of 8 units. */
struct FewCodes {
    __m128i found;

    KX7_AVX512 FewCodes(unsigned short const* codes, unsigned short const* in) : found(codesOfEight(codes, in)) {}

    KX7_AVX512 bool areComplete() const { return _mm_testn_epi16_mask(found, found) == 0; }

    KX7_AVX512 unsigned char* store(unsigned char* out) const
    {
        std::ptrdiff_t const length = FEW_CODES + __builtin_popcount(_mm_cmpgt_epu16_mask(found, _mm_set1_epi16(0xFF)));
        __m128i const bytes = _mm_shuffle_epi8(found, _mm512_castsi512_si128(swapInBlock()));
        auto const kept = static_cast<__mmask16>(_mm_test_epi8_mask(bytes, bytes) | 0xAAAA);
        _mm_mask_storeu_epi8(out, static_cast<__mmask16>(0xFFFF >> (2 * FEW_CODES - length)),
                             _mm_maskz_compress_epi8(kept, bytes));
        return out + length;
    }
};

/** GB 18030: four bytes a lane of 16 sequences. */
KX7_AVX512 inline __m512i fourBytesOfLanes(__m512i index)
{
    // The halves as 16-bit values, each of which the tens and ones of make a pair of bytes.
    __m512 const rounded = _mm512_add_ps(_mm512_cvtepi32_ps(index), _mm512_set1_ps(0.5F));
    __m512i const front = _mm512_cvttps_epi32(_mm512_mul_ps(rounded, _mm512_set1_ps(1 / 1260.0F)));
    __m512i const back = _mm512_sub_epi32(index, _mm512_mullo_epi32(front, _mm512_set1_epi32(1260)));
    __m512i const halves = _mm512_or_si512(front, _mm512_slli_epi32(back, 16));
    __m512i const tens = _mm512_mulhi_epu16(halves, _mm512_set1_epi16(6554));
    __m512i const ones = _mm512_sub_epi16(halves, _mm512_mullo_epi16(tens, _mm512_set1_epi16(10)));
    return _mm512_add_epi16(_mm512_or_si512(tens, _mm512_slli_epi16(ones, 8)), _mm512_set1_epi16(0x3081));
}

/** What the characters of up to 16 units are written as. */
struct LongBlock {
    __m512i bytes;
    __mmask64 kept;
    std::ptrdiff_t units;  ///< up to the first that the tables lack, or whose partner is after the block
    bool isWhole;          ///< no unit was lacking
    bool hasLong;          ///< there are codes of four bytes

    size_t count() const { return static_cast<size_t>(__builtin_popcountll(kept)); }
};

/** The surrogate pairs among 16 units. */
struct Pairs {
    uint32_t highs;
    uint32_t partners;  ///< the low surrogates after these

    KX7_AVX512 explicit Pairs(__m256i units)
    {
        __m256i const kind = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xFC00)));
        highs = _mm256_cmpeq_epi16_mask(kind, _mm256_set1_epi16(static_cast<short>(0xD800)));
        partners = highs << 1 & _mm256_cmpeq_epi16_mask(kind, _mm256_set1_epi16(static_cast<short>(0xDC00)));
    }

    /** High surrogates that have no partner, but for one whose partner may be after the block. */
    uint32_t unpaired() const { return highs & ~(partners >> 1) & 0x7FFF; }

    /** All units but one whose partner may be after the block. */
    std::ptrdiff_t whole() const { return 16 - static_cast<std::ptrdiff_t>(highs >> 15); }

    /** Puts the index of the four-byte sequence into the lanes of the high surrogates. */
    KX7_AVX512 __m512i indexed(__m512i index, __m512i units) const
    {
        __m512i const next = _mm512_alignr_epi32(units, units, 1);
        __m512i const pair = _mm512_add_epi32(_mm512_slli_epi32(units, 10), next);
        constexpr unsigned int OFFSET = pairCodeOf(0, 0) - FIRST_FOUR_BYTE_CODE;
        return _mm512_mask_add_epi32(index, static_cast<__mmask16>(highs), pair,
                                     _mm512_set1_epi32(static_cast<int>(OFFSET)));
    }
};

/** 16 units that are ASCII, of `run` or in pairs, without a lookup. `isWhole` is false, and all else void, if not. */
KX7_AVX512 inline LongBlock longBlockOf(UnitRun const& run, AsciiTable const& asciiTable, unsigned short const* in)
{
    __m256i const narrow = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
    __m512i const units = _mm512_cvtepu16_epi32(narrow);
    Pairs const pairs(narrow);
    __m512i const place = _mm512_sub_epi32(units, _mm512_set1_epi32(static_cast<int>(run.first)));
    uint32_t const inRun = _mm512_cmple_epu32_mask(place, _mm512_set1_epi32(static_cast<int>(run.extent)));
    __m512i const single = _mm512_cvtepu8_epi32(asciiTable.lookUp(_mm256_cvtepi16_epi8(narrow)));
    auto const ascii = static_cast<__mmask16>(_mm512_cmplt_epu32_mask(units, _mm512_set1_epi32(0x80)) &
                                              _mm512_test_epi32_mask(single, single));
    uint32_t const longs = (inRun | pairs.highs) & ((1U << pairs.whole()) - 1);
    bool const isWhole = pairs.unpaired() == 0 && (inRun | pairs.highs | pairs.partners | ascii) == 0xFFFF;
    __m512i index = _mm512_add_epi32(place, _mm512_set1_epi32(static_cast<int>(run.index)));
    if (pairs.highs != 0)
        index = pairs.indexed(index, units);
    __m512i const bytes = _mm512_mask_mov_epi32(
        _mm512_maskz_mov_epi32(static_cast<__mmask16>(longs), fourBytesOfLanes(index)), ascii, single);
    return {bytes, _mm512_test_epi8_mask(bytes, bytes), pairs.whole(), isWhole, longs != 0};
}

/** What 32 units need that are ASCII, of `run` or in pairs. */
struct KnownUnits {
    bool areAll;  ///< else the rest is void
    std::ptrdiff_t units;
    size_t bytes;

    KX7_AVX512 KnownUnits(UnitRun const& run, bool isAsciiSingle, unsigned short const* in)
    {
        __m512i const lanes = _mm512_loadu_si512(in);
        __m512i const kind = _mm512_and_si512(lanes, _mm512_set1_epi16(static_cast<short>(0xFC00)));
        __m512i const place = _mm512_sub_epi16(lanes, _mm512_set1_epi16(static_cast<short>(run.first)));
        uint32_t const isInRun =
            run.first <= 0xFFFF ? _mm512_cmple_epu16_mask(place, _mm512_set1_epi16(static_cast<short>(run.extent))) : 0;
        // Without U+0000.
        uint32_t const isAscii = isAsciiSingle ? _mm512_cmplt_epu16_mask(_mm512_sub_epi16(lanes, _mm512_set1_epi16(1)),
                                                                         _mm512_set1_epi16(0x7F))
                                               : 0;
        uint32_t const isHigh = _mm512_cmpeq_epi16_mask(kind, _mm512_set1_epi16(static_cast<short>(0xD800)));
        uint32_t const isLow = _mm512_cmpeq_epi16_mask(kind, _mm512_set1_epi16(static_cast<short>(0xDC00)));
        uint32_t const isPartner = isHigh << 1 & isLow;
        areAll = (isInRun | isAscii | isHigh | isPartner) == ~UINT32_C(0) && (isHigh << 1 & ~isPartner) == 0;
        units = CODES - static_cast<std::ptrdiff_t>(isHigh >> 31);
        bytes = static_cast<size_t>(__builtin_popcount(isAscii)) +
                4 * static_cast<size_t>(__builtin_popcount(isInRun | (isHigh & 0x7FFFFFFF)));
    }
};

/** Any 16 units. Afterwards `run` is that of the last unit that has four bytes. */
KX7_AVX512 inline LongBlock longBlock(GB18030Codes const& codes, unsigned short const* in, UnitRun& run)
{
    __m256i const found = codesOfSixteen(codes.oneOrTwo, in);
    __m256i const units = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
    Pairs const pairs(units);
    uint32_t const missing = _mm256_testn_epi16_mask(found, found);
    uint32_t const fourBytes = missing & ~pairs.highs & ~pairs.partners;

    __m512i index = _mm512_setzero_si512();
    uint32_t lacking = pairs.unpaired();
    if (fourBytes != 0) {
        __m256i const indexes = codesOfSixteen(codes.fourByte, in);
        uint32_t const without = fourBytes & _mm256_testn_epi16_mask(indexes, indexes);
        index = _mm512_sub_epi32(_mm512_cvtepu16_epi32(indexes), _mm512_set1_epi32(1));
        lacking |= without;
        if (fourBytes != without) {
            unsigned short const last = in[31 - __builtin_clz(fourBytes & ~without)];
            if (!run.has(last))
                run.moveTo(codes, last);
        }
    }
    if (pairs.highs != 0)
        index = pairs.indexed(index, _mm512_cvtepu16_epi32(units));
    // Not by what was looked up: the next block would have to wait for it.
    std::ptrdiff_t taken = pairs.whole();
    if (__builtin_expect(lacking != 0, 0))
        taken = __builtin_ctz(lacking);
    uint32_t const lanes = (1U << taken) - 1;
    auto const shorts = static_cast<__mmask16>(lanes & ~missing & ~pairs.partners);
    auto const longs = static_cast<__mmask16>(lanes & (fourBytes | pairs.highs));
    __m512i bytes =
        _mm512_maskz_cvtepu16_epi32(shorts, _mm256_shuffle_epi8(found, _mm512_castsi512_si256(swapInBlock())));
    bytes = _mm512_mask_mov_epi32(bytes, longs, fourBytesOfLanes(index));
    // All four bytes are other than 0; of one or two the first may be missing.
    __m512i const always = _mm512_maskz_set1_epi32(shorts, 0xFF00);
    __m512i const keep = _mm512_or_si512(bytes, always);
    return {bytes, _mm512_test_epi8_mask(keep, keep), taken, lacking == 0, longs != 0};
}

/** As DoubleByteEncodeLoops.h has it. */
struct DoubleByteAvx512 {
    using Ascii = AsciiTable;
    using Codes = kx7::Codes;
    using FewCodes = kx7::FewCodes;
    using Block = LongBlock;
    using KnownUnits = kx7::KnownUnits;

    KX7_AVX512 static bool isAsciiSingle(unsigned short const* codes) { return AsciiTable(codes).isComplete(); }
    KX7_AVX512 static Block blockOf(GB18030Codes const& codes, unsigned short const* in, UnitRun& run)
    {
        return longBlock(codes, in, run);
    }
};

}  // namespace

KX7_AVX512 void encodeDoubleByteAvx512(unsigned short const* codes, unsigned short const*& in,
                                       unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    encodeDoubleByteBy<DoubleByteAvx512>(codes, in, end, out, outEnd);
}

KX7_AVX512 size_t countDoubleByteAvx512(unsigned short const* codes, unsigned short const*& in,
                                        unsigned short const* end)
{
    return countDoubleByteBy<DoubleByteAvx512>(codes, in, end);
}

KX7_AVX512 void encodeGB18030Avx512(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                                    unsigned char*& out, unsigned char* outEnd)
{
    constexpr std::ptrdiff_t LONG_BLOCK = 16;
    // Short texts seldom need more than this.
    if (end - in < CODES)
        encodeFew<DoubleByteAvx512>(codes.oneOrTwo, in, end, out, outEnd);
    if (end - in >= LONG_BLOCK) {
        AsciiTable const asciiTable(codes.oneOrTwo);
        UnitRun run;
        for (;;) {
            encodeBlocks<DoubleByteAvx512>(asciiTable, codes.oneOrTwo, in, end, out, outEnd);
            bool hasLong;
            do {
                if (end - in < LONG_BLOCK || outEnd - out < 4 * LONG_BLOCK)
                    goto rest;
                LongBlock block = longBlockOf(run, asciiTable, in);
                if (!block.isWhole)
                    block = longBlock(codes, in, run);
                if (block.units == 0)
                    return;
                auto const count = static_cast<std::ptrdiff_t>(block.count());
                _mm512_mask_storeu_epi8(out, ~UINT64_C(0) >> (4 * LONG_BLOCK - count),
                                        _mm512_maskz_compress_epi8(block.kept, block.bytes));
                in += block.units;
                out += count;
                if (!block.isWhole)
                    return;
                hasLong = block.hasLong;
            } while (hasLong);
        }
    }
rest:
    encodeFew<DoubleByteAvx512>(codes.oneOrTwo, in, end, out, outEnd);
    encodeGB18030OneByOne(codes, in, end, out, outEnd);
}

KX7_AVX512 size_t countGB18030Avx512(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end)
{
    return countGB18030By<DoubleByteAvx512>(codes, in, end);
}

}  // namespace kx7

#endif
