// kx7text - what the converters with a byte-type table share: which bytes make a character (internal).
#ifndef KX7_CONVERTERS_DOUBLEBYTE_H
#define KX7_CONVERTERS_DOUBLEBYTE_H

#include "kx7/converters/Walk.h"
#include "kx7/tables/ByteTypeTables.h"

namespace kx7 {

constexpr unsigned int doubleByteCode(unsigned char const* p)
{
    return p[0] * 256U + p[1];
}

/** One byte, or a lead byte and a trail byte; the code is looked up in `Table`. */
template <class Table>
struct DoubleByteDecoder : DecoderBase {
    DoubleByteDecoder(unsigned char const* types, Table const& toUnicode) : m_types(types), m_toUnicode(toUnicode) {}

    DecodedChar step(unsigned char const* p, unsigned char const* end) const
    {
        unsigned int code = p[0];
        unsigned int length = 1;
        if (m_types[p[0]] & LEAD_BYTE) {
            if (p + 1 == end)
                return DecodedChar::cut();
            // Kept on purpose: after a lead byte without a trail byte the limit waits for the character behind it.
            if (!(m_types[p[1]] & TRAIL_BYTE))
                return DecodedChar::illegal(1, LimitCheck::SKIP);
            code = doubleByteCode(p);
            length = 2;
        }
        unsigned int const codePoint = m_toUnicode.get(static_cast<unsigned short>(code));
        if (codePoint == 0 && code != 0)
            return DecodedChar::illegal(length, LimitCheck::CHECK);
        return DecodedChar::of(codePoint, length);
    }

private:
    unsigned char const* m_types;
    Table const& m_toUnicode;
};

/** Counts the units of bytes: one a character, `unitsOfPair` (code) of a well-formed pair. */
template <class UnitsOfPair>
unsigned int countDoubleByteUnits(unsigned char const* types, void const* source, unsigned int byteCount,
                                  UnitsOfPair unitsOfPair)
{
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + terminatedLength(source, byteCount);
    unsigned int count = 0;
    while (in != end) {
        if ((types[in[0]] & LEAD_BYTE) && end - in >= 2 && (types[in[1]] & TRAIL_BYTE)) {
            count += unitsOfPair(doubleByteCode(in));
            in += 2;
        }
        else {
            count += 1;
            in += 1;
        }
    }
    return count;
}

}  // namespace kx7

#endif
