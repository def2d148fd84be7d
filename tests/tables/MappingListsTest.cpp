// kx7text tests - the stored lists of the single-byte sets: length, order, uniqueness, end.
#include <gtest/gtest.h>

#include <set>

#include "tests/support/SingleByteLists.h"

using namespace kx7test;

TEST(SingleByteMappingLists, AreAscendingByUnitWithoutRepetitionAndEndAtTheStatedLength)
{
    for (SingleByteList const& stored : SINGLE_BYTE_LISTS) {
        SCOPED_TRACE(stored.name);
        std::set<unsigned int> bytes;
        unsigned int lastUnit = 0;
        for (unsigned int i = 0; i < stored.records; ++i) {
            unsigned int const byte = stored.list[2 * i];
            unsigned int const unit = stored.list[2 * i + 1];
            EXPECT_TRUE(byte >= 1 && byte <= 0xFF) << "record " << i;
            EXPECT_GT(unit, lastUnit) << "record " << i;
            EXPECT_FALSE(unit >= 0xD800 && unit <= 0xDFFF) << "record " << i;
            EXPECT_TRUE(bytes.insert(byte).second) << "byte " << byte << " twice";
            lastUnit = unit;
        }
        // The arrays are exactly as long as their files assert, so a list that is longer than stated shows here.
        EXPECT_EQ(stored.list[2 * stored.records], 0u);
        EXPECT_EQ(stored.list[2 * stored.records + 1], 0u);
    }
}

TEST(SingleByteMappingLists, AreTwentySixDifferentOnes)
{
    std::set<BytePairs> different;
    for (SingleByteList const& stored : SINGLE_BYTE_LISTS)
        different.insert(pairsOf(stored.list));
    EXPECT_EQ(different.size(), 26u);
}
