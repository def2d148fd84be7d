// kx7text tests - concatenation.
#include <gtest/gtest.h>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

TEST(StringConcatenation, OfEveryKindOfOperand)
{
    KX7UString const ab = stringOf(u"ab");
    expectText(ab + 'c', u"abc");
    expectText(ab + unitOf('c'), u"abc");
    expectText(ab + "cd", u"abcd");
    expectText(ab + raw(u"cd"), u"abcd");
    expectText(ab + stringOf(u"cd"), u"abcd");
    expectText('c' + ab, u"cab");
    expectText(unitOf('c') + ab, u"cab");
    expectText("cd" + ab, u"cdab");
    expectText(raw(u"cd") + ab, u"cdab");
    expectText(ab, u"ab");
}

TEST(StringConcatenation, WithNothingIsACopy)
{
    KX7UString const ab = stringOf(u"ab");
    KX7UString const empty;
    char const* const noBytes = nullptr;
    unsigned short const* const noUnits = nullptr;
    unsigned short const zero = 0;
    expectText(ab + '\0', u"ab");
    expectText(ab + zero, u"ab");
    expectText(ab + "", u"ab");
    expectText(ab + noBytes, u"ab");
    expectText(ab + raw(u""), u"ab");
    expectText(ab + noUnits, u"ab");
    expectText(ab + empty, u"ab");
    expectText('\0' + ab, u"ab");
    expectText(zero + ab, u"ab");
    expectText("" + ab, u"ab");
    expectText(noBytes + ab, u"ab");
    expectText(raw(u"") + ab, u"ab");
    expectText(noUnits + ab, u"ab");
    expectText(empty + ab, u"ab");
    expectText(empty + empty, u"");
    expectText(noBytes + empty, u"");
}

TEST(StringConcatenation, OfItself)
{
    KX7UString const ab = stringOf(u"ab");
    expectText(ab + ab, u"abab");
    expectText(ab + ab.data(), u"abab");
    KX7UString s = stringOf(u"x");
    for (int i = 0; i < 10; ++i)
        s = s + s;
    expectText(s, std::u16string(1024, u'x'));
}

TEST(StringConcatenation, KeepsZerosWithin)
{
    expectText(stringOf(u"a\0b"s) + stringOf(u"\0c"s), u"a\0b\0c"s);
    expectText(stringOf(u"a\0b"s) + 'c', u"a\0bc"s);
    expectText(raw(u"a\0b"s) + stringOf(u"c"), u"ac");
}

TEST(StringConcatenation, TakesTheHeapOnlyFor258UnitsAndMore)
{
    for (unsigned int const n : {256u, 257u, 258u, 1000u}) {
        KX7UString const s = KX7UString(unitOf('x'), n - 1) + 'y';
        expectText(s, std::u16string(n - 1, u'x') + u'y');
        expectStorage(s, n > 257 ? n : 0);
    }
    KX7UString roomy;
    roomy.AssureSpace(5000);
    roomy = raw(u"ab");
    expectStorage(roomy + 'c', 0, "the capacity of an operand is not taken over");
}

TEST(StringConcatenation, ReadsBytesInTheDefaultSet)
{
    KX7UString const s = stringOf(u"<");
    KX7UString const bytes("\xC3\xA9", KX7CS_OS_DEFAULT);
    expectText(s + "\xC3\xA9", u"<" + textOf(bytes));
    expectText("\xC3\xA9" + s, textOf(bytes) + u"<");
    expectText(s + '\xE9', u"<" + textOf(KX7UString('\xE9', KX7CS_OS_DEFAULT)));
    expectText('\xE9' + s, textOf(KX7UString('\xE9', KX7CS_OS_DEFAULT)) + u"<");
}

TEST(StringConcatenation, BeyondTheMaximumLengthThrows)
{
    // A header that claims the length: what is too long is refused before a unit is read.
    KX7UString s;
    KX7UString::Space* const space = s.SetupSpace();
    for (unsigned int const length : {0xFFFFFFFEu, 0xFFFFFFF0u}) {
        KX7UString const rest(unitOf('x'), 0xFFFFFFFF - length);
        space->length = length;
        EXPECT_EQ(errorOf([&] { s + rest; }), STRING_TOO_LONG);
        EXPECT_EQ(errorOf([&] { s + rest.data(); }), STRING_TOO_LONG);
        EXPECT_EQ(errorOf([&] { rest.data() + s; }), STRING_TOO_LONG);
        EXPECT_EQ(errorOf([&] { s + s; }), STRING_TOO_LONG);
        EXPECT_EQ(errorOf([&] { s.replace(length, 0, rest, 0); }), STRING_TOO_LONG);
        EXPECT_EQ(errorOf([&] { s.replace(0, 0, rest, 0, 0xFFFFFFFF); }), STRING_TOO_LONG);
        EXPECT_EQ(space->length, length);
    }
    space->length = 0xFFFFFFFE;
    EXPECT_EQ(errorOf([&] { s + 'x'; }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { s + unitOf('x'); }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { s + "x"; }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { 'x' + s; }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { unitOf('x') + s; }), STRING_TOO_LONG);
    EXPECT_EQ(errorOf([&] { "x" + s; }), STRING_TOO_LONG);
    space->length = 0;
    expectText(s, u"");
}
