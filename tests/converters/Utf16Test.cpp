// kx7text tests - UTF-16 and its escaped form: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf16EscModel.h"
#include "tests/model/Utf16Model.h"
#include "tests/support/ByteConverterRows.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

Utf16Model const utf16Model;
Utf16EscModel const escapeModel;
Tested const utf16{g_oConverterUTF16, utf16Model};
Tested const escaped{g_oConverterUTF16Esc, escapeModel};

Flag const CLEARED = Flag::CLEARED;

std::string bytes(std::u16string const& units)
{
    return bytesOfValues(units);
}

}  // namespace

TEST(UTF16, SizesAreTwo)
{
    utf16.hasSizes(2, 2, 2);
}

TEST(UTF16, LimitThatIsNotPositiveConvertsNothing)
{
    for (int const limit : {-1, 0, INT_MIN})
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            utf16.decodes({{"nothing", bytes(u"abc"), 8, op, limit, {}, CLEARED},
                           {"nothing of nothing", "", 8, op, limit, {}, CLEARED}});
}

TEST(UTF16, LimitCountsUnits)
{
    utf16.decodes({
        {"three", bytes(u"abcde"), 8, ILLCHAR_STOP, 3, u"abc", CLEARED},
        {"after the text", bytes(u"abc"), 8, ILLCHAR_STOP, 5, u"abc", CLEARED},
        {"far after", bytes(u"abc"), 8, ILLCHAR_STOP, INT_MAX, u"abc", CLEARED},
        {"a capacity that is smaller", bytes(u"abcde"), 2, ILLCHAR_STOP, 3, u"ab", CLEARED},
        {"no space", bytes(u"abc"), 0, ILLCHAR_STOP, 3, {}, CLEARED},
    });
}

TEST(UTF16, UnitsAreCopiedAsTheyAre)
{
    std::u16string const units{0xFEFF, 0xFFFE, 0xD800, u'A', 0xDC00, 0xDBFF, 0xDFFF, 0x0100, 0xFFFF};
    for (ILLCHAR_OPTYPE const op : OPERATIONS) {
        utf16.decodes({{"all", bytes(units), 16, op, 16, units, CLEARED}});
        utf16.encodes({{"all", units, 32, op, bytes(units), CLEARED}});
    }
}

TEST(UTF16, OddCapacityLeavesItsLastByte)
{
    utf16.encodes({
        {"five bytes are two units", u"abc", 5, ILLCHAR_STOP, bytes(u"ab"), CLEARED},
        {"one byte is none", u"abc", 1, ILLCHAR_STOP, {}, CLEARED},
        {"six", u"abc", 6, ILLCHAR_STOP, bytes(u"abc"), CLEARED},
        {"none", u"abc", 0, ILLCHAR_STOP, {}, CLEARED},
    });
}

TEST(UTF16, PairMayBeCutByTheCapacity)
{
    utf16.encodes({{"half", u"\U0001F600", 2, ILLCHAR_STOP, bytes({0xD83D}), CLEARED}});
    utf16.decodes({{"half", bytes(u"\U0001F600"), 1, ILLCHAR_STOP, 2, {0xD83D}, CLEARED}});
}

TEST(UTF16, Counts)
{
    utf16.countsUnits(bytes(u"abc"), UNTIL_TERMINATOR, 3);
    utf16.countsUnits(bytes(u"abc"), 5, 2);
    utf16.countsUnits(bytes(u"abc"), 1, 0);
    utf16.countsUnits(bytes(u"abc"), 0, 0);
    utf16.countsUnits(bytes(u"a\0c"s), 6, 1);
    utf16.countsUnits(bytes({0x0100, 0x0001}), UNTIL_TERMINATOR, 2);
    utf16.countsBytes(u"abc", UNTIL_TERMINATOR, 6);
    utf16.countsBytes(u"abc", 2, 4);
    utf16.countsBytes(u"\U0001F600", UNTIL_TERMINATOR, 4);
    utf16.countsBytes({0xD800}, UNTIL_TERMINATOR, 2);
}

TEST(UTF16, SourceAndDestinationNeedNoAlignment)
{
    alignas(8) unsigned char memory[32] = {};
    memcpy(memory + 1, u"ab", 4);
    unsigned short units[4];
    EXPECT_EQ(g_oConverterUTF16.toUTF16(units, memory + 1, 3, ILLCHAR_STOP, nullptr, 3), 2u);
    EXPECT_EQ(units[1], 'b');
    EXPECT_EQ(g_oConverterUTF16.getNumUnits(memory + 1, UNTIL_TERMINATOR), 2u);
    EXPECT_EQ(g_oConverterUTF16.fromUTF16(memory + 17, units, 4, ILLCHAR_STOP, nullptr), 4u);
    EXPECT_EQ(memcmp(memory + 17, u"ab", 6), 0);
}

TEST(UTF16Escape, SizesAreOneSixAndOne)
{
    escaped.hasSizes(1, 6, 1);
}

TEST(UTF16Escape, ThreeUnitsAreThirteenBytesAndBack)
{
    escaped.encodes({{"there", {u'A', 0xE9, 0x20AC}, 13, ILLCHAR_STOP, "AU+00E9U+20AC", CLEARED}});
    escaped.decodes({{"back", "AU+00E9U+20AC", 3, ILLCHAR_STOP, -1, {u'A', 0xE9, 0x20AC}, CLEARED}});
    escaped.countsBytes({u'A', 0xE9, 0x20AC}, UNTIL_TERMINATOR, 13);
    escaped.countsUnits("AU+00E9U+20AC", UNTIL_TERMINATOR, 3);
}

TEST(UTF16Escape, BoundOfTheBytesThatTravelAsTheyAre)
{
    escaped.encodes({{"7F and 80", {0x7F, 0x80, 0xFFFF}, 16, ILLCHAR_STOP, "\x7FU+0080U+FFFF", CLEARED}});
}

TEST(UTF16Escape, LowerCaseDigitsMakeNoEscape)
{
    escaped.decodes(
        {{"six units", "U+00e9", 8, ILLCHAR_STOP, -1, u"U+00e9", CLEARED},
         {"lower-case u", "u+00E9", 8, ILLCHAR_STOP, -1, u"u+00E9", CLEARED},
         {"no digit", "U+00G9", 8, ILLCHAR_STOP, -1, u"U+00G9", CLEARED},
         {"between the digits and the letters", "U+00:9U+@000", 16, ILLCHAR_STOP, -1, u"U+00:9U+@000", CLEARED}});
    escaped.countsUnits("U+00e9", UNTIL_TERMINATOR, 6);
}

TEST(UTF16Escape, CutEscapeIsText)
{
    escaped.decodes({
        {"four units", "U+12", 8, ILLCHAR_STOP, -1, u"U+12", CLEARED},
        {"an escape after a cut one", "U+12U+00E9", 8, ILLCHAR_STOP, -1, {'U', '+', '1', '2', 0xE9}, CLEARED},
        {"two of U", "UU+00E9", 8, ILLCHAR_STOP, -1, {'U', 0xE9}, CLEARED},
        {"U at the end", "U", 8, ILLCHAR_STOP, -1, u"U", CLEARED},
    });
    escaped.countsUnits("U+12", UNTIL_TERMINATOR, 4);
    escaped.countsUnits("U+00E9", 5, 5);
    escaped.countsUnits("U+00E9", 6, 1);
}

TEST(UTF16Escape, BytesFrom80AreWidened)
{
    escaped.decodes({
        {"E9", "\xE9", 8, ILLCHAR_STOP, -1, {0xFFE9}, CLEARED},
        {"80 and FF", "\x80\xFF", 8, ILLCHAR_STOP, -1, {0xFF80, 0xFFFF}, CLEARED},
    });
}

TEST(UTF16Escape, EscapeOfZeroIsAUnitOfText)
{
    escaped.decodes({{"zero", "U+0000A", 8, ILLCHAR_STOP, -1, u"\0A"s, CLEARED}});
}

TEST(UTF16Escape, EscapeThatDoesNotFitEndsTheText)
{
    escaped.encodes({
        {"five bytes", {0xE9}, 5, ILLCHAR_ESCAPE, {}, CLEARED},
        {"six", {0xE9}, 6, ILLCHAR_ESCAPE, "U+00E9", CLEARED},
        {"a letter after does not slip in", {0xE9, u'a'}, 5, ILLCHAR_REPLACE, {}, CLEARED},
    });
}

TEST(UTF16Escape, SupplementaryCharacterIsTwoEscapes)
{
    escaped.encodes({{"twelve bytes", u"\U0001F600", 12, ILLCHAR_STOP, "U+D83DU+DE00", CLEARED},
                     {"one of them", u"\U0001F600", 11, ILLCHAR_STOP, "U+D83D", CLEARED},
                     {"half a pair", {0xD800}, 12, ILLCHAR_STOP, "U+D800", CLEARED}});
    escaped.decodes({{"back", "U+D83DU+DE00", 8, ILLCHAR_STOP, -1, u"\U0001F600", CLEARED}});
    escaped.countsBytes(u"\U0001F600", UNTIL_TERMINATOR, 12);
}

TEST(UTF16Escape, LimitCountsBytesAndZeroOrLessIsNone)
{
    escaped.decodes({
        {"within an escape, which is converted whole", "U+00E9z", 8, ILLCHAR_STOP, 1, {0xE9}, CLEARED},
        {"at its end", "U+00E9z", 8, ILLCHAR_STOP, 6, {0xE9}, CLEARED},
        {"after it", "U+00E9z", 8, ILLCHAR_STOP, 7, {0xE9, u'z'}, CLEARED},
        {"none", "U+00E9z", 8, ILLCHAR_STOP, 0, {0xE9, u'z'}, CLEARED},
        {"no space", "U+00E9z", 0, ILLCHAR_STOP, -1, {}, CLEARED},
        {"capacity of one", "U+00E9z", 1, ILLCHAR_STOP, -1, {0xE9}, CLEARED},
    });
}
