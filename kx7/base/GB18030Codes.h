// kx7text - how GB 18030 numbers and writes its four-byte sequences (internal).
#ifndef KX7_BASE_GB18030CODES_H
#define KX7_BASE_GB18030CODES_H

#include "kx7/base/Utf16.h"

namespace kx7 {

// A GB code is the byte, the two bytes as a number, or this plus the index of the four-byte sequence.
constexpr unsigned int FIRST_FOUR_BYTE_CODE = 0x10000;
constexpr unsigned int FIRST_SUPPLEMENTARY_CODE = 254536;
constexpr unsigned int SUPPLEMENTARY_OFFSET = FIRST_SUPPLEMENTARY_CODE - 0x10000;

/** The four bytes of a code, high byte first. */
constexpr unsigned int fourBytesOf(unsigned int code)
{
    unsigned int const index = code - FIRST_FOUR_BYTE_CODE;
    return (index / 12600 + 0x81) << 24 | (index / 1260 % 10 + 0x30) << 16 | (index / 10 % 126 + 0x81) << 8 |
           (index % 10 + 0x30);
}

/** The code of a surrogate pair. */
constexpr unsigned int pairCodeOf(unsigned int high, unsigned int low)
{
    return codePointOf(high, low) + SUPPLEMENTARY_OFFSET;
}

}  // namespace kx7

#endif
