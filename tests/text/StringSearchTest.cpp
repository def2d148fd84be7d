// kx7text tests - search within a string.
#include <gtest/gtest.h>

#include <random>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

unsigned int const NPOS = KX7UString::npos;

}  // namespace

TEST(StringFind, OfAUnit)
{
    struct {
        char const* what;
        std::u16string text;
        unsigned short unit;
        unsigned int pos, at;
    } const rows[] = {
        {"first", u"abcabc", 'a', 0, 0},
        {"next", u"abcabc", 'a', 1, 3},
        {"at the position", u"abcabc", 'c', 5, 5},
        {"the last unit", u"abc", 'c', 0, 2},
        {"after the last", u"abcabc", 'a', 4, NPOS},
        {"not there", u"abc", 'x', 0, NPOS},
        {"position at the end", u"abc", 'a', 3, NPOS},
        {"position npos", u"abc", 'a', NPOS, NPOS},
        {"zero is never found", u"a\0b"s, 0, 0, NPOS},
        {"after a zero", u"a\0b"s, 'b', 0, 2},
        {"in nothing", u"", 'a', 0, NPOS},
        {"surrogate", u"a\xD83D\xDE00", 0xDE00, 0, 2},
    };
    for (auto const& row : rows)
        EXPECT_EQ(stringOf(row.text).find(row.unit, row.pos), row.at) << row.what;
    EXPECT_EQ(stringOf(u"abc").find(unitOf('c')), 2u);
}

TEST(StringRFind, OfAUnit)
{
    struct {
        char const* what;
        std::u16string text;
        unsigned short unit;
        unsigned int pos, at;
    } const rows[] = {
        {"at the position", u"abcabc", 'a', 3, 3}, {"before the position", u"abcabc", 'a', 2, 0},
        {"the first unit", u"abc", 'a', 1, 0},     {"at 0", u"abc", 'a', 0, 0},
        {"not at 0", u"abc", 'b', 0, NPOS},        {"not there", u"abc", 'x', 2, NPOS},
        {"last position", u"abc", 'c', 2, 2},
    };
    for (auto const& row : rows)
        EXPECT_EQ(stringOf(row.text).rfind(row.unit, row.pos), row.at) << row.what;
}

TEST(StringRFind, OfAUnitAnswersWithoutASearchBeyondTheTextAndForZero)
{
    KX7UString const s = stringOf(u"abc");
    EXPECT_EQ(s.rfind(unitOf('a'), NPOS), 2u);
    EXPECT_EQ(s.rfind(unitOf('a'), 3), 2u);
    EXPECT_EQ(s.rfind(unitOf('x'), 3), 2u) << "not even there";
    EXPECT_EQ(s.rfind(unitOf('a'), 1), 0u);
    EXPECT_EQ(s.rfind(static_cast<unsigned short>(0), 1), 2u);
    EXPECT_EQ(s.rfind(static_cast<unsigned short>(0), NPOS), 2u);
    EXPECT_EQ(KX7UString().rfind(unitOf('a'), 0), NPOS);
    EXPECT_EQ(KX7UString().rfind(static_cast<unsigned short>(0), NPOS), NPOS);
}

namespace {

struct SearchRow {
    char const* what;
    std::u16string text, sought;
    unsigned int pos, at;
};

}  // namespace

TEST(StringFind, OfAString)
{
    SearchRow const rows[] = {
        {"first", u"abcabc", u"bc", 0, 1},
        {"next", u"abcabc", u"bc", 2, 4},
        {"at the position", u"abcabc", u"abc", 3, 3},
        {"of one unit", u"abc", u"c", 0, 2},
        {"position beyond where it fits", u"abc", u"bc", 2, NPOS},
        {"position at the end", u"abc", u"c", 3, NPOS},
        {"position npos", u"abc", u"c", NPOS, NPOS},
        {"equal text in another string", u"abc", u"abc", 0, 0},
        {"equal text, later", u"abc", u"abc", 1, NPOS},
        {"longer", u"abc", u"abcd", 0, NPOS},
        {"empty", u"abc", u"", 0, NPOS},
        {"in nothing", u"", u"a", 0, NPOS},
        {"nothing in nothing", u"", u"", 0, NPOS},
        {"after a beginning that fails", u"aab", u"ab", 0, 1},
        {"not there", u"aaa", u"ab", 0, NPOS},
        {"case matters", u"abc", u"B", 0, NPOS},
        {"after a zero", u"a\0bc"s, u"bc", 0, 2},
        {"a zero in both ends the comparison", u"ab\0xy"s, u"b\0zz"s, 0, 1},
        {"a zero in one does not match", u"ab\0xy"s, u"bcx", 0, NPOS},
    };
    for (SearchRow const& row : rows)
        EXPECT_EQ(stringOf(row.text).find(stringOf(row.sought), row.pos), row.at) << row.what;
    EXPECT_EQ(stringOf(u"abc").find(stringOf(u"c")), 2u);
}

TEST(StringRFind, OfAString)
{
    SearchRow const rows[] = {
        {"last", u"abcabc", u"bc", NPOS, 4},
        {"up to the position", u"abcabc", u"bc", 3, 1},
        {"at the position", u"abcabc", u"bc", 4, 4},
        {"position lowered to where it fits", u"abcabc", u"bc", 5, 4},
        {"at 0", u"abc", u"ab", 0, 0},
        {"not at 0", u"abc", u"bc", 0, NPOS},
        {"equal text in another string", u"abc", u"abc", NPOS, 0},
        {"longer", u"abc", u"abcd", NPOS, NPOS},
        {"empty", u"abc", u"", NPOS, NPOS},
        {"in nothing", u"", u"a", NPOS, NPOS},
        {"nothing in nothing", u"", u"", NPOS, NPOS},
        {"not there", u"aaa", u"ab", NPOS, NPOS},
        {"of one unit", u"abca", u"a", NPOS, 3},
    };
    for (SearchRow const& row : rows)
        EXPECT_EQ(stringOf(row.text).rfind(stringOf(row.sought), row.pos), row.at) << row.what;
    EXPECT_EQ(stringOf(u"abab").rfind(stringOf(u"ab")), 2u);
}

TEST(StringFind, OfItself)
{
    KX7UString const s = stringOf(u"abc");
    EXPECT_EQ(s.find(s, 0), 0u);
    for (unsigned int const pos : {1u, 2u, 3u, NPOS})
        EXPECT_EQ(s.find(s, pos), NPOS) << pos;
    for (unsigned int const pos : {0u, 1u, 3u, NPOS})
        EXPECT_EQ(s.rfind(s, pos), 0u) << pos;
    KX7UString const empty;
    EXPECT_EQ(empty.find(empty), NPOS);
    EXPECT_EQ(empty.rfind(empty), NPOS);
}

TEST(StringFind, AgreesWithAnotherSearchOnRandomTexts)
{
    std::mt19937 engine(1);
    auto const random = [&engine] { return static_cast<unsigned int>(engine()); };
    for (int round = 0; round < 20000; ++round) {
        std::u16string text, sought;
        for (unsigned int n = random() % 12; n != 0; --n)
            text += static_cast<char16_t>('a' + random() % 2);
        for (unsigned int n = 1 + random() % 4; n != 0; --n)
            sought += static_cast<char16_t>('a' + random() % 2);
        unsigned int const pos = random() % 14;
        auto const asPos = [](size_t at) { return at == std::u16string::npos ? NPOS : static_cast<unsigned int>(at); };
        ASSERT_EQ(stringOf(text).find(stringOf(sought), pos), asPos(text.find(sought, pos)))
            << hex(text) << ' ' << hex(sought) << ' ' << pos;
        ASSERT_EQ(stringOf(text).rfind(stringOf(sought), pos), asPos(text.rfind(sought, pos)))
            << hex(text) << ' ' << hex(sought) << ' ' << pos;
    }
}
