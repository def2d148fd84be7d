// kx7text - the rules of UTF-8 over masks of a block's bytes, for the kernels of any instruction set (internal).
#ifndef KX7_KERNELS_UTF8STRUCTURE_H
#define KX7_KERNELS_UTF8STRUCTURE_H

#include <cstdint>

namespace kx7 {

/** Leads of a block, by the least length that they tell: a bit a byte. */
template <class Mask>
struct Leads {
    Mask two;
    Mask three;
    Mask four;

    static constexpr int BITS = 8 * sizeof(Mask);

    /** The continuation bytes that they want in their block. */
    Mask wanted() const { return two << 1 | three << 2 | four << 3; }

    /** The same in the block after it. */
    Mask wantedAfter() const { return two >> (BITS - 1) | three >> (BITS - 2) | four >> (BITS - 3); }

    /** Bytes of the character that the end of the block truncates. */
    int truncated() const
    {
        return two >> (BITS - 1) != 0 ? 1 : three >> (BITS - 2) != 0 ? 2 : four >> (BITS - 3) != 0 ? 3 : 0;
    }
};

/** Bytes of a block that the strict rules tell apart: at least or equal to a value. */
template <class Mask>
struct StrictBytes {
    Mask atLeastC2;
    Mask atLeastF5;
    Mask atLeast90;
    Mask atLeastA0;
    Mask isE0;
    Mask isED;
    Mask isF0;
    Mask isF4;

    /**
     * The bytes that no well-formed sequence has where they stand; the structure is sound. `before` is the block
     * before: the second byte is narrower where a wider one would make an overlong form, a surrogate or too large a
     * value.
     */
    Mask wrong(Leads<Mask> const& leads, StrictBytes const& before) const
    {
        constexpr int LAST = 8 * sizeof(Mask) - 1;
        return (leads.two & ~atLeastC2) | atLeastF5 | ((isE0 << 1 | before.isE0 >> LAST) & ~atLeastA0) |
               ((isED << 1 | before.isED >> LAST) & atLeastA0) | ((isF0 << 1 | before.isF0 >> LAST) & ~atLeast90) |
               ((isF4 << 1 | before.isF4 >> LAST) & atLeast90);
    }
};

}  // namespace kx7

#endif
