// kx7text - encoding of sets of one and two bytes, and GB 18030, with AVX2.
//
// 32 units at a time: their codes are looked up one by one, which is faster than a gather, and collected in registers
// of 8. A shuffle from a table of 256, by the mask of the codes of two bytes, puts the bytes of 8 codes in order and
// drops the high bytes that are not there. What it stores beyond its text the next 8 codes overwrite; the last ones of
// a block are stored in two halves that overlap. Blocks of ASCII that the table maps to itself are narrowed.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx2.h"

#define KX7_TARGET KX7_AVX2
#include "kx7/kernels/DoubleByteEncodeLoops.h"

namespace kx7 {

namespace {

/** For each mask of 16-bit lanes the shuffle that takes high and low byte of those in it, the low byte of the others.
 */
struct PairShuffles {
    alignas(16) unsigned char shuffles[256][16];
    constexpr PairShuffles() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 8; ++lane) {
                if (mask >> lane & 1)
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane + 1);
                shuffles[mask][at++] = static_cast<unsigned char>(2 * lane);
            }
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

constexpr PairShuffles PAIR_SHUFFLES;

KX7_AVX2 inline __m128i inOrder(__m128i found, unsigned int pairs)
{
    return shuffled(found, PAIR_SHUFFLES.shuffles[pairs & 0xFF]);
}

/** The codes of 16 units: a bit for each that is two bytes. */
KX7_AVX2 inline unsigned int pairsOf(__m128i a, __m128i b)
{
    __m128i const highs = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
    return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(highs, _mm_setzero_si128()))) ^ 0xFFFF;
}

/** The codes of 32 units. */
struct Codes {
    __m128i eights[4];

    KX7_AVX2 Codes(unsigned short const* codes, unsigned short const* in)
        : eights{codesOfEight(codes, in), codesOfEight(codes, in + 8), codesOfEight(codes, in + 16),
                 codesOfEight(codes, in + 24)}
    {
    }

    KX7_AVX2 bool areComplete() const
    {
        __m128i const least = _mm_min_epu16(_mm_min_epu16(eights[0], eights[1]), _mm_min_epu16(eights[2], eights[3]));
        return _mm_movemask_epi8(_mm_cmpeq_epi16(least, _mm_setzero_si128())) == 0;
    }

    KX7_AVX2 size_t count() const { return static_cast<size_t>(CODES + __builtin_popcount(pairs())); }

    KX7_AVX2 unsigned char* store(unsigned char* out) const
    {
        uint32_t const areTwo = pairs();
        for (int i = 0; i < 3; ++i) {
            uint32_t const mask = areTwo >> (8 * i) & 0xFF;
            store128(out, inOrder(eights[i], mask));
            out += FEW_CODES + __builtin_popcount(mask);
        }
        return storeExactly(out, {inOrder(eights[3], areTwo >> 24), FEW_CODES + __builtin_popcount(areTwo >> 24)});
    }

private:
    KX7_AVX2 uint32_t pairs() const { return pairsOf(eights[0], eights[1]) | pairsOf(eights[2], eights[3]) << 16; }
};

/** The codes of 8 units. */
struct FewCodes {
    __m128i found;

    KX7_AVX2 FewCodes(unsigned short const* codes, unsigned short const* in) : found(codesOfEight(codes, in)) {}

    KX7_AVX2 bool areComplete() const { return _mm_movemask_epi8(_mm_cmpeq_epi16(found, _mm_setzero_si128())) == 0; }

    KX7_AVX2 unsigned char* store(unsigned char* out) const
    {
        uint32_t const areTwo = pairsOf(found, found) & 0xFF;
        return storeExactly(out, {inOrder(found, areTwo), FEW_CODES + __builtin_popcount(areTwo)});
    }
};

/** Whether, and for which units, ASCII is written as it is. Sets differ in some controls and in punctuation. */
class Ascii {
public:
    KX7_AVX2 explicit Ascii(unsigned short const* codes) : m_isItself(true)
    {
        for (int i = 0x20; i < 0x80; i += 16) {
            __m256i units = _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
            units = _mm256_add_epi16(units, _mm256_set1_epi16(static_cast<short>(i)));
            __m256i const same = _mm256_cmpeq_epi16(units, load256(codes + i));
            // U+007F is none of those looked for.
            auto const differ = ~signsOf(same);
            if ((i == 0x70 ? differ << 2 : differ) != 0)
                m_isItself = false;
        }
        if (codes[0x09] != 0x09 || codes[0x0A] != 0x0A || codes[0x0D] != 0x0D)  // tab and line ends
            m_isItself = false;
    }

    /** The 32 units at `in` are such, and stored in `bytes`. */
    KX7_AVX2 bool find(unsigned short const* in, __m256i& bytes) const
    {
        __m256i const first = load256(in);
        __m256i const second = load256(in + 16);
        if (!_mm256_testz_si256(_mm256_or_si256(first, second), _mm256_set1_epi16(static_cast<short>(0xFF80))))
            return false;
        bytes = narrowed(first, second);
        __m256i const isGraphic = _mm256_and_si256(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)),
                                                   _mm256_cmpgt_epi8(_mm256_set1_epi8(0x7F), bytes));
        __m256i const isLineEnd = _mm256_or_si256(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\n')),
                                                  _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\r')));
        __m256i const isTab = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\t'));
        __m256i const isSure = _mm256_or_si256(_mm256_or_si256(isGraphic, isLineEnd), isTab);
        return m_isItself && _mm256_movemask_epi8(isSure) == -1;
    }

    /** A lane of ones for each of 8 units in 32-bit lanes that is graphic ASCII. */
    KX7_AVX2 __m256i lanesOf(__m256i units) const
    {
        __m256i const isGraphic = _mm256_and_si256(_mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x1F)),
                                                   _mm256_cmpgt_epi32(_mm256_set1_epi32(0x7F), units));
        return _mm256_and_si256(isGraphic, _mm256_set1_epi32(m_isItself ? -1 : 0));
    }

private:
    bool m_isItself;
};

/**
 * For four 32-bit lanes the shuffle that keeps what is written: of lanes in the low four bits of the mask only the
 * second byte, of those in the high four bits only the first two, of those in both all four, of the others none.
 */
struct LaneShuffles {
    alignas(16) unsigned char shuffles[256][16];
    unsigned char lengths[256];
    constexpr LaneShuffles() : shuffles(), lengths()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 4; ++lane) {
                bool const isOne = mask >> lane & 1;
                bool const isTwo = mask >> (lane + 4) & 1;
                unsigned int const first = isOne && !isTwo ? 1 : 0;
                unsigned int const last = isOne && isTwo ? 4 : isOne || isTwo ? 2 : 0;
                for (unsigned int byte = first; byte < last; ++byte)
                    shuffles[mask][at++] = static_cast<unsigned char>(4 * lane + byte);
            }
            lengths[mask] = static_cast<unsigned char>(at);
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

constexpr LaneShuffles LANE_SHUFFLES;

/** GB 18030: four bytes a lane of 8 sequences. */
KX7_AVX2 inline __m256i fourBytesOfLanes(__m256i index)
{
    // The halves as 16-bit values, each of which the tens and ones of make a pair of bytes.
    __m256 const rounded = _mm256_add_ps(_mm256_cvtepi32_ps(index), _mm256_set1_ps(0.5F));
    __m256i const front = _mm256_cvttps_epi32(_mm256_mul_ps(rounded, _mm256_set1_ps(1 / 1260.0F)));
    __m256i const back = _mm256_sub_epi32(index, _mm256_mullo_epi32(front, _mm256_set1_epi32(1260)));
    __m256i const halves = _mm256_or_si256(front, _mm256_slli_epi32(back, 16));
    __m256i const tens = _mm256_mulhi_epu16(halves, _mm256_set1_epi16(6554));
    __m256i const ones = _mm256_sub_epi16(halves, _mm256_mullo_epi16(tens, _mm256_set1_epi16(10)));
    return _mm256_add_epi16(_mm256_or_si256(tens, _mm256_slli_epi16(ones, 8)), _mm256_set1_epi16(0x3081));
}

/** What the characters of up to 8 units are written as. */
struct LongBlock {
    __m256i bytes;         ///< of the high byte that a single byte lacks, 0
    uint32_t masks[2];     ///< of four lanes each, as of LANE_SHUFFLES
    std::ptrdiff_t units;  ///< all but a last one whose partner is after the block; 0: some are lacking
    bool isWhole;          ///< no unit is lacking
    bool hasLong;          ///< there are codes of four bytes

    size_t count() const { return size_t{LANE_SHUFFLES.lengths[masks[0]]} + LANE_SHUFFLES.lengths[masks[1]]; }
};

/** 8 units, and the surrogate pairs among them. */
struct Lanes {
    __m256i units;
    __m256i isHigh;
    uint32_t highs;
    uint32_t partners;  ///< the low surrogates after these

    KX7_AVX2 explicit Lanes(unsigned short const* in) : units(_mm256_cvtepu16_epi32(load128(in)))
    {
        __m256i const kind = _mm256_and_si256(units, _mm256_set1_epi32(0xFC00));
        isHigh = _mm256_cmpeq_epi32(kind, _mm256_set1_epi32(0xD800));
        highs = signsOfLanes(isHigh);
        partners = highs << 1 & signsOfLanes(_mm256_cmpeq_epi32(kind, _mm256_set1_epi32(0xDC00)));
    }

    /** High surrogates that have no partner, but for one whose partner may be after the block. */
    uint32_t unpaired() const { return highs & ~(partners >> 1) & 0x7F; }

    /** The block of these `bytes`, of which those in `isLong` are made of an index. */
    KX7_AVX2 LongBlock block(__m256i bytes, __m256i isLong, __m256i index) const
    {
        if (highs != 0) {
            __m256i const next = _mm256_permutevar8x32_epi32(units, _mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 7));
            __m256i const pair = _mm256_add_epi32(_mm256_slli_epi32(units, 10), next);
            __m256i const offset = _mm256_set1_epi32(static_cast<int>(pairCodeOf(0, 0) - FIRST_FOUR_BYTE_CODE));
            index = _mm256_blendv_epi8(index, _mm256_add_epi32(pair, offset), isHigh);
        }
        bytes = _mm256_blendv_epi8(bytes, fourBytesOfLanes(index), isLong);
        __m256i const isSingle =
            _mm256_cmpeq_epi32(_mm256_and_si256(bytes, _mm256_set1_epi32(0xFF)), _mm256_setzero_si256());
        uint32_t const longs = signsOfLanes(isLong);
        uint32_t const single = signsOfLanes(isSingle);
        uint32_t const taken = (0xFFU >> (highs >> 7)) & ~partners;
        uint32_t const ones = (single | longs) & taken;
        uint32_t const twos = ~single & taken;
        return {bytes,
                {(ones & 0xF) | (twos & 0xF) << 4, ones >> 4 | (twos & 0xF0)},
                8 - static_cast<std::ptrdiff_t>(highs >> 7),
                true,
                longs != 0};
    }
};

constexpr LongBlock LACKING = {{}, {0, 0}, 0, false, false};

/** 8 units that are ASCII, of `run` or in pairs, without a lookup of their codes. */
KX7_AVX2 inline LongBlock longBlockOf(UnitRun const& run, Ascii const& ascii, unsigned short const* in)
{
    Lanes const lanes(in);
    __m256i const place = _mm256_sub_epi32(lanes.units, _mm256_set1_epi32(static_cast<int>(run.first)));
    __m256i const extent = _mm256_set1_epi32(static_cast<int>(run.extent));
    __m256i const isInRun = _mm256_cmpeq_epi32(_mm256_min_epu32(place, extent), place);
    __m256i const isLong = _mm256_or_si256(isInRun, lanes.isHigh);
    uint32_t const known = signsOfLanes(_mm256_or_si256(isLong, ascii.lanesOf(lanes.units))) | lanes.partners;
    if (known != 0xFF || lanes.unpaired() != 0)
        return LACKING;
    return lanes.block(_mm256_slli_epi32(lanes.units, 8), isLong,
                       _mm256_add_epi32(place, _mm256_set1_epi32(static_cast<int>(run.index))));
}

/** Any 8 units. Afterwards `run` is that of the last one that has four bytes. */
KX7_AVX2 inline LongBlock longBlock(GB18030Codes const& codes, unsigned short const* in, UnitRun& run)
{
    Lanes const lanes(in);
    __m128i const found = codesOfEight(codes.oneOrTwo, in);
    __m256i const zero = _mm256_setzero_si256();
    // High byte first, as it is written.
    __m256i const bytes = _mm256_cvtepu16_epi32(_mm_or_si128(_mm_slli_epi16(found, 8), _mm_srli_epi16(found, 8)));
    __m256i const isMissing = _mm256_cmpeq_epi32(bytes, zero);
    uint32_t const fourBytes = signsOfLanes(isMissing) & ~lanes.highs & ~lanes.partners;
    uint32_t lacking = lanes.unpaired();
    __m256i index = zero;
    if (fourBytes != 0) {
        __m256i const indexes = _mm256_cvtepu16_epi32(codesOfEight(codes.fourByte, in));
        lacking |= fourBytes & signsOfLanes(_mm256_cmpeq_epi32(indexes, zero));
        index = _mm256_sub_epi32(indexes, _mm256_set1_epi32(1));
        unsigned short const last = in[31 - __builtin_clz(fourBytes)];
        if (!run.has(last))
            run.moveTo(codes, last);
    }
    if (lacking != 0)
        return LACKING;
    return lanes.block(bytes, isMissing, index);
}

/** All of ASCII but U+0000 is written as single bytes. */
KX7_AVX2 inline bool allAsciiIsSingle(unsigned short const* codes)
{
    __m256i all = _mm256_set1_epi16(1);
    for (int i = 0; i < 0x80; i += 16) {
        __m256i const some = load256(codes + i);
        __m256i const shifted = _mm256_insert_epi16(some, static_cast<short>(i == 0 ? 1 : codes[i]), 0);
        // 0 becomes the greatest value.
        all = _mm256_max_epu16(all, _mm256_sub_epi16(shifted, _mm256_set1_epi16(1)));
    }
    return _mm256_testz_si256(all, _mm256_set1_epi16(static_cast<short>(0xFF00))) != 0;
}

/** What 16 units need that are ASCII, of `run` or in pairs. */
struct KnownUnits {
    bool areAll;  ///< else the rest is void
    std::ptrdiff_t units;
    size_t bytes;

    KX7_AVX2 KnownUnits(UnitRun const& run, bool isAsciiSingle, unsigned short const* in)
    {
        __m256i const lanes = load256(in);
        __m256i const kind = _mm256_and_si256(lanes, _mm256_set1_epi16(static_cast<short>(0xFC00)));
        __m256i const place = _mm256_sub_epi16(lanes, _mm256_set1_epi16(static_cast<short>(run.first)));
        uint32_t const isInRun = run.first <= 0xFFFF ? atMost(place, static_cast<unsigned short>(run.extent)) : 0;
        // Without U+0000.
        uint32_t const isAscii = isAsciiSingle ? atMost(_mm256_sub_epi16(lanes, _mm256_set1_epi16(1)), 0x7E) : 0;
        uint32_t const isHigh = equal(kind, 0xD800);
        uint32_t const isPartner = isHigh << 2 & equal(kind, 0xDC00);
        areAll = (isInRun | isAscii | isHigh | isPartner) == ~UINT32_C(0) && (isHigh << 2 & ~isPartner) == 0;
        units = CODES / 2 - static_cast<std::ptrdiff_t>(isHigh >> 31);
        bytes =
            static_cast<size_t>(__builtin_popcount(isAscii) + 4 * __builtin_popcount(isInRun | (isHigh & 0x3FFFFFFF))) /
            2;
    }

private:
    /** Two bits a lane. */
    KX7_AVX2 static uint32_t equal(__m256i lanes, unsigned short value)
    {
        return static_cast<uint32_t>(
            _mm256_movemask_epi8(_mm256_cmpeq_epi16(lanes, _mm256_set1_epi16(static_cast<short>(value)))));
    }
    KX7_AVX2 static uint32_t atMost(__m256i lanes, unsigned short value)
    {
        __m256i const bound = _mm256_set1_epi16(static_cast<short>(value));
        return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_min_epu16(lanes, bound), lanes)));
    }
};

/** Stores what is written, and up to 16 bytes after; returns where it ends. */
KX7_AVX2 inline unsigned char* store(unsigned char* to, LongBlock const& block)
{
    for (int half = 0; half < 2; ++half) {
        __m128i const lanes =
            half == 0 ? _mm256_castsi256_si128(block.bytes) : _mm256_extracti128_si256(block.bytes, 1);
        uint32_t const mask = block.masks[half];
        __m128i const shuffle = _mm_load_si128(reinterpret_cast<__m128i const*>(LANE_SHUFFLES.shuffles[mask]));
        store128(to, _mm_shuffle_epi8(lanes, shuffle));
        to += LANE_SHUFFLES.lengths[mask];
    }
    return to;
}

/** As DoubleByteEncodeLoops.h has it. */
struct DoubleByteAvx2 {
    using Ascii = kx7::Ascii;
    using Codes = kx7::Codes;
    using FewCodes = kx7::FewCodes;
    using Block = LongBlock;
    using KnownUnits = kx7::KnownUnits;

    KX7_AVX2 static bool isAsciiSingle(unsigned short const* codes) { return allAsciiIsSingle(codes); }
    KX7_AVX2 static Block blockOf(GB18030Codes const& codes, unsigned short const* in, UnitRun& run)
    {
        return longBlock(codes, in, run);
    }
};

}  // namespace

KX7_AVX2 void encodeDoubleByteAvx2(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                                   unsigned char*& out, unsigned char* outEnd)
{
    encodeDoubleByteBy<DoubleByteAvx2>(codes, in, end, out, outEnd);
}

KX7_AVX2 size_t countDoubleByteAvx2(unsigned short const* codes, unsigned short const*& in, unsigned short const* end)
{
    return countDoubleByteBy<DoubleByteAvx2>(codes, in, end);
}

KX7_AVX2 void encodeGB18030Avx2(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                                unsigned char*& out, unsigned char* outEnd)
{
    // Short texts seldom need more than this.
    if (end - in < CODES)
        encodeFew<DoubleByteAvx2>(codes.oneOrTwo, in, end, out, outEnd);
    if (end - in >= FEW_CODES) {
        Ascii const ascii(codes.oneOrTwo);
        UnitRun run;
        for (;;) {
            encodeBlocks<DoubleByteAvx2>(ascii, codes.oneOrTwo, in, end, out, outEnd);
            bool goesOn = true;
            bool hasLong = true;
            while (goesOn && hasLong) {
                unsigned char buffer[4 * COLLECTED_UNITS + 16];
                unsigned char* to = buffer;
                for (int i = 0; i < COLLECTED_UNITS / FEW_CODES; ++i) {
                    goesOn = end - in >= FEW_CODES && outEnd - out - (to - buffer) >= 4 * FEW_CODES;
                    if (!goesOn)
                        break;
                    LongBlock block = longBlockOf(run, ascii, in);
                    if (block.units == 0)
                        block = longBlock(codes, in, run);
                    goesOn = block.units != 0;
                    if (!goesOn)
                        break;
                    to = store(to, block);
                    in += block.units;
                    hasLong = block.hasLong;
                }
                memcpy(out, buffer, static_cast<size_t>(to - buffer));
                out += to - buffer;
            }
            if (!goesOn)
                break;
        }
    }
    encodeGB18030OneByOne(codes, in, end, out, outEnd);
}

KX7_AVX2 size_t countGB18030Avx2(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end)
{
    return countGB18030By<DoubleByteAvx2>(codes, in, end);
}

}  // namespace kx7

#endif
