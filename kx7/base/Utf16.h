// kx7text - facts of UTF-16 that converters and text classes share, and the escape of a code unit (internal).
#ifndef KX7_BASE_UTF16_H
#define KX7_BASE_UTF16_H

#include <cstddef>

namespace kx7 {

constexpr unsigned int REPLACEMENT_CHAR = 0xFFFD;
constexpr unsigned int LAST_CODE_POINT = 0x10FFFF;

constexpr bool isHighSurrogate(unsigned int unit)
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool isLowSurrogate(unsigned int unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

constexpr bool isSurrogate(unsigned int unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;  // also of code points
}

/** The text at `units`, which goes to `end`, begins with a surrogate pair. */
constexpr bool isPair(unsigned short const* units, unsigned short const* end)
{
    return end - units >= 2 && isHighSurrogate(units[0]) && isLowSurrogate(units[1]);
}

constexpr unsigned int codePointOf(unsigned int high, unsigned int low)
{
    return (high << 10) + low - 0x35FDC00;
}

/** Kept to 16 bits: a value above U+10FFFF wraps. */
constexpr unsigned short highSurrogateOf(unsigned int codePoint)
{
    return static_cast<unsigned short>((codePoint >> 10) + 0xD7C0);
}

constexpr unsigned short lowSurrogateOf(unsigned int codePoint)
{
    return static_cast<unsigned short>((codePoint & 0x3FF) + 0xDC00);
}

/** Length of an escape: "U+" and four upper-case hexadecimal digits. */
constexpr size_t ESCAPE_LENGTH = 6;

/** Value of an upper-case hexadecimal digit, -1 for anything else: lower case makes no escape. */
constexpr int hexValue(unsigned int c)
{
    return c >= '0' && c <= '9'   ? static_cast<int>(c - '0')
           : c >= 'A' && c <= 'F' ? static_cast<int>(c - 'A') + 10
                                  : -1;
}

/** Writes the escape of `unit` and returns where it ends. */
inline unsigned char* writeEscape(unsigned char* out, unsigned short unit)
{
    *out++ = 'U';
    *out++ = '+';
    for (int shift = 12; shift >= 0; shift -= 4)
        *out++ = static_cast<unsigned char>("0123456789ABCDEF"[(unit >> shift) & 0xF]);
    return out;
}

}  // namespace kx7

#endif
