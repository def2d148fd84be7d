// kx7text tests - names of character sets.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/KX7CharSet.h"
#include "tests/charset/NamedSets.h"

using kx7test::NAMED_SETS;
using kx7test::NamedSet;

TEST(Names, OfEveryCharSetInBothDirections)
{
    for (NamedSet const& row : NAMED_SETS) {
        EXPECT_EQ(static_cast<int>(row.charSet), row.number) << row.name;
        EXPECT_STREQ(KX7CharSetToString(row.charSet), row.name);
        EXPECT_EQ(KX7CharSetFromString(row.name), row.charSet) << row.name;
        EXPECT_EQ(KX7CharSetFromString(KX7CharSetToString(row.charSet)), row.charSet) << row.name;
        EXPECT_STREQ(g_oCnvtMgr.charSetToString(row.charSet), row.name);
        EXPECT_EQ(g_oCnvtMgr.charSetFromString(row.name), row.charSet) << row.name;
    }
}

TEST(Names, OfNoOtherValue)
{
    std::set<int> named;
    for (NamedSet const& row : NAMED_SETS)
        named.insert(row.number);
    for (int value = -10; value < 70000; ++value) {
        if (named.count(value) == 0) {
            ASSERT_STREQ(KX7CharSetToString(static_cast<KX7CharSet>(value)), "KX7CS_OS_DEFAULT") << value;
        }
    }
    for (int const value : {437, 50226, 28602, -1, INT32_MAX, INT32_MIN})
        EXPECT_STREQ(KX7CharSetToString(static_cast<KX7CharSet>(value)), "KX7CS_OS_DEFAULT") << value;
}

TEST(Names, ExistWithoutAConverter)
{
    EXPECT_STREQ(KX7CharSetToString(static_cast<KX7CharSet>(50220)), "KX7CS_ISO_2022JP");
}

TEST(Names, StayWhereTheyAre)
{
    for (NamedSet const& row : NAMED_SETS) {
        char const* const first = KX7CharSetToString(row.charSet);
        EXPECT_EQ(KX7CharSetToString(row.charSet), first) << row.name;
    }
}

TEST(Names, MatchExactly)
{
    char const* const unknown[] = {
        "kx7cs_utf8", "KX7CS_UTF8 ", " KX7CS_UTF8", "UTF8",       "UTF-8",          "65001",
        "KX7CS_UTF",  "KX7CS_UTF88", "KX7CS_",      "KX7CS_utf8", "KX7CS_UTF8\xE9", "\xFF",
    };
    for (char const* const name : unknown)
        EXPECT_EQ(KX7CharSetFromString(name), KX7CS_OS_DEFAULT) << name;
}

TEST(Names, EmptyAndNullAreTheDefault)
{
    EXPECT_EQ(KX7CharSetFromString(nullptr), KX7CS_OS_DEFAULT);
    EXPECT_EQ(KX7CharSetFromString(""), KX7CS_OS_DEFAULT);
    EXPECT_EQ(g_oCnvtMgr.charSetFromString(nullptr), KX7CS_OS_DEFAULT);
    EXPECT_EQ(g_oCnvtMgr.charSetFromString(""), KX7CS_OS_DEFAULT);
}

TEST(Names, OfALongTextAreNotFound)
{
    std::string const name = "KX7CS_UTF8" + std::string(1000, 'x');
    EXPECT_EQ(KX7CharSetFromString(name.c_str()), KX7CS_OS_DEFAULT);
}

TEST(Names, OfARegistryGoWithItsMaps)
{
    CharSetConverterManager registry;
    auto const mine = static_cast<KX7CharSet>(99999);
    EXPECT_STREQ(registry.charSetToString(mine), "KX7CS_OS_DEFAULT");
    registry.insertCharSetMap(mine, KX7UString("M\xE9", KX7CS_ISO_8859_1));
    EXPECT_STREQ(registry.charSetToString(mine), "M\xE9") << "names are ISO 8859-1";
    EXPECT_EQ(registry.charSetFromString("M\xE9"), mine);
    EXPECT_EQ(registry.charSetFromString("M\xC3\xA9"), KX7CS_OS_DEFAULT);
    registry.insertCharSetMap(KX7CS_UTF8, KX7UString("other", KX7CS_UTF8));
    EXPECT_STREQ(registry.charSetToString(KX7CS_UTF8), "KX7CS_UTF8") << "the first name of a value stays";
    EXPECT_EQ(registry.charSetFromString("other"), KX7CS_UTF8);
    EXPECT_STREQ(KX7CharSetToString(mine), "KX7CS_OS_DEFAULT");
}

TEST(Names, ThatWereEnteredAreGivenInISO8859_1)
{
    struct {
        char const* what;
        std::u16string entered;
        char const* given;
        char const* found;  ///< a name that means the value; null: none does
    } const rows[] = {
        {"ASCII", u"own", "own", "own"},
        {"Latin letters", u"M\u00E9\u00FF", "M\xE9\xFF", "M\xE9\xFF"},
        {"control characters", u"\u0001\u0080\u009F", "\x01\x80\x9F", "\x01\x80\x9F"},
        {"other characters", u"\u4E2Dx", "?x", nullptr},
        {"a supplementary character", u"\U0001F600", "??", nullptr},
        {"the name of another set", u"KX7CS_UTF8", "KX7CS_UTF8", nullptr},
        {"up to a zero", std::u16string(u"up\0to", 5), "up", "up"},
        {"nothing", u"", "", nullptr},
    };
    auto const mine = static_cast<KX7CharSet>(99999);
    for (auto const& row : rows) {
        CharSetConverterManager registry;
        auto const* const units = reinterpret_cast<unsigned short const*>(row.entered.c_str());
        registry.insertCharSetMap(mine, KX7UString(units, units + row.entered.size()));
        EXPECT_STREQ(registry.charSetToString(mine), row.given) << row.what;
        EXPECT_EQ(registry.charSetToString(mine), registry.charSetToString(mine)) << row.what;
        if (row.found) {
            EXPECT_EQ(registry.charSetFromString(row.found), mine) << row.what;
        }
        else {
            EXPECT_NE(registry.charSetFromString(row.given), mine) << row.what;
        }
        registry.insertCharSetMap(mine, KX7UString("second", KX7CS_UTF8));
        EXPECT_STREQ(registry.charSetToString(mine), row.given) << row.what << ": the first name stays";
        EXPECT_EQ(registry.charSetFromString("second"), mine) << row.what;
    }
}

TEST(Names, ThatWereEnteredAreNotChangedByAnotherSetOfTheSameName)
{
    CharSetConverterManager registry;
    auto const first = static_cast<KX7CharSet>(99998);
    auto const second = static_cast<KX7CharSet>(99999);
    registry.insertCharSetMap(first, KX7UString("own", KX7CS_UTF8));
    registry.insertCharSetMap(second, KX7UString("own", KX7CS_UTF8));
    EXPECT_EQ(registry.charSetFromString("own"), first);
    EXPECT_STREQ(registry.charSetToString(second), "own");
}
