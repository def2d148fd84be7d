// kx7text - what the kernels from UTF-8 to single-byte sets share (internal).
#ifndef KX7_KERNELS_SINGLEBYTEUTF8_H
#define KX7_KERNELS_SINGLEBYTEUTF8_H

#include <cstddef>
#include <cstdint>

#include "kx7/kernels/SingleByte.h"

namespace kx7 {

/** The smallest page that there is. */
constexpr std::ptrdiff_t PAGE = 4096;

/** Where the page of `text` ends: so far can be read. */
inline unsigned char const* pageEnd(unsigned char const* text)
{
    return text + (PAGE - static_cast<std::ptrdiff_t>(reinterpret_cast<uintptr_t>(text) % PAGE));
}

/** Bytes from the beginning of the page of `text`. */
inline std::ptrdiff_t inPage(unsigned char const* text)
{
    return static_cast<std::ptrdiff_t>(reinterpret_cast<uintptr_t>(text) % PAGE);
}

/** Converts one character of at most three bytes; there is room. False: it is not mapped, or the text ends. */
inline bool encodeOneFromUTF8(SingleByteTables const& tables, unsigned char const*& in, unsigned char*& out)
{
    unsigned int unit = in[0];
    std::ptrdiff_t length = 1;
    if (unit >= 0x80) {
        // Behind each byte that is not zero there is another.
        unsigned int const second = in[1] ^ 0x80U;
        if (unit < 0xC0 || unit >= 0xF0 || second >= 0x40)
            return false;
        if (unit < 0xE0) {
            unit = (unit & 0x1F) << 6 | second;
            length = 2;
        }
        else {
            unsigned int const third = in[2] ^ 0x80U;
            if (third >= 0x40)
                return false;
            unit = (unit & 0xF) << 12 | second << 6 | third;
            length = 3;
        }
    }
    unsigned char const byte = tables.get(static_cast<unsigned short>(unit));
    if (byte == 0)
        return false;
    *out++ = byte;
    in += length;
    return true;
}

}  // namespace kx7

#endif
