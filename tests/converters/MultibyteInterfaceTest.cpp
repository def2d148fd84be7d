// kx7text tests - the rules that all converters share, for the multibyte, UTF-16 and UTF-32 converters.
#include <gtest/gtest.h>

#include "kx7/charset/Converters.h"
#include "tests/support/Calls.h"
#include "tests/support/Memory.h"

using namespace kx7test;

namespace {

struct NamedConverter {
    char const* name;
    KX7CharSetConverter& converter;
};

NamedConverter const CONVERTERS[] = {
    {"932", g_oConverterWCP932},
    {"936", g_oConverterWCP936},
    {"949", g_oConverterWCP949},
    {"950", g_oConverterWCP950},
    {"Big5", g_oConverterBig5},
    {"Shift_JIS", g_oConverterSHIFTJIS},
    {"Shift_JIS-2004", g_oConverterSJIS2004},
    {"EUC-KR", g_oConverterEUCKR},
    {"EUC-CN", g_oConverterEUCCN},
    {"EUC-JP", g_oConverterEUCJP},
    {"GB 18030", g_oConverterGB18030},
    {"UTF-16", g_oConverterUTF16},
    {"UTF-16 escape", g_oConverterUTF16Esc},
    {"UTF-32", g_oConverterUTF32},
};

unsigned short const SOME_UNITS[] = {'A', 0xD800, 'B', 0};

/** Bytes that are not zero, and a terminator of any size. */
char const SOME_BYTES[] = "A\xFF\x82 A\xFF\x82 \0\0\0";

}  // namespace

TEST(MultibyteConverters, NullArgumentsYieldZeroAndLeaveEverythingAlone)
{
    for (NamedConverter const& tested : CONVERTERS)
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            for (bool const before : {false, true}) {
                KX7CharSetConverter& converter = tested.converter;
                Fenced<unsigned short> units;
                Fenced<unsigned char> bytes;
                unsigned short* const unitDest = units.arm(8);
                unsigned char* const byteDest = bytes.arm(8);
                bool flag = before;
                for (int const limit : {-1, 0, 4}) {
                    EXPECT_EQ(converter.toUTF16(unitDest, nullptr, 7, op, &flag, limit), 0u) << tested.name;
                    EXPECT_EQ(converter.toUTF16(nullptr, SOME_BYTES, 7, op, &flag, limit), 0u) << tested.name;
                    EXPECT_EQ(converter.toUTF16(nullptr, nullptr, 7, op, &flag, limit), 0u) << tested.name;
                    EXPECT_EQ(converter.toUTF16(unitDest, nullptr, 7, op, nullptr, limit), 0u) << tested.name;
                }
                EXPECT_EQ(converter.fromUTF16(byteDest, nullptr, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(nullptr, SOME_UNITS, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(nullptr, nullptr, 7, op, &flag), 0u) << tested.name;
                EXPECT_EQ(converter.fromUTF16(byteDest, nullptr, 7, op, nullptr), 0u) << tested.name;
                EXPECT_EQ(flag, before) << tested.name;
                EXPECT_TRUE(units.untouched() && bytes.untouched()) << tested.name;
            }
}

TEST(MultibyteConverters, CountingNothingYieldsZero)
{
    char const nothing[4] = {};
    unsigned short const noUnits[] = {0};
    for (NamedConverter const& tested : CONVERTERS)
        for (unsigned int const count : {0u, 1u, UNTIL_TERMINATOR}) {
            EXPECT_EQ(tested.converter.getNumUnits(nullptr, count), 0u) << tested.name;
            EXPECT_EQ(tested.converter.getNumBytes(nullptr, count), 0u) << tested.name;
            EXPECT_EQ(tested.converter.getNumUnits(nothing, count), 0u) << tested.name;
            EXPECT_EQ(tested.converter.getNumBytes(noUnits, count), 0u) << tested.name;
        }
    for (NamedConverter const& tested : CONVERTERS) {
        EXPECT_EQ(tested.converter.getNumUnits(SOME_BYTES, 0), 0u) << tested.name;
        EXPECT_EQ(tested.converter.getNumBytes(SOME_UNITS, 0), 0u) << tested.name;
    }
}

TEST(MultibyteConverters, NoCapacityOrNoSourceWritesTheTerminatorOnlyAndClearsTheFlag)
{
    char const nothing[4] = {};
    unsigned short const noUnits[] = {0};
    for (NamedConverter const& tested : CONVERTERS) {
        unsigned int const size = tested.converter.getNullCharSize();
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            for (unsigned int const capacity : {0u, 1u, 7u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
                Fenced<unsigned short> units;
                Fenced<unsigned char> bytes;
                unsigned short* const unitDest = units.arm(1);
                unsigned char* const byteDest = bytes.arm(size);
                bool flags[] = {true, true};
                EXPECT_EQ(
                    tested.converter.toUTF16(unitDest, capacity == 0 ? SOME_BYTES : nothing, capacity, op, flags, 4),
                    0u)
                    << tested.name;
                EXPECT_EQ(
                    tested.converter.fromUTF16(byteDest, capacity == 0 ? SOME_UNITS : noUnits, capacity, op, flags + 1),
                    0u)
                    << tested.name;
                EXPECT_EQ(unitDest[0], 0u) << tested.name;
                EXPECT_TRUE(std::all_of(byteDest, byteDest + size, [](unsigned char byte) { return byte == 0; }))
                    << tested.name;
                EXPECT_FALSE(flags[0] || flags[1]) << tested.name;
                EXPECT_TRUE(units.intact() && bytes.intact()) << tested.name;
            }
    }
}

TEST(MultibyteConverters, DirectPathsToAndFromUTF8DoNothingButInUTF32)
{
    auto const* const utf8 = reinterpret_cast<unsigned char const*>("AB");
    for (NamedConverter const& tested : CONVERTERS)
        for (bool const before : {false, true}) {
            Fenced<unsigned char> bytes;
            unsigned char* const dest = bytes.arm(16);
            bool flag = before;
            bool const isUTF32 = &tested.converter == &g_oConverterUTF32;
            EXPECT_EQ(tested.converter.fromUTF8(dest, utf8, 2, ILLCHAR_REPLACE, &flag), isUTF32 ? 2u : 0u)
                << tested.name;
            EXPECT_EQ(flag, !isUTF32 && before) << tested.name;
            flag = before;
            EXPECT_EQ(tested.converter.toUTF8(dest, SOME_BYTES + 8, 8, ILLCHAR_REPLACE, &flag), 0u) << tested.name;
            EXPECT_EQ(flag, !isUTF32 && before) << tested.name;
            EXPECT_EQ(bytes.untouched(), !isUTF32) << tested.name;
        }
}
