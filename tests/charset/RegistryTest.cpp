// kx7text tests - character-set values and the registry of converters.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <set>
#include <string>
#include <type_traits>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"
#include "tests/charset/ForeignConverter.h"
#include "tests/charset/NamedSets.h"
#include "tests/support/CharSets.h"

using kx7test::charSetRows;
using kx7test::ForeignConverter;
using kx7test::NAMED_SETS;
using kx7test::NamedSet;

namespace {

constexpr KX7CharSet charSetOf(int number)
{
    return static_cast<KX7CharSet>(number);
}

/** Named sets that have no converter, and numbers that are no character set. */
int const WITHOUT_CONVERTER[] = {
    50220, 50221, 50222, 50223, 50224, 50225, 50227, 50228,  50229, 51950,   1201,
    12001, 0,     437,   50226, 28602, 1,     -1,    -3,     1249,  1259,    65000,
    65002, 28590, 28607, 32000, 20865, 20867, 65535, 100000, 12345, INT_MAX, INT_MIN,
};

/** Numbers that no character set has, for the tests that register converters in the registry of the process. */
enum UnusedNumber {
    UNUSED_BY_ENTRY_POINTS = 70001,
    UNUSED_BY_STRINGS = 70002,
    UNUSED_BY_DERIVED = 70003,
    UNUSED_TWICE = 70004,
    UNUSED_BY_NULL = 70005,
    UNUSED_EARLY = 70006,
    UNUSED_WITH_NULL = 70007,
    UNUSED_MANY = 70100,      ///< and those after it
    UNUSED_ELSEWHERE = 70300  ///< and those after it
};

/** So many numbers in a row that some are not in the way of the library's own in the quick lookup. */
constexpr int MANY = 64;

}  // namespace

static_assert(std::is_same<std::underlying_type<KX7CharSet>::type, int32_t>::value, "values are signed, 32 bits wide");

TEST(CharSetValues, AreCodePageNumbers)
{
    std::set<int> numbers;
    for (NamedSet const& row : NAMED_SETS) {
        EXPECT_EQ(static_cast<int>(row.charSet), row.number) << row.name;
        EXPECT_TRUE(numbers.insert(row.number).second) << row.name;
    }
    EXPECT_EQ(numbers.size(), 54u);
}

TEST(Registry, ServesEveryCharSetByItsOwnConverter)
{
    std::set<KX7CharSetConverter*> seen;
    for (kx7test::CharSetRow const& row : charSetRows()) {
        EXPECT_EQ(g_oCnvtMgr.getConverter(row.charSet), row.converter) << row.name;
        EXPECT_EQ(KX7CharSetConverter::getConverter(row.charSet), row.converter) << row.name;
        EXPECT_TRUE(seen.insert(row.converter).second) << row.name;
    }
    EXPECT_EQ(seen.size(), 41u);
}

TEST(Registry, ServesValuesWithoutConverterByUTF8)
{
    for (int const number : WITHOUT_CONVERTER) {
        EXPECT_EQ(g_oCnvtMgr.getConverter(charSetOf(number)), &g_oConverterUTF8) << number;
        EXPECT_EQ(KX7CharSetConverter::getConverter(charSetOf(number)), &g_oConverterUTF8) << number;
    }
}

TEST(Registry, LoadGivesUTF8WhateverIsAskedFor)
{
    for (NamedSet const& row : NAMED_SETS)
        EXPECT_EQ(g_oCnvtMgr.load(row.charSet), &g_oConverterUTF8) << row.name;
}

TEST(Registry, LoadRegistersNothing)
{
    CharSetConverterManager registry;
    ForeignConverter own(charSetOf(437));
    registry.load(charSetOf(437));
    registry.insert(charSetOf(437), &own, true);
    EXPECT_EQ(registry.getConverter(charSetOf(437)), &own);
}

TEST(Registry, QuickLookUpAnswersAsTheRegistryDoesForEveryValue)
{
    for (int number = -1000; number < 70000; ++number)
        ASSERT_EQ(KX7CharSetConverter::getConverter(charSetOf(number)), g_oCnvtMgr.getConverter(charSetOf(number)))
            << number;
}

TEST(Registry, OSDefaultIsServedByOneOfTheConverters)
{
    KX7CharSetConverter* const osDefault = KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT);
    bool found = false;
    for (kx7test::CharSetRow const& row : charSetRows())
        found = found || row.converter == osDefault;
    EXPECT_TRUE(found);
}

TEST(Registry, OSDefaultIsResolvedAnewForEveryRegistry)
{
    CharSetConverterManager registry;
    EXPECT_EQ(registry.getConverter(KX7CS_OS_DEFAULT), g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT));
}

TEST(Registry, SecondInsertKeepsTheFirstConverter)
{
    int destroyed = 0;
    ForeignConverter second(charSetOf(UNUSED_TWICE));
    second.destroyed = &destroyed;
    {
        CharSetConverterManager registry;
        auto* const first = new ForeignConverter(charSetOf(UNUSED_TWICE));
        registry.insert(charSetOf(UNUSED_TWICE), first, false);
        registry.insert(charSetOf(UNUSED_TWICE), &second, false);
        EXPECT_EQ(registry.getConverter(charSetOf(UNUSED_TWICE)), first);
        registry.insert(KX7CS_WCP1252, &second, false);
        EXPECT_EQ(registry.getConverter(KX7CS_WCP1252), &g_oConverterWCP1252);
        registry.insert(KX7CS_UTF8, &second, false);
        EXPECT_EQ(registry.getConverter(KX7CS_UTF8), &g_oConverterUTF8);
    }
    EXPECT_EQ(destroyed, 0) << "a converter that was not taken belongs to the caller";
}

TEST(Registry, SecondInsertIsNotFoundByTheQuickLookUpEither)
{
    static ForeignConverter first(charSetOf(UNUSED_MANY));
    static ForeignConverter second(charSetOf(UNUSED_MANY));
    for (int number = UNUSED_MANY; number < UNUSED_MANY + MANY; ++number) {
        g_oCnvtMgr.insert(charSetOf(number), &first, true);
        g_oCnvtMgr.insert(charSetOf(number), &second, true);
        EXPECT_EQ(KX7CharSetConverter::getConverter(charSetOf(number)), &first) << number;
    }
}

TEST(Registry, ANullConverterCountsAsNone)
{
    KX7CharSet const charSet = charSetOf(UNUSED_WITH_NULL);
    ForeignConverter second(charSet);
    CharSetConverterManager own;
    for (CharSetConverterManager* const registry : {&own, &g_oCnvtMgr}) {
        registry->insert(charSet, nullptr, true);
        EXPECT_EQ(registry->getConverter(charSet), &g_oConverterUTF8);
        registry->insert(charSet, &second, true);
        EXPECT_EQ(registry->getConverter(charSet), &g_oConverterUTF8) << "the first insert stays";
    }
    EXPECT_EQ(KX7CharSetConverter::getConverter(charSet), &g_oConverterUTF8);
    unsigned short units[4];
    EXPECT_EQ(LocalToUTF16(units, "\xC3\xA9", 4, charSet), 1u);
    EXPECT_EQ(units[0], 0xE9);
    unsigned char utf8[4];
    EXPECT_EQ(LocalToUTF8(utf8, "\xC3\xA9", sizeof utf8, charSet), 2u);
    EXPECT_EQ(GetNullCharSize(charSet), 1u);
    EXPECT_EQ(KX7UString("\xC3\xA9", charSet).length(), 1u);
}

TEST(Registry, ConvertersCanBeInsertedBeforeTheyAreConstructed)
{
    KX7CharSet const charSet = charSetOf(UNUSED_EARLY);
    static std::aligned_storage<sizeof(KX7CharSetConverterSBCS), alignof(KX7CharSetConverterSBCS)>::type storage;
    memset(&storage, 0, sizeof storage);
    g_oCnvtMgr.insert(charSet, reinterpret_cast<KX7CharSetConverterSBCS*>(&storage), true);
    static unsigned short const LIST[] = {'a', 'b', 0, 0};
    new (&storage) KX7CharSetConverterSBCS(LIST, charSet);
    char local[8];
    ASSERT_EQ(UTF8ToLocal(local, reinterpret_cast<unsigned char const*>("bb"), sizeof local, charSet), 2u);
    EXPECT_STREQ(local, "aa");
}

TEST(Registry, ConvertersInsertedElsewhereStayUnknownHere)
{
    CharSetConverterManager registry;
    ForeignConverter own(charSetOf(437));
    registry.insert(charSetOf(437), &own, true);
    EXPECT_EQ(registry.getConverter(charSetOf(437)), &own);
    EXPECT_EQ(g_oCnvtMgr.getConverter(charSetOf(437)), &g_oConverterUTF8);
    EXPECT_EQ(KX7CharSetConverter::getConverter(charSetOf(437)), &g_oConverterUTF8);
    for (int number = UNUSED_ELSEWHERE; number < UNUSED_ELSEWHERE + MANY; ++number) {
        registry.insert(charSetOf(number), &own, true);
        EXPECT_EQ(KX7CharSetConverter::getConverter(charSetOf(number)), &g_oConverterUTF8) << number;
    }
}

TEST(Registry, AnInsertForTheDefaultsOwnValueIsNeverAsked)
{
    CharSetConverterManager registry;
    ForeignConverter own(KX7CS_OS_DEFAULT);
    registry.insert(KX7CS_OS_DEFAULT, &own, true);
    EXPECT_NE(registry.getConverter(KX7CS_OS_DEFAULT), &own);
}

TEST(Registry, DestructionDeletesOwnedConvertersOnceAndStaticOnesNever)
{
    int ownedDestroyed[3] = {};
    int staticDestroyed = 0;
    {
        ForeignConverter notOwned(charSetOf(80000));
        notOwned.destroyed = &staticDestroyed;
        {
            CharSetConverterManager registry;
            for (int i = 0; i < 3; ++i) {
                auto* const owned = new ForeignConverter(charSetOf(80001 + i));
                owned->destroyed = &ownedDestroyed[i];
                registry.insert(charSetOf(80001 + i), owned, false);
                registry.insert(charSetOf(80001 + i), owned, false);
            }
            registry.insert(charSetOf(80000), &notOwned, true);
            registry.insert(charSetOf(80010), nullptr, false);
            EXPECT_EQ(ownedDestroyed[0], 0);
        }
        for (int const count : ownedDestroyed)
            EXPECT_EQ(count, 1);
        EXPECT_EQ(staticDestroyed, 0);
    }
    EXPECT_EQ(staticDestroyed, 1);
}

TEST(Registry, TheLibrarysConvertersOutliveALocalRegistry)
{
    {
        CharSetConverterManager registry;
        EXPECT_EQ(registry.getConverter(KX7CS_WCP1252), &g_oConverterWCP1252);
    }
    unsigned char utf8[8];
    for (kx7test::CharSetRow const& row : charSetRows()) {
        EXPECT_EQ(row.converter->getNullCharSize(), GetNullCharSize(row.charSet)) << row.name;
        if (row.converter->getMinUnitSize() == 1) {
            EXPECT_EQ(LocalToUTF8(utf8, "A", sizeof utf8, row.charSet), 1u) << row.name;
        }
    }
}

TEST(Registry, ConverterFromOutsideServesTheEntryPoints)
{
    static ForeignConverter converter(charSetOf(UNUSED_BY_ENTRY_POINTS));
    KX7CharSet const cs = charSetOf(UNUSED_BY_ENTRY_POINTS);
    g_oCnvtMgr.insert(cs, &converter, true);
    ASSERT_EQ(KX7CharSetConverter::getConverter(cs), &converter);

    unsigned char utf8[16];
    EXPECT_EQ(LocalToUTF8(utf8, "ab", sizeof utf8, cs), 4u);
    EXPECT_STREQ(reinterpret_cast<char const*>(utf8), u8"\u0161\u0162");
    char local[16];
    EXPECT_EQ(UTF8ToLocal(local, reinterpret_cast<unsigned char const*>(u8"\u0161\u0162\u4E2D"), sizeof local, cs), 3u);
    EXPECT_STREQ(local, "ab?");
    unsigned short units[16];
    EXPECT_EQ(LocalToUTF16(units, "ab", 16, cs), 2u);
    EXPECT_EQ(units[1], 0x162);
    EXPECT_EQ(UTF16ToLocal(local, units, sizeof local, cs), 2u);
    EXPECT_STREQ(local, "ab");
    EXPECT_EQ(GetNumUnits("abc", cs), 3u);
    EXPECT_EQ(GetNumBytes(units, cs), 2u);
    EXPECT_EQ(GetMaxUnitSize(cs), 5u);
}

TEST(Registry, NullPointersReachNoConverterFromOutside)
{
    static ForeignConverter converter(charSetOf(UNUSED_BY_NULL));
    KX7CharSet const cs = charSetOf(UNUSED_BY_NULL);
    g_oCnvtMgr.insert(cs, &converter, true);
    unsigned char utf8[4] = "z";
    char local[4] = "z";
    unsigned short units[4] = {'z'};
    EXPECT_EQ(LocalToUTF8(nullptr, "a", 4, cs), 0u);
    EXPECT_EQ(LocalToUTF8(utf8, nullptr, 4, cs), 0u);
    EXPECT_EQ(UTF8ToLocal(nullptr, utf8, 4, cs), 0u);
    EXPECT_EQ(UTF8ToLocal(local, nullptr, 4, cs), 0u);
    EXPECT_EQ(LocalToUTF16(nullptr, "a", 4, cs), 0u);
    EXPECT_EQ(LocalToUTF16(units, nullptr, 4, cs), 0u);
    EXPECT_EQ(UTF16ToLocal(nullptr, units, 4, cs), 0u);
    EXPECT_EQ(UTF16ToLocal(local, nullptr, 4, cs), 0u);
    EXPECT_TRUE(converter.toCalls.empty());
    EXPECT_TRUE(converter.fromCalls.empty());
}

TEST(Registry, ConverterFromOutsideServesStrings)
{
    static ForeignConverter converter(charSetOf(UNUSED_BY_STRINGS));
    KX7CharSet const cs = charSetOf(UNUSED_BY_STRINGS);
    g_oCnvtMgr.insert(cs, &converter, true);

    KX7UString const terminated("ab", cs);
    ASSERT_EQ(terminated.length(), 2u);
    EXPECT_EQ(terminated.data()[0], 0x161);
    EXPECT_EQ(terminated.data()[1], 0x162);
    EXPECT_EQ(KX7UString("abc", 2, cs).compare(terminated), 0);
    EXPECT_EQ(KX7UString('a', cs).length(), 1u);
    EXPECT_EQ(KX7UString('a', 300, cs).length(), 300u);
    KX7PascalString pascal = {2, {'a', 'b'}};
    EXPECT_EQ(KX7UString(pascal, cs).compare(terminated), 0);
    EXPECT_EQ(KX7UString(&pascal, cs).compare(terminated), 0);
}

namespace {

/** UTF-8 with every letter in upper case: derived from one of the library's own classes. */
class ShoutingConverter : public KX7CharSetConverterUTF8 {
public:
    using KX7CharSetConverterUTF8::KX7CharSetConverterUTF8;
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override
    {
        unsigned int const n = KX7CharSetConverterUTF8::toUTF16(dest, source, capacity, op, illegal, sourceLimit);
        for (unsigned int i = 0; i < n; ++i)
            dest[i] = static_cast<unsigned short>(dest[i] >= 'a' && dest[i] <= 'z' ? dest[i] - 'a' + 'A' : dest[i]);
        return n;
    }
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override
    {
        unsigned int const n = KX7CharSetConverterUTF8::fromUTF16(dest, source, capacity, op, illegal);
        if (n != 0)
            static_cast<char*>(dest)[0] = '!';
        return n;
    }
};

}  // namespace

TEST(Registry, AClassDerivedFromALibraryConverterKeepsItsOwnOperations)
{
    static ShoutingConverter converter(charSetOf(UNUSED_BY_DERIVED));
    KX7CharSet const cs = charSetOf(UNUSED_BY_DERIVED);
    g_oCnvtMgr.insert(cs, &converter, true);

    unsigned char utf8[16];
    EXPECT_EQ(LocalToUTF8(utf8, "shout", sizeof utf8, cs), 5u);
    EXPECT_STREQ(reinterpret_cast<char const*>(utf8), "SHOUT");
    char local[16];
    EXPECT_EQ(UTF8ToLocal(local, reinterpret_cast<unsigned char const*>("shout"), sizeof local, cs), 5u);
    EXPECT_STREQ(local, "!hout");
    EXPECT_EQ(KX7UString("ab", cs).data()[1], 'B');
    EXPECT_EQ(KX7UString("ab", 2, cs).data()[1], 'B');
}
