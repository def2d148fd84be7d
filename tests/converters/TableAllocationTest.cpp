// kx7text tests - what tables allocate, and converters whose tables find no memory.
#include <gtest/gtest.h>

#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/converters/LookupTable.h"
#include "tests/support/Heap.h"
#include "tests/support/Probe.h"
#include "tests/support/SampleSingleByte.h"

using namespace kx7test;

namespace {

/** A list with three pages of units: 0x00, 0x20 and 0xFF. */
BytePairs const PAIRS = {{'A', u'A'}, {0x80, u'\u20AC'}, {0x81, u'\u2000'}, {0x90, u'\uFF00'}};

/** The units of the list, and one that it lacks, each on its own. */
std::string encodedOneByOne(KX7CharSetConverter& converter)
{
    std::string bytes;
    for (char16_t const unit : {u'A', u'\u20AC', u'\u2000', u'\uFF00', u'B'}) {
        unsigned short const units[] = {unit, 0};
        char byte[2];
        EXPECT_EQ(converter.fromUTF16(byte, units, 1, ILLCHAR_REPLACE, nullptr), 1u);
        bytes += byte[0];
    }
    return bytes;
}

std::u16string decodedList(KX7CharSetConverter& converter)
{
    unsigned short units[8];
    unsigned int const length = converter.toUTF16(units,
                                                  "A\x80\x81\x90"
                                                  "B",
                                                  7, ILLCHAR_REPLACE, nullptr, -1);
    return std::u16string(units, units + length);
}

std::u16string const ALL_DECODED = u"A\u20AC\u2000\uFF00\uFFFD";
std::string const ALL_ENCODED = "A\x80\x81\x90?";

}  // namespace

TEST(TableAllocation, FreshTableHasNoPagesAndFreesNone)
{
    HeapWatch const watch(HeapWatch::NOTHROW);
    {
        LookupTable<unsigned short> const table;
        LookupTableEx<unsigned short> const wideTable;
        EXPECT_EQ(table.get(0x20AC), 0u);
        EXPECT_EQ(wideTable.get(0x1F600), 0u);
    }
    EXPECT_EQ(watch.made(), 0u);
    EXPECT_EQ(watch.freed(), 0u);
}

TEST(TableAllocation, OnePageForEachHighByteAndEachIsFreed)
{
    HeapWatch const watch(HeapWatch::NOTHROW);
    {
        LookupTable<unsigned short> table;
        table.put(0x20AC, 1);
        table.put(0x2000, 2);
        table.put(0x20FF, 3);
        EXPECT_EQ(watch.made(), 1u);
        EXPECT_EQ(HeapWatch::lastArraySize(), 256 * sizeof(unsigned short));
        table.put(0x21AC, 4);
        EXPECT_EQ(watch.made(), 2u);
        EXPECT_EQ(watch.freed(), 0u);
    }
    EXPECT_EQ(watch.freed(), 2u);
}

TEST(TableAllocation, EachPageOfATableOfCodePointsIsFreed)
{
    HeapWatch const watch(HeapWatch::NOTHROW);
    {
        LookupTableEx<unsigned short> table;
        table.put(0x20AC, 1);
        table.put(0x120AC, 2);
        table.put(0x10FFFF, 3);
        EXPECT_EQ(watch.made(), 3u);
    }
    EXPECT_EQ(watch.freed(), 3u);
}

TEST(TableAllocation, PutWithoutMemoryIsDropped)
{
    HeapWatch watch(HeapWatch::NOTHROW);
    LookupTable<unsigned int> table;
    table.put(0x0100, 7);
    watch.failAt(1);
    table.put(0x20AC, 1);
    EXPECT_EQ(table.get(0x20AC), 0u);
    EXPECT_EQ(table.get(0x0100), 7u);
    EXPECT_EQ(LookupTable<unsigned int>::m_gNullTable[0xAC], 0u);
    table.put(0x20AC, 1);
    EXPECT_EQ(table.get(0x20AC), 1u);
}

TEST(ConverterAllocation, LoadsItsTablesOnceAndFreesThem)
{
    std::vector<unsigned short> const list = listOf(PAIRS);
    HeapWatch const watch(HeapWatch::NOTHROW);
    {
        KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
        EXPECT_EQ(watch.made(), 0u) << "nothing before the first conversion";
        EXPECT_EQ(converter.getNumUnits("A", UNTIL_TERMINATOR), 1u);
        EXPECT_EQ(watch.made(), 0u) << "counting needs no tables";
        converter.load();
        size_t const loaded = watch.made();
        EXPECT_GT(loaded, 0u);
        converter.load();
        unsigned short units[4];
        converter.toUTF16(units, "A\x80", 3, ILLCHAR_REPLACE, nullptr, -1);
        char bytes[4];
        converter.fromUTF16(bytes, units, 3, ILLCHAR_REPLACE, nullptr);
        EXPECT_EQ(watch.made(), loaded);
    }
    EXPECT_EQ(watch.freed(), 4u) << "the tables and three pages";
}

TEST(ConverterAllocation, PageWithoutMemoryLeavesItsUnitsUnmapped)
{
    std::vector<unsigned short> const list = listOf(PAIRS);
    size_t before = 0;  // allocations before the first page
    {
        HeapWatch const watch(HeapWatch::NOTHROW);
        KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
        converter.load();
        ASSERT_GT(watch.made(), 3u);
        before = watch.made() - 3;
    }
    struct Row {
        char const* what;
        size_t firstFailing;
        size_t lastFailing;
        std::string encoded;
    };
    Row const rows[] = {
        {"first page", 1, 1, "?\x80\x81\x90?"},
        {"second page, but its second unit finds memory", 2, 2, "A?\x81\x90?"},
        {"second page for both of its units", 2, 3, "A??\x90?"},
        {"third page", 3, 3, "A\x80\x81??"},
        {"no page at all", 1, 4, "?????"},
    };
    for (Row const& row : rows) {
        KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
        HeapWatch watch(HeapWatch::NOTHROW);
        watch.fail(before + row.firstFailing, before + row.lastFailing);
        EXPECT_EQ(encodedOneByOne(converter), row.encoded) << row.what;
        EXPECT_EQ(decodedList(converter), ALL_DECODED) << "decoding needs no pages; " << row.what;
        EXPECT_EQ(encodedOneByOne(converter), row.encoded) << "it stays so; " << row.what;
    }
}

TEST(ConverterAllocation, NoMemoryAtAllLeavesEverythingUnmappedUntilThereIsSome)
{
    std::vector<unsigned short> const list = listOf(PAIRS);
    {
        KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
        {
            HeapWatch watch(HeapWatch::NOTHROW);
            watch.failAt(1);
            EXPECT_EQ(decodedList(converter), u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD");
        }
        // No lock is held, and the next conversion finds its tables.
        EXPECT_EQ(decodedList(converter), ALL_DECODED);
        EXPECT_EQ(encodedOneByOne(converter), ALL_ENCODED);
    }
    KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
    {
        HeapWatch watch(HeapWatch::NOTHROW);
        watch.failAt(1, true);
        EXPECT_EQ(encodedOneByOne(converter), "?????");
    }
    EXPECT_EQ(encodedOneByOne(converter), ALL_ENCODED);
}

TEST(ConverterAllocation, ConversionsAllocateNothingOnceLoaded)
{
    std::vector<unsigned short> const list = listOf(PAIRS);
    KX7CharSetConverterSBCS converter(list.data(), KX7CS_WCP1252);
    converter.load();
    std::string const bytes(3 * PIECE_UNITS, 'A');
    std::vector<unsigned short> units(bytes.size() + 1);
    std::vector<char> back(6 * bytes.size() + 1);
    HeapWatch const watch(HeapWatch::NOTHROW);
    auto const capacity = static_cast<unsigned int>(bytes.size());
    EXPECT_EQ(converter.toUTF16(units.data(), bytes.c_str(), capacity, ILLCHAR_REPLACE, nullptr, -1), capacity);
    EXPECT_EQ(converter.fromUTF16(back.data(), units.data(), 6 * capacity, ILLCHAR_ESCAPE, nullptr), capacity);
    EXPECT_EQ(watch.made(), 0u);
    EXPECT_EQ(watch.freed(), 0u);
}
