// kx7text - encoding and counting of sets of one and two bytes, for any instruction set (internal).
//
// `V` names the types of an instruction set:
//   V::Ascii       of all codes; find (in, bytes) says whether 32 units are ASCII that is written in one byte each
//   V::Codes       of 32 units; areComplete() that all have one, count() their bytes, store (out) writes these and no
//                  more than 64, and returns where they end
//   V::FewCodes    the same of 8 units, without count()
//   V::Block       of GB 18030: what 16 or 8 units are written as
//   V::KnownUnits  of GB 18030: what the next units need that are ASCII, of a run or in pairs
//
// A source file includes this after it has defined KX7_TARGET, the attribute of what it is compiled for.
#ifndef KX7_KERNELS_DOUBLEBYTEENCODELOOPS_H
#define KX7_KERNELS_DOUBLEBYTEENCODELOOPS_H

#ifndef KX7_TARGET
#error "KX7_TARGET is not defined"
#endif

#include "kx7/kernels/DoubleByteEncode.h"

namespace kx7 {

/** Units of V::Codes and V::FewCodes. */
constexpr std::ptrdiff_t CODES = 32;
constexpr std::ptrdiff_t FEW_CODES = 8;

/** Blocks of 32 units up to the first with one that the table lacks. */
template <class V>
KX7_TARGET inline void encodeBlocks(typename V::Ascii const& ascii, unsigned short const* codes,
                                    unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                                    unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
    while (end - in >= CODES && outEnd - out >= 2 * CODES) {
        __m256i narrow;
        if (ascii.find(in, narrow)) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), narrow);
            out += CODES;
        }
        else {
            typename V::Codes const found(codes, in);
            if (!found.areComplete())
                break;
            out = found.store(out);
        }
        in += CODES;
    }
    inOut = in;
    outOut = out;
}

/** The same of 8 units. */
template <class V>
KX7_TARGET inline void encodeFew(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                                 unsigned char*& out, unsigned char* outEnd)
{
    while (end - in >= FEW_CODES && outEnd - out >= 2 * FEW_CODES) {
        typename V::FewCodes const found(codes, in);
        if (!found.areComplete())
            break;
        out = found.store(out);
        in += FEW_CODES;
    }
}

/** The bytes of blocks of 32 units up to the first with one that the table lacks. */
template <class V>
KX7_TARGET inline size_t countBlocks(typename V::Ascii const& ascii, unsigned short const* codes,
                                     unsigned short const*& in, unsigned short const* end)
{
    size_t bytes = 0;
    while (end - in >= CODES) {
        __m256i narrow;
        if (ascii.find(in, narrow)) {
            bytes += CODES;
        }
        else {
            typename V::Codes const found(codes, in);
            if (!found.areComplete())
                break;
            bytes += found.count();
        }
        in += CODES;
    }
    return bytes;
}

/** As Kernels::encodeDoubleByte. */
template <class V>
KX7_TARGET inline void encodeDoubleByteBy(unsigned short const* codes, unsigned short const*& in,
                                          unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    if (end - in >= CODES)
        encodeBlocks<V>(typename V::Ascii(codes), codes, in, end, out, outEnd);
    encodeFew<V>(codes, in, end, out, outEnd);
    encodeDoubleByteOneByOne(codes, in, end, out, outEnd);
}

/** As Kernels::countDoubleByte. */
template <class V>
KX7_TARGET inline size_t countDoubleByteBy(unsigned short const* codes, unsigned short const*& in,
                                           unsigned short const* end)
{
    size_t const bytes = end - in >= CODES ? countBlocks<V>(typename V::Ascii(codes), codes, in, end) : 0;
    return bytes + countDoubleByteOneByOne(codes, in, end);
}

/** As Kernels::countGB18030. */
template <class V>
KX7_TARGET inline size_t countGB18030By(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end)
{
    size_t bytes = 0;
    if (end - in >= CODES) {
        bool const isAsciiSingle = V::isAsciiSingle(codes.oneOrTwo);
        UnitRun run;
        do {
            typename V::KnownUnits const known(run, isAsciiSingle, in);
            if (known.areAll) {
                in += known.units;
                bytes += known.bytes;
                continue;
            }
            typename V::Codes const found(codes.oneOrTwo, in);
            if (found.areComplete()) {
                in += CODES;
                bytes += found.count();
                continue;
            }
            typename V::Block const block = V::blockOf(codes, in, run);
            in += block.units;
            bytes += block.count();
            if (!block.isWhole)
                return bytes;
        } while (end - in >= CODES);
    }
    return bytes + countGB18030OneByOne(codes, in, end);
}

}  // namespace kx7

#endif
