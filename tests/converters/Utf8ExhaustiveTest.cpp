// kx7text tests - UTF-8 against its model: short sequences and units without exception, long texts at random.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/OneIn.h"
#include "tests/support/Probe.h"
#include "tests/support/Texts.h"

using namespace kx7test;

namespace {

Utf8Model const model;

char const BOUNDARY_BYTES[] = {'\x01', '\x41', '\x7F', '\x80', '\x8F', '\x90', '\x9F',
                               '\xA0', '\xBF', '\xC0', '\xE2', '\xF0', '\xFF'};

char16_t const BOUNDARY_UNITS[] = {0x01,   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF, 0xD800, 0xD801, 0xDBFE,
                                   0xDBFF, 0xDC00, 0xDC01, 0xDFFE, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};

/** Every operation, every limit that matters and some capacities. */
void compareAllWays(Probe& probe, std::string const& bytes)
{
    int const length = static_cast<int>(bytes.size());
    for (ILLCHAR_OPTYPE const op : OPERATIONS)
        for (int limit = -1; limit <= length + 1; ++limit)
            for (unsigned int const capacity : {1u, 2u, 8u})
                probe.compareDecode({bytes, capacity, op, limit},
                                    FLAG_ARGUMENTS[static_cast<unsigned int>(limit + 1) % 3]);
    probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
    for (unsigned int count = 0; count <= bytes.size() + 1; ++count)
        probe.compareNumUnits(bytes, count);
}

}  // namespace

TEST(UTF8, EverySequenceOfOneOrTwoBytes)
{
    Probe probe(g_oConverterUTF8, model);
    for (int a = 1; a <= 0xFF && !probe.gaveUp(); ++a) {
        compareAllWays(probe, std::string(1, static_cast<char>(a)));
        for (int b = 1; b <= 0xFF; ++b)
            compareAllWays(probe, {static_cast<char>(a), static_cast<char>(b)});
    }
}

TEST(UTF8, EverySequenceOfThreeBytes)
{
    // Operations, capacities and flag arguments take turns.
    Probe probe(g_oConverterUTF8, model);
    unsigned int const capacities[] = {1, 2, 3, 4, 7};
    size_t turn = 0;
    OneIn isTaken(7);
    for (int const limit : {-1, 1, 2, 3}) {
        DecodeCall call{std::string(3, '\0'), 0, ILLCHAR_STOP, limit};
        for (int a = 1; a <= 0xFF && !probe.gaveUp(); ++a)
            for (int b = 1; b <= 0xFF; ++b)
                for (int c = 1; c <= 0xFF; ++c) {
                    ++turn;
                    if (!isTaken())
                        continue;
                    call.bytes[0] = static_cast<char>(a);
                    call.bytes[1] = static_cast<char>(b);
                    call.bytes[2] = static_cast<char>(c);
                    call.capacity = capacities[turn % 5];
                    call.op = OPERATIONS[turn % 4];
                    probe.compareDecode(call, FLAG_ARGUMENTS[turn % 3]);
                }
    }
}

TEST(UTF8, EveryLeadOfThreeWithBoundaryBytesInAllWays)
{
    Probe probe(g_oConverterUTF8, model);
    for (int a = 0xC0; a <= 0xFF && !probe.gaveUp(); ++a)
        for (char const b : BOUNDARY_BYTES)
            for (char const c : BOUNDARY_BYTES)
                compareAllWays(probe, {static_cast<char>(a), b, c});
}

TEST(UTF8, EveryLeadOfFourWithBoundaryBytesInAllWays)
{
    Probe probe(g_oConverterUTF8, model);
    for (int a = 0xF0; a <= 0xFF && !probe.gaveUp(); ++a)
        for (char const b : BOUNDARY_BYTES)
            for (char const c : BOUNDARY_BYTES)
                for (char const d : BOUNDARY_BYTES)
                    compareAllWays(probe, {static_cast<char>(a), b, c, d});
}

TEST(UTF8, EveryUnit)
{
    Probe probe(g_oConverterUTF8, model);
    for (unsigned int unit = 1; unit <= 0xFFFF && !probe.gaveUp(); ++unit) {
        std::u16string const units(1, static_cast<char16_t>(unit));
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            for (unsigned int const capacity : {1u, 2u, 3u, 7u})
                probe.compareEncode({units, capacity, op}, FLAG_ARGUMENTS[(unit + capacity) % 3]);
        probe.compareNumBytes(units, UNTIL_TERMINATOR);
        probe.compareNumBytes(units, 1);
    }
}

TEST(UTF8, EveryPairOfBoundaryUnits)
{
    Probe probe(g_oConverterUTF8, model);
    for (char16_t const a : BOUNDARY_UNITS)
        for (char16_t const b : BOUNDARY_UNITS) {
            std::u16string const units{a, b, u'C'};
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= 20; ++capacity)
                    probe.compareEncode({units, capacity, op});
            probe.compareNumBytes(units, UNTIL_TERMINATOR);
            for (unsigned int count = 0; count <= 4; ++count)
                probe.compareNumBytes(units, count);
        }
}

TEST(UTF8, EverySurrogateBesideEachBoundaryUnit)
{
    Probe probe(g_oConverterUTF8, model);
    for (unsigned int surrogate = 0xD800; surrogate <= 0xDFFF && !probe.gaveUp(); ++surrogate)
        for (char16_t const other : BOUNDARY_UNITS)
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                probe.compareEncode({{static_cast<char16_t>(surrogate), other}, 12, op}, FlagArgument::FALSE_BEFORE);
                probe.compareEncode({{other, static_cast<char16_t>(surrogate)}, 12, op}, FlagArgument::TRUE_BEFORE);
            }
}

TEST(UTF8, EverySupplementaryCharacterBothWays)
{
    Probe probe(g_oConverterUTF8, model);
    for (unsigned int high = 0xD800; high <= 0xDBFF && !probe.gaveUp(); ++high)
        for (unsigned int low = 0xDC00; low <= 0xDFFF; ++low) {
            EncodeCall const call{{static_cast<char16_t>(high), static_cast<char16_t>(low)}, 4, OPERATIONS[low % 4]};
            Encoded const encoded = model.fromUTF16(call);
            probe.encode(call, encoded, FLAG_ARGUMENTS[low % 3]);
            probe.decode({encoded.bytes, 2, ILLCHAR_STOP, -1}, {call.units, Flag::CLEARED}, FLAG_ARGUMENTS[low % 3]);
        }
}

TEST(UTF8, EveryCapacityAndLimit)
{
    Probe probe(g_oConverterUTF8, model);
    std::vector<std::string> const fragments = utf8Fragments();
    for (std::string const& a : fragments)
        for (std::string const& b : fragments) {
            std::string const bytes = a + b + "C";
            unsigned int const most = static_cast<unsigned int>(bytes.size()) + 8;
            for (unsigned int capacity = 0; capacity <= most; ++capacity)
                for (int limit = -1; limit <= static_cast<int>(most); ++limit)
                    for (FlagArgument const argument : FLAG_ARGUMENTS)
                        probe.compareDecode({bytes, capacity, OPERATIONS[capacity % 4], limit}, argument);
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
            for (unsigned int count = 0; count <= most; ++count)
                probe.compareNumUnits(bytes, count);
        }
}

TEST(UTF8, EveryCapacityForEncoding)
{
    Probe probe(g_oConverterUTF8, model);
    std::vector<std::u16string> const fragments = utf16Fragments();
    for (std::u16string const& a : fragments)
        for (std::u16string const& b : fragments)
            for (std::u16string const& c : fragments) {
                std::u16string const units = a + b + c;
                for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                    auto const needed = static_cast<unsigned int>(model.fromUTF16({units, INT_MAX, op}).bytes.size());
                    for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity)
                        probe.compareEncode({units, capacity, op}, FLAG_ARGUMENTS[capacity % 3]);
                }
                probe.compareNumBytes(units, UNTIL_TERMINATOR);
                for (unsigned int count = 0; count <= units.size() + 1; ++count)
                    probe.compareNumBytes(units, count);
            }
}

TEST(UTF8, CapacitiesAndLimitsWithoutEnd)
{
    Probe probe(g_oConverterUTF8, model);
    std::string const bytes = "A\xC3\xA9\x80\xE2\x82\xAC\xF0\x9F\x98\x80\xC3";
    std::u16string const units{'A', 0xE9, 0x20AC, 0xD83D, 0xDE00, 0xD800, 'B', 'C'};
    for (unsigned int const capacity : {0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        for (int const limit : {INT_MIN, INT_MIN + 1, INT_MAX - 1, INT_MAX})
            probe.compareDecode({bytes, capacity, ILLCHAR_REPLACE, limit});
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            probe.compareEncode({units, capacity, op});
    }
}

TEST(UTF8, CountedBytesAreWhatReplacingWrites)
{
    Probe probe(g_oConverterUTF8, model);
    std::mt19937 random(77);
    std::vector<std::u16string> const fragments = utf16Fragments();
    PageEnd<unsigned short> memory;
    for (int i = 0; i < 200; ++i) {
        // A high surrogate at the end would not count.
        std::u16string const units = randomText(random, fragments, random() % 500) + u"A";
        unsigned int const counted = g_oConverterUTF8.getNumBytes(memory.hold(units, 1), UNTIL_TERMINATOR);
        EXPECT_EQ(counted, model.fromUTF16({units, INT_MAX, ILLCHAR_REPLACE}).bytes.size()) << hex(units);
        probe.compareEncode({units, counted, ILLCHAR_REPLACE});
    }
}
