// kx7text tests - GB 18030: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/Gb18030Model.h"
#include "tests/support/ByteConverterRows.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

// What these tests use of the mapping.
Gb18030Model const model(withAscii({{0x7F, 0x7F},
                                    {0x80, 0x20AC},
                                    {0xB0A1, 0x554A},
                                    {0x8180, 0x4E90},
                                    {0xA2E3, 0xE76C},
                                    {0xA8BF, 0xE7C8},
                                    {0xFE50, 0xE815}}),
                         {{0xA2E3, 0xA2E3, 0x20AC},
                          {0xA8BF, 0xA8BF, 0x01F9},
                          {0xA98A, 0xA995, 0x2FF0},
                          {0xFE50, 0xFE50, 0x2E81},
                          {0x10000, 0x10023, 0x80},
                          {0x199E2, 0x199FB, 0xFFE6}},
                         {{0x80, 0xA3, 0x10000},
                          {0x01F9, 0x01F9, 0xA8BF},
                          {0x2E81, 0x2E81, 0xFE50},
                          {0x2FF0, 0x2FFB, 0xA98A},
                          {0xFFE6, 0xFFFF, 0x199E2}});
Tested const gb18030{g_oConverterGB18030, model};

Flag const SET = Flag::SET;
Flag const CLEARED = Flag::CLEARED;

}  // namespace

TEST(GB18030, SizesAreOneFourAndOne)
{
    gb18030.hasSizes(1, 4, 1);
}

TEST(GB18030, OneAndTwoBytes)
{
    gb18030.decodes({
        {"GBK", "\xB0\xA1z", 8, ILLCHAR_STOP, -1, u"\u554Az", CLEARED},
        {"7F", "\x7F", 8, ILLCHAR_STOP, -1, {0x7F}, CLEARED},
        {"trail byte 80 is accepted here", "\x81\x80", 8, ILLCHAR_STOP, -1, u"\u4E90", CLEARED},
    });
    gb18030.encodes({{"GBK", u"\u554Az", 3, ILLCHAR_STOP, "\xB0\xA1z", CLEARED},
                     {"half of it", u"z\u554A", 2, ILLCHAR_STOP, "z", CLEARED}});
}

TEST(GB18030, FirstAndLastFourByteCodesOfThePlane)
{
    gb18030.decodes({
        {"U+0080", "\x81\x30\x81\x30", 8, ILLCHAR_STOP, -1, {0x80}, CLEARED},
        {"U+00A3", "\x81\x30\x84\x35", 8, ILLCHAR_STOP, -1, {0xA3}, CLEARED},
        {"U+FFFF", "\x84\x31\xA4\x39", 8, ILLCHAR_STOP, -1, {0xFFFF}, CLEARED},
    });
    gb18030.encodes({
        {"U+0080", {0x80}, 4, ILLCHAR_STOP, "\x81\x30\x81\x30", CLEARED},
        {"three bytes", {u'z', 0x80}, 4, ILLCHAR_STOP, "z", CLEARED},
        {"U+FFFF", {0xFFFF}, 4, ILLCHAR_STOP, "\x84\x31\xA4\x39", CLEARED},
    });
}

TEST(GB18030, SupplementaryPlanesAreComputed)
{
    gb18030.decodes({
        {"U+10000", "\x90\x30\x81\x30", 8, ILLCHAR_STOP, -1, {0xD800, 0xDC00}, CLEARED},
        {"U+10FFFF", "\xE3\x32\x9A\x35", 8, ILLCHAR_STOP, -1, {0xDBFF, 0xDFFF}, CLEARED},
        {"space for one unit", "z\x90\x30\x81\x30", 2, ILLCHAR_REPLACE, -1, u"z", CLEARED},
        {"limit within", "\x90\x30\x81\x30z", 8, ILLCHAR_REPLACE, 1, {0xD800, 0xDC00}, CLEARED},
    });
    gb18030.encodes({
        {"U+10000", {0xD800, 0xDC00}, 8, ILLCHAR_STOP, "\x90\x30\x81\x30", CLEARED},
        {"U+10FFFF", {0xDBFF, 0xDFFF}, 8, ILLCHAR_STOP, "\xE3\x32\x9A\x35", CLEARED},
        {"three bytes", {u'z', 0xD800, 0xDC00}, 4, ILLCHAR_STOP, "z", CLEARED},
    });
    gb18030.countsUnits("\x90\x30\x81\x30z", UNTIL_TERMINATOR, 3);
    gb18030.countsBytes({0xD800, 0xDC00, 0x80, u'z'}, UNTIL_TERMINATOR, 9);
}

TEST(GB18030, CodeJustPastU10FFFFIsIllegal)
{
    gb18030.decodes({
        {"replaced", "\xE3\x32\x9A\x36z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
        {"stopped", "z\xE3\x32\x9A\x36z", 8, ILLCHAR_STOP, -1, u"z", SET},
        {"the highest", "\xFE\x39\xFE\x39z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
    });
    gb18030.countsUnits("\xE3\x32\x9A\x36z", UNTIL_TERMINATOR, 2);
}

TEST(GB18030, CodesBetweenThePlaneAndTheSupplementaryOnesAreUnmapped)
{
    gb18030.decodes({
        {"first after", "\x84\x31\xA5\x30z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
        {"last before", "\x8F\x39\xFE\x39z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
        {"between", "\x85\x30\x81\x30z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
    });
}

TEST(GB18030, MalformedSequenceIsIllegalForItsLeadAlone)
{
    gb18030.decodes({
        {"third byte is no lead", "\x81\x30\x20", 8, ILLCHAR_REPLACE, -1, u"\uFFFD0 ", SET},
        {"fourth byte is no digit", "\x81\x30\x81\x20", 8, ILLCHAR_REPLACE, -1, u"\uFFFD0\uFFFD ", SET},
        {"second byte", "\x81\x20z", 8, ILLCHAR_REPLACE, -1, u"\uFFFD z", SET},
        {"second byte 7F", "\x81\x7Fz", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\x7Fz", SET},
        {"second byte FF", "\x81\xFFz", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFDz", SET},
        {"cut after one", "z\x81", 8, ILLCHAR_REPLACE, -1, u"z\uFFFD", SET},
        {"cut after two", "z\x81\x30", 8, ILLCHAR_REPLACE, -1, u"z\uFFFD0", SET},
        {"cut after three", "z\x81\x30\x81", 8, ILLCHAR_REPLACE, -1, u"z\uFFFD0\uFFFD", SET},
        {"stopped", "z\x81\x30\x20", 8, ILLCHAR_STOP, -1, u"z", SET},
    });
}

TEST(GB18030, FFIsIllegal)
{
    gb18030.decodes({{"replaced", "\xFFz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
                     {"stopped", "z\xFFz", 8, ILLCHAR_STOP, -1, u"z", SET}});
}

TEST(GB18030, EuroSignIs80AndA2E3IsReadAsWell)
{
    gb18030.decodes({{"one byte", "\x80", 8, ILLCHAR_STOP, -1, u"\u20AC", CLEARED},
                     {"two bytes", "\xA2\xE3", 8, ILLCHAR_STOP, -1, u"\u20AC", CLEARED}});
    gb18030.encodes({{"one byte", u"\u20AC", 8, ILLCHAR_STOP, "\x80", CLEARED}});
}

TEST(GB18030, TwoByteCodeWithARecordOfItsOwnTakesTheRecord)
{
    gb18030.decodes({
        {"A8BF", "\xA8\xBF", 8, ILLCHAR_STOP, -1, {0x01F9}, CLEARED},
        {"A98A to A995", "\xA9\x8A\xA9\x95", 8, ILLCHAR_STOP, -1, {0x2FF0, 0x2FFB}, CLEARED},
        {"FE50", "\xFE\x50", 8, ILLCHAR_STOP, -1, {0x2E81}, CLEARED},
    });
    gb18030.encodes({
        {"back", {0x01F9, 0x2FF0, 0x2E81}, 8, ILLCHAR_STOP, "\xA8\xBF\xA9\x8A\xFE\x50", CLEARED},
        {"GBK goes first", {0xE7C8, 0xE76C, 0xE815}, 8, ILLCHAR_STOP, "\xA8\xBF\xA2\xE3\xFE\x50", CLEARED},
    });
}

TEST(GB18030, LoneHighSurrogateEndsTheTextQuietly)
{
    for (ILLCHAR_OPTYPE const op : OPERATIONS)
        gb18030.encodes({
            {"before a letter", {u'q', 0xD800, u'A'}, 8, op, "q", CLEARED},
            {"first", {0xD800, u'A'}, 8, op, {}, CLEARED},
            {"before another", {u'q', 0xD800, 0xD800, 0xDC00}, 8, op, "q", CLEARED},
            {"at the end", {u'q', 0xD800}, 8, op, "q", CLEARED},
        });
    gb18030.countsBytes({u'q', 0xD800, u'A'}, UNTIL_TERMINATOR, 1);
    gb18030.countsBytes({u'q', 0xD800}, UNTIL_TERMINATOR, 1);
    gb18030.countsBytes({u'q', 0xD800, 0xDC00}, 2, 1);
}

TEST(GB18030, LoneLowSurrogateIsUnmapped)
{
    gb18030.encodes({
        {"replaced", {0xDC00, u'z'}, 8, ILLCHAR_REPLACE, "?z", SET},
        {"escaped", {0xDC00, u'z'}, 8, ILLCHAR_ESCAPE, "U+DC00z", SET},
        {"escape without capacity", {u'z', 0xDC00, u'z'}, 6, ILLCHAR_ESCAPE, "z", SET},
        {"stopped", {u'z', 0xDC00, u'z'}, 8, ILLCHAR_STOP, "z", SET},
        {"after a pair", {0xD800, 0xDC00, 0xDC00}, 8, ILLCHAR_REPLACE, "\x90\x30\x81\x30?", SET},
    });
    gb18030.countsBytes({0xDC00, u'z'}, UNTIL_TERMINATOR, 2);
}

TEST(GB18030, LimitIsNotAppliedAfterAnIllegalSequenceOrAnUnmappedCode)
{
    gb18030.decodes({
        {"malformed", "\x81\x20zz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD ", SET},
        {"cut by the end of the text", "\x81\x30", 8, ILLCHAR_REPLACE, 1, u"\uFFFD0", SET},
        {"unmapped four bytes", "\x84\x31\xA5\x30zz", 8, ILLCHAR_REPLACE, 4, u"\uFFFDz", SET},
        {"past U+10FFFF", "\xE3\x32\x9A\x36zz", 8, ILLCHAR_REPLACE, 2, u"\uFFFDz", SET},
        {"FF is a single byte", "\xFFzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"pair", "\xB0\xA1zz", 8, ILLCHAR_REPLACE, 1, u"\u554A", CLEARED},
        {"four bytes", "\x81\x30\x81\x30zz", 8, ILLCHAR_REPLACE, 4, {0x80}, CLEARED},
        {"none", "zz", 8, ILLCHAR_REPLACE, 0, u"zz", CLEARED},
    });
}

TEST(GB18030, CountNeedsTheWholeSequenceWithinTheCount)
{
    gb18030.countsUnits("\xB0\xA1", 1, 1);
    gb18030.countsUnits("\x81\x30\x81\x30", 4, 1);
    gb18030.countsUnits("\x81\x30\x81\x30", 3, 3);
    gb18030.countsUnits("\x90\x30\x81\x30", 3, 3);
    gb18030.countsUnits("\x81\x30", UNTIL_TERMINATOR, 2);
    gb18030.countsUnits("\xFF\x80z", UNTIL_TERMINATOR, 3);
    gb18030.countsUnits("z\0\x81\x30"s, 4, 1);
}
