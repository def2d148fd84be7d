// kx7text tests - the sparse tables.
#include "kx7/converters/LookupTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

/** A table is its page pointers and nothing else. */
template <class T, class Table>
std::vector<T const*> pagesOf(Table const& table)
{
    std::vector<T const*> pages(sizeof table / sizeof(T const*));
    memcpy(pages.data(), static_cast<void const*>(&table), sizeof table);
    return pages;
}

template <class T>
class LookupTables : public testing::Test {
};
using ValueTypes = testing::Types<unsigned char, unsigned short, unsigned int>;
struct ValueTypeNames {
    template <class T>
    static std::string GetName(int)
    {
        return "Of" + std::to_string(8 * sizeof(T)) + "Bits";
    }
};
TYPED_TEST_SUITE(LookupTables, ValueTypes, ValueTypeNames);

}  // namespace

TYPED_TEST(LookupTables, IsNothingButItsPagePointers)
{
    EXPECT_EQ(sizeof(LookupTable<TypeParam>), 256 * sizeof(void*));
}

TYPED_TEST(LookupTables, FreshTableReadsZeroEverywhereFromTheNullPage)
{
    LookupTable<TypeParam> const table;
    for (unsigned int key = 0; key <= 0xFFFF; ++key)
        ASSERT_EQ(table.get(static_cast<unsigned short>(key)), 0u) << key;
    for (TypeParam const* page : pagesOf<TypeParam>(table))
        EXPECT_EQ(page, LookupTable<TypeParam>::m_gNullTable);
}

TYPED_TEST(LookupTables, KeysOfOneHighByteShareAPage)
{
    LookupTable<TypeParam> table;
    table.put(0x20AC, 0x80);
    for (unsigned int key = 0; key <= 0xFFFF; ++key)
        ASSERT_EQ(table.get(static_cast<unsigned short>(key)), key == 0x20AC ? 0x80u : 0u) << key;
    auto const before = pagesOf<TypeParam>(table);
    EXPECT_NE(before[0x20], LookupTable<TypeParam>::m_gNullTable);
    EXPECT_EQ(before[0x21], LookupTable<TypeParam>::m_gNullTable);
    table.put(0x2000, 1);
    table.put(0x20FF, 2);
    EXPECT_EQ(pagesOf<TypeParam>(table), before) << "no page is made for a second key";
    EXPECT_EQ(table.get(0x20AC), 0x80u);
    EXPECT_EQ(table.get(0x2000), 1u);
    EXPECT_EQ(table.get(0x20FF), 2u);
    EXPECT_EQ(table.get(0x21AC), 0u);
}

TYPED_TEST(LookupTables, SecondPutReplacesTheFirst)
{
    LookupTable<TypeParam> table;
    table.put(0x1234, 5);
    table.put(0x1234, 6);
    EXPECT_EQ(table.get(0x1234), 6u);
    table.put(0x1234, 0);
    EXPECT_EQ(table.get(0x1234), 0u);
}

TYPED_TEST(LookupTables, HoldTheLargestValueAtEveryKey)
{
    TypeParam const largest = static_cast<TypeParam>(-1);
    LookupTable<TypeParam> table;
    for (unsigned int key = 0; key <= 0xFFFF; ++key)
        table.put(static_cast<unsigned short>(key), static_cast<TypeParam>(largest - key % 200));
    for (unsigned int key = 0; key <= 0xFFFF; ++key)
        ASSERT_EQ(table.get(static_cast<unsigned short>(key)), static_cast<TypeParam>(largest - key % 200)) << key;
}

TYPED_TEST(LookupTables, NeverWriteToTheNullPage)
{
    LookupTable<TypeParam> table;
    for (unsigned int key = 0; key <= 0xFFFF; key += 0x101)
        table.put(static_cast<unsigned short>(key), 1);
    for (unsigned int i = 0; i < 256; ++i)
        ASSERT_EQ(LookupTable<TypeParam>::m_gNullTable[i], 0u) << i;
    LookupTable<TypeParam> const other;
    EXPECT_EQ(other.get(0), 0u);
}

TYPED_TEST(LookupTables, AgreeWithAFlatArray)
{
    std::mt19937 random(20240817);
    LookupTable<TypeParam> table;
    std::vector<TypeParam> flat(0x10000);
    for (int i = 0; i < 20000; ++i) {
        auto const key = static_cast<unsigned short>(random() % 7 == 0 ? random() : random() % 0x400);
        auto const value = static_cast<TypeParam>(random());
        table.put(key, value);
        flat[key] = value;
    }
    for (unsigned int key = 0; key <= 0xFFFF; ++key)
        ASSERT_EQ(table.get(static_cast<unsigned short>(key)), flat[key]) << key;
}

TEST(LookupTablesOfCodePoints, HaveSeventeenPlanesOfPages)
{
    EXPECT_EQ(sizeof(LookupTableEx<unsigned short>), 17 * 256 * sizeof(void*));
}

TEST(LookupTablesOfCodePoints, FreshTableReadsZeroEverywhereFromTheNullPage)
{
    LookupTableEx<unsigned short> const table;
    for (unsigned int c = 0; c <= 0x10FFFF; ++c)
        ASSERT_EQ(table.get(c), 0u) << c;
    for (unsigned short const* page : pagesOf<unsigned short>(table))
        ASSERT_EQ(page, LookupTableEx<unsigned short>::m_gNullTable);
}

TEST(LookupTablesOfCodePoints, ReachFromZeroToTheLastCodePoint)
{
    LookupTableEx<unsigned short> table;
    unsigned int const keys[] = {0, 0x20AC, 0xFFFF, 0x10000, 0x1F600, 0x2F81A, 0x10FFFF};
    unsigned short value = 1;
    for (unsigned int const key : keys)
        table.put(key, value++);
    value = 1;
    for (unsigned int const key : keys)
        EXPECT_EQ(table.get(key), value++) << key;
    EXPECT_EQ(table.get(0x120AC), 0u) << "the same in another plane";
    EXPECT_EQ(table.get(0x1FFFF), 0u);
    auto const pages = pagesOf<unsigned short>(table);
    EXPECT_EQ(static_cast<size_t>(std::count(pages.begin(), pages.end(), LookupTableEx<unsigned short>::m_gNullTable)),
              pages.size() - 7);
}

TEST(LookupTablesOfCodePoints, SecondPutReplacesTheFirst)
{
    LookupTableEx<unsigned short> table;
    table.put(0x1F600, 5);
    table.put(0x1F600, 6);
    EXPECT_EQ(table.get(0x1F600), 6u);
}
