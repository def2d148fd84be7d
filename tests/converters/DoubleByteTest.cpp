// kx7text tests - double-byte code pages, Big5, Shift_JIS and Shift_JIS-2004: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/DoubleByteModel.h"
#include "tests/model/ShiftJis2004Model.h"
#include "tests/support/ByteConverterRows.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

// What these tests use of each mapping.
DoubleByteModel const model932(SHIFT_JIS_BYTES, withAscii({{0x82A0, 0x3042},
                                                           {0x82A2, 0x3044},
                                                           {0x80, 0xA2},
                                                           {0xA0, 0xA3},
                                                           {0xB1, 0xFF71},
                                                           {0x1A, 0x1C},
                                                           {0x1C, 0x7F},
                                                           {0x7F, 0x1A}}));
DoubleByteModel const model936(CP936_BYTES,
                               withAscii({{0x80, 0x20AC}, {0xB0A1, 0x554A}, {0x8140, 0x4E02}, {0x8180, 0x4E90}}));
DoubleByteModel const model949(
    CP949_BYTES,
    withAscii(
        {{0x5C, 0x20A9}, {0x80, 0xA2}, {0x81, 0xAC}, {0x82, 0x5C}, {0x83, 0x203E}, {0x84, 0xA6}, {0xB0A1, 0xAC00}}));
DoubleByteModel const model950(CP950_BYTES, withAscii({{0xA440, 0x4E00}}));
DoubleByteModel const modelBig5(BIG5_BYTES, withAscii({{0xA440, 0x4E00}}));
DoubleByteModel const modelShiftJis(SHIFT_JIS_BYTES, withAscii({{0x82A0, 0x3042}, {0xB1, 0xFF71}, {0x5C, 0x5C}}));
ShiftJis2004Model const model2004(withAscii({{0x82A0, 0x3042}, {0x87A0, 0x2000B}, {0xB1, 0xFF71}, {0x5C, 0xA5}}));

Tested const cp932{g_oConverterWCP932, model932};
Tested const cp936{g_oConverterWCP936, model936};
Tested const cp949{g_oConverterWCP949, model949};
Tested const cp950{g_oConverterWCP950, model950};
Tested const big5{g_oConverterBig5, modelBig5};
Tested const shiftJis{g_oConverterSHIFTJIS, modelShiftJis};
Tested const shiftJis2004{g_oConverterSJIS2004, model2004};

Tested const ALL[] = {cp932, cp936, cp949, cp950, big5, shiftJis, shiftJis2004};

Flag const SET = Flag::SET;
Flag const CLEARED = Flag::CLEARED;

}  // namespace

TEST(DoubleByte, SizesAreOneTwoAndOne)
{
    for (Tested const& tested : ALL)
        tested.hasSizes(1, 2, 1);
}

TEST(CP932, DecodesPairsAndSingleBytes)
{
    cp932.decodes({
        {"pair", "\x82\xA0", 8, ILLCHAR_REPLACE, -1, u"\u3042", CLEARED},
        {"two pairs and a letter", "\x82\xA0z\x82\xA2", 8, ILLCHAR_STOP, -1, u"\u3042z\u3044", CLEARED},
        {"katakana", "\xB1", 8, ILLCHAR_REPLACE, -1, u"\uFF71", CLEARED},
        {"single bytes of this set", "\x80\xA0", 8, ILLCHAR_REPLACE, -1, {0xA2, 0xA3}, CLEARED},
        {"rotated controls", "\x1A\x1C\x7F", 8, ILLCHAR_REPLACE, -1, {0x1C, 0x7F, 0x1A}, CLEARED},
    });
}

TEST(CP932, BlankIsNoTrailByte)
{
    cp932.decodes({
        {"replaced", "\x82\x20", 8, ILLCHAR_REPLACE, -1, u"\uFFFD ", SET},
        {"escape acts as replace", "\x82\x20", 8, ILLCHAR_ESCAPE, -1, u"\uFFFD ", SET},
        {"an operation without a name too", "\x82\x20", 8, UNNAMED_OPERATION, -1, u"\uFFFD ", SET},
        {"stopped", "\x82\x20", 8, ILLCHAR_STOP, -1, {}, SET},
        {"stopped after a letter", "Q\x82\x20", 8, ILLCHAR_STOP, -1, u"Q", SET},
    });
}

TEST(CP932, ByteAfterABadLeadIsReadAfresh)
{
    cp932.decodes({
        {"a byte that neither trails nor leads", "\x82\xFE\x82\xA0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD\u3042",
         SET},
        {"stop after the replacement", "\x82\x20", 1, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
    });
}

TEST(DoubleByte, LeadByteAtTheEndIsReplacedAndEnds)
{
    for (Tested const& tested : ALL)
        tested.decodes({
            {"replaced", "\x82", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
            {"stopped", "\x82", 8, ILLCHAR_STOP, -1, {}, SET},
            {"after a letter", "Z\xFC", 8, ILLCHAR_REPLACE, -1, u"Z\uFFFD", SET},
            {"with a limit before it", "Z\xFC", 8, ILLCHAR_REPLACE, 1, u"Z", CLEARED},
        });
}

TEST(DoubleByte, LimitIsNotAppliedAfterAnIllegalSequence)
{
    for (Tested const& tested : ALL)
        tested.decodes({
            {"goes on to the blank", "\x82\x20Z", 8, ILLCHAR_REPLACE, 1, u"\uFFFD ", SET},
            {"reached by the blank", "\x82\x20Z", 8, ILLCHAR_REPLACE, 2, u"\uFFFD ", SET},
            {"reached by a letter", "Z\x82\x20Z", 8, ILLCHAR_REPLACE, 1, u"Z", CLEARED},
            {"capacity ends it nevertheless", "\x82\x20Z", 1, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        });
}

TEST(CP936, LimitIsNotAppliedAfterSeveralIllegalSequences)
{
    cp936.decodes({{"two", "\x82\x82\x20Z", 8, ILLCHAR_REPLACE, 1, u"\uFFFD\uFFFD ", SET}});
}

TEST(DoubleByte, LimitIsAppliedAfterAnUnmappedCode)
{
    cp932.decodes({
        {"unmapped pair", "\x85\x40Z", 8, ILLCHAR_REPLACE, 2, u"\uFFFD", SET},
        {"unmapped pair that the limit cuts", "\x85\x40Z", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"unmapped byte", "\xFFZ", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
    });
    shiftJis2004.decodes({{"unmapped byte", "\xFFZ", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET}});
}

TEST(DoubleByte, LimitCountsBytesAndZeroOrLessIsNone)
{
    cp932.decodes({
        {"after the first pair", "\x82\xA0\x82\xA2", 8, ILLCHAR_REPLACE, 2, u"\u3042", CLEARED},
        {"cuts a pair, which is converted whole", "\x82\xA0\x82\xA2", 8, ILLCHAR_REPLACE, 3, u"\u3042\u3044", CLEARED},
        {"cuts the first", "\x82\xA0\x82\xA2", 8, ILLCHAR_REPLACE, 1, u"\u3042", CLEARED},
        {"none", "\x82\xA0\x82\xA2", 8, ILLCHAR_REPLACE, 0, u"\u3042\u3044", CLEARED},
        {"none either", "\x82\xA0\x82\xA2", 8, ILLCHAR_REPLACE, INT_MIN, u"\u3042\u3044", CLEARED},
        {"far after", "\x82\xA0", 8, ILLCHAR_REPLACE, INT_MAX, u"\u3042", CLEARED},
    });
}

TEST(DoubleByte, CapacityOfExactlyTheTextHasItsTerminatorAfter)
{
    cp932.decodes({
        {"all", "\x82\xA0\x82\xA2", 2, ILLCHAR_REPLACE, -1, u"\u3042\u3044", CLEARED},
        {"one of two", "\x82\xA0\x82\xA2", 1, ILLCHAR_REPLACE, -1, u"\u3042", CLEARED},
        {"none", "\x82\xA0", 0, ILLCHAR_REPLACE, -1, {}, CLEARED},
        {"none for an illegal one", "\x82", 0, ILLCHAR_STOP, -1, {}, CLEARED},
    });
    cp932.encodes({
        {"all", u"\u3042\u3044", 4, ILLCHAR_REPLACE, "\x82\xA0\x82\xA2", CLEARED},
        {"half a pair", u"\u3042\u3044", 3, ILLCHAR_REPLACE, "\x82\xA0", CLEARED},
        {"one pair", u"\u3042\u3044", 2, ILLCHAR_REPLACE, "\x82\xA0", CLEARED},
        {"half of the first", u"\u3042", 1, ILLCHAR_REPLACE, {}, CLEARED},
        {"none", u"\u3042", 0, ILLCHAR_REPLACE, {}, CLEARED},
    });
}

TEST(CP932, Encodes)
{
    cp932.encodes({
        {"pair", u"\u3042", 8, ILLCHAR_STOP, "\x82\xA0", CLEARED},
        {"katakana", u"\uFF71", 8, ILLCHAR_STOP, "\xB1", CLEARED},
        {"cent and pound", {0xA2, 0xA3}, 8, ILLCHAR_STOP, "\x80\xA0", CLEARED},
        {"rotated controls", {0x1C, 0x7F, 0x1A}, 8, ILLCHAR_STOP, "\x1A\x1C\x7F", CLEARED},
        {"unmapped", u"\u0E01z", 8, ILLCHAR_REPLACE, "?z", SET},
        {"escaped", u"\u0E01z", 8, ILLCHAR_ESCAPE, "U+0E01z", SET},
        {"stopped", u"Q\u0E01z", 8, ILLCHAR_STOP, "Q", SET},
        {"an operation without a name", u"\u0E01", 8, UNNAMED_OPERATION, "?", SET},
    });
}

TEST(DoubleByte, EscapeThatDoesNotFitEndsTheText)
{
    for (Tested const& tested : ALL)
        tested.encodes({
            {"five", u"\u0E01z", 5, ILLCHAR_ESCAPE, {}, SET},
            {"six", u"\u0E01z", 6, ILLCHAR_ESCAPE, "U+0E01", SET},
            {"five after a letter", u"Q\u0E01z", 6, ILLCHAR_ESCAPE, "Q", SET},
        });
}

TEST(DoubleByte, EachHalfOfAPairIsUnmapped)
{
    for (Tested const& tested : {cp932, cp936, cp949, cp950, big5, shiftJis}) {
        tested.encodes({
            {"replaced", u"\U0001F600z", 16, ILLCHAR_REPLACE, "??z", SET},
            {"escaped", u"\U0001F600z", 16, ILLCHAR_ESCAPE, "U+D83DU+DE00z", SET},
            {"one escape fits", u"\U0001F600z", 11, ILLCHAR_ESCAPE, "U+D83D", SET},
            {"alone", {0xD800, u'z'}, 16, ILLCHAR_ESCAPE, "U+D800z", SET},
            {"high surrogate at the end", {u'z', 0xD800}, 16, ILLCHAR_REPLACE, "z?", SET},
        });
        tested.countsBytes(u"\U0001F600z", UNTIL_TERMINATOR, 3);
        tested.countsBytes({u'z', 0xD800}, UNTIL_TERMINATOR, 2);
    }
}

TEST(CP936, EuroSignIsASingleByte)
{
    cp936.decodes({{"euro", "\x80", 8, ILLCHAR_STOP, -1, u"\u20AC", CLEARED}});
    cp936.encodes({{"euro", u"\u20AC", 1, ILLCHAR_STOP, "\x80", CLEARED}});
}

TEST(CP936, TrailByte80IsNotAcceptedAlthoughTheListHasTheCode)
{
    cp936.decodes({
        {"illegal, then alone", "\x81\x80", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\u20AC", SET},
        {"stopped", "\x81\x80", 8, ILLCHAR_STOP, -1, {}, SET},
        {"A0 leads", "\x81\xA0 ", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD ", SET},
        {"40 is accepted", "\x81\x40", 8, ILLCHAR_STOP, -1, u"\u4E02", CLEARED},
    });
    cp936.encodes({{"but it is encoded", u"\u4E90", 8, ILLCHAR_STOP, "\x81\x80", CLEARED}});
    cp936.countsUnits("\x81\x80", UNTIL_TERMINATOR, 2);
}

TEST(Big5, TrailByte7FIsAcceptedBy936And950Only)
{
    // The pair is then unmapped: both of its bytes are consumed.
    cp950.decodes({{"950", "\xA4\x7Fz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET}});
    cp936.countsUnits("\x81\x7Fz", UNTIL_TERMINATOR, 2);
    cp950.countsUnits("\xA4\x7Fz", UNTIL_TERMINATOR, 2);
    big5.countsUnits("\xA4\x7Fz", UNTIL_TERMINATOR, 3);
    big5.decodes({{"pair", "\xA4\x40", 8, ILLCHAR_STOP, -1, u"\u4E00", CLEARED}});
    big5.encodes({{"pair", u"\u4E00", 8, ILLCHAR_STOP, "\xA4\x40", CLEARED}});
}

TEST(CP949, LeadBytesHaveSingleByteMeaningsForEncodingOnly)
{
    cp949.encodes({
        {"won sign", u"\u20A9", 8, ILLCHAR_STOP, "\\", CLEARED},
        {"reverse solidus", u"\\", 8, ILLCHAR_STOP, "\x82", CLEARED},
        {"not sign", {0xAC}, 8, ILLCHAR_STOP, "\x81", CLEARED},
        {"overline", {0x203E}, 8, ILLCHAR_STOP, "\x83", CLEARED},
        {"broken bar", {0xA6}, 8, ILLCHAR_STOP, "\x84", CLEARED},
        {"cent", {0xA2}, 8, ILLCHAR_STOP, "\x80", CLEARED},
    });
    cp949.decodes({
        {"won sign", "\\", 8, ILLCHAR_STOP, -1, u"\u20A9", CLEARED},
        {"cent", "\x80", 8, ILLCHAR_STOP, -1, {0xA2}, CLEARED},
        {"lead byte", "\x82", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
        {"lead byte before a digit",
         "\x82"
         "1",
         8, ILLCHAR_REPLACE, -1, u"\uFFFD1", SET},
        {"syllable", "\xB0\xA1", 8, ILLCHAR_STOP, -1, u"\uAC00", CLEARED},
    });
}

TEST(ShiftJis, ReverseSolidusAndKatakana)
{
    shiftJis.decodes({
        {"pair", "\x82\xA0", 8, ILLCHAR_STOP, -1, u"\u3042", CLEARED},
        {"katakana", "\xB1", 8, ILLCHAR_STOP, -1, u"\uFF71", CLEARED},
        {"reverse solidus", "\\", 8, ILLCHAR_STOP, -1, u"\\", CLEARED},
    });
    shiftJis.encodes({{"reverse solidus", u"\\\uFF71", 8, ILLCHAR_STOP, "\\\xB1", CLEARED}});
}

TEST(DoubleByte, CountsUnitsBytesByByteOfABadPair)
{
    cp932.countsUnits("\x82\xA0\x82\xA2z", UNTIL_TERMINATOR, 3);
    cp932.countsUnits("\x82 z", UNTIL_TERMINATOR, 3);
    cp932.countsUnits("\x82\xA0", 1, 1);
    cp932.countsUnits("\x82\xA0\x82", 3, 2);
    cp932.countsUnits("\x85\x40", 2, 1);
    cp932.countsUnits("\x82\0\xA0"s, 3, 1);
    cp932.countsUnits("", UNTIL_TERMINATOR, 0);
    cp932.countsUnits("", 0, 0);
    cp932.countsBytes(u"\u3042z\u0E01", UNTIL_TERMINATOR, 4);
    cp932.countsBytes(u"\u3042z\u0E01", 2, 3);
    cp932.countsBytes(u"\u3042", 0, 0);
}

TEST(ShiftJis2004, CodeBeyondThePlaneIsAPair)
{
    shiftJis2004.decodes({
        {"pair", "\x87\xA0", 8, ILLCHAR_STOP, -1, u"\U0002000B", CLEARED},
        {"it fits", "z\x87\xA0", 3, ILLCHAR_STOP, -1, u"z\U0002000B", CLEARED},
        {"after a replacement", "\x82 \x87\xA0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD \U0002000B", SET},
        {"at its limit", "\x87\xA0z", 8, ILLCHAR_STOP, 2, u"\U0002000B", CLEARED},
    });
    shiftJis2004.encodes({{"pair", u"\U0002000B\u3042", 8, ILLCHAR_STOP, "\x87\xA0\x82\xA0", CLEARED},
                          {"half of it", u"\U0002000B", 1, ILLCHAR_STOP, {}, CLEARED}});
    shiftJis2004.countsUnits("\x87\xA0z", UNTIL_TERMINATOR, 3);
    shiftJis2004.countsUnits("\x87\xA0z", 1, 1);
    shiftJis2004.countsBytes(u"\U0002000Bz", UNTIL_TERMINATOR, 3);
}

TEST(ShiftJis2004, PairWithCapacityForOneUnitEndsTheText)
{
    shiftJis2004.decodes({
        {"one unit", "\x87\xA0", 1, ILLCHAR_REPLACE, -1, {}, CLEARED},
        {"one unit left", "z\x87\xA0z", 2, ILLCHAR_REPLACE, -1, u"z", CLEARED},
    });
}

TEST(ShiftJis2004, EscapeOfAnUnmappedPairIsTwelveBytesWithLiteralTextAndAZeroByte)
{
    shiftJis2004.encodes({
        {"exactly twelve", u"\U0001F600", 12, ILLCHAR_ESCAPE, "U+D83DU+04X\0"s, SET},
        {"counted as twelve", u"\U0001F600z", 13, ILLCHAR_ESCAPE, "U+D83DU+04X\0z"s, SET},
        {"eleven", u"\U0001F600z", 11, ILLCHAR_ESCAPE, {}, SET},
        {"twice", u"\U0001F600\U0010FFFF", 24, ILLCHAR_ESCAPE, "U+D83DU+04X\0U+DBFFU+04X\0"s, SET},
        {"the second does not fit", u"\U0001F600\U0010FFFF", 23, ILLCHAR_ESCAPE, "U+D83DU+04X\0"s, SET},
        {"replaced by one", u"\U0001F600z", 8, ILLCHAR_REPLACE, "?z", SET},
        {"stopped", u"z\U0001F600z", 8, ILLCHAR_STOP, "z", SET},
    });
    shiftJis2004.countsBytes(u"\U0001F600z", UNTIL_TERMINATOR, 2);
}

TEST(ShiftJis2004, UnpairedHighSurrogateIsIllegalAndWhatFollowsIsConverted)
{
    shiftJis2004.encodes({
        {"replaced", {0xD800, u'z'}, 8, ILLCHAR_REPLACE, "?z", SET},
        {"escaped", {0xD800, u'z'}, 8, ILLCHAR_ESCAPE, "U+D800z", SET},
        {"stopped", {u'z', 0xD800, u'z'}, 8, ILLCHAR_STOP, "z", SET},
        {"before a pair", {0xD800, 0xD840, 0xDC0B}, 8, ILLCHAR_REPLACE, "?\x87\xA0", SET},
        {"low surrogate", {0xDC00, u'z'}, 8, ILLCHAR_ESCAPE, "U+DC00z", SET},
        {"at the end", {u'z', 0xD800}, 8, ILLCHAR_REPLACE, "z?", SET},
        {"at the end, escaped", {u'z', 0xD800}, 8, ILLCHAR_ESCAPE, "zU+D800", SET},
    });
}

TEST(ShiftJis2004, CountOfAHighSurrogateAtTheEndIsNothing)
{
    shiftJis2004.countsBytes({u'z', 0xD800}, UNTIL_TERMINATOR, 1);
    shiftJis2004.countsBytes({u'z', 0xD840, 0xDC0B}, 2, 1);
    shiftJis2004.countsBytes({0xD800, u'z'}, UNTIL_TERMINATOR, 2);
}
