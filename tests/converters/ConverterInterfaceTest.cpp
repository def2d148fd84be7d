// kx7text tests - the rules that all converters share.
#include <gtest/gtest.h>

#include "tests/support/Calls.h"
#include "tests/support/Memory.h"
#include "tests/support/SingleByteSets.h"

using namespace kx7test;

namespace {

struct NamedConverter {
    char const* name;
    KX7CharSetConverter& converter;
};

/** Converters of byte encodings. */
std::vector<NamedConverter> byteConverters()
{
    std::vector<NamedConverter> all;
    all.push_back({"UTF-8", g_oConverterUTF8});
    for (SingleByteSet const& set : SINGLE_BYTE_SETS)
        all.push_back({set.name, set.converter});
    return all;
}

unsigned short const SOME_UNITS[] = {'A', 0xD800, 'B', 0};
char const SOME_BYTES[] = "A\xDB"
                          "B";

}  // namespace

TEST(Converters, NullArgumentsYieldZeroAndLeaveEverythingAlone)
{
    for (NamedConverter const& tested : byteConverters())
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            for (bool const before : {false, true}) {
                KX7CharSetConverter& converter = tested.converter;
                Fenced<unsigned short> units;
                Fenced<unsigned char> bytes;
                unsigned short* const unitDest = units.arm(8);
                unsigned char* const byteDest = bytes.arm(8);
                bool flag = before;
                EXPECT_EQ(converter.toUTF16(unitDest, nullptr, 7, op, &flag, -1), 0u) << tested.name;
                EXPECT_EQ(converter.toUTF16(nullptr, SOME_BYTES, 7, op, &flag, -1), 0u) << tested.name;
                EXPECT_EQ(converter.toUTF16(nullptr, nullptr, 7, op, &flag, -1), 0u) << tested.name;
                EXPECT_EQ(converter.toUTF16(unitDest, nullptr, 7, op, nullptr, -1), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(byteDest, nullptr, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(nullptr, SOME_UNITS, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(nullptr, nullptr, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(byteDest, nullptr, 7, op, nullptr), 0u) << tested.name;
                EXPECT_EQ(flag, before) << tested.name;
                EXPECT_TRUE(units.untouched() && bytes.untouched()) << tested.name;
            }
}

TEST(Converters, CountingNothingYieldsZero)
{
    for (NamedConverter const& tested : byteConverters())
        for (unsigned int const count : {0u, 1u, UNTIL_TERMINATOR}) {
            EXPECT_EQ(tested.converter.getNumUnits(nullptr, count), 0u) << tested.name;
            EXPECT_EQ(tested.converter.getNumBytes(nullptr, count), 0u) << tested.name;
            EXPECT_EQ(tested.converter.getNumUnits("", count), 0u) << tested.name;
        }
}

TEST(Converters, NoCapacityWritesTheTerminatorOnly)
{
    for (NamedConverter const& tested : byteConverters())
        for (ILLCHAR_OPTYPE const op : OPERATIONS) {
            Fenced<unsigned short> units;
            Fenced<unsigned char> bytes;
            unsigned short* const unitDest = units.arm(1);
            unsigned char* const byteDest = bytes.arm(1);
            EXPECT_EQ(tested.converter.toUTF16(unitDest, SOME_BYTES, 0, op, nullptr, -1), 0u) << tested.name;
            EXPECT_EQ(tested.converter.fromUTF16(byteDest, SOME_UNITS, 0, op, nullptr), 0u) << tested.name;
            EXPECT_EQ(unitDest[0], 0u) << tested.name;
            EXPECT_EQ(byteDest[0], 0u) << tested.name;
            EXPECT_TRUE(units.intact() && bytes.intact()) << tested.name;
        }
}

TEST(Converters, EmptySourceWritesTheTerminatorOnly)
{
    unsigned short const noUnits[] = {0};
    for (NamedConverter const& tested : byteConverters())
        for (unsigned int const capacity : {0u, 1u, 7u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            Fenced<unsigned short> units;
            Fenced<unsigned char> bytes;
            unsigned short* const unitDest = units.arm(1);
            unsigned char* const byteDest = bytes.arm(1);
            EXPECT_EQ(tested.converter.toUTF16(unitDest, "", capacity, ILLCHAR_REPLACE, nullptr, -1), 0u)
                << tested.name;
            EXPECT_EQ(tested.converter.fromUTF16(byteDest, noUnits, capacity, ILLCHAR_REPLACE, nullptr), 0u)
                << tested.name;
            EXPECT_EQ(unitDest[0], 0u) << tested.name;
            EXPECT_EQ(byteDest[0], 0u) << tested.name;
            EXPECT_TRUE(units.intact() && bytes.intact()) << tested.name;
        }
}

TEST(Converters, DirectPathsToAndFromUTF8DoNothing)
{
    auto const* const utf8 = reinterpret_cast<unsigned char const*>("AB");
    for (NamedConverter const& tested : byteConverters())
        for (bool const before : {false, true}) {
            Fenced<unsigned char> bytes;
            unsigned char* const dest = bytes.arm(16);
            bool flag = before;
            EXPECT_EQ(tested.converter.fromUTF8(dest, utf8, 8, ILLCHAR_REPLACE, &flag), 0u) << tested.name;
            EXPECT_EQ(tested.converter.toUTF8(dest, "AB", 8, ILLCHAR_REPLACE, &flag), 0u) << tested.name;
            EXPECT_EQ(flag, before) << tested.name;
            EXPECT_TRUE(bytes.untouched()) << tested.name;
        }
}

TEST(Converters, EscapeNeedsSixBytesOfCapacity)
{
    unsigned short const unmappable[] = {0xD800, 0};
    for (NamedConverter const& tested : byteConverters())
        for (unsigned int capacity = 0; capacity <= 7; ++capacity) {
            Fenced<unsigned char> bytes;
            unsigned char* const dest = bytes.arm(capacity + 1);
            unsigned int const expected = capacity < 6 ? 0 : 6;
            ASSERT_EQ(tested.converter.fromUTF16(dest, unmappable, capacity, ILLCHAR_ESCAPE, nullptr), expected)
                << tested.name << " capacity " << capacity;
            EXPECT_STREQ(reinterpret_cast<char const*>(dest), expected == 0 ? "" : "U+D800") << tested.name;
            EXPECT_TRUE(bytes.intact()) << tested.name;
        }
}

TEST(Converters, StopLeavesTheTextBeforeTheFirstBadCharacter)
{
    unsigned short const units[] = {'A', 'B', 0xD800, 'C', 0};
    for (NamedConverter const& tested : byteConverters()) {
        char bytes[8] = "xxxxxxx";
        EXPECT_EQ(tested.converter.fromUTF16(bytes, units, 7, ILLCHAR_STOP, nullptr), 2u) << tested.name;
        EXPECT_STREQ(bytes, "AB") << tested.name;
    }
}
