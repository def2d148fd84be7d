// kx7text tests - rows of conversions for one converter beside its model, and counts of texts in watched memory.
#ifndef KX7_TESTS_SUPPORT_BYTECONVERTERROWS_H
#define KX7_TESTS_SUPPORT_BYTECONVERTERROWS_H

#include <initializer_list>

#include "tests/model/CodeMap.h"
#include "tests/support/Rows.h"

namespace kx7test {

/** A converter of the library and the model of it. */
struct Tested {
    KX7CharSetConverter& converter;
    Model const& model;

    void decodes(std::initializer_list<DecodeRow> rows) const
    {
        Probe probe(converter, model);
        for (DecodeRow const& row : rows)
            expectDecoded(probe, row);
    }

    void encodes(std::initializer_list<EncodeRow> rows) const
    {
        Probe probe(converter, model);
        for (EncodeRow const& row : rows)
            expectEncoded(probe, row);
    }

    /** getNumUnits, of the converter and of the model. */
    void countsUnits(std::string const& bytes, unsigned int byteCount, unsigned int expected) const
    {
        PageEnd<unsigned char> memory;
        size_t const zeros = byteCount == UNTIL_TERMINATOR ? converter.getNullCharSize() : 0;
        EXPECT_EQ(converter.getNumUnits(memory.hold(bytes, zeros), byteCount), expected) << hex(bytes);
        EXPECT_EQ(model.getNumUnits(bytes, byteCount), expected) << "the model of " << hex(bytes);
    }

    /** getNumBytes, of the converter and of the model. */
    void countsBytes(std::u16string const& units, unsigned int unitCount, unsigned int expected) const
    {
        PageEnd<unsigned short> memory;
        size_t const zeros = unitCount == UNTIL_TERMINATOR ? 1 : 0;
        EXPECT_EQ(converter.getNumBytes(memory.hold(units, zeros), unitCount), expected) << hex(units);
        EXPECT_EQ(model.getNumBytes(units, unitCount), expected) << "the model of " << hex(units);
    }

    void hasSizes(unsigned int least, unsigned int most, unsigned int terminator) const
    {
        EXPECT_EQ(converter.getMinUnitSize(), least);
        EXPECT_EQ(converter.getMaxUnitSize(), most);
        EXPECT_EQ(converter.getNullCharSize(), terminator);
    }
};

/** The pairs, and every printable ASCII character that they leave out as itself. */
inline CodePairs withAscii(CodePairs pairs)
{
    CodeMap const map(pairs);
    for (unsigned int c = 0x20; c < 0x7F; ++c)
        if (map.codePointOf(c) == 0)
            pairs.emplace_back(c, c);
    return pairs;
}

}  // namespace kx7test

#endif
