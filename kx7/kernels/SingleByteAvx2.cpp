// kx7text - single-byte sets with AVX2.
//
// Decoding looks the row of units up by the row of the codes, where all codes of a block have the place in it that they
// have in theirs: that is a shuffle for each byte of the units, and two to know it. Else the low and the high bytes of
// the units are looked up in tables of 128 bytes for the upper half of the codes. The codes from 0x20 to 0x7E must
// stand for themselves; a set in which a code below does not has those looked up one by one.
//
// Encoding looks the units up in the windows of the set, of which the first must hold printable ASCII itself. The few
// units elsewhere, punctuation mostly, are looked up one by one.
//
// ISO 8859-1 needs no table: its units are its bytes.
//
// The last block ends at the end of the range and overlaps the one before, so that nothing is read or written outside.
#include "kx7/kernels/SingleByteAvx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>

#include "kx7/kernels/Avx2.h"
#include "kx7/kernels/Baseline.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 32;
constexpr uint32_t ALL = 0xFFFFFFFF;

KX7_AVX2 inline uint32_t zerosOf(__m256i bytes)
{
    return signsOf(_mm256_cmpeq_epi8(bytes, _mm256_setzero_si256()));
}

/** Converts a range of at least a block: blocks, and the last one once more from the end. */
template <class Block, class From, class To>
KX7_AVX2 inline void convertBlocks(Block block, From const*& inOut, To*& outOut, From const* end)
{
    From const* in = inOut;
    To* out = outOut;
    while (end - in >= BLOCK && block(in, out)) {
        in += BLOCK;
        out += BLOCK;
    }
    std::ptrdiff_t const left = end - in;
    if (left > 0 && left < BLOCK && block(end - BLOCK, out + left - BLOCK)) {
        in = end;
        out += left;
    }
    inOut = in;
    outOut = out;
}

/** Which codes of a block need the table. */
enum class Upper { NONE, FROM_0xC0, ANY };

/** By the least of its bytes, taken as signed. */
KX7_AVX2 inline Upper upperOf(__m256i least)
{
    if (signsOf(least) == 0)
        return Upper::NONE;
    return signsOf(_mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(0xC0)), least)) == 0 ? Upper::FROM_0xC0
                                                                                             : Upper::ANY;
}

/** Decodes a block. False, with nothing written: it holds a code that is not mapped. */
template <Upper UPPER>
KX7_AVX2 inline bool decodeBlock(SingleByteTables const& tables, unsigned char const* from, unsigned short* to)
{
    __m256i const original = load256(from);
    __m256i const zero = _mm256_setzero_si256();
    __m256i const bytes = inOrderOfPacks(original);
    __m256i lows = bytes;
    __m256i highs = zero;
    if constexpr (UPPER != Upper::NONE) {
        constexpr bool FROM_64 = UPPER == Upper::FROM_0xC0;
        __m256i const codes = _mm256_and_si256(bytes, _mm256_set1_epi8(0x7F));
        RowBits const bits(codes);
        lows = _mm256_blendv_epi8(bytes, lookUp<FROM_64>(tables.lowBytes + 0x80, codes, bits), bytes);
        highs = _mm256_and_si256(lookUp<FROM_64>(tables.highBytes + 0x80, codes, bits), _mm256_cmpgt_epi8(zero, bytes));
    }
    if (zerosOf(_mm256_or_si256(lows, highs)) != 0)
        return false;
    uint32_t controls = 0;
    if (tables.byteIdentity != Identity::ASCII) {
        // A positive byte from 0x20 on stays positive, and all others do not.
        controls = signsOf(
            _mm256_andnot_si256(original, _mm256_or_si256(_mm256_sub_epi8(original, _mm256_set1_epi8(0x20)),
                                                          _mm256_cmpeq_epi8(original, _mm256_set1_epi8(0x7F)))));
        for (uint32_t left = controls; left != 0; left &= left - 1)
            if (tables.toUnicode[from[__builtin_ctz(left)]] == 0)
                return false;
    }
    store256(to, _mm256_unpacklo_epi8(lows, highs));
    store256(to + BLOCK / 2, _mm256_unpackhi_epi8(lows, highs));
    for (; controls != 0; controls &= controls - 1)
        to[__builtin_ctz(controls)] = tables.toUnicode[from[__builtin_ctz(controls)]];
    return true;
}

/** Decodes a block in which all codes keep their places. False, with nothing written: it holds another. */
KX7_AVX2 inline bool decodeRegularBlock(RegularCodes const& codes, unsigned char const* from, unsigned short* to)
{
    __m256i const bytes = inOrderOfPacks(load256(from));
    __m256i const rows = highNibbles(bytes);
    __m256i const places = _mm256_and_si256(bytes, _mm256_set1_epi8(0xF));
    __m256i const regular = _mm256_blendv_epi8(_mm256_shuffle_epi8(inBothHalves(codes.regular[0]), places),
                                               _mm256_shuffle_epi8(inBothHalves(codes.regular[1]), places), bytes);
    if (signsOf(hasBits(regular, bitOfRow(rows))) != ALL)
        return false;
    __m256i const lows = _mm256_or_si256(_mm256_shuffle_epi8(inBothHalves(codes.lowRows), rows), places);
    __m256i const highs = _mm256_shuffle_epi8(inBothHalves(codes.highRows), rows);
    store256(to, _mm256_unpacklo_epi8(lows, highs));
    store256(to + BLOCK / 2, _mm256_unpackhi_epi8(lows, highs));
    return true;
}

/** Decodes `count` blocks, of which `least` has the least bytes. The number decoded. */
KX7_AVX2 inline std::ptrdiff_t decodeBlocks(SingleByteTables const& tables, unsigned char const* from,
                                            unsigned short* to, std::ptrdiff_t count, __m256i least)
{
    std::ptrdiff_t done = 0;
    switch (upperOf(least)) {
        case Upper::NONE:
            while (done != count && decodeBlock<Upper::NONE>(tables, from + done * BLOCK, to + done * BLOCK))
                ++done;
            break;
        case Upper::FROM_0xC0:
            while (done != count && decodeBlock<Upper::FROM_0xC0>(tables, from + done * BLOCK, to + done * BLOCK))
                ++done;
            break;
        case Upper::ANY:
            while (done != count && decodeBlock<Upper::ANY>(tables, from + done * BLOCK, to + done * BLOCK))
                ++done;
            break;
    }
    return done;
}

}  // namespace

KX7_AVX2 void decodeSingleByteAvx2(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                                   unsigned short*& out, unsigned short* outEnd)
{
    unsigned char const* const last = in + std::min(end - in, outEnd - out);
    if (last - in < BLOCK) {
        decodeSingleByteBaseline(tables, in, end, out, outEnd);
        return;
    }
    auto const latin1 = [](unsigned char const* from, unsigned short* to) KX7_AVX2 {
        __m256i const bytes = load256(from);
        if (zerosOf(bytes) != 0)
            return false;
        store256(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
        store256(to + BLOCK / 2, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
        return true;
    };
    auto const block = [&](unsigned char const* from, unsigned short* to)
                           KX7_AVX2 { return decodeBlocks(tables, from, to, 1, load256(from)) == 1; };
    if (tables.isLatin1) {
        convertBlocks(latin1, in, out, last);
    }
    else if (tables.decodesPrintableASCII) {
        // Four at a time, so that text in which they differ misleads the processor less often.
        while (last - in >= 4 * BLOCK) {
            __m256i const least = _mm256_min_epi8(_mm256_min_epi8(load256(in), load256(in + BLOCK)),
                                                  _mm256_min_epi8(load256(in + 2 * BLOCK), load256(in + 3 * BLOCK)));
            std::ptrdiff_t done = 0;
            if (tables.mostlyRegular && upperOf(least) != Upper::NONE)
                while (done != 4 && decodeRegularBlock(tables.regularCodes, in + done * BLOCK, out + done * BLOCK))
                    ++done;
            done += decodeBlocks(tables, in + done * BLOCK, out + done * BLOCK, 4 - done, least);
            in += done * BLOCK;
            out += done * BLOCK;
            if (done != 4)
                break;
        }
        convertBlocks(block, in, out, last);
    }
    // What is left is less than a block, or begins with one that holds a code which is not mapped.
    decodeSingleByteBaseline(tables, in, end, out, outEnd);
}

KX7_AVX2 void encodeSingleByteAvx2(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                                   unsigned char*& out, unsigned char* outEnd)
{
    unsigned short const* const last = in + std::min(end - in, outEnd - out);
    if (last - in < BLOCK) {
        encodeSingleByteBaseline(tables, in, end, out, outEnd);
        return;
    }
    auto const latin1 = [](unsigned short const* from, unsigned char* to) KX7_AVX2 {
        __m256i const a = load256(from);
        __m256i const b = load256(from + BLOCK / 2);
        if (!_mm256_testz_si256(_mm256_or_si256(a, b), _mm256_set1_epi16(static_cast<short>(0xFF00))))
            return false;
        __m256i const bytes = inOrderOfPacks(_mm256_packus_epi16(a, b));
        if (zerosOf(bytes) != 0)
            return false;
        store256(to, bytes);
        return true;
    };
    __m256i const blockBits = _mm256_set1_epi16(static_cast<short>(~(UnitWindow::SIZE - 1)));
    __m256i const firsts[] = {_mm256_setzero_si256(), _mm256_set1_epi16(static_cast<short>(tables.windows[1].first)),
                              _mm256_set1_epi16(static_cast<short>(tables.windows[2].first))};
    auto const block = [&](unsigned short const* from, unsigned char* to) KX7_AVX2 {
        __m256i const a = load256(from);
        __m256i const b = load256(from + BLOCK / 2);
        __m256i const blockA = _mm256_and_si256(a, blockBits);
        __m256i const blockB = _mm256_and_si256(b, blockBits);
        // What of the units is in a window: ones in its bytes, in the order in which the units are packed below.
        auto const inWindow = [&](int i) KX7_AVX2 {
            return _mm256_packs_epi16(_mm256_cmpeq_epi16(blockA, firsts[i]), _mm256_cmpeq_epi16(blockB, firsts[i]));
        };
        __m256i const codes = _mm256_packus_epi16(_mm256_andnot_si256(blockBits, a), _mm256_andnot_si256(blockBits, b));
        __m256i const isASCII = inWindow(0);
        __m256i bytes = _mm256_and_si256(codes, isASCII);
        if (signsOf(isASCII) != ALL) {
            RowBits const bits(codes);
            for (int i = 1; i < SingleByteTables::WINDOWS; ++i) {
                __m256i const isHere = inWindow(i);
                if (signsOf(isHere) != 0)
                    bytes = _mm256_blendv_epi8(bytes, lookUp(tables.windows[i].bytes, codes, bits), isHere);
            }
        }
        if (tables.unitIdentity != Identity::ASCII) {
            __m256i const isControl = _mm256_or_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(0x20), codes),
                                                      _mm256_cmpeq_epi8(codes, _mm256_set1_epi8(0x7F)));
            bytes = _mm256_andnot_si256(_mm256_and_si256(isControl, isASCII), bytes);
        }
        bytes = inOrderOfPacks(bytes);
        uint32_t const others = zerosOf(bytes);
        if (others == 0) {
            store256(to, bytes);
            return true;
        }
        alignas(32) unsigned char text[BLOCK];
        store256(text, bytes);
        for (uint32_t left = others; left != 0; left &= left - 1) {
            int const at = __builtin_ctz(left);
            text[at] = tables.get(from[at]);
            if (text[at] == 0)
                return false;
        }
        store256(to, load256(text));
        return true;
    };
    if (tables.isLatin1)
        convertBlocks(latin1, in, out, last);
    else if (tables.encodesPrintableASCII)
        convertBlocks(block, in, out, last);
    encodeSingleByteBaseline(tables, in, end, out, outEnd);
}

}  // namespace kx7

#endif
