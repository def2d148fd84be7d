// kx7text - what the searches in UTF-16 text of all instruction sets share (internal).
#ifndef KX7_KERNELS_UNITS_H
#define KX7_KERNELS_UNITS_H

#include <algorithm>
#include <cstddef>

#include "kx7/kernels/Page.h"

namespace kx7 {

/**
 * Units, `most` at most and 1 at least, that can be read at both places once the first at each can: up to the end of
 * the smallest page that there is.
 */
inline size_t unitsInPage(unsigned short const* a, unsigned short const* b, size_t most)
{
    auto const bytes = static_cast<size_t>(PAGE - std::max(inPage(a), inPage(b)));
    return std::min(most, std::max(bytes / sizeof *a, size_t{1}));
}

}  // namespace kx7

#endif
