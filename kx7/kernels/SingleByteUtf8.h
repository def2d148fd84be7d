// kx7text - what the kernels from UTF-8 to single-byte sets share (internal).
#ifndef KX7_KERNELS_SINGLEBYTEUTF8_H
#define KX7_KERNELS_SINGLEBYTEUTF8_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kx7/base/Utf8.h"
#include "kx7/kernels/Bits.h"
#include "kx7/kernels/Page.h"
#include "kx7/kernels/SingleByte.h"
#include "kx7/kernels/Utf8Structure.h"

namespace kx7 {

/** Whether the characters of a window have three bytes. */
inline bool isThree(UnitWindow const& window)
{
    return window.first >= 0x800;
}

/** Which of the windows has characters of three bytes; where both have, the second is not used. */
enum class Three { NONE, FIRST, SECOND };

/** The bytes that stand before the last in all characters of a window; in `pair` without its lowest bit. */
struct WindowLead {
    unsigned char lead;  ///< of three
    unsigned char pair;

    explicit WindowLead(UnitWindow const& window)
        : lead(static_cast<unsigned char>(0xE0 | window.first >> 12)),
          pair(static_cast<unsigned char>(isThree(window) ? 0x80 | (window.first >> 6 & 0x3F)
                                                          : 0xC0 | window.first >> 6))
    {
    }
};

/** A block's bytes that the windows tell apart: a bit a byte. */
template <class Mask>
struct WindowBytes {
    Mask continuations;
    Mask firstPairs;
    Mask secondPairs;  ///< 0 where the second window is not looked for
    Mask leads;        ///< of three
};

/** The characters of a block. */
template <class Mask>
struct WindowCharacters {
    Leads<Mask> leads;
    Mask wanted;  ///< continuation bytes, by the leads
    Mask kept;    ///< where characters end
    Mask bad;     ///< what is not in the windows, the lowest bit at least; a kernel adds what is not mapped

    static constexpr int BITS = Leads<Mask>::BITS;

    /** `before`: the leads of the block before. */
    template <Three THREE>
    static WindowCharacters of(WindowBytes<Mask> const& bytes, Leads<Mask> const& before)
    {
        WindowCharacters found;
        found.leads = {bytes.leads, bytes.leads, 0};
        Mask threePairs = 0;
        if (THREE == Three::FIRST)
            threePairs = bytes.firstPairs;
        else
            found.leads.two |= bytes.firstPairs;
        if (THREE == Three::SECOND)
            threePairs = bytes.secondPairs;
        else
            found.leads.two |= bytes.secondPairs;
        Mask const seconds = found.leads.three << 1 | before.three >> (BITS - 1);
        found.wanted = found.leads.wanted() | before.wantedAfter();
        found.kept = ~(found.leads.two | seconds);
        found.bad = (bytes.continuations ^ found.wanted) | (seconds & ~threePairs);
        return found;
    }
};

/** As much of a block as can be converted. */
template <class Mask>
struct WindowPart {
    Mask kept;            ///< where characters end
    std::ptrdiff_t used;  ///< bytes; below 0 where a character began in the block before

    /** Up to what is bad, and what there is capacity for. */
    WindowPart(WindowCharacters<Mask> const& found, Leads<Mask> const& before, std::ptrdiff_t capacity)
        : kept(found.kept), used(BITS)
    {
        if (found.bad != 0) {
            // The character at fault begins here or at the last lead.
            used = __builtin_ctzll(found.bad);
            if (found.wanted >> used & 1)
                used = indexAfterHighest(found.leads.two & lowBits<Mask>(used), before.truncated() - 1) - 1;
            kept &= lowBits<Mask>(std::max(used, std::ptrdiff_t{0}));
        }
        std::ptrdiff_t over = __builtin_popcountll(kept) - capacity;
        if (over > 0) {
            for (; over > 0; --over)
                kept ^= Mask{1} << (indexAfterHighest(kept, 0) - 1);
            used = indexAfterHighest(kept, before.truncated());
        }
    }

private:
    static constexpr int BITS = Leads<Mask>::BITS;

    /** Index after the highest bit; where there is none, the place, below 0, of what began `before` bytes earlier. */
    static std::ptrdiff_t indexAfterHighest(Mask bits, int before)
    {
        return bits != 0 ? 64 - __builtin_clzll(bits) : -before;
    }
};

/** Converts one character of at most three bytes; there is capacity. False: it is not mapped, or the text ends. */
inline bool encodeOneFromUTF8(SingleByteTables const& tables, unsigned char const*& in, unsigned char*& out)
{
    unsigned char const* next = in;
    unsigned int const unit = readTerminatedUtf8(next);
    if (unit == 0 || unit > 0xFFFF)
        return false;
    unsigned char const byte = tables.get(static_cast<unsigned short>(unit));
    if (byte == 0)
        return false;
    *out++ = byte;
    in = next;
    return true;
}

}  // namespace kx7

#endif
