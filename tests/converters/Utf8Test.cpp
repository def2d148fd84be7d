// kx7text tests - UTF-8: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/Rows.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

Utf8Model const model;

void expectDecodedRows(std::initializer_list<DecodeRow> rows)
{
    Probe probe(g_oConverterUTF8, model);
    for (DecodeRow const& row : rows)
        expectDecoded(probe, row);
}

void expectEncodedRows(std::initializer_list<EncodeRow> rows)
{
    Probe probe(g_oConverterUTF8, model);
    for (EncodeRow const& row : rows)
        expectEncoded(probe, row);
}

unsigned int numUnits(std::string const& bytes, unsigned int byteCount = UNTIL_TERMINATOR)
{
    PageEnd<unsigned char> memory;
    size_t const zeros = byteCount == UNTIL_TERMINATOR ? 1 : 0;
    return g_oConverterUTF8.getNumUnits(memory.hold(bytes, zeros), byteCount);
}

unsigned int numBytes(std::u16string const& units, unsigned int unitCount = UNTIL_TERMINATOR)
{
    PageEnd<unsigned short> memory;
    size_t const zeros = unitCount == UNTIL_TERMINATOR ? 1 : 0;
    return g_oConverterUTF8.getNumBytes(memory.hold(units, zeros), unitCount);
}

}  // namespace

TEST(UTF8, SizesAreOneThreeAndOne)
{
    EXPECT_EQ(g_oConverterUTF8.getMinUnitSize(), 1u);
    EXPECT_EQ(g_oConverterUTF8.getMaxUnitSize(), 3u);
    EXPECT_EQ(g_oConverterUTF8.getNullCharSize(), 1u);
}

TEST(UTF8, DecodesEachLength)
{
    expectDecodedRows({
        {"one byte", "\x01\x7F", 8, ILLCHAR_REPLACE, -1, {1, 0x7F}, Flag::CLEARED},
        {"letter and e with acute", "A\xC3\xA9", 8, ILLCHAR_REPLACE, -1, {0x41, 0xE9}, Flag::CLEARED},
        {"bounds of two bytes", "\xC2\x80\xDF\xBF", 8, ILLCHAR_REPLACE, -1, {0x80, 0x7FF}, Flag::CLEARED},
        {"euro sign", "\xE2\x82\xAC", 8, ILLCHAR_REPLACE, -1, {0x20AC}, Flag::CLEARED},
        {"bounds of three", "\xE0\xA0\x80\xEF\xBF\xBF", 8, ILLCHAR_REPLACE, -1, {0x800, 0xFFFF}, Flag::CLEARED},
        {"a pair", "\xF0\x9F\x98\x80", 8, ILLCHAR_REPLACE, -1, {0xD83D, 0xDE00}, Flag::CLEARED},
        {"lowest pair", "\xF0\x90\x80\x80", 8, ILLCHAR_REPLACE, -1, {0xD800, 0xDC00}, Flag::CLEARED},
        {"highest pair", "\xF4\x8F\xBF\xBF", 8, ILLCHAR_REPLACE, -1, {0xDBFF, 0xDFFF}, Flag::CLEARED},
    });
}

TEST(UTF8, PairNeedsTwoUnitsOfCapacityOrBecomesOneReplacement)
{
    expectDecodedRows({
        {"space for both", "\xF0\x9F\x98\x80", 2, ILLCHAR_REPLACE, -1, {0xD83D, 0xDE00}, Flag::CLEARED},
        {"space for one", "\xF0\x9F\x98\x80", 1, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
        {"space for one, text after",
         "\xF0\x9F\x98\x80"
         "A",
         1,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD},
         Flag::CLEARED},
        {"space for one after another",
         "\xF0\x9F\x98\x80\xF0\x9F\x98\x80",
         3,
         ILLCHAR_STOP,
         -1,
         {0xD83D, 0xDE00, 0xFFFD},
         Flag::CLEARED},
        {"space for none", "\xF0\x9F\x98\x80", 0, ILLCHAR_REPLACE, -1, {}, Flag::CLEARED},
    });
}

TEST(UTF8, StrayContinuationByteVanishes)
{
    expectDecodedRows({
        {"alone", "\x80", 8, ILLCHAR_REPLACE, -1, {}, Flag::CLEARED},
        {"before a letter",
         "\x80"
         "A",
         8, ILLCHAR_REPLACE, -1, u"A", Flag::CLEARED},
        {"many of them",
         "\x80\x81\xBE\xBF"
         "A\xBF"
         "B",
         8, ILLCHAR_REPLACE, -1, u"AB", Flag::CLEARED},
        {"after a whole character", "\xC3\xA9\xA9", 8, ILLCHAR_REPLACE, -1, {0xE9}, Flag::CLEARED},
        {"uses no space",
         "\x80\x80"
         "A",
         1, ILLCHAR_REPLACE, -1, u"A", Flag::CLEARED},
        {"does not stop",
         "\x80"
         "A",
         8, ILLCHAR_STOP, -1, u"A", Flag::CLEARED},
    });
}

TEST(UTF8, MalformedSequenceBecomesOneReplacementForItsLead)
{
    expectDecodedRows({
        {"two bytes, the second a letter",
         "\xC3"
         "A",
         8,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD, 'A'},
         Flag::CLEARED},
        {"two bytes, the second a lead", "\xC3\xC3\xA9", 8, ILLCHAR_REPLACE, -1, {0xFFFD, 0xE9}, Flag::CLEARED},
        {"three bytes, the second a letter",
         "\xE2"
         "A",
         8,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD, 'A'},
         Flag::CLEARED},
        {"three bytes, the second is stray then",
         "\xE2\x82"
         "A",
         8,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD, 'A'},
         Flag::CLEARED},
        {"four bytes, two stray then",
         "\xF0\x9F\x98"
         "A",
         8,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD, 'A'},
         Flag::CLEARED},
        {"four bytes, a lead in the second place",
         "\xF0\xE2\x82\xAC",
         8,
         ILLCHAR_REPLACE,
         -1,
         {0xFFFD, 0x20AC},
         Flag::CLEARED},
    });
}

TEST(UTF8, LeadBeforeTheTerminatorBecomesAReplacement)
{
    expectDecodedRows({
        {"of two", "\xC3", 8, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
        {"of three", "\xE2", 8, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
        {"of three, one more byte", "\xE2\x82", 8, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
        {"of four", "\xF0", 8, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
        {"of four, two more bytes", "\xF0\x9F\x98", 8, ILLCHAR_REPLACE, -1, {0xFFFD}, Flag::CLEARED},
    });
}

TEST(UTF8, NeitherStopsAtMalformedInputNorReportsIt)
{
    for (ILLCHAR_OPTYPE const op : OPERATIONS)
        expectDecodedRows({{"any operation",
                            "\xC3"
                            "A\x80\xF0\x9F",
                            8,
                            op,
                            -1,
                            {0xFFFD, 'A', 0xFFFD},
                            Flag::CLEARED}});
}

TEST(UTF8, OverlongFormsPass)
{
    expectDecodedRows({
        {"U+0000 within the text",
         "A\xC0\x80"
         "B",
         8,
         ILLCHAR_REPLACE,
         -1,
         {'A', 0, 'B'},
         Flag::CLEARED},
        {"slash in two bytes", "\xC0\xAF", 8, ILLCHAR_REPLACE, -1, u"/", Flag::CLEARED},
        {"slash in three bytes", "\xE0\x80\xAF", 8, ILLCHAR_REPLACE, -1, u"/", Flag::CLEARED},
        {"slash in four bytes wraps", "\xF0\x80\x80\xAF", 8, ILLCHAR_REPLACE, -1, {0xD7C0, 0xDC2F}, Flag::CLEARED},
    });
}

TEST(UTF8, EncodedSurrogatesPass)
{
    expectDecodedRows({
        {"high", "\xED\xA0\x80", 8, ILLCHAR_REPLACE, -1, {0xD800}, Flag::CLEARED},
        {"low", "\xED\xBF\xBF", 8, ILLCHAR_REPLACE, -1, {0xDFFF}, Flag::CLEARED},
        {"both", "\xED\xA0\xBD\xED\xB8\x80", 8, ILLCHAR_REPLACE, -1, {0xD83D, 0xDE00}, Flag::CLEARED},
    });
}

TEST(UTF8, FourBitsOfAFourByteLeadCount)
{
    expectDecodedRows({
        {"F4 90: above U+10FFFF", "\xF4\x90\x80\x80", 8, ILLCHAR_REPLACE, -1, {0xDC00, 0xDC00}, Flag::CLEARED},
        {"F8 is 2^21", "\xF8\x80\x80\x80", 8, ILLCHAR_REPLACE, -1, {0xDFC0, 0xDC00}, Flag::CLEARED},
        {"FF", "\xFF\xBF\xBF\xBF", 8, ILLCHAR_REPLACE, -1, {0xE7BF, 0xDFFF}, Flag::CLEARED},
        {"a fifth byte is stray", "\xF8\x88\x80\x80\x80", 8, ILLCHAR_REPLACE, -1, {0xDFE0, 0xDC00}, Flag::CLEARED},
    });
}

TEST(UTF8, SourceLimitEndsAfterTheCharacterThatReachesIt)
{
    expectDecodedRows({
        {"letters", "ABC", 8, ILLCHAR_REPLACE, 2, u"AB", Flag::CLEARED},
        {"limit inside a character",
         "\xE2\x82\xAC"
         "A",
         8,
         ILLCHAR_REPLACE,
         1,
         {0x20AC},
         Flag::CLEARED},
        {"limit inside a pair",
         "\xF0\x9F\x98\x80"
         "A",
         8,
         ILLCHAR_REPLACE,
         3,
         {0xD83D, 0xDE00},
         Flag::CLEARED},
        {"limit at a character's end",
         "\xC3\xA9"
         "A",
         8,
         ILLCHAR_REPLACE,
         2,
         {0xE9},
         Flag::CLEARED},
        {"limit one after it",
         "\xC3\xA9"
         "AB",
         8,
         ILLCHAR_REPLACE,
         3,
         {0xE9, 'A'},
         Flag::CLEARED},
        {"limit after a malformed lead",
         "\xC3"
         "AB",
         8,
         ILLCHAR_REPLACE,
         1,
         {0xFFFD},
         Flag::CLEARED},
        {"limit after the text", "AB", 8, ILLCHAR_REPLACE, 7, u"AB", Flag::CLEARED},
    });
}

TEST(UTF8, SourceLimitIsLookedAtAfterAStrayByteToo)
{
    expectDecodedRows({
        {"stray byte alone",
         "\x80"
         "AB",
         8,
         ILLCHAR_REPLACE,
         1,
         {},
         Flag::CLEARED},
        {"stray byte and letter",
         "\x80"
         "AB",
         8, ILLCHAR_REPLACE, 2, u"A", Flag::CLEARED},
        {"stray byte after a letter",
         "A\x80"
         "B",
         8, ILLCHAR_REPLACE, 2, u"A", Flag::CLEARED},
    });
}

TEST(UTF8, SourceLimitOfZeroOrBelowIsNone)
{
    for (int const limit : {0, -1, -2, -1000, INT_MIN})
        expectDecodedRows({{"no limit", "AB\xC3\xA9", 8, ILLCHAR_REPLACE, limit, {'A', 'B', 0xE9}, Flag::CLEARED}});
}

TEST(UTF8, DecodingEndsWithTheCapacity)
{
    expectDecodedRows({
        {"capacity of the text", "AB", 2, ILLCHAR_REPLACE, -1, u"AB", Flag::CLEARED},
        {"less", "ABC", 2, ILLCHAR_REPLACE, -1, u"AB", Flag::CLEARED},
        {"no space", "ABC", 0, ILLCHAR_REPLACE, -1, {}, Flag::CLEARED},
        {"empty text", "", 8, ILLCHAR_REPLACE, -1, {}, Flag::CLEARED},
    });
}

TEST(UTF8, CountsSequencesNotUnits)
{
    EXPECT_EQ(numUnits("\xF0\x9F\x98\x80"), 1u);
    EXPECT_EQ(numUnits("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), 4u);
    EXPECT_EQ(numUnits(""), 0u);
    EXPECT_EQ(numUnits("\xFF\xBF\xBF\xBF"), 1u);
}

TEST(UTF8, CountingEndsAtAStrayByte)
{
    EXPECT_EQ(numUnits("AB\x80"
                       "CD"),
              2u);
    EXPECT_EQ(numUnits("\x80"), 0u);
}

TEST(UTF8, CountingEndsAtASequenceLongerThanWhatIsLeft)
{
    EXPECT_EQ(numUnits("A\xE2\x82"), 1u);
    EXPECT_EQ(numUnits("A\xE2\x82\xAC", 3), 1u);
    EXPECT_EQ(numUnits("A\xE2\x82\xAC", 4), 2u);
    EXPECT_EQ(numUnits("A\xF0\x9F\x98"), 1u);
}

TEST(UTF8, CountingDoesNotLookAtContinuationBytes)
{
    EXPECT_EQ(numUnits("\xC3"
                       "AB"),
              2u);
    EXPECT_EQ(numUnits("\xE2"
                       "ABC"),
              2u);
    EXPECT_EQ(numUnits("\xE2\0A\0B"s, 5), 1u) << "a zero byte within a sequence that the count covers";
    EXPECT_EQ(numUnits("\xE2\0AB"s, 4), 1u) << "nothing after it counts";
    EXPECT_EQ(numUnits("x\xF0\x9F\0ABCD"s, 8), 2u);
}

TEST(UTF8, CountingEndsAtZeroAndAtTheCount)
{
    EXPECT_EQ(numUnits("ABC", 2), 2u);
    EXPECT_EQ(numUnits("AB\0C"s, 4), 2u);
    EXPECT_EQ(numUnits("ABC", 0), 0u);
}

TEST(UTF8, EncodesEachLength)
{
    expectEncodedRows({
        {"one byte", {1, 0x7F}, 8, ILLCHAR_REPLACE, "\x01\x7F", Flag::CLEARED},
        {"two bytes", {0x80, 0x7FF}, 8, ILLCHAR_REPLACE, "\xC2\x80\xDF\xBF", Flag::CLEARED},
        {"euro sign", {0x20AC}, 8, ILLCHAR_REPLACE, "\xE2\x82\xAC", Flag::CLEARED},
        {"three bytes", {0x800, 0xFFFF}, 8, ILLCHAR_REPLACE, "\xE0\xA0\x80\xEF\xBF\xBF", Flag::CLEARED},
        {"a pair", {0xD83D, 0xDE00}, 8, ILLCHAR_REPLACE, "\xF0\x9F\x98\x80", Flag::CLEARED},
        {"lowest and highest pair",
         {0xD800, 0xDC00, 0xDBFF, 0xDFFF},
         8,
         ILLCHAR_REPLACE,
         "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
         Flag::CLEARED},
    });
}

TEST(UTF8, LoneHighSurrogateIsReplacedAndWhatFollowsIsKept)
{
    expectEncodedRows({
        {"before a letter", {0xD800, 'A'}, 8, ILLCHAR_REPLACE, "?A", Flag::SET},
        {"an operation without a name", {0xD800, 'A'}, 8, UNNAMED_OPERATION, "?A", Flag::SET},
        {"before a pair", {0xD800, 0xD83D, 0xDE00}, 8, ILLCHAR_REPLACE, "?\xF0\x9F\x98\x80", Flag::SET},
        {"before another", {0xD800, 0xDBFF, 'A'}, 8, ILLCHAR_REPLACE, "??A", Flag::SET},
        {"at the end", {'A', 0xD800}, 8, ILLCHAR_REPLACE, "A?", Flag::SET},
        {"space for the substitute only", {0xD800, 'A'}, 1, ILLCHAR_REPLACE, "?", Flag::SET},
    });
}

TEST(UTF8, EscapeOfALoneHighSurrogateDropsTheUnitAfterIt)
{
    expectEncodedRows({
        {"a letter is lost", {0xD800, 'A'}, 8, ILLCHAR_ESCAPE, "U+D800", Flag::SET},
        {"one letter is lost", {0xDBFF, 'A', 'B'}, 8, ILLCHAR_ESCAPE, "U+DBFFB", Flag::SET},
        {"half a pair is lost", {0xD800, 0xD83D, 0xDE00}, 16, ILLCHAR_ESCAPE, "U+D800\xED\xB8\x80", Flag::SET},
        {"digits are upper case", {0xDABC, 'A'}, 8, ILLCHAR_ESCAPE, "U+DABC", Flag::SET},
    });
}

TEST(UTF8, EscapeAtTheEndIsWrittenAndNothingAfterTheTerminatorIsRead)
{
    expectEncodedRows({
        {"alone", {0xD800}, 8, ILLCHAR_ESCAPE, "U+D800", Flag::SET},
        {"after a letter", {'A', 0xDBFF}, 8, ILLCHAR_ESCAPE, "AU+DBFF", Flag::SET},
    });
    // What lies after the closing 0 is text of somebody else.
    unsigned short const units[] = {0xD800, 0, 'B', 'C', 0};
    char bytes[16] = {};
    EXPECT_EQ(g_oConverterUTF8.fromUTF16(bytes, units, 12, ILLCHAR_ESCAPE, nullptr), 6u);
    EXPECT_STREQ(bytes, "U+D800");
}

TEST(UTF8, EscapeTakesFiveBytesFromTheCapacityButWritesSix)
{
    expectEncodedRows({
        {"six bytes of capacity leave one", {0xD800, 'A', 'B', 'C'}, 6, ILLCHAR_ESCAPE, "U+D800B", Flag::SET},
        {"eleven take two escapes", {0xD800, 'A', 0xD801, 'A', 'B'}, 11, ILLCHAR_ESCAPE, "U+D800U+D801B", Flag::SET},
        {"ten take one", {0xD800, 'A', 0xD801, 'A', 'B'}, 10, ILLCHAR_ESCAPE, "U+D800", Flag::SET},
        {"three of them write two bytes more than the capacity",
         {0xD800, 'A', 0xD801, 'A', 0xD802, 'A'},
         16,
         ILLCHAR_ESCAPE,
         "U+D800U+D801U+D802",
         Flag::SET},
    });
}

TEST(UTF8, EscapeThatDoesNotFitEndsTheConversion)
{
    expectEncodedRows({
        {"five bytes of capacity", {0xD800, 'A'}, 5, ILLCHAR_ESCAPE, "", Flag::SET},
        {"one byte of capacity", {0xD800, 'A'}, 1, ILLCHAR_ESCAPE, "", Flag::SET},
        {"no space: not even looked at", {0xD800, 'A'}, 0, ILLCHAR_ESCAPE, "", Flag::CLEARED},
    });
}

TEST(UTF8, StopEndsBeforeALoneHighSurrogate)
{
    expectEncodedRows({
        {"at once", {0xD800, 'A'}, 8, ILLCHAR_STOP, "", Flag::SET},
        {"after text", {'A', 0xE9, 0xD800, 'A'}, 8, ILLCHAR_STOP, "A\xC3\xA9", Flag::SET},
        {"at the end", {'A', 0xD800}, 8, ILLCHAR_STOP, "A", Flag::SET},
    });
}

TEST(UTF8, LoneLowSurrogateTakesThreeBytesWithoutComplaint)
{
    for (ILLCHAR_OPTYPE const op : OPERATIONS)
        expectEncodedRows({
            {"alone", {0xDC00}, 8, op, "\xED\xB0\x80", Flag::CLEARED},
            {"before a high one", {0xDFFF, 0xD800, 0xDC00}, 8, op, "\xED\xBF\xBF\xF0\x90\x80\x80", Flag::CLEARED},
        });
}

TEST(UTF8, CharacterThatDoesNotFitEndsTheConversionBeforeIt)
{
    expectEncodedRows({
        {"two bytes into one", {0xE9}, 1, ILLCHAR_REPLACE, "", Flag::CLEARED},
        {"two bytes into two", {0xE9}, 2, ILLCHAR_REPLACE, "\xC3\xA9", Flag::CLEARED},
        {"a shorter one after it is not taken", {0xE9, 'A'}, 1, ILLCHAR_REPLACE, "", Flag::CLEARED},
        {"three bytes into two", {'A', 0x20AC}, 3, ILLCHAR_REPLACE, "A", Flag::CLEARED},
        {"four bytes into three", {'A', 0xD83D, 0xDE00, 'B'}, 4, ILLCHAR_REPLACE, "A", Flag::CLEARED},
        {"four bytes into four", {0xD83D, 0xDE00, 'B'}, 4, ILLCHAR_REPLACE, "\xF0\x9F\x98\x80", Flag::CLEARED},
    });
}

TEST(UTF8, EncodingOfAnEmptyTextWritesTheTerminator)
{
    expectEncodedRows({
        {"empty", {}, 8, ILLCHAR_REPLACE, "", Flag::CLEARED},
        {"empty, no space", {}, 0, ILLCHAR_REPLACE, "", Flag::CLEARED},
        {"no space", u"A", 0, ILLCHAR_REPLACE, "", Flag::CLEARED},
    });
}

TEST(UTF8, CountsTheBytesOfEachLength)
{
    EXPECT_EQ(numBytes({0x7F}), 1u);
    EXPECT_EQ(numBytes({0x80}), 2u);
    EXPECT_EQ(numBytes({0x7FF}), 2u);
    EXPECT_EQ(numBytes({0x800}), 3u);
    EXPECT_EQ(numBytes({0xFFFF}), 3u);
    EXPECT_EQ(numBytes({0xDC00}), 3u) << "a lone low surrogate";
    EXPECT_EQ(numBytes({0xD83D, 0xDE00}), 4u);
    EXPECT_EQ(numBytes({0xD800, 'A'}), 2u) << "the substitute and the letter";
    EXPECT_EQ(numBytes({0xD800, 0xD83D, 0xDE00}), 5u);
    EXPECT_EQ(numBytes({}), 0u);
}

TEST(UTF8, CountingAtAHighSurrogateThatEndsTheTextAddsNothing)
{
    EXPECT_EQ(numBytes({'A', 0xD800}), 1u);
    EXPECT_EQ(numBytes({0xD800}), 0u);
    EXPECT_EQ(numBytes({0xD800, 0xD800}), 1u);
    EXPECT_EQ(numBytes({'A', 0xD83D, 0xDE00}, 2), 1u) << "the count ends inside the pair";
    EXPECT_EQ(numBytes({'A', 0xD83D, 0, 'B'}, 4), 1u);
}

TEST(UTF8, CountingOfBytesEndsAtZeroAndAtTheCount)
{
    EXPECT_EQ(numBytes({'A', 0, 0xE9}, 3), 1u);
    EXPECT_EQ(numBytes({'A', 0xE9, 'B'}, 2), 3u);
    EXPECT_EQ(numBytes({'A'}, 0), 0u);
}
