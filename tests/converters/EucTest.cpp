// kx7text tests - EUC-KR, EUC-CN and EUC-JP: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/EucJpModel.h"
#include "tests/model/EucKrCnModel.h"
#include "tests/support/ByteConverterRows.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

// What these tests use of each mapping.
EucKrCnModel const modelKr({{0x3021, 0xAC00}});
EucKrCnModel const modelCn({{0x3021, 0x554A}});
CodePairs jis0201()
{
    CodePairs pairs;
    for (unsigned int c = 1; c < 0x7F; ++c)
        pairs.emplace_back(c, c == 0x5C ? 0xA5 : c == 0x7E ? 0x203E : c);
    for (unsigned int c = 0xA1; c <= 0xDF; ++c)
        pairs.emplace_back(c, c - 0xA1 + 0xFF61);
    return pairs;
}
EucJpModel const modelJp({{0x2140, 0x5C}, {0x2422, 0x3042}, {0x3021, 0x4E9C}}, jis0201(), {});

Tested const eucKr{g_oConverterEUCKR, modelKr};
Tested const eucCn{g_oConverterEUCCN, modelCn};
Tested const eucJp{g_oConverterEUCJP, modelJp};

Flag const SET = Flag::SET;
Flag const CLEARED = Flag::CLEARED;

}  // namespace

TEST(EUC, Sizes)
{
    eucKr.hasSizes(1, 2, 1);
    eucCn.hasSizes(1, 2, 1);
    eucJp.hasSizes(1, 3, 1);
}

TEST(EUCKR, PairsBothWays)
{
    eucKr.decodes({{"syllable", "\xB0\xA1z", 8, ILLCHAR_STOP, -1, u"\uAC00z", CLEARED},
                   {"capacity", "\xB0\xA1\xB0\xA1", 1, ILLCHAR_STOP, -1, u"\uAC00", CLEARED}});
    eucKr.encodes({{"syllable", u"\uAC00z", 3, ILLCHAR_STOP, "\xB0\xA1z", CLEARED},
                   {"half of it", u"z\uAC00", 2, ILLCHAR_STOP, "z", CLEARED}});
    eucCn.decodes({{"character", "\xB0\xA1z", 8, ILLCHAR_STOP, -1, u"\u554Az", CLEARED}});
    eucCn.encodes({{"character", u"\u554Az", 8, ILLCHAR_STOP, "\xB0\xA1z", CLEARED}});
}

TEST(EUCKR, BytesUpTo7EAreThemselvesAnd7FIsIllegal)
{
    for (Tested const& tested : {eucKr, eucCn})
        tested.decodes({
            {"7E", "\x01~", 8, ILLCHAR_STOP, -1, {1, '~'}, CLEARED},
            {"7F", "\x7Fz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
            {"80, A0 and FF", "\x80\xA0\xFFz", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD\uFFFDz", SET},
            {"stopped", "z\x7F", 8, ILLCHAR_STOP, -1, u"z", SET},
        });
}

TEST(EUCKR, U007FBecomesAQuestionMark)
{
    for (Tested const& tested : {eucKr, eucCn}) {
        tested.encodes({
            {"replaced", {0x7E, 0x7F, u'z'}, 8, ILLCHAR_REPLACE, "~?z", SET},
            {"escaped", {0x7F}, 8, ILLCHAR_ESCAPE, "U+007F", SET},
            {"stopped", {u'z', 0x7F}, 8, ILLCHAR_STOP, "z", SET},
        });
        tested.countsBytes({0x7E, 0x7F}, UNTIL_TERMINATOR, 2);
    }
}

TEST(EUCKR, BadTrailByteConsumesTheLeadOnly)
{
    for (Tested const& tested : {eucKr, eucCn})
        tested.decodes({
            {"letter", "\xB0z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
            {"A0", "\xB0\xA0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD", SET},
            {"end", "\xB0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
            {"stopped", "\xB0z", 8, ILLCHAR_STOP, -1, {}, SET},
        });
}

TEST(EUCKR, UnmappedPairConsumesBothBytes)
{
    eucKr.decodes({{"user-defined row", "\xC9\xA1z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
                   {"stopped", "z\xC9\xA1z", 8, ILLCHAR_STOP, -1, u"z", SET}});
    eucCn.decodes({{"empty row", "\xAA\xA1z", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET}});
}

TEST(EUCKR, LimitIsLeftAloneAfterABadTrailByteAndAppliedAfterEverythingElse)
{
    for (Tested const& tested : {eucKr, eucCn}) {
        tested.decodes({
            {"bad trail", "\xB0zzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFDz", SET},
            {"two leads with bad trails", "\xB0\xFFzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD\uFFFD", SET},
            {"illegal byte", "\x7Fzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
            {"illegal byte FF", "\xFFzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
            {"letter", "zz", 8, ILLCHAR_REPLACE, 1, u"z", CLEARED},
        });
    }
    eucKr.decodes({{"unmapped pair", "\xC9\xA1zz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
                   {"pair", "\xB0\xA1zz", 8, ILLCHAR_REPLACE, 1, u"\uAC00", CLEARED}});
}

TEST(EUCKR, CountsWithoutLookingAtTheMapping)
{
    for (Tested const& tested : {eucKr, eucCn}) {
        tested.countsUnits("\xB0\xA1z", UNTIL_TERMINATOR, 2);
        tested.countsUnits("\xC9\xA1\xFE\xFE", UNTIL_TERMINATOR, 2);
        tested.countsUnits("\xB0\xA1", 1, 1);
        tested.countsUnits("\xB0z", UNTIL_TERMINATOR, 2);
        tested.countsUnits("\xB0\0\xA1"s, 3, 1);
    }
    eucKr.countsBytes(u"\uAC00z\u0E01", UNTIL_TERMINATOR, 4);
}

TEST(EUCKR, HalvesOfAPairAreUnmapped)
{
    for (Tested const& tested : {eucKr, eucCn, eucJp})
        tested.encodes({
            {"replaced", u"\U0001F600", 8, ILLCHAR_REPLACE, "??", SET},
            {"escaped", u"\U0001F600", 12, ILLCHAR_ESCAPE, "U+D83DU+DE00", SET},
            {"five bytes of capacity", u"\U0001F600", 5, ILLCHAR_ESCAPE, {}, SET},
            {"at the end", {0xD800}, 8, ILLCHAR_REPLACE, "?", SET},
        });
}

TEST(EUCJP, KatakanaAfterSingleShift2)
{
    eucJp.decodes({
        {"katakana", "\x8E\xB1", 8, ILLCHAR_STOP, -1, u"\uFF71", CLEARED},
        {"first and last", "\x8E\xA1\x8E\xDF", 8, ILLCHAR_STOP, -1, u"\uFF61\uFF9F", CLEARED},
        {"letter", "\x8E\x41", 8, ILLCHAR_REPLACE, -1, u"\uFFFDA", SET},
        {"A0 is a lead byte without a mapping", "\x8E\xA0z", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFDz", SET},
        {"E0", "\x8E\xE0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD", SET},
        {"end", "\x8E", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
    });
    eucJp.encodes({{"katakana", u"\uFF71", 8, ILLCHAR_STOP, "\x8E\xB1", CLEARED},
                   {"half of it", u"z\uFF71", 2, ILLCHAR_STOP, "z", CLEARED}});
}

TEST(EUCJP, SingleShift3IsUnmappedAndWhatFollowsIsReadOnItsOwn)
{
    eucJp.decodes({
        {"a sequence of three", "\x8F\xB0\xA1z", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\u4E9Cz", SET},
        {"stopped", "z\x8F\xB0\xA1", 8, ILLCHAR_STOP, -1, u"z", SET},
        {"letters", "\x8Fzz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDzz", SET},
        {"cut", "\x8F\xB0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD", SET},
    });
}

TEST(EUCJP, NothingIsReadAfterAZeroByteAfterSingleShift3)
{
    // The row ends at an unreadable page after its terminator.
    eucJp.decodes({{"end", "\x8F", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
                   {"one byte", "\x8Fz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET}});
}

TEST(EUCJP, SecondByteIsNotChecked)
{
    eucJp.decodes({
        {"as it should be", "\xB0\xA1", 8, ILLCHAR_STOP, -1, u"\u4E9C", CLEARED},
        {"without its high bit", "\xB0\x21", 8, ILLCHAR_STOP, -1, u"\u4E9C", CLEARED},
        {"a pair of JIS X 0201", "\x80\xDC", 8, ILLCHAR_STOP, -1, {0xA5}, CLEARED},
        {"the same without its high bit", "\x80\x5C", 8, ILLCHAR_STOP, -1, {0xA5}, CLEARED},
        {"7F is no lead of a mapped pair", "\x7F\x21", 8, ILLCHAR_REPLACE, -1, u"\uFFFD!", SET},
    });
}

TEST(EUCJP, LineFeedHasASecondForm)
{
    eucJp.decodes({{"line feed", "\x80\x8A", 8, ILLCHAR_STOP, -1, u"\n", CLEARED},
                   {"letter", "\x80\xC1", 8, ILLCHAR_STOP, -1, u"A", CLEARED}});
    eucJp.encodes({{"one byte", u"\nA", 8, ILLCHAR_STOP, "\nA", CLEARED}});
}

TEST(EUCJP, YenSignAndOverlineTravelAsPairs)
{
    eucJp.encodes({{"both", {0xA5, 0x203E}, 8, ILLCHAR_STOP, "\x80\xDC\x80\xFE", CLEARED},
                   {"what they stand for", u"\\~", 8, ILLCHAR_STOP, "\\~", CLEARED}});
    eucJp.decodes({{"both", "\x80\xDC\x80\xFE", 8, ILLCHAR_STOP, -1, {0xA5, 0x203E}, CLEARED},
                   {"plain", "\\~", 8, ILLCHAR_STOP, -1, u"\\~", CLEARED}});
    eucJp.countsBytes({0xA5, 0x203E, u'\\'}, UNTIL_TERMINATOR, 5);
}

TEST(EUCJP, A1C0IsAReverseSolidusThatGoesBackAsOneByte)
{
    eucJp.decodes({{"pair", "\xA1\xC0", 8, ILLCHAR_STOP, -1, u"\\", CLEARED}});
    eucJp.encodes({{"byte", u"\\", 8, ILLCHAR_STOP, "\\", CLEARED}});
}

TEST(EUCJP, WhatIsUnmappedIsIllegalForItsFirstByteAlone)
{
    eucJp.decodes({
        {"unmapped pair", "\xA9\xA1", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\uFFFD", SET},
        {"then a pair", "\xA9\xB0\xA1", 8, ILLCHAR_REPLACE, -1, u"\uFFFD\u4E9C", SET},
        {"7F before a letter", "\x7Fz", 8, ILLCHAR_REPLACE, -1, u"\uFFFDz", SET},
        {"lead at the end", "\xB0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET},
        {"lead at the end, stopped", "\xB0", 8, ILLCHAR_STOP, -1, {}, SET},
    });
}

TEST(EUCJP, LimitIsAlwaysApplied)
{
    eucJp.decodes({
        {"unmapped lead", "\xA9zz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"shift 2", "\x8Ezz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"shift 3", "\x8Fzz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"unmapped pair", "\xA9\xA1zz", 8, ILLCHAR_REPLACE, 1, u"\uFFFD", SET},
        {"pair", "\xB0\xA1zz", 8, ILLCHAR_REPLACE, 1, u"\u4E9C", CLEARED},
        {"none", "\xB0\xA1zz", 8, ILLCHAR_REPLACE, 0, u"\u4E9Czz", CLEARED},
    });
}

TEST(EUCJP, CountEndsAtACharacterThatTheCountCutsOff)
{
    eucJp.countsUnits("\xB0", UNTIL_TERMINATOR, 0);
    eucJp.countsUnits("\xB0", 1, 0);
    eucJp.decodes({{"but it is converted", "\xB0", 8, ILLCHAR_REPLACE, -1, u"\uFFFD", SET}});
    eucJp.countsUnits("z\x8E", UNTIL_TERMINATOR, 1);
    eucJp.countsUnits("z\x8F\xB0", UNTIL_TERMINATOR, 1);
    eucJp.countsUnits("z\x8F\xB0\xA1", UNTIL_TERMINATOR, 3);
    eucJp.countsUnits("\xB0\xA1\x8E\xB1z", UNTIL_TERMINATOR, 3);
    eucJp.countsUnits("\x8Ez", UNTIL_TERMINATOR, 2);
    eucJp.countsUnits("\xA9\xA9\xA9", UNTIL_TERMINATOR, 2);
    eucJp.countsUnits("\xB0\xA1z", 2, 1);
    eucJp.countsUnits("z\0z"s, 3, 1);
}

TEST(EUCJP, Encodes)
{
    eucJp.encodes({
        {"pair", u"\u3042z", 3, ILLCHAR_STOP, "\xA4\xA2z", CLEARED},
        {"U+007F is unmapped", {0x7F, u'z'}, 8, ILLCHAR_REPLACE, "?z", SET},
        {"unmapped", u"\u0E01z", 8, ILLCHAR_ESCAPE, "U+0E01z", SET},
        {"stopped", u"z\u0E01z", 8, ILLCHAR_STOP, "z", SET},
    });
    eucJp.countsBytes(u"\u3042z\u0E01\uFF71", UNTIL_TERMINATOR, 6);
    eucJp.countsBytes(u"\u3042z\u0E01\uFF71", 2, 3);
}
