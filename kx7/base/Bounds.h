// kx7text - sums of a pointer and a capacity, and counts in 32 bits, that cannot wrap; overlap (internal).
#ifndef KX7_BASE_BOUNDS_H
#define KX7_BASE_BOUNDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kx7 {

/**
 * min(count, the most values that an object at `begin` can have). Callers pass capacities, limits and counts of
 * 0xFFFFFFFF for "no bound", which reach beyond the addresses where pointers have 32 bits.
 */
template <class T>
size_t reachable(T const* begin, size_t count)
{
    size_t const addressable = UINTPTR_MAX - reinterpret_cast<uintptr_t>(begin);
    return std::min(count, std::min(addressable, size_t{PTRDIFF_MAX}) / sizeof(T));
}

/** The end of `count` values at `begin`, as far as they are reachable. Every such sum is made here. */
template <class T>
T* endOf(T* begin, size_t count)
{
    return begin + reachable(begin, count);
}

/**
 * Whether what is written, up to `written` bytes and one more, may overlap text of which `read` bytes and one more are
 * still to be read.
 */
inline bool mayOverlap(unsigned char const* source, size_t read, unsigned char const* dest, size_t written)
{
    auto const from = reinterpret_cast<uintptr_t>(source);
    auto const to = reinterpret_cast<uintptr_t>(dest);
    return from <= to ? to - from <= read : from - to <= written;
}

/** A count as published operations return it: 0xFFFFFFFF stands for all that 32 bits do not hold. */
constexpr unsigned int saturated(uint64_t count)
{
    return count < 0xFFFFFFFF ? static_cast<unsigned int>(count) : 0xFFFFFFFF;
}

}  // namespace kx7

#endif
