// kx7text tests - order of strings by the values of their units.
#include <gtest/gtest.h>

#include "kx7/text/KX7UString.h"
#include "tests/support/Guarded.h"
#include "tests/text/StringState.h"

using kx7test::Guarded;
using kx7test::Units;

namespace {

struct OrderRow {
    char const* what;
    Units a, b;
    unsigned int n;
    int order;
};
unsigned int const ALL = KX7UString::npos;
OrderRow const ROWS[] = {
    {"equal", {'a', 'b'}, {'a', 'b'}, ALL, 0},
    {"both empty", {}, {}, ALL, 0},
    {"empty before all else", {}, {1}, ALL, -1},
    {"longer after its prefix", {'a', 'b', 'c'}, {'a', 'b'}, ALL, 1},
    {"first difference decides", {'a', 'z', 'a'}, {'b', 'a', 'z', 'z'}, ALL, -1},
    {"units are unsigned", {0x7FFF}, {0x8000}, ALL, -1},
    {"high byte weighs more", {0x01FF}, {0x0200}, ALL, -1},
    {"surrogates by their own value", {0xD83D, 0xDE00}, {0xE000}, ALL, -1},
    {"upper case first", {'B'}, {'a'}, ALL, -1},
    {"no normalisation", {0xE9}, {'e', 0x301}, ALL, 1},
    {"last unit", {0xFFFF}, {0xFFFE}, ALL, 1},
    {"n is 0", {'a'}, {'b'}, 0, 0},
    {"equal in n units", {'a', 'b', 'x'}, {'a', 'b', 'y'}, 2, 0},
    {"different in n units", {'a', 'b', 'x'}, {'a', 'b', 'y'}, 3, -1},
    {"ends within n", {'a', 'b'}, {'a', 'b', 'y'}, 3, -1},
    {"ends at n", {'a', 'b'}, {'a', 'b', 'y'}, 2, 0},
    {"both end within n", {'a', 'b'}, {'a', 'b'}, 100, 0},
    {"a zero within ends the comparison", {'a', 0, 'x'}, {'a', 0, 'y'}, ALL, 0},
    {"a zero against the end", {'a', 0, 'x'}, {'a'}, ALL, 0},
};

}  // namespace

TEST(StringOrder, ComparesUnitByUnit)
{
    for (OrderRow const& row : ROWS) {
        KX7UString const a(row.a.data(), row.a.data() + row.a.size());
        KX7UString const b(row.b.data(), row.b.data() + row.b.size());
        EXPECT_EQ(a.compare(b, row.n), row.order) << row.what;
        EXPECT_EQ(b.compare(a, row.n), -row.order) << row.what;
        if (row.n == ALL) {
            EXPECT_EQ(a.compare(b), row.order) << row.what;
            EXPECT_EQ(a < b, row.order < 0) << row.what;
            EXPECT_EQ(b<a, row.order> 0) << row.what;
        }
        EXPECT_EQ(a.compare(a, row.n), 0) << row.what;
        EXPECT_FALSE(a < a) << row.what;
    }
}

TEST(StringOrder, CanonicalCompareGivesMinusOneZeroOrOneAndReadsNoFurtherThanNeeded)
{
    KX7UString const any;
    for (OrderRow const& row : ROWS) {
        Units a = row.a;
        Units b = row.b;
        a.push_back(0);
        b.push_back(0);
        Guarded<unsigned short> const ga(a.data(), a.size());
        Guarded<unsigned short> const gb(b.data(), b.size());
        EXPECT_EQ(any.canonicalCompare(ga.data(), gb.data(), row.n), row.order) << row.what;
        EXPECT_EQ(any.canonicalCompare(gb.data(), ga.data(), row.n), -row.order) << row.what;
    }
}

TEST(StringOrder, CanonicalCompareOfNUnitsNeedsNoTerminator)
{
    Units const text = {'a', 'b', 'c'};
    Guarded<unsigned short> const a(text.data(), text.size());
    Guarded<unsigned short> const b(text.data(), text.size());
    EXPECT_EQ(KX7UString().canonicalCompare(a.data(), b.data(), 3), 0);
}

TEST(StringOrder, NullComesBeforeEverythingButNull)
{
    KX7UString const any;
    unsigned short const empty[] = {0};
    unsigned short const text[] = {'a', 0};
    for (unsigned int const n : {1u, 5u, ALL}) {
        EXPECT_EQ(any.canonicalCompare(nullptr, nullptr, n), 0);
        EXPECT_EQ(any.canonicalCompare(nullptr, empty, n), -1);
        EXPECT_EQ(any.canonicalCompare(empty, nullptr, n), 1);
        EXPECT_EQ(any.canonicalCompare(nullptr, text, n), -1);
        EXPECT_EQ(any.canonicalCompare(text, nullptr, n), 1);
    }
    EXPECT_EQ(any.canonicalCompare(nullptr, text, 0), 0);
    EXPECT_EQ(any.canonicalCompare(text, nullptr, 0), 0);
}

TEST(StringOrder, AStringComparedWithItselfIsEqualInAnyLength)
{
    KX7UString const s("abc", KX7CS_UTF8);
    for (unsigned int const n : {0u, 1u, 3u, 4u, ALL})
        EXPECT_EQ(s.compare(s, n), 0);
}
