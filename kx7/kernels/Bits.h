// kx7text - bit masks of the lanes of a block (internal).
#ifndef KX7_KERNELS_BITS_H
#define KX7_KERNELS_BITS_H

#include <cstddef>

namespace kx7 {

/** Mask of the lowest min(count, bits of Mask) bits. */
template <class Mask>
constexpr Mask lowBits(std::ptrdiff_t count)
{
    constexpr std::ptrdiff_t ALL = 8 * sizeof(Mask);
    return count >= ALL ? static_cast<Mask>(~Mask{0}) : static_cast<Mask>((Mask{1} << count) - 1);
}

}  // namespace kx7

#endif
