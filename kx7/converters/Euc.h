// kx7text - how the EUC encodings write the row and cell of a 94-by-94 set (internal).
#ifndef KX7_CONVERTERS_EUC_H
#define KX7_CONVERTERS_EUC_H

#include <algorithm>

#include "kx7/base/TablePages.h"
#include "kx7/kernels/PairUnits.h"

namespace kx7 {

/** Begins the codes of three bytes of EUC-JP. */
constexpr unsigned char SINGLE_SHIFT_3 = 0x8F;

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

/** What a unit of this code (0: none) is written as, one byte or two; 0 where that is not as plain. */
constexpr unsigned int eucWritten(unsigned int unit, unsigned int code)
{
    return unit < 0x7F ? unit : code == 0 || eucPair(code) <= 0xFF ? 0 : eucPair(code);
}

/** ASCII, and the pairs of a table by row and cell. */
inline void fillEuc(PairUnits& pairs, LookupTable<unsigned short> const& toUnicode)
{
    for (unsigned char byte = 1; byte < 0x7F; ++byte)
        pairs.put(byte, byte);
    for (unsigned char row = 0xA1; row <= 0xFE; ++row) {
        unsigned short const* const units = TablePages::page(toUnicode, row & 0x7FU);
        std::copy(units + 0x21, units + 0x7F, pairs.row(row) + 0xA1);
    }
}

}  // namespace kx7

#endif
