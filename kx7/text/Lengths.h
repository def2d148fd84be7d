// kx7text - the bounds of the text classes and the errors after them (internal).
#ifndef KX7_TEXT_LENGTHS_H
#define KX7_TEXT_LENGTHS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace kx7 {

constexpr size_t MAX_STRING_LENGTH = 0xFFFFFFFE;

/** `units` as the length of a string; throws std::length_error where no string can have it. */
inline unsigned int checkedLength(uint64_t units)
{
    // The second bound is the narrower one where pointers have 32 bits.
    if (units > std::min<uint64_t>(MAX_STRING_LENGTH, PTRDIFF_MAX / sizeof(unsigned short) - 1))
        throw std::length_error("exceed maximum string length");
    return static_cast<unsigned int>(units);
}

[[noreturn]] inline void throwInvalidStringIndex()
{
    throw std::out_of_range("invalid string index given");
}

}  // namespace kx7

#endif
