// kx7text - what the encodings of 16- and 32-bit values in host byte order share (internal).
#ifndef KX7_CONVERTERS_WIDE_H
#define KX7_CONVERTERS_WIDE_H

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "kx7/converters/PublishedRules.h"

namespace kx7 {

/** The value of type T at `p`, which need not be aligned. */
template <class T>
T loadWide(unsigned char const* p)
{
    T value;
    memcpy(&value, p, sizeof value);
    return value;
}

template <class T>
void storeWide(unsigned char*& out, T value)
{
    memcpy(out, &value, sizeof value);
    out += sizeof value;
}

/** Bytes of the whole values before the first 0 value, at most `most`. Touches no page that these do not reach. */
template <class T>
size_t wideLength(unsigned char const* text, size_t most)
{
    if (reinterpret_cast<uintptr_t>(text) % sizeof(T) == 0) {
        if constexpr (sizeof(T) == sizeof(unsigned short))
            return unitLength(reinterpret_cast<unsigned short const*>(text), most / sizeof(T)) * sizeof(T);
        if constexpr (sizeof(T) == sizeof(wchar_t)) {
            auto const* const values = reinterpret_cast<wchar_t const*>(text);
            return (most == SIZE_MAX ? wcslen(values) : wcsnlen(values, most / sizeof(T))) * sizeof(T);
        }
    }
    size_t n = 0;
    while (most - n >= sizeof(T) && loadWide<T>(text + n) != 0)
        n += sizeof(T);
    return n;
}

/** Whole values of text up to its 0 value, at most `byteCount` bytes unless that is UNTIL_TERMINATOR; saturated. */
template <class T>
unsigned int countWide(void const* source, unsigned int byteCount)
{
    auto const* const text = static_cast<unsigned char const*>(source);
    size_t const most = byteCount == UNTIL_TERMINATOR ? SIZE_MAX : reachable(text, byteCount);
    return saturated(wideLength<T>(text, most) / sizeof(T));
}

}  // namespace kx7

#endif
