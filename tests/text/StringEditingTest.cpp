// kx7text tests - editing a string.
#include <gtest/gtest.h>

#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

unsigned int const NPOS = KX7UString::npos;

static_assert(KX7UString::TRIM_FRONT == 1 && KX7UString::TRIM_END == 2 && KX7UString::TRIM_BOTH == 3, "bits");
static_assert(KX7UString::TRIM_WHITESPACE == 0 && KX7UString::TRIM_SPACE == 1 &&
                  KX7UString::TRIM_WHITESPACE_OR_NONCHAR == 2,
              "values");

}  // namespace

TEST(StringErase, OfAllKeepsTheCapacity)
{
    KX7UString s(unitOf('x'), 300);
    EXPECT_EQ(&s.erase(), &s);
    expectText(s, u"");
    EXPECT_EQ(s.capacity(), 300u);
    s.erase();
    expectText(s, u"");
}

TEST(StringErase, OfAPart)
{
    struct {
        char const* what;
        unsigned int pos, n;
        std::u16string rest;
    } const rows[] = {
        {"in the middle", 1, 1, u"ac"},      {"everything", 0, NPOS, u""},  {"everything by its length", 0, 3, u""},
        {"more than there is", 1, 99, u"a"}, {"to the end", 1, NPOS, u"a"}, {"the first", 0, 1, u"bc"},
        {"the last", 2, 1, u"ab"},           {"nothing", 1, 0, u"abc"},     {"at the end", 3, 5, u"abc"},
        {"more than all", 0, 4, u""},
    };
    for (auto const& row : rows) {
        KX7UString s = stringOf(u"abc");
        EXPECT_EQ(&s.erase(row.pos, row.n), &s) << row.what;
        expectText(s, row.rest, row.what);
    }
    KX7UString s = stringOf(u"abc");
    s.erase(1);
    expectText(s, u"a");
}

TEST(StringErase, BeyondTheTextThrowsButForAnEmptyString)
{
    KX7UString s = stringOf(u"abc");
    EXPECT_EQ(errorOf([&] { s.erase(4, 1); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.erase(NPOS, 0); }), INVALID_STRING_INDEX);
    expectText(s, u"abc");
    KX7UString empty;
    EXPECT_EQ(errorOf([&] { empty.erase(4, 1); }), "none");
    expectText(empty, u"");
}

namespace {

struct TrimRow {
    char const* what;
    std::u16string text;
    KX7UString::TrimCmd command;
    KX7UString::TrimTarget target;
    std::u16string rest;
};
auto const FRONT = KX7UString::TRIM_FRONT;
auto const END = KX7UString::TRIM_END;
auto const BOTH = KX7UString::TRIM_BOTH;
auto const WHITE = KX7UString::TRIM_WHITESPACE;
auto const SPACE = KX7UString::TRIM_SPACE;
auto const NONCHAR = KX7UString::TRIM_WHITESPACE_OR_NONCHAR;
std::vector<TrimRow> const TRIMS = {
    {"both ends", u"\t a b \n", BOTH, WHITE, u"a b"},
    {"front", u"\t a b \n", FRONT, WHITE, u"a b \n"},
    {"end", u"\t a b \n", END, WHITE, u"\t a b"},
    {"all white", u" \t\n ", BOTH, WHITE, u""},
    {"all white, front", u" \t\n ", FRONT, WHITE, u""},
    {"all white, end", u" \t\n ", END, WHITE, u""},
    {"one blank", u" ", BOTH, WHITE, u""},
    {"nothing to do", u"a b", BOTH, WHITE, u"a b"},
    {"empty", u"", BOTH, WHITE, u""},
    {"Unicode blanks", u"\x3000\x00A0x\x2028\x0085", BOTH, WHITE, u"x"},
    {"zero is not white", u"a\0"s, BOTH, WHITE, u"a\0"s},
    {"the space only", u" \ta\t ", BOTH, SPACE, u"\ta\t"},
    {"no-break space is another", u"\xA0 a", BOTH, SPACE, u"\xA0 a"},
    {"the space, all of it", u"   ", BOTH, SPACE, u""},
    {"zeros at the end", u"ab\0\0"s, BOTH, NONCHAR, u"ab"},
    {"blanks and no characters", u"\0 \x0378 a\xFFFF \x0001"s, BOTH, NONCHAR, u"a"},
    {"no characters, front", u"\0a\0"s, FRONT, NONCHAR, u"a\0"s},
    {"surrogates are characters", u"\xD83D\xDE00", BOTH, NONCHAR, u"\xD83D\xDE00"},
    {"no command", u" a ", static_cast<KX7UString::TrimCmd>(0), WHITE, u" a "},
};

}  // namespace

TEST(StringTrim, CutsWhatTheTargetSays)
{
    for (TrimRow const& row : TRIMS) {
        KX7UString s = stringOf(row.text);
        EXPECT_EQ(&s.trim(row.command, row.target), &s) << row.what;
        expectText(s, row.rest, row.what);
    }
    KX7UString s = stringOf(u" \ta ");
    s.trim();
    expectText(s, u"a");
}

TEST(StringTrim, OfEveryUnit)
{
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
        unsigned int const bits = KX7UChar::getCharClass(static_cast<unsigned short>(unit));
        KX7UString s(static_cast<unsigned short>(unit));
        s.trim(BOTH, SPACE);
        ASSERT_EQ(s.empty(), unit == 0x20) << std::hex << unit;
        s = static_cast<unsigned short>(unit);
        s.trim(BOTH, WHITE);
        ASSERT_EQ(s.empty(), (bits & 1) != 0) << std::hex << unit;
        s = static_cast<unsigned short>(unit);
        s.trim(BOTH, NONCHAR);
        ASSERT_EQ(s.empty(), (bits & 1) != 0 || bits == 0) << std::hex << unit;
    }
}

TEST(StringTrim, KeepsTheStorage)
{
    KX7UString s(unitOf(' '), 300);
    s.trim();
    expectText(s, u"");
    EXPECT_EQ(s.capacity(), 300u);
}

TEST(StringResize, CutsOrFillsUp)
{
    struct {
        char const* what;
        std::u16string text;
        unsigned int n;
        std::u16string result;
    } const rows[] = {
        {"cut", u"abcdef", 3, u"abc"},
        {"fill", u"ab", 5, u"abxxx"},
        {"same", u"abc", 3, u"abc"},
        {"to nothing", u"abc", 0, u""},
        {"from nothing", u"", 3, u"xxx"},
        {"nothing to nothing", u"", 0, u""},
        {"to the inline capacity", u"ab", 257, u"ab" + std::u16string(255, u'x')},
        {"beyond the capacity the text is lost", u"ab", 258, std::u16string(258, u'x')},
        {"from the heap beyond the capacity", std::u16string(300, u'a'), 400, std::u16string(400, u'x')},
        {"heap cut", std::u16string(300, u'a'), 299, std::u16string(299, u'a')},
        {"heap cut to a short text", std::u16string(300, u'a'), 2, u"aa"},
    };
    for (auto const& row : rows) {
        unsigned int const capacity = std::max({257u, row.n, static_cast<unsigned int>(row.text.size())});
        KX7UString s = stringOf(row.text);
        EXPECT_EQ(&s.resize(row.n, unitOf('x')), &s) << row.what;
        expectText(s, row.result, row.what);
        EXPECT_EQ(s.capacity(), capacity) << row.what;
        for (KX7CharSet const cs : {KX7CS_OS_DEFAULT, KX7CS_UTF8, KX7CS_WCP1252}) {
            KX7UString byByte = stringOf(row.text);
            EXPECT_EQ(&byByte.resize(row.n, 'x', cs), &byByte) << row.what;
            expectText(byByte, row.result, row.what);
            EXPECT_EQ(byByte.capacity(), capacity) << row.what;
        }
    }
}

TEST(StringResize, WithinAHeapBufferKeepsTheText)
{
    KX7UString s(unitOf('a'), 300);
    s.resize(10, unitOf('x'));
    s.resize(20, unitOf('y'));
    expectText(s, std::u16string(10, u'a') + std::u16string(10, u'y'));
    s.resize(300, 'z', KX7CS_UTF8);
    expectText(s, std::u16string(10, u'a') + std::u16string(10, u'y') + std::u16string(280, u'z'));
    EXPECT_EQ(s.capacity(), 300u);
}

TEST(StringResize, DecodesTheByte)
{
    KX7UString s = stringOf(u"a");
    s.resize(3, '\x80', KX7CS_WCP1252);
    expectText(s, u"a\x20AC\x20AC");
    s.resize(4, '\xE4', KX7CS_WCP1251);
    expectText(s, u"a\x20AC\x20AC\x0434");
}

TEST(StringResize, WithAByteThatIsNotOneUnitStillSetsTheLength)
{
    KX7UString s = stringOf(u"a");
    s.resize(5, '\xC3', KX7CS_UTF8);  // lead bytes only
    EXPECT_EQ(s.length(), 5u);
    EXPECT_EQ(s.data()[0], 'a');
    EXPECT_EQ(s.data()[5], 0);
    KX7UString zero = stringOf(u"a");
    zero.resize(3, '\0', KX7CS_UTF8);
    EXPECT_EQ(zero.length(), 3u);
    EXPECT_EQ(zero.data()[3], 0);
}

TEST(StringResize, WithZeroUnits)
{
    KX7UString s = stringOf(u"a");
    s.resize(3, static_cast<unsigned short>(0));
    expectText(s, u"a\0\0"s);
}

TEST(StringResize, BeyondTheMaximumThrows)
{
    KX7UString s = stringOf(u"abc");
    EXPECT_EQ(errorOf([&] { s.resize(NPOS, unitOf('x')); }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { s.resize(NPOS, 'x'); }), STRING_TOO_LONG);
    expectText(s, u"abc");
}

TEST(StringLeft, TakesTheFirstUnits)
{
    KX7UString const s = stringOf(u"abc");
    expectText(s.left(0), u"");
    expectText(s.left(2), u"ab");
    expectText(s.left(3), u"abc");
    EXPECT_EQ(errorOf([&] { s.left(4); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.left(NPOS); }), INVALID_STRING_INDEX);
    expectText(KX7UString().left(0), u"");
    EXPECT_EQ(errorOf([&] { KX7UString().left(1); }), INVALID_STRING_INDEX);
}

TEST(StringMid, TakesUnitsAtAPosition)
{
    KX7UString const s = stringOf(u"abc");
    expectText(s.mid(1, NPOS), u"bc");
    expectText(s.mid(1), u"bc");
    expectText(s.mid(0, 3), u"abc");
    expectText(s.mid(1, 1), u"b");
    expectText(s.mid(3, 0), u"");
    expectText(s.mid(3), u"");
    EXPECT_EQ(errorOf([&] { s.mid(2, 5); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.mid(0, 4); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.mid(4, 0); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.mid(3, 1); }), INVALID_STRING_INDEX);
}

TEST(StringMid, AddsPositionAndLengthModulo32Bits)
{
    KX7UString const s = stringOf(u"abc");
    expectText(s.mid(4), u"");  // 4 + (3 - 4) is 3
    expectText(s.mid(0xFFFFFFF0), u"");
    expectText(s.mid(2, 0xFFFFFFFE), u"c");  // 2 - 2 is 0, and the rest is cut down
    EXPECT_EQ(errorOf([&] { s.mid(5, 0xFFFFFFFE); }), "none") << "5 - 2 is 3";
    EXPECT_EQ(errorOf([&] { s.mid(6, 0xFFFFFFFE); }), INVALID_STRING_INDEX) << "6 - 2 is 4";
}

TEST(StringCase, OfAsciiOnlyOrEveryUnit)
{
    std::u16string const text = u"aZ@[`{\xE9\xC9\xFF\x0131\x0130\xDF\xD801\xDC28\xD801\xDC00\x0101";
    KX7UString s = stringOf(text);
    EXPECT_EQ(&s.toUpper(true), &s);
    expectText(s, u"AZ@[`{\xE9\xC9\xFF\x0131\x0130\xDF\xD801\xDC28\xD801\xDC00\x0101");
    EXPECT_EQ(&s.toLower(true), &s);
    expectText(s, u"az@[`{\xE9\xC9\xFF\x0131\x0130\xDF\xD801\xDC28\xD801\xDC00\x0101");
    s = stringOf(text);
    EXPECT_EQ(&s.toUpper(), &s);
    expectText(s, u"AZ@[`{\xC9\xC9\x0178I\x0130\xDF\xD801\xDC28\xD801\xDC00\x0100");
    s = stringOf(text);
    EXPECT_EQ(&s.toLower(), &s);
    expectText(s, u"az@[`{\xE9\xE9\xFF\x0131i\xDF\xD801\xDC28\xD801\xDC00\x0101");
    KX7UString empty;
    empty.toUpper();
    empty.toLower(true);
    expectText(empty, u"");
}

TEST(StringCase, OfEveryUnit)
{
    Units units(0x10000);
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit)
        units[unit] = static_cast<unsigned short>(unit);
    KX7UString const all(units.data(), units.data() + units.size());
    KX7UString upper(all), lower(all), asciiUpper(all), asciiLower(all);
    upper.toUpper();
    lower.toLower(false);
    asciiUpper.toUpper(true);
    asciiLower.toLower(true);
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        auto const c = static_cast<unsigned short>(unit);
        ASSERT_EQ(upper.data()[unit], KX7UChar::toUpperCase(c)) << std::hex << unit;
        ASSERT_EQ(lower.data()[unit], KX7UChar::toLowerCase(c)) << std::hex << unit;
        ASSERT_EQ(asciiUpper.data()[unit], unit >= 'a' && unit <= 'z' ? unit - 0x20 : unit) << std::hex << unit;
        ASSERT_EQ(asciiLower.data()[unit], unit >= 'A' && unit <= 'Z' ? unit + 0x20 : unit) << std::hex << unit;
    }
}

namespace {

struct ReplaceRow {
    char const* what;
    std::u16string text;
    unsigned int pos, n;
    std::u16string by;
    unsigned int spos, sn;
    std::u16string result;
};
std::vector<ReplaceRow> const REPLACEMENTS = {
    {"one by three", u"abc", 1, 1, u"XYZ", 0, NPOS, u"aXYZc"},
    {"three by one", u"abcde", 1, 3, u"X", 0, NPOS, u"aXe"},
    {"by as many", u"abc", 1, 1, u"X", 0, NPOS, u"aXc"},
    {"insert", u"abc", 1, 0, u"XY", 0, NPOS, u"aXYbc"},
    {"insert at the front", u"abc", 0, 0, u"XY", 0, NPOS, u"XYabc"},
    {"append", u"abc", 3, 0, u"XY", 0, NPOS, u"abcXY"},
    {"append, clamped", u"abc", 3, 99, u"XY", 0, 99, u"abcXY"},
    {"to the end", u"abc", 1, NPOS, u"X", 0, NPOS, u"aX"},
    {"all", u"abc", 0, NPOS, u"X", 0, NPOS, u"X"},
    {"all by nothing", u"abc", 0, NPOS, u"", 0, 0, u""},
    {"by a part", u"abc", 1, 1, u"XYZ", 1, 1, u"aYc"},
    {"by the rest", u"abc", 1, 1, u"XYZ", 1, NPOS, u"aYZc"},
    {"by nothing at the end of the other", u"abc", 1, 1, u"XYZ", 3, NPOS, u"ac"},
    {"in nothing", u"", 0, 0, u"XYZ", 0, NPOS, u"XYZ"},
    {"with zeros", u"a\0c"s, 1, 1, u"\0\0"s, 0, NPOS, u"a\0\0c"s},
    {"up to the inline capacity", std::u16string(256, u'a'), 256, 0, u"X", 0, NPOS, std::u16string(256, u'a') + u"X"},
    {"onto the heap", std::u16string(257, u'a'), 0, 0, u"X", 0, NPOS, u"X" + std::u16string(257, u'a')},
    {"within the heap", std::u16string(300, u'a'), 1, 298, u"X", 0, NPOS, u"aXa"},
    {"growth of the heap", std::u16string(300, u'a'), 300, 0, u"XY", 0, NPOS, std::u16string(300, u'a') + u"XY"},
};

}  // namespace

TEST(StringReplace, PutsAPartInThePlaceOfAPart)
{
    for (ReplaceRow const& row : REPLACEMENTS) {
        KX7UString s = stringOf(row.text);
        KX7UString const by = stringOf(row.by);
        unsigned int const capacity = s.capacity();
        EXPECT_EQ(&s.replace(row.pos, row.n, by, row.spos, row.sn), &s) << row.what;
        expectText(s, row.result, row.what);
        EXPECT_EQ(s.capacity(), std::max(capacity, static_cast<unsigned int>(row.result.size()))) << row.what;
        expectText(by, row.by, row.what);
    }
}

TEST(StringReplace, ByItself)
{
    for (unsigned int const spare : {0u, 300u}) {
        for (unsigned int pos = 0; pos <= 4; ++pos) {
            for (unsigned int n = 0; n <= 5; ++n) {
                for (unsigned int spos = 0; spos <= 4; ++spos) {
                    for (unsigned int sn = 0; sn <= 5; ++sn) {
                        KX7UString s;
                        s.AssureSpace(spare);
                        s = raw(u"abcd");
                        s.replace(pos, n, s, spos, sn);
                        ASSERT_EQ(textOf(s), std::u16string(u"abcd").replace(pos, n, u"abcd", spos, sn))
                            << pos << ' ' << n << ' ' << spos << ' ' << sn;
                        ASSERT_EQ(s.data()[s.length()], 0);
                    }
                }
            }
        }
    }
    KX7UString large(unitOf('a'), 200);
    large.at(0) = 'b';
    large.replace(100, 0, large, 0);
    expectText(large, u"b" + std::u16string(99, u'a') + u"b" + std::u16string(199, u'a') + std::u16string(100, u'a'));
}

TEST(StringReplace, BeyondEitherTextThrows)
{
    KX7UString s = stringOf(u"abc");
    KX7UString const by = stringOf(u"XY");
    EXPECT_EQ(errorOf([&] { s.replace(4, 0, by, 0); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(NPOS, 0, by, 0); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(0, 0, by, 3); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(0, 0, by, NPOS, 0); }), INVALID_STRING_INDEX);
    expectText(s, u"abc");
}

TEST(StringReplace, ByPointers)
{
    KX7UString s = stringOf(u"abc");
    EXPECT_EQ(&s.replace(s.data() + 1, s.data() + 2, stringOf(u"XYZ")), &s);
    expectText(s, u"aXYZc");
    s.replace(s.data(), s.data() + 5, stringOf(u"abc"));
    expectText(s, u"abc");
    s.replace(s.data() + 3, s.data() + 3, stringOf(u"d"));
    expectText(s, u"abcd");
    s.replace(s.data(), s.data() + 1, KX7UString());
    expectText(s, u"bcd");
    s.replace(s.data(), s.data() + 1, s);
    expectText(s, u"bcdcd");
}

TEST(StringReplace, ByPointersFromElsewhereThrows)
{
    KX7UString s = stringOf(u"abc");
    KX7UString const other = stringOf(u"abc");
    KX7UString const by = stringOf(u"X");
    EXPECT_EQ(errorOf([&] { s.replace(other.data(), other.data() + 1, by); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(s.data(), s.data() + 4, by); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(s.data() + 4, s.data() + 4, by); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(s.data() - 1, s.data(), by); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(nullptr, s.data(), by); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.replace(s.data(), nullptr, by); }), INVALID_STRING_INDEX);
    expectText(s, u"abc");
}

TEST(StringSplit, ByUnitStringAndByte)
{
    KX7UString const s = stringOf(u"a;b;;c;");
    Texts const parts = {u"a", u"b", u"", u"c"};
    EXPECT_EQ(textsOf(s.split(unitOf(';'))), parts);
    EXPECT_EQ(textsOf(s.split(stringOf(u";"))), parts);
    EXPECT_EQ(textsOf(s.split(';')), parts);
    EXPECT_EQ(textsOf(stringOf(u"a\x20AC"
                               u"b")
                          .split('\x80', KX7CS_WCP1252)),
              (Texts{u"a", u"b"}));
    EXPECT_EQ(textsOf(s.split(stringOf(u";;"))), (Texts{u"a;b", u"c;"}));
    EXPECT_EQ(textsOf(s.split('\0')), (Texts{u"a;b;;c;"})) << "an empty separator";
    EXPECT_EQ(textsOf(s.split('\xC3', KX7CS_UTF8)), (Texts{u"a;b;;c;"})) << "half a character is an empty separator";
    expectText(s, u"a;b;;c;");
}
