// kx7text - the searches in UTF-16 text as plain loops, where vectors have nothing to add (internal).
#ifndef KX7_KERNELS_PLAIN_H
#define KX7_KERNELS_PLAIN_H

#include <algorithm>
#include <cstddef>

namespace kx7 {

inline size_t unitLengthPlain(unsigned short const* text, size_t most)
{
    size_t n = 0;
    while (n < most && text[n] != 0)
        ++n;
    return n;
}

inline size_t unitFindPlain(unsigned short const* text, size_t count, unsigned short unit)
{
    return static_cast<size_t>(std::find(text, text + count, unit) - text);
}

inline size_t unitMatchPlain(unsigned short const* a, unsigned short const* b, size_t most)
{
    size_t n = 0;
    while (n < most && a[n] == b[n] && a[n] != 0)
        ++n;
    return n;
}

}  // namespace kx7

#endif
