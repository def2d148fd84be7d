// kx7text tests - single-byte character sets: what each rule and each oddity gives.
#include <gtest/gtest.h>

#include <climits>

#include "tests/support/Rows.h"
#include "tests/support/SampleSingleByte.h"
#include "tests/support/SingleByteSets.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

/** What these tests use of code page 1252. */
BytePairs const westernPairs = [] {
    BytePairs pairs;
    for (unsigned char byte = 0x01; byte < 0x80; ++byte)
        pairs.emplace_back(byte, byte);
    pairs.emplace_back(0x80, char16_t{0x20AC});
    pairs.emplace_back(0x81, char16_t{0x81});
    pairs.emplace_back(0xE9, char16_t{0xE9});
    return pairs;
}();

/** What these tests use of code page 874: no 0xDB. */
BytePairs const thaiPairs = [] {
    BytePairs pairs;
    for (unsigned char byte = 0x20; byte < 0x7F; ++byte)
        pairs.emplace_back(byte, byte);
    pairs.emplace_back(0xA1, char16_t{0x0E01});
    return pairs;
}();

SingleByteModel const western(westernPairs);
SingleByteModel const thai(thaiPairs);

void expectDecodedRows(KX7CharSetConverter& converter, Model const& model, std::initializer_list<DecodeRow> rows)
{
    Probe probe(converter, model);
    for (DecodeRow const& row : rows)
        expectDecoded(probe, row);
}

void expectEncodedRows(KX7CharSetConverter& converter, Model const& model, std::initializer_list<EncodeRow> rows)
{
    Probe probe(converter, model);
    for (EncodeRow const& row : rows)
        expectEncoded(probe, row);
}

/** A converter of the sample set, its list and its model. */
struct Sample {
    BytePairs pairs = samplePairs();
    std::vector<unsigned short> list = listOf(pairs);
    KX7CharSetConverterSBCS converter{list.data(), KX7CS_WCP1252};
    SingleByteModel model{pairs};
    Probe probe{converter, model};
};

}  // namespace

TEST(SingleByte, SizesAreAllOne)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS) {
        EXPECT_EQ(set.converter.getMinUnitSize(), 1u) << set.name;
        EXPECT_EQ(set.converter.getMaxUnitSize(), 1u) << set.name;
        EXPECT_EQ(set.converter.getNullCharSize(), 1u) << set.name;
    }
}

TEST(SingleByte, CodePage1252HasTheEuroSignAndC1Controls)
{
    expectDecodedRows(g_oConverterWCP1252, western,
                      {
                          {"euro sign", "\x80", 8, ILLCHAR_STOP, -1, {0x20AC}, Flag::CLEARED},
                          {"0x81 is a control", "\x81", 8, ILLCHAR_STOP, -1, {0x81}, Flag::CLEARED},
                          {"text", "caf\xE9", 8, ILLCHAR_STOP, -1, {'c', 'a', 'f', 0xE9}, Flag::CLEARED},
                      });
    expectEncodedRows(g_oConverterWCP1252, western,
                      {
                          {"euro sign", {0x20AC}, 8, ILLCHAR_STOP, "\x80", Flag::LEFT},
                          {"0x81 is a control", {0x81}, 8, ILLCHAR_STOP, "\x81", Flag::LEFT},
                      });
}

TEST(SingleByte, UndefinedByteBecomesAReplacementOrStops)
{
    expectDecodedRows(g_oConverterWCP874, thai,
                      {
                          {"replaced",
                           "\xA1\xDB"
                           "A",
                           8,
                           ILLCHAR_REPLACE,
                           -1,
                           {0x0E01, 0xFFFD, 'A'},
                           Flag::SET},
                          {"escape replaces",
                           "\xDB"
                           "A",
                           8,
                           ILLCHAR_ESCAPE,
                           -1,
                           {0xFFFD, 'A'},
                           Flag::SET},
                          {"unnamed replaces",
                           "\xDB"
                           "A",
                           8,
                           UNNAMED_OPERATION,
                           -1,
                           {0xFFFD, 'A'},
                           Flag::SET},
                          {"stop ends before it",
                           "\xA1\xDB"
                           "A",
                           8,
                           ILLCHAR_STOP,
                           -1,
                           {0x0E01},
                           Flag::SET},
                          {"stop at once", "\xDB", 8, ILLCHAR_STOP, -1, {}, Flag::SET},
                          {"after the capacity", "A\xDB", 1, ILLCHAR_REPLACE, -1, u"A", Flag::CLEARED},
                          {"after the limit", "A\xDB", 8, ILLCHAR_REPLACE, 1, u"A", Flag::CLEARED},
                          {"counts for the limit",
                           "\xDB"
                           "AB",
                           8,
                           ILLCHAR_REPLACE,
                           2,
                           {0xFFFD, 'A'},
                           Flag::SET},
                          {"no space", "\xDB", 0, ILLCHAR_REPLACE, -1, {}, Flag::CLEARED},
                      });
}

TEST(SingleByte, UnmappableUnitIsReplacedEscapedOrStops)
{
    expectEncodedRows(g_oConverterWCP1252, western,
                      {
                          {"replaced", {'A', 0x4E00, 'B'}, 8, ILLCHAR_REPLACE, "A?B", Flag::LEFT},
                          {"unnamed replaces", {0x4E00, 'B'}, 8, UNNAMED_OPERATION, "?B", Flag::LEFT},
                          {"escaped", {0x4E00}, 8, ILLCHAR_ESCAPE, "U+4E00", Flag::LEFT},
                          {"escaped, text after", {0x4E00, 'A'}, 8, ILLCHAR_ESCAPE, "U+4E00A", Flag::LEFT},
                          {"four upper-case digits", {0x0ABC}, 8, ILLCHAR_ESCAPE, "U+0ABC", Flag::LEFT},
                          {"stop ends before it", {'A', 0x4E00, 'B'}, 8, ILLCHAR_STOP, "A", Flag::LEFT},
                          {"stop at once", {0x4E00}, 8, ILLCHAR_STOP, "", Flag::LEFT},
                      });
}

TEST(SingleByte, EncodingLeavesTheFlagAsItWas)
{
    for (bool const before : {false, true})
        for (ILLCHAR_OPTYPE const op : OPERATIONS) {
            char bytes[16];
            bool flag = before;
            unsigned short const lost[] = {'A', 0x4E00, 0};
            unsigned short const kept[] = {'A', 0};
            g_oConverterWCP1252.fromUTF16(bytes, lost, 15, op, &flag);
            EXPECT_EQ(flag, before) << "something is lost, operation " << op;
            g_oConverterWCP1252.fromUTF16(bytes, kept, 15, op, &flag);
            EXPECT_EQ(flag, before) << "nothing is lost, operation " << op;
        }
}

TEST(SingleByte, EscapeTakesSixBytesOfCapacityAndNeverIsCut)
{
    expectEncodedRows(g_oConverterWCP1252, western,
                      {
                          {"five bytes of capacity", {0x4E00}, 5, ILLCHAR_ESCAPE, "", Flag::LEFT},
                          {"a letter after it is not taken", {0x4E00, 'A'}, 5, ILLCHAR_ESCAPE, "", Flag::LEFT},
                          {"six bytes of capacity", {0x4E00, 'A'}, 6, ILLCHAR_ESCAPE, "U+4E00", Flag::LEFT},
                          {"eleven hold one", {0x4E00, 0x4E01}, 11, ILLCHAR_ESCAPE, "U+4E00", Flag::LEFT},
                          {"twelve hold two", {0x4E00, 0x4E01}, 12, ILLCHAR_ESCAPE, "U+4E00U+4E01", Flag::LEFT},
                      });
}

TEST(SingleByte, SupplementaryCharacterIsTwoSubstitutes)
{
    expectEncodedRows(g_oConverterWCP1252, western,
                      {
                          {"replaced", {0xD83D, 0xDE00}, 16, ILLCHAR_REPLACE, "??", Flag::LEFT},
                          {"escaped", {0xD83D, 0xDE00}, 16, ILLCHAR_ESCAPE, "U+D83DU+DE00", Flag::LEFT},
                          {"cut between its halves", {0xD83D, 0xDE00}, 1, ILLCHAR_REPLACE, "?", Flag::LEFT},
                      });
}

TEST(SingleByte, SourceLimitCountsBytesAndZeroConvertsNothing)
{
    expectDecodedRows(g_oConverterWCP1252, western,
                      {
                          {"three", "ABCDE", 8, ILLCHAR_REPLACE, 3, u"ABC", Flag::CLEARED},
                          {"zero", "ABCDE", 8, ILLCHAR_REPLACE, 0, {}, Flag::CLEARED},
                          {"below zero: none", "ABCDE", 8, ILLCHAR_REPLACE, -1, u"ABCDE", Flag::CLEARED},
                          {"far below", "ABCDE", 8, ILLCHAR_REPLACE, INT_MIN, u"ABCDE", Flag::CLEARED},
                          {"after the text", "ABC", 8, ILLCHAR_REPLACE, 7, u"ABC", Flag::CLEARED},
                      });
}

TEST(SingleByte, CountsBytesBeforeTheFirstZero)
{
    Sample sample;
    for (std::string const& bytes : {""s, "A"s, "ABC"s, "A\x82\xFF"s, "AB\0CD"s}) {
        sample.probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
        for (unsigned int count = 0; count < 9; ++count)
            sample.probe.compareNumUnits(bytes, count);
    }
    EXPECT_EQ(g_oConverterWCP874.getNumUnits("A\xDB"
                                             "B",
                                             UNTIL_TERMINATOR),
              3u)
        << "undefined bytes count";
    EXPECT_EQ(g_oConverterWCP874.getNumUnits("A\xDB"
                                             "B",
                                             2),
              2u);
    EXPECT_EQ(g_oConverterWCP874.getNumUnits("A\0B", 3), 1u);
    EXPECT_EQ(g_oConverterWCP874.getNumUnits("A", 0), 0u);
}

TEST(SingleByte, CountsOneByteForEveryUnit)
{
    Sample sample;
    for (std::u16string const& units : {u""s, u"A"s, u"A\u4E00\U0001F600B"s, u"AB\0CD"s}) {
        sample.probe.compareNumBytes(units, UNTIL_TERMINATOR);
        for (unsigned int count = 0; count < 9; ++count)
            sample.probe.compareNumBytes(units, count);
    }
    unsigned short const units[] = {'A', 0x4E00, 0xD83D, 0xDE00, 0, 'B'};
    EXPECT_EQ(g_oConverterWCP1252.getNumBytes(units, UNTIL_TERMINATOR), 4u) << "unmappable units count";
    EXPECT_EQ(g_oConverterWCP1252.getNumBytes(units, 3), 3u);
    EXPECT_EQ(g_oConverterWCP1252.getNumBytes(units, 6), 4u);
    EXPECT_EQ(g_oConverterWCP1252.getNumBytes(units, 0), 0u);
}

TEST(SingleByte, EveryByteAndUnitOfAMappingList)
{
    Sample sample;
    compareEveryByteAndUnit(sample.probe);
}

TEST(SingleByte, EveryCapacityAndLimit)
{
    Sample sample;
    std::vector<std::string> const fragments = sampleByteFragments();
    for (std::string const& a : fragments)
        for (std::string const& b : fragments)
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= a.size() + b.size() + 9; ++capacity)
                    for (int limit = -1; limit <= static_cast<int>(a.size() + b.size() + 9); ++limit)
                        sample.probe.compareDecode({a + b + "C", capacity, op, limit});
}

TEST(SingleByte, EveryCapacityForEncoding)
{
    Sample sample;
    std::vector<std::u16string> const fragments = sampleUnitFragments();
    for (std::u16string const& a : fragments)
        for (std::u16string const& b : fragments)
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= 6 * (a.size() + b.size() + 1) + 8; ++capacity)
                    sample.probe.compareEncode({a + b + u"C", capacity, op});
}

TEST(SingleByte, ConverterWithoutAListMapsNothing)
{
    KX7CharSetConverterSBCS converter("nothing", KX7CS_WCP1252);
    SingleByteModel const empty({});
    Probe probe(converter, empty);
    for (ILLCHAR_OPTYPE const op : OPERATIONS) {
        probe.compareDecode({"AB\xFF", 8, op, -1});
        probe.compareEncode({u"A\u20AC", 16, op});
    }
    EXPECT_EQ(converter.getNumUnits("ABC", UNTIL_TERMINATOR), 3u);
    converter.load();
    probe.compareDecode({"AB\xFF", 8, ILLCHAR_REPLACE, -1});
}

TEST(SingleByte, EmptyListMapsNothing)
{
    unsigned short const list[] = {0, 0};
    KX7CharSetConverterSBCS converter(list, KX7CS_WCP1252);
    SingleByteModel const empty({});
    Probe probe(converter, empty);
    probe.compareDecode({"AB\xFF", 8, ILLCHAR_REPLACE, -1});
    probe.compareEncode({u"A\u20AC", 16, ILLCHAR_REPLACE});
}

TEST(SingleByte, LoadingTwiceChangesNothing)
{
    Sample sample;
    sample.converter.load();
    sample.probe.compareDecode({"A\x80\x82", 8, ILLCHAR_REPLACE, -1});
    sample.converter.load();
    sample.probe.compareDecode({"A\x80\x82", 8, ILLCHAR_REPLACE, -1});
    sample.probe.compareEncode({u"A\u20AC\u4E00", 8, ILLCHAR_REPLACE});
}

TEST(SingleByte, EitherDirectionLoadsOnFirstUse)
{
    Sample decoding;
    decoding.probe.compareDecode({"A\x80", 8, ILLCHAR_REPLACE, -1});
    Sample encoding;
    encoding.probe.compareEncode({u"A\u20AC", 8, ILLCHAR_REPLACE});
}
