// kx7text tests - the mappings of the single-byte character sets, as a caller sees them.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/SingleByteSets.h"

using namespace kx7test;

namespace {

/** The unit of a byte, 0 where the set has none. */
unsigned int unitOf(KX7CharSetConverter& converter, unsigned int byte)
{
    char const bytes[] = {static_cast<char>(byte), 0};
    unsigned short units[2];
    return converter.toUTF16(units, bytes, 1, ILLCHAR_STOP, nullptr, -1) == 1 ? units[0] : 0;
}

/** The byte of a unit, 0 where the set has none. */
unsigned int byteOf(KX7CharSetConverter& converter, unsigned int unit)
{
    unsigned short const units[] = {static_cast<unsigned short>(unit), 0};
    unsigned char bytes[2];
    return converter.fromUTF16(bytes, units, 1, ILLCHAR_STOP, nullptr) == 1 ? bytes[0] : 0;
}

std::set<unsigned int> undefinedBytes(KX7CharSetConverter& converter)
{
    std::set<unsigned int> bytes;
    for (unsigned int byte = 1; byte <= 0xFF; ++byte)
        if (unitOf(converter, byte) == 0)
            bytes.insert(byte);
    return bytes;
}

struct Range {
    unsigned int first;
    unsigned int last;
};

std::set<unsigned int> bytesIn(std::initializer_list<Range> ranges)
{
    std::set<unsigned int> bytes;
    for (Range const& range : ranges)
        for (unsigned int byte = range.first; byte <= range.last; ++byte)
            bytes.insert(byte);
    return bytes;
}

}  // namespace

TEST(SingleByteMappings, EverySetMapsAsManyBytesAsPublished)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS)
        EXPECT_EQ(255 - undefinedBytes(set.converter).size(), set.mappedBytes) << set.name;
}

TEST(SingleByteMappings, BytesAndUnitsPairOffBothWays)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS) {
        unsigned int mapped = 0;
        for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
            unsigned int const byte = byteOf(set.converter, unit);
            if (byte == 0)
                continue;
            ++mapped;
            EXPECT_EQ(unitOf(set.converter, byte), unit) << set.name;
        }
        EXPECT_EQ(mapped, set.mappedBytes) << set.name;
    }
}

TEST(SingleByteMappings, ASCIIIsKeptButForThreeControlsOfCodePage874)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS)
        for (unsigned int byte = 1; byte <= 0x7F; ++byte) {
            unsigned int expected = byte;
            if (&set.converter == &g_oConverterWCP874)
                expected = byte == 0x1A ? 0x1C : byte == 0x1C ? 0x7F : byte == 0x7F ? 0x1A : byte;
            EXPECT_EQ(unitOf(set.converter, byte), expected) << set.name << " byte " << byte;
        }
}

TEST(SingleByteMappings, ISO8859HasTheC1ControlsThroughout)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS) {
        if (std::string(set.name).rfind("ISO-8859", 0) != 0)
            continue;
        for (unsigned int byte = 0x80; byte <= 0x9F; ++byte)
            EXPECT_EQ(unitOf(set.converter, byte), byte) << set.name;
    }
}

TEST(SingleByteMappings, CodePage1252HasFiveC1Controls)
{
    for (unsigned int byte = 0x80; byte <= 0x9F; ++byte) {
        bool const control = byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
        EXPECT_EQ(unitOf(g_oConverterWCP1252, byte) == byte, control) << byte;
    }
}

TEST(SingleByteMappings, BytesThatTheStandardsLeaveUndefined)
{
    EXPECT_EQ(
        undefinedBytes(g_oConverterISO_8859_3),
        bytesIn({{0xA5, 0xA5}, {0xAE, 0xAE}, {0xBE, 0xBE}, {0xC3, 0xC3}, {0xD0, 0xD0}, {0xE3, 0xE3}, {0xF0, 0xF0}}));
    EXPECT_EQ(
        undefinedBytes(g_oConverterISO_8859_6),
        bytesIn({{0xA1, 0xA3}, {0xA5, 0xAB}, {0xAE, 0xBA}, {0xBC, 0xBE}, {0xC0, 0xC0}, {0xDB, 0xDF}, {0xF3, 0xFF}}));
    EXPECT_EQ(undefinedBytes(g_oConverterISO_8859_7), bytesIn({{0xAE, 0xAE}, {0xD2, 0xD2}, {0xFF, 0xFF}}));
    EXPECT_EQ(undefinedBytes(g_oConverterISO_8859_8),
              bytesIn({{0xA1, 0xA1}, {0xBF, 0xDE}, {0xFB, 0xFC}, {0xFF, 0xFF}}));
    EXPECT_EQ(undefinedBytes(g_oConverterISO_8859_11), bytesIn({{0xDB, 0xDE}, {0xFC, 0xFF}}));
}

TEST(SingleByteMappings, EachObjectServesItsOwnSet)
{
    struct Row {
        KX7CharSetConverter& converter;
        unsigned int byte;
        unsigned int unit;
    };
    // Between them, the characters of a set tell it from every other one.
    Row const rows[] = {
        {g_oConverterWCP1250, 0x8A, 0x0160},     {g_oConverterWCP1250, 0xA5, 0x0104},
        {g_oConverterWCP1251, 0xC0, 0x0410},     {g_oConverterWCP1251, 0xA8, 0x0401},
        {g_oConverterWCP1252, 0x80, 0x20AC},     {g_oConverterWCP1252, 0xD0, 0x00D0},
        {g_oConverterWCP1253, 0x80, 0x20AC},     {g_oConverterWCP1253, 0xC1, 0x0391},
        {g_oConverterWCP1254, 0x80, 0x20AC},     {g_oConverterWCP1254, 0xD0, 0x011E},
        {g_oConverterWCP1255, 0xE0, 0x05D0},     {g_oConverterWCP1255, 0xA4, 0x20AA},
        {g_oConverterWCP1256, 0xC7, 0x0627},     {g_oConverterWCP1256, 0x81, 0x067E},
        {g_oConverterWCP1257, 0xC0, 0x0104},     {g_oConverterWCP1257, 0xD0, 0x0160},
        {g_oConverterWCP1258, 0xD5, 0x01A0},     {g_oConverterWCP1258, 0xFE, 0x20AB},
        {g_oConverterWCP874, 0xA1, 0x0E01},      {g_oConverterWCP874, 0x1A, 0x001C},
        {g_oConverterISO_8859_1, 0xE9, 0x00E9},  {g_oConverterISO_8859_1, 0xD0, 0x00D0},
        {g_oConverterISO_8859_2, 0xA1, 0x0104},  {g_oConverterISO_8859_2, 0x8A, 0x008A},
        {g_oConverterISO_8859_3, 0xA1, 0x0126},  {g_oConverterISO_8859_4, 0xA2, 0x0138},
        {g_oConverterISO_8859_5, 0xB0, 0x0410},  {g_oConverterISO_8859_5, 0xF0, 0x2116},
        {g_oConverterISO_8859_6, 0xC7, 0x0627},  {g_oConverterISO_8859_6, 0x81, 0x0081},
        {g_oConverterISO_8859_7, 0xC1, 0x0391},  {g_oConverterISO_8859_7, 0xA4, 0x20AC},
        {g_oConverterISO_8859_8, 0xE0, 0x05D0},  {g_oConverterISO_8859_8, 0xA4, 0x00A4},
        {g_oConverterISO_8859_9, 0xD0, 0x011E},  {g_oConverterISO_8859_9, 0x80, 0x0080},
        {g_oConverterISO_8859_10, 0xBD, 0x2015}, {g_oConverterISO_8859_10, 0xFF, 0x0138},
        {g_oConverterISO_8859_11, 0xA1, 0x0E01}, {g_oConverterISO_8859_11, 0x1A, 0x001A},
        {g_oConverterISO_8859_13, 0xA1, 0x201D}, {g_oConverterISO_8859_13, 0xFF, 0x2019},
        {g_oConverterISO_8859_14, 0xA1, 0x1E02}, {g_oConverterISO_8859_15, 0xA4, 0x20AC},
        {g_oConverterISO_8859_15, 0xBC, 0x0152}, {g_oConverterISO_8859_16, 0xA4, 0x20AC},
        {g_oConverterISO_8859_16, 0xAA, 0x0218}, {g_oConverterKOI8R, 0xC1, 0x0430},
        {g_oConverterKOI8R, 0x80, 0x2500},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(unitOf(row.converter, row.byte), row.unit) << "row " << &row - rows;
        EXPECT_EQ(byteOf(row.converter, row.unit), row.byte) << "row " << &row - rows;
    }
}
