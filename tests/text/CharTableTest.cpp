// kx7text tests - the sparse table of a property of code units.
#include <gtest/gtest.h>

#include <type_traits>

#include "kx7/tables/CharProperties.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UCharTable.h"

static_assert(!std::has_virtual_destructor<KX7UCharTable>::value, "never derived from");
static_assert(!std::is_copy_constructible<KX7UCharTable>::value, "owns its pages");

namespace {

kx7::CharRange const RANGES[] = {
    {0x0041, 0x005A, 0x0061}, {0x00FE, 0x0101, 0x1000}, {0x4E00, 0x4E00, 0x0007}, {0xFFFD, 0xFFFF, 0x0100}, {0, 0, 0},
};

unsigned int expected(unsigned int unit, bool increment)
{
    for (kx7::CharRange const& range : RANGES)
        if (range.first != 0 && unit >= range.first && unit <= range.last)
            return range.value + (increment ? unit - range.first : 0);
    return 0;
}

}  // namespace

TEST(CharTable, HasTheValueOfTheRangeOfEveryUnit)
{
    for (bool const increment : {false, true}) {
        KX7UCharTable table(RANGES, increment);
        for (unsigned int unit = 0; unit <= 0xFFFF; ++unit)
            ASSERT_EQ(table.getValue(static_cast<unsigned short>(unit)), expected(unit, increment))
                << std::hex << unit << (increment ? " counting" : " constant");
    }
}

TEST(CharTable, WithoutRangesHasNoValues)
{
    kx7::CharRange const none[] = {{0, 0xFFFF, 9}};
    KX7UCharTable table(none, false);
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit)
        ASSERT_EQ(table.getValue(static_cast<unsigned short>(unit)), 0) << std::hex << unit;
}

TEST(CharTable, LaterRangesOverwriteEarlierOnes)
{
    kx7::CharRange const ranges[] = {{0x41, 0x45, 1}, {0x43, 0x46, 2}, {0, 0, 0}};
    KX7UCharTable table(ranges, false);
    unsigned int const values[] = {0, 1, 1, 2, 2, 2, 2, 0};
    for (unsigned int i = 0; i < 8; ++i)
        EXPECT_EQ(table.getValue(static_cast<unsigned short>(0x40 + i)), values[i]) << i;
}

TEST(CharTable, IsBuiltOnce)
{
    KX7UCharTable table(RANGES, true);
    auto const* const first = table.load();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(table.load(), first);
    EXPECT_EQ(table.getValue(0x41), 0x61);
    EXPECT_EQ(table.load(), first);
}

TEST(CharTable, OfTheLibraryAnswersAsTheCaseMappings)
{
    EXPECT_EQ(KX7UChar::m_gUpperCaseTable.getValue(0x61), 0x41);
    EXPECT_EQ(KX7UChar::m_gUpperCaseTable.getValue(0xFF), 0x178);
    EXPECT_EQ(KX7UChar::m_gUpperCaseTable.getValue(0x4E00), 0);
    EXPECT_EQ(KX7UChar::m_gUpperCaseTable.getValue(0), 0);
    EXPECT_EQ(KX7UChar::m_gLowerCaseTable.getValue(0x41), 0x61);
    EXPECT_EQ(KX7UChar::m_gLowerCaseTable.getValue(0x130), 0x69);
    EXPECT_EQ(KX7UChar::m_gCharClassTable.getValue(0x41), 0x44);
    EXPECT_EQ(KX7UChar::m_gCharClassTable.getValue(0x4E00), 0) << "answered by rule, not by the table";
    EXPECT_EQ(KX7UChar::m_gCharClassTable.getValue(0xD800), 0) << "answered by rule, not by the table";
}
