// kx7text tests - comparison without regard to case, and the comparison operators.
#include <gtest/gtest.h>

#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/Guarded.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

unsigned int const ALL = KX7UString::npos;

struct CompareRow {
    char const* what;
    std::u16string a, b;
    unsigned int n;
    int exact, noCase;
};
std::vector<CompareRow> const ROWS = {
    {"equal", u"abc", u"abc", ALL, 0, 0},
    {"both empty", u"", u"", ALL, 0, 0},
    {"empty first", u"", u"a", ALL, -1, -1},
    {"case", u"abc", u"aBc", ALL, 1, 0},
    {"e acute", u"\xE9", u"\xC9", ALL, 1, 0},
    {"a before B", u"a", u"B", ALL, 1, -1},
    {"b after A", u"b", u"A", ALL, 1, 1},
    {"by the upper case, not the lower", u"_", u"a", ALL, -1, 1},
    {"micro sign and mu", u"\xB5", u"\x3BC", ALL, -1, 0},
    {"final sigma and sigma", u"\x3C2", u"\x3C3", ALL, -1, 0},
    {"y diaeresis", u"\xFF", u"\x178", ALL, -1, 0},
    {"dotless i and I", u"\x131", u"I", ALL, 1, 0},
    {"I with dot and i", u"\x130", u"i", ALL, 1, 1},
    {"sharp s and ss", u"\xDF", u"ss", ALL, 1, 1},
    {"prefix in another case", u"AB", u"abc", ALL, -1, -1},
    {"prefix, limited", u"AB", u"abc", 2, -1, 0},
    {"prefix, limited after its end", u"AB", u"abc", 3, -1, -1},
    {"of no units", u"x", u"y", 0, 0, 0},
    {"different after the limit", u"abx", u"aby", 2, 0, 0},
    {"different before the limit", u"abx", u"aby", 3, -1, -1},
    {"a difference after a difference of case", u"Ax", u"ay", ALL, -1, -1},
    {"surrogates by their value", u"\xD83D\xDE00", u"\xE000", ALL, -1, -1},
    {"pairs of case are not mapped", u"\xD801\xDC00", u"\xD801\xDC28", ALL, -1, -1},
    {"zero ends it", u"a\0x"s, u"a\0y"s, ALL, 0, 0},
    {"zero against the end", u"a\0x"s, u"A", ALL, 1, 0},
};

}  // namespace

TEST(StringComparison, ExactAndWithoutCase)
{
    for (CompareRow const& row : ROWS) {
        KX7UString const a = stringOf(row.a);
        KX7UString const b = stringOf(row.b);
        EXPECT_EQ(a.compare(b, row.n), row.exact) << row.what;
        EXPECT_EQ(b.compare(a, row.n), -row.exact) << row.what;
        EXPECT_EQ(a.compareNoCase(b, row.n), row.noCase) << row.what;
        EXPECT_EQ(b.compareNoCase(a, row.n), -row.noCase) << row.what;
        EXPECT_EQ(a.compareNoCase(a, row.n), 0) << row.what;
        if (row.n == ALL) {
            EXPECT_EQ(a.compareNoCase(b), row.noCase) << row.what;
        }
    }
}

TEST(StringComparison, OfRawTextsReadsNoFurtherThanNeeded)
{
    KX7UString const any;
    for (CompareRow const& row : ROWS) {
        Guarded<unsigned short> const a(row.a.c_str(), row.a.size() + 1);
        Guarded<unsigned short> const b(row.b.c_str(), row.b.size() + 1);
        EXPECT_EQ(any.canonicalCompare(a.data(), b.data(), row.n), row.exact) << row.what;
        EXPECT_EQ(any.canonicalCompareNoCase(a.data(), b.data(), row.n), row.noCase) << row.what;
        EXPECT_EQ(any.canonicalCompareNoCase(b.data(), a.data(), row.n), -row.noCase) << row.what;
    }
    Guarded<unsigned short> const unterminated(u"ABC", 3);
    Guarded<unsigned short> const other(u"abc", 3);
    EXPECT_EQ(any.canonicalCompareNoCase(unterminated.data(), other.data(), 3), 0);
}

TEST(StringComparison, WithoutCaseNullComesBeforeEverythingButNull)
{
    KX7UString const any;
    for (unsigned int const n : {1u, 5u, ALL}) {
        EXPECT_EQ(any.canonicalCompareNoCase(nullptr, nullptr, n), 0);
        EXPECT_EQ(any.canonicalCompareNoCase(nullptr, raw(u""), n), -1);
        EXPECT_EQ(any.canonicalCompareNoCase(raw(u""), nullptr, n), 1);
        EXPECT_EQ(any.canonicalCompareNoCase(nullptr, raw(u"a"), n), -1);
        EXPECT_EQ(any.canonicalCompareNoCase(raw(u"a"), nullptr, n), 1);
    }
    EXPECT_EQ(any.canonicalCompareNoCase(nullptr, raw(u"a"), 0), 0);
    EXPECT_EQ(any.canonicalCompareNoCase(raw(u"a"), nullptr, 0), 0);
}

TEST(StringComparison, WithoutCaseAgreesWithTheUpperCaseForEveryUnit)
{
    KX7UString const any;
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
        char16_t const a[] = {static_cast<char16_t>(unit), 0};
        char16_t const b[] = {KX7UChar::toUpperCase(static_cast<unsigned short>(unit)), 0};
        ASSERT_EQ(any.canonicalCompareNoCase(raw(a), raw(b), ALL), 0) << std::hex << unit;
    }
}

namespace {

/** All six operators between two operands, against how they compare. */
template <class Left, class Right>
void expectOrder(Left const& a, Right const& b, int order, char const* what)
{
    EXPECT_EQ(a == b, order == 0) << what;
    EXPECT_EQ(a != b, order != 0) << what;
    EXPECT_EQ(a < b, order < 0) << what;
    EXPECT_EQ((a > b), order > 0) << what;
    EXPECT_EQ(a <= b, order <= 0) << what;
    EXPECT_EQ(a >= b, order >= 0) << what;
}

struct OperatorRow {
    char const* what;
    char const* a;
    char const* b;
    int order;
};

std::u16string wide(char const* text)
{
    return std::u16string(text, text + strlen(text));
}

}  // namespace

TEST(StringComparison, ByOperatorsWithEveryKindOfOperandOnEitherSide)
{
    OperatorRow const rows[] = {
        {"equal", "abc", "abc", 0},   {"less", "abc", "abd", -1},   {"greater", "b", "abc", 1},
        {"prefix", "ab", "abc", -1},  {"longer", "abc", "ab", 1},   {"both empty", "", "", 0},
        {"empty first", "", "a", -1}, {"case counts", "a", "B", 1},
    };
    for (OperatorRow const& row : rows) {
        std::u16string const a = wide(row.a);
        std::u16string const b = wide(row.b);
        expectOrder(stringOf(a), stringOf(b), row.order, row.what);
        expectOrder(row.a, stringOf(b), row.order, row.what);
        expectOrder(raw(a), stringOf(b), row.order, row.what);
        expectOrder(stringOf(a), row.b, row.order, row.what);
        expectOrder(stringOf(a), raw(b), row.order, row.what);
    }
}

TEST(StringComparison, ByOperatorsTakesNullForTheEmptyString)
{
    char const* const noBytes = nullptr;
    unsigned short const* const noUnits = nullptr;
    KX7UString const empty;
    KX7UString const text = stringOf(u"a");
    expectOrder(noBytes, empty, 0, "null bytes, empty");
    expectOrder(noUnits, empty, 0, "null units, empty");
    expectOrder(empty, noBytes, 0, "empty, null bytes");
    expectOrder(empty, noUnits, 0, "empty, null units");
    expectOrder(noBytes, text, -1, "null bytes, text");
    expectOrder(noUnits, text, -1, "null units, text");
    expectOrder(text, noBytes, 1, "text, null bytes");
    expectOrder(text, noUnits, 1, "text, null units");
}

TEST(StringComparison, ByOperatorsReadsBytesInTheDefaultSet)
{
    KX7UString const s("\xC3\xA9", KX7CS_OS_DEFAULT);
    EXPECT_TRUE("\xC3\xA9" == s);
    EXPECT_TRUE(s == "\xC3\xA9");
    EXPECT_FALSE(s == "\xC3");
}
