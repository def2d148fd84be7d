// kx7text tests - every single-byte converter against the model of its stored list.
#include <gtest/gtest.h>

#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "tests/support/Guarded.h"
#include "tests/support/Probe.h"
#include "tests/support/SampleSingleByte.h"
#include "tests/support/SingleByteLists.h"
#include "tests/support/Texts.h"

using namespace kx7test;

TEST(SingleByteSets, EveryByteAndUnitOfEverySet)
{
    for (SingleByteList const& stored : SINGLE_BYTE_LISTS) {
        SCOPED_TRACE(stored.name);
        SingleByteModel const model(pairsOf(stored.list));
        Probe probe(stored.converter, model);
        compareEveryByteAndUnit(probe);
    }
}

TEST(SingleByteSets, RandomTextsOfEverySet)
{
    std::vector<std::string> bytes;
    for (unsigned int byte = 1; byte <= 0xFF; ++byte)
        bytes.emplace_back(1, static_cast<char>(byte));
    for (SingleByteList const& stored : SINGLE_BYTE_LISTS) {
        SCOPED_TRACE(stored.name);
        std::vector<std::u16string> units{{0x4E00}, {0xD800}, {0xFFFD}};
        for (auto const& pair : pairsOf(stored.list))
            units.emplace_back(1, pair.second);
        SingleByteModel const model(pairsOf(stored.list));
        Probe probe(stored.converter, model);
        std::mt19937 random(26);
        for (int i = 0; i < 8; ++i)
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                size_t const length = random() % (3 * PIECE_UNITS);
                auto const capacity = static_cast<unsigned int>(random() % (4 * PIECE_UNITS));
                int const limit = static_cast<int>(random() % (4 * PIECE_UNITS)) - 100;
                probe.compareDecode({randomText(random, bytes, length), capacity, op, limit});
                probe.compareEncode({randomText(random, units, length), capacity, op});
            }
    }
}

TEST(SingleByteSets, ListIsReadNoFurtherThanItsEnd)
{
    std::vector<unsigned short> const list = listOf(samplePairs());
    Guarded<unsigned short> const guarded(list.data(), list.size());
    KX7CharSetConverterSBCS converter(guarded.data(), KX7CS_WCP1252);
    SingleByteModel const model(samplePairs());
    Probe probe(converter, model);
    compareEveryByteAndUnit(probe);
}
