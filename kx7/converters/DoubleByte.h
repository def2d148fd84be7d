// kx7text - what the converters with a byte-type table share: which bytes make a character (internal).
#ifndef KX7_CONVERTERS_DOUBLEBYTE_H
#define KX7_CONVERTERS_DOUBLEBYTE_H

#include "kx7/base/TablePages.h"
#include "kx7/converters/PublishedRules.h"
#include "kx7/kernels/PairUnits.h"
#include "kx7/kernels/ShortText.h"
#include "kx7/tables/ByteTypeTables.h"

namespace kx7 {

constexpr unsigned int doubleByteCode(unsigned char const* p)
{
    return p[0] * 256U + p[1];
}

/** A decoder of which `pairs`, unless null, has characters. */
struct PairDecoder : DecoderBase {
    explicit PairDecoder(PairUnits const* pairs) : m_pairs(pairs) {}

    void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                     unsigned short* outEnd) const
    {
        if (!m_pairs)
            return;
        copyShort(m_pairs->byteIdentity(), in, end, out, outEnd);
        if (in != end)
            kernels().decodePairs(*m_pairs, in, end, out, outEnd);
    }

    static constexpr bool IS_DIRECT = true;

    /** Which bytes are their own units. */
    Identity identity() const { return m_pairs ? m_pairs->byteIdentity() : Identity::NONE; }

    /** As the decoder where that finds a character of one unit in one byte or two; else it may be anything illegal. */
    KX7_INLINE DecodedChar look(unsigned char const* p, unsigned char const* end) const
    {
        if (!m_pairs)
            return DecodedChar::illegal(1, LimitCheck::CHECK);
        unsigned int code = p[0];
        unsigned int length = 1;
        if (code >= 0x80 && m_pairs->isLead()[code & 0x7F]) {
            if (end - p < 2)
                return DecodedChar::truncated();
            code = code << 8 | p[1];
            length = 2;
        }
        unsigned int const unit = m_pairs->units()[code];
        return unit != 0 ? DecodedChar::one(unit, length) : DecodedChar::illegal(1, LimitCheck::CHECK);
    }

protected:
    PairUnits const* pairs() const { return m_pairs; }

private:
    PairUnits const* m_pairs;
};

/** One byte, or a lead byte and a trail byte; the code is looked up in `Table`. */
template <class Table>
struct DoubleByteDecoder : PairDecoder {
    DoubleByteDecoder(unsigned char const* types, Table const& toUnicode, PairUnits const* pairs)
        : PairDecoder(pairs), m_types(types), m_toUnicode(toUnicode)
    {
    }

    /** What the decoder finds, where it is a character of one unit. `pairs` may share the values of `toUnicode`. */
    static void fill(PairUnits& pairs, unsigned char const* types, Table const& toUnicode)
    {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            auto const high = static_cast<unsigned char>(byte);
            if (!(types[high] & LEAD_BYTE)) {
                pairs.put(high, oneUnit(toUnicode.get(high)));
                continue;
            }
            auto const* const values = TablePages::page(toUnicode, high);
            unsigned short* const units = pairs.row(high);
            for (unsigned int low = 0; low < 256; ++low) {
                // A code that ends so is never looked up by the decoder: it need not stay in the table.
                unsigned short const unit = types[low] & TRAIL_BYTE ? oneUnit(values[low]) : 0;
                if (units[low] != unit)
                    units[low] = unit;
            }
        }
    }

    /** Whether PairUnits can tell the lead bytes. */
    static bool canFill(unsigned char const* types)
    {
        return std::none_of(types, types + 0x80, [](unsigned char type) { return (type & LEAD_BYTE) != 0; });
    }

    DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        unsigned int code = p[0];
        unsigned int length = 1;
        if (m_types[p[0]] & LEAD_BYTE) {
            if (p + 1 == end)
                return DecodedChar::truncated();
            // Kept on purpose: after a lead byte without a trail byte the limit waits for the character after it.
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
    static unsigned short oneUnit(unsigned int codePoint)
    {
        return codePoint <= 0xFFFF ? static_cast<unsigned short>(codePoint) : 0;
    }

    unsigned char const* m_types;
    Table const& m_toUnicode;
};

/** Counts the characters of bytes, one for each that belongs to none. */
inline unsigned int countDoubleByteCharacters(unsigned char const* types, void const* source, unsigned int byteCount)
{
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + terminatedLength(source, byteCount);
    size_t count = end - in >= KERNEL_MINIMUM ? kernels().countPairs(types, in, end) : 0;
    for (; in != end; ++count)
        in += (types[in[0]] & LEAD_BYTE) && end - in >= 2 && (types[in[1]] & TRAIL_BYTE) ? 2 : 1;
    return saturated(count);
}

/** Counts the units of bytes: one a character, `unitsOfPair` (code) of a well-formed pair. */
template <class UnitsOfPair>
unsigned int countDoubleByteUnits(unsigned char const* types, void const* source, unsigned int byteCount,
                                  UnitsOfPair unitsOfPair)
{
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + terminatedLength(source, byteCount);
    size_t count = 0;
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
    return saturated(count);
}

}  // namespace kx7

#endif
