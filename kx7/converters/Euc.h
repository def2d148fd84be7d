// kx7text - how the EUC encodings write the row and cell of a 94-by-94 set (internal).
#ifndef KX7_CONVERTERS_EUC_H
#define KX7_CONVERTERS_EUC_H

namespace kx7 {

/** Both bytes of a pair lie in this range. */
constexpr bool isPairByte(unsigned char byte)
{
    return byte >= 0xA1 && byte <= 0xFE;
}

/** The code that the low seven bits of two bytes make. */
constexpr unsigned short rowAndCell(unsigned char row, unsigned char cell)
{
    return static_cast<unsigned short>((row & 0x7F) << 8 | (cell & 0x7F));
}

/** The two bytes of a code, high byte first. */
constexpr unsigned int eucPair(unsigned int code)
{
    return (code + 0x8080) & 0xFFFF;
}

}  // namespace kx7

#endif
