// kx7text - vector kernels: which there are, and which this machine runs (internal).
//
// A kernel converts a run that it is sure of and hands the rest back; the converters, character by character, remain
// the one statement of the rules. The kernels that convert have one shape: they move `in` and `out` over what they
// converted, read only from `in` up to `end`, write only what they move `out` over, never beyond `outEnd`, and may do
// nothing. A capacity is often larger than the destination, so nothing is written after the text even where there is
// capacity.
#ifndef KX7_KERNELS_KERNELS_H
#define KX7_KERNELS_KERNELS_H

#include <atomic>
#include <cstddef>

#include "kx7/kernels/PairUnits.h"
#include "kx7/kernels/Plain.h"
#include "kx7/kernels/SingleByte.h"
#include "kx7/kernels/Tuning.h"
#include "kx7/kernels/vector/Target.h"

namespace kx7 {

enum class InstructionSet {
    PLAIN,     ///< no kernels: the converters alone
    BASELINE,  ///< what every machine has, or nearly: on x86 SSE2
    AVX2,
    AVX512  ///< with VBMI and VBMI2
};

/** Consecutive four-byte codes of GB 18030 with consecutive units. Codes are counted from 81 30 81 30. */
struct FourByteRun {
    unsigned int first;
    unsigned int length;
    unsigned int unit;                ///< of the first code
    unsigned int firstSupplementary;  ///< the code of U+10000
};

struct GB18030Range;

/** What GB 18030 writes units as: two tables over all units, of which the second is asked where the first has a 0. */
struct GB18030Codes {
    unsigned short const* oneOrTwo;   ///< MultibyteTables::unitCodes; 0 for high surrogates
    unsigned short const* fourByte;   ///< the index of the four-byte sequence, plus 1; 0 where the first has any
    GB18030Range const* const* runs;  ///< for each 128 units a run whose sequences follow each other; may be null
};

/**
 * A kernel that converts and counts nothing: what an instruction set has no vectors for is left to the loops of the
 * converters.
 */
struct Nothing {
    template <class Result, class... Arguments>
    using Function = Result (*)(Arguments...);

    template <class Result, class... Arguments>
    constexpr operator Function<Result, Arguments...>() const
    {
        return [](Arguments...) { return Result(); };
    }
};

/**
 * The kernels of an instruction set. Kernels.cpp has a table for each, which copies the one of the next lower set and
 * replaces by name what its own set does better.
 */
struct Kernels {
    /** There is something faster than the converters' loops at all. */
    bool areAny = false;

    /**
     * Code units before the first 0 unit, at most `most`. May read the whole aligned block that holds the 0 unit or the
     * last of the `most` units, and so never a page that the text does not reach.
     */
    size_t (*unitLength)(unsigned short const* text, size_t most) = unitLengthPlain;

    /** Units before the first that is `unit`; `count` where none of them is. */
    size_t (*unitFind)(unsigned short const* text, size_t count, unsigned short unit) = unitFindPlain;

    /**
     * Units before the first place where the texts differ or both have a 0 unit, at most `most`. Touches no page that
     * the texts do not reach up to that place.
     */
    size_t (*unitMatch)(unsigned short const* a, unsigned short const* b, size_t most) = unitMatchPlain;

    /** UTF-8 whose sequences are as long as their leads say. */
    void (*decodeUTF8)(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                       unsigned short* outEnd) = Nothing();

    /** UTF-16 without unpaired high surrogates. */
    void (*encodeUTF8)(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                       unsigned char* outEnd) = Nothing();

    /** Bytes of UTF-8 in front that are well-formed and end with a character; may be fewer than there are. */
    size_t (*wellFormedUTF8)(unsigned char const* in, unsigned char const* end) = Nothing();

    /** Characters of UTF-8 whose sequences are as long as their leads say, none of them zero. */
    size_t (*countUTF8)(unsigned char const*& in, unsigned char const* end) = Nothing();

    /** Bytes of UTF-8 for UTF-16 without unpaired high surrogates. */
    size_t (*countAsUTF8)(unsigned short const*& in, unsigned short const* end) = Nothing();

    /** Bytes that the set maps. */
    void (*decodeSingleByte)(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                             unsigned short*& out, unsigned short* outEnd) = Nothing();

    /** Units that the set maps. */
    void (*encodeSingleByte)(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                             unsigned char*& out, unsigned char* outEnd) = Nothing();

    /**
     * UTF-8 up to its zero byte, as bytes of a set that maps it. Reads on to the end of the page in which that byte is;
     * may read so much before the text.
     */
    void (*singleByteFromUTF8)(SingleByteTables const& tables, unsigned char const*& in, unsigned char*& out,
                               unsigned char* outEnd) = Nothing();

    /** Characters of a double-byte set that `pairs` has. */
    void (*decodePairs)(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end,
                        unsigned short*& out, unsigned short* outEnd) = Nothing();

    /** Four-byte characters of GB 18030 in a run or above the Basic Multilingual Plane, and ASCII between them. */
    void (*decodeFourBytes)(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& in,
                            unsigned char const* end, unsigned short*& out, unsigned short* outEnd) = Nothing();

    /**
     * Characters of a double-byte set: a byte whose type has LEAD_BYTE and one that has TRAIL_BYTE (ByteTypeTables.h),
     * or any other byte alone.
     */
    size_t (*countPairs)(unsigned char const* types, unsigned char const*& in, unsigned char const* end) = Nothing();

    /** Characters that `pairs` has, moving `in` over them; may be fewer than there are in front. */
    size_t (*countMappedPairs)(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end) = Nothing();

    /** Units of GB 18030, one for what is malformed or unmapped. */
    size_t (*countUnitsOfGB18030)(unsigned char const*& in, unsigned char const* end) = Nothing();

    /** Units for which `codes` (MultibyteTables::unitCodes) has one or two bytes. */
    void (*encodeDoubleByte)(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                             unsigned char*& out, unsigned char* outEnd) = Nothing();

    /** The bytes of such units, moving `in` over them. */
    size_t (*countDoubleByte)(unsigned short const* codes, unsigned short const*& in,
                              unsigned short const* end) = Nothing();

    /** Units for which a table has one, two or four bytes, and surrogate pairs. */
    void (*encodeGB18030)(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                          unsigned char*& out, unsigned char* outEnd) = Nothing();

    /** The bytes of such units, moving `in` over them. */
    size_t (*countGB18030)(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end) = Nothing();

    /** Bytes of UTF-8 that are encoded sooner character by character, into single-byte and into double-byte sets. */
    ptrdiff_t mostDirectToSingleByte = ALL_DIRECT;
    ptrdiff_t mostDirectToDoubleByte = ALL_DIRECT;
};

/** The best set that the machine has. */
InstructionSet detectInstructionSet();

/** The kernels of an instruction set. The machine must have it. */
Kernels const& kernelsOf(InstructionSet set);

/** The kernels in use: the best, found when the library is loaded. */
extern std::atomic<Kernels const*> kernelsInUse;

inline Kernels const& kernels()
{
    return *kernelsInUse.load(std::memory_order_relaxed);
}

/** Makes all conversions use one set, for tests and benchmarks. False: the machine lacks it. */
bool useInstructionSet(InstructionSet set);

}  // namespace kx7

#endif
