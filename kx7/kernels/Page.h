// kx7text - pages of memory: a page that a text reaches can be read throughout (internal).
#ifndef KX7_KERNELS_PAGE_H
#define KX7_KERNELS_PAGE_H

#include <cstddef>
#include <cstdint>

namespace kx7 {

/** The smallest page that there is. */
constexpr std::ptrdiff_t PAGE = 4096;

/** Bytes from the beginning of the page of `text`. */
inline std::ptrdiff_t inPage(void const* text)
{
    return static_cast<std::ptrdiff_t>(reinterpret_cast<uintptr_t>(text) % PAGE);
}

/** Where the page of `text` ends: so far can be read. */
inline unsigned char const* pageEnd(unsigned char const* text)
{
    return text + (PAGE - inPage(text));
}

}  // namespace kx7

#endif
