// kx7text tests - engines of the multibyte, UTF-16 and UTF-32 converters: ranges wherever they are split, zeros within
// them, what the strict decoders refuse, what the end of the source means, and bytes given with a count.
#include <gtest/gtest.h>

#include <climits>

#include "tests/converters/RangeProbe.h"
#include "tests/support/ByteOrder.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;
using kx7::Stop;

namespace {

using Units = std::u16string;

/** The set's fragments and one zero. */
std::vector<std::string> byteFragmentsOf(MultibyteSet const& set)
{
    std::vector<std::string> fragments = set.byteFragments;
    fragments.push_back(std::string(set.converter.getNullCharSize(), '\0'));
    return fragments;
}

std::vector<Units> unitFragmentsOf(MultibyteSet const& set)
{
    std::vector<Units> fragments = set.unitFragments;
    fragments.push_back(u"\0"s);
    return fragments;
}

std::string wide16(Units const& units)
{
    return bytesOfValues(units);
}

std::string wide32(std::u32string const& codePoints)
{
    return bytesOfValues(codePoints);
}

/** One text of two fragments or three, the third taking turns. */
template <class Text, class Each>
void forEachText(std::vector<Text> const& fragments, Each each)
{
    size_t turn = 0;
    for (Text const& a : fragments)
        for (Text const& b : fragments) {
            each(a + b);
            each(a + b + fragments[++turn % fragments.size()]);
        }
}

struct DecodeRange {
    char const* what;
    KX7CharSetConverter& converter;
    std::string bytes;
    size_t capacity;
    bool last;
    DecodedRange expected;
};

void expectRanges(std::vector<DecodeRange> const& rows, bool strict)
{
    for (DecodeRange const& row : rows) {
        RangeProbe probe(row.converter, strict);
        EXPECT_EQ(probe.decode(row.bytes, row.capacity, row.last), row.expected) << row.what;
    }
}

}  // namespace

TEST(MultibyteEngines, EveryConverterHasTheOneOfItsClass)
{
    for (MultibyteSet const& set : multibyteSets())
        EXPECT_NE(kx7::engineOf(set.converter), nullptr) << set.name;
    EXPECT_EQ(kx7::engineOf(g_oConverterWCP932), kx7::engineOf(g_oConverterBig5));
    EXPECT_EQ(kx7::engineOf(g_oConverterEUCKR), kx7::engineOf(g_oConverterEUCCN));
    EXPECT_NE(kx7::engineOf(g_oConverterWCP932), kx7::engineOf(g_oConverterSJIS2004));
    EXPECT_NE(kx7::engineOf(g_oConverterUTF16), kx7::engineOf(g_oConverterUTF32));
    class Derived : public KX7CharSetConverterGB18030 {
    public:
        Derived() : KX7CharSetConverterGB18030(oGBKmap, KX7CS_GB18030) {}
    } const derived;
    EXPECT_EQ(kx7::engineOf(derived), nullptr);
}

TEST(MultibyteEngines, TwoRangesDecodeAsOneWhereverTheyAreSplit)
{
    for (MultibyteSet const& set : multibyteSets())
        for (bool const strict : {false, true}) {
            SCOPED_TRACE(set.name);
            RangeProbe probe(set.converter, strict);
            auto const decode = [&](std::string const& range, bool last) { return probe.decode(range, 32, last); };
            forEachText(byteFragmentsOf(set), [&](std::string const& bytes) {
                DecodedRange const whole = decode(bytes, true);
                for (size_t split = 0; split <= bytes.size(); ++split)
                    ASSERT_EQ(inTwoRanges(bytes, split, decode), whole) << hex(bytes) << " split at " << split;
            });
        }
}

TEST(MultibyteEngines, TwoRangesEncodeAsOneWhereverTheyAreSplit)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        RangeProbe probe(set.converter);
        auto const encode = [&](Units const& range, bool last) { return probe.encode(range, 64, last); };
        forEachText(unitFragmentsOf(set), [&](Units const& units) {
            EncodedRange const whole = encode(units, true);
            for (size_t split = 0; split <= units.size(); ++split)
                ASSERT_EQ(inTwoRanges(units, split, encode), whole) << hex(units) << " split at " << split;
        });
    }
}

TEST(MultibyteEngines, FullDestinationEndsBetweenCharactersAndTheRestGoesOn)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        RangeProbe probe(set.converter);
        forEachText(byteFragmentsOf(set), [&](std::string const& bytes) {
            DecodedRange const whole = probe.decode(bytes, 32, true);
            for (size_t capacity = 0; capacity <= whole.text.size(); ++capacity) {
                DecodedRange range = probe.decode(bytes, capacity, true);
                if (range.stop == Stop::DESTINATION_FULL) {
                    ASSERT_GE(range.text.size() + 1, capacity) << "only a pair leaves capacity " << hex(bytes);
                    DecodedRange const rest = probe.decode(bytes.substr(range.consumed), 32, true);
                    range = {range.text + rest.text, range.consumed + rest.consumed, rest.stop, rest.length};
                }
                ASSERT_EQ(range, whole) << hex(bytes) << " capacity " << capacity;
            }
        });
        forEachText(unitFragmentsOf(set), [&](Units const& units) {
            EncodedRange const whole = probe.encode(units, 64, true);
            for (size_t capacity = 0; capacity <= whole.text.size(); ++capacity) {
                EncodedRange range = probe.encode(units, capacity, true);
                if (range.stop == Stop::DESTINATION_FULL) {
                    EncodedRange const rest = probe.encode(units.substr(range.consumed), 64, true);
                    range = {range.text + rest.text, range.consumed + rest.consumed, rest.stop, rest.length};
                }
                ASSERT_EQ(range, whole) << hex(units) << " capacity " << capacity;
            }
        });
    }
}

TEST(MultibyteEngines, RangesWithTheirStopsHandledAreThePublishedConversion)
{
    for (MultibyteSet const& set : multibyteSets()) {
        if (set.isWide)
            continue;
        SCOPED_TRACE(set.name);
        RangeProbe probe(set.converter);
        std::mt19937 random(11);
        for (int i = 0; i < 60; ++i) {
            // The letters see to it that nothing is truncated.
            std::string const bytes = randomText(random, set.byteFragments, random() % 6000) + "CCCC";
            Units units;
            size_t at = 0;
            while (at != bytes.size()) {
                DecodedRange const range = probe.decode(bytes.substr(at), 2 + random() % 5000, true);
                units += range.text;
                at += range.consumed;
                if (range.stop == Stop::ILLEGAL) {
                    units += char16_t{0xFFFD};
                    at += range.length;
                }
            }
            ASSERT_TRUE(sameText(units, set.model->toUTF16({bytes, INT_MAX, ILLCHAR_REPLACE, -1}).units));
        }
        for (int i = 0; i < 60; ++i) {
            Units const units = randomText(random, set.unitFragments, random() % 6000) + u"CCCC";
            std::string bytes;
            size_t at = 0;
            while (at != units.size()) {
                EncodedRange const range = probe.encode(units.substr(at), 4 + random() % 5000, true);
                bytes += range.text;
                at += range.consumed;
                if (range.stop == Stop::UNMAPPABLE) {
                    // Where a high surrogate ends the text quietly, it has no substitute.
                    if (&set.converter == &g_oConverterGB18030 && isHigh(units[at]))
                        break;
                    bytes += '?';
                    at += range.length;
                }
            }
            ASSERT_TRUE(sameText(bytes, set.model->fromUTF16({units, INT_MAX, ILLCHAR_REPLACE}).bytes));
        }
    }
}

TEST(MultibyteEngines, ZeroIsACharacterLikeAnyOther)
{
    for (MultibyteSet const& set : multibyteSets()) {
        RangeProbe probe(set.converter);
        size_t const size = set.converter.getNullCharSize();
        EXPECT_EQ(probe.decode(std::string(3 * size, '\0'), 4),
                  (DecodedRange{u"\0\0\0"s, 3 * size, Stop::SOURCE_USED, 0}))
            << set.name;
        EXPECT_EQ(probe.encode(u"\0\0\0"s, 12), (EncodedRange{std::string(3 * size, '\0'), 3, Stop::SOURCE_USED, 0}))
            << set.name;
    }
    expectRanges(
        {
            {"after a lead byte", g_oConverterWCP932, "A\x82\0\xA0"s, 8, false, {u"A", 1, Stop::ILLEGAL, 1}},
            {"EUC-KR", g_oConverterEUCKR, "A\xB0\0"s, 8, false, {u"A", 1, Stop::ILLEGAL, 1}},
            {"EUC-JP", g_oConverterEUCJP, "A\xB0\0"s, 8, false, {u"A", 1, Stop::ILLEGAL, 1}},
            {"after single shift 2", g_oConverterEUCJP, "\x8E\0"s, 8, false, {u"", 0, Stop::ILLEGAL, 1}},
            {"after single shift 3", g_oConverterEUCJP, "\x8F\0"s, 8, false, {u"", 0, Stop::ILLEGAL, 1}},
            {"third of three", g_oConverterEUCJP, "\x8F\xB0\0"s, 8, false, {u"", 0, Stop::ILLEGAL, 1}},
            {"third of four", g_oConverterGB18030, "\x81\x30\0"s, 8, false, {u"", 0, Stop::ILLEGAL, 1}},
            {"within an escape", g_oConverterUTF16Esc, "U+\0"s, 8, false, {u"U+\0"s, 3, Stop::SOURCE_USED, 0}},
        },
        false);
}

TEST(MultibyteEngines, CutCharacterWaitsForMoreUnlessItIsTheLast)
{
    std::string const three = isLittleEndian() ? std::string("\x41\0\0", 3) : std::string("\0\x41\0", 3);
    expectRanges(
        {
            {"lead byte", g_oConverterWCP932, "A\x82", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"lead byte, last", g_oConverterWCP932, "A\x82", 8, true, {u"A", 1, Stop::ILLEGAL, 1}},
            {"Shift_JIS-2004", g_oConverterSJIS2004, "\x87", 8, false, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"Shift_JIS-2004, last", g_oConverterSJIS2004, "\x87", 8, true, {u"", 0, Stop::ILLEGAL, 1}},
            {"EUC-KR", g_oConverterEUCKR, "A\xB0", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"EUC-KR, last", g_oConverterEUCKR, "A\xB0", 8, true, {u"A", 1, Stop::ILLEGAL, 1}},
            {"EUC-JP", g_oConverterEUCJP, "A\xB0", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"single shift 2", g_oConverterEUCJP, "A\x8E", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"single shift 3", g_oConverterEUCJP, "A\x8F\xB0", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"single shift 2, last", g_oConverterEUCJP, "A\x8E", 8, true, {u"A", 1, Stop::ILLEGAL, 1}},
            {"one of four", g_oConverterGB18030, "\x81", 8, false, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"two of four", g_oConverterGB18030, "\x81\x30", 8, false, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"three of four", g_oConverterGB18030, "\x81\x30\x81", 8, false, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"one of two, last", g_oConverterGB18030, "\x81", 8, true, {u"", 0, Stop::ILLEGAL, 1}},
            {"half a unit", g_oConverterUTF16, three, 8, false, {u"A", 2, Stop::SOURCE_TRUNCATED, 0}},
            {"half a unit, last", g_oConverterUTF16, three, 8, true, {u"A", 2, Stop::ILLEGAL, 1}},
            {"three bytes of four", g_oConverterUTF32, three, 8, false, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"three bytes of four, last", g_oConverterUTF32, three, 8, true, {u"", 0, Stop::ILLEGAL, 3}},
            {"an escape", g_oConverterUTF16Esc, "AU+20A", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"an escape, last, is text", g_oConverterUTF16Esc, "AU+20A", 8, true, {u"AU+20A", 6, Stop::SOURCE_USED, 0}},
        },
        false);
    RangeProbe shiftJis2004(g_oConverterSJIS2004);
    EXPECT_EQ(shiftJis2004.encode({u'A', 0xD840}, 8), (EncodedRange{"A", 1, Stop::SOURCE_TRUNCATED, 0}));
    EXPECT_EQ(shiftJis2004.encode({u'A', 0xD840}, 8, true), (EncodedRange{"A", 1, Stop::UNMAPPABLE, 1}));
    EXPECT_EQ(shiftJis2004.encode({0xD83D, 0xDE00}, 8), (EncodedRange{"", 0, Stop::UNMAPPABLE, 2}));
    RangeProbe gb18030(g_oConverterGB18030);
    EXPECT_EQ(gb18030.encode({u'A', 0xD840}, 8), (EncodedRange{"A", 1, Stop::SOURCE_TRUNCATED, 0}));
    EXPECT_EQ(gb18030.encode({u'A', 0xD840}, 8, true), (EncodedRange{"A", 1, Stop::UNMAPPABLE, 1}));
    EXPECT_EQ(gb18030.encode({u'A', 0xD840, u'B'}, 8), (EncodedRange{"A", 1, Stop::UNMAPPABLE, 1}));
    RangeProbe utf32(g_oConverterUTF32);
    EXPECT_EQ(utf32.encode({u'A', 0xD840}, 8), (EncodedRange{wide32(U"A"), 1, Stop::SOURCE_TRUNCATED, 0}));
    EXPECT_EQ(utf32.encode({u'A', 0xD840}, 8, true), (EncodedRange{wide32(U"A"), 1, Stop::UNMAPPABLE, 1}));
    RangeProbe utf16(g_oConverterUTF16);
    EXPECT_EQ(utf16.encode({0xD840}, 8), (EncodedRange{wide16({0xD840}), 1, Stop::SOURCE_USED, 0}));
}

TEST(MultibyteEngines, StrictUTF16RefusesUnpairedSurrogates)
{
    expectRanges(
        {
            {"a pair",
             g_oConverterUTF16,
             wide16({0xD83D, 0xDE00}),
             8,
             false,
             {{0xD83D, 0xDE00}, 4, Stop::SOURCE_USED, 0}},
            {"a pair stays whole",
             g_oConverterUTF16,
             wide16({0xD83D, 0xDE00}),
             1,
             false,
             {u"", 0, Stop::DESTINATION_FULL, 0}},
            {"high", g_oConverterUTF16, wide16({u'A', 0xD800, u'B'}), 8, false, {u"A", 2, Stop::ILLEGAL, 2}},
            {"low", g_oConverterUTF16, wide16({u'A', 0xDC00}), 8, false, {u"A", 2, Stop::ILLEGAL, 2}},
            {"high high", g_oConverterUTF16, wide16({0xD800, 0xD800, 0xDC00}), 8, false, {u"", 0, Stop::ILLEGAL, 2}},
            {"high before zero", g_oConverterUTF16, wide16({0xD800, 0}), 8, false, {u"", 0, Stop::ILLEGAL, 2}},
            {"high, cut", g_oConverterUTF16, wide16({u'A', 0xD800}), 8, false, {u"A", 2, Stop::SOURCE_TRUNCATED, 0}},
            {"high, and half a unit",
             g_oConverterUTF16,
             wide16({0xD800, 0xDC00}).substr(0, 3),
             8,
             false,
             {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
            {"high, last", g_oConverterUTF16, wide16({u'A', 0xD800}), 8, true, {u"A", 2, Stop::ILLEGAL, 2}},
        },
        true);
    RangeProbe lenient(g_oConverterUTF16);
    EXPECT_EQ(lenient.decode(wide16({0xD800, u'A', 0xDC00}), 8),
              (DecodedRange{{0xD800, u'A', 0xDC00}, 6, Stop::SOURCE_USED, 0}));
}

TEST(MultibyteEngines, StrictUTF32RefusesSurrogatesAndWhatIsBeyondUnicode)
{
    expectRanges(
        {
            {"the last", g_oConverterUTF32, wide32({0x10FFFF}), 8, false, {{0xDBFF, 0xDFFF}, 4, Stop::SOURCE_USED, 0}},
            {"beyond", g_oConverterUTF32, wide32({U'A', 0x110000}), 8, false, {u"A", 4, Stop::ILLEGAL, 4}},
            {"far beyond", g_oConverterUTF32, wide32({0xFFFFFFFF}), 8, false, {u"", 0, Stop::ILLEGAL, 4}},
            {"high", g_oConverterUTF32, wide32({U'A', 0xD800}), 8, false, {u"A", 4, Stop::ILLEGAL, 4}},
            {"low", g_oConverterUTF32, wide32({U'A', 0xDFFF}), 8, false, {u"A", 4, Stop::ILLEGAL, 4}},
            {"two halves", g_oConverterUTF32, wide32({0xD83D, 0xDE00}), 8, false, {u"", 0, Stop::ILLEGAL, 4}},
            {"low bits of a surrogate",
             g_oConverterUTF32,
             wide32({0x1D800}),
             8,
             false,
             {{0xD836, 0xDC00}, 4, Stop::SOURCE_USED, 0}},
            {"a pair stays whole", g_oConverterUTF32, wide32({0x1F600}), 1, false, {u"", 0, Stop::DESTINATION_FULL, 0}},
        },
        true);
    RangeProbe lenient(g_oConverterUTF32);
    EXPECT_EQ(lenient.decode(wide32({0xD800, 0x110000}), 8),
              (DecodedRange{{0xD800, 0xDC00, 0xDC00}, 8, Stop::SOURCE_USED, 0}));
}

TEST(MultibyteEngines, StrictEscapedFormRefusesBytesFrom80AndUnpairedSurrogates)
{
    expectRanges(
        {
            {"a byte", g_oConverterUTF16Esc, "A\x80", 8, false, {u"A", 1, Stop::ILLEGAL, 1}},
            {"an escape", g_oConverterUTF16Esc, "U+20AC", 8, false, {u"\u20AC", 6, Stop::SOURCE_USED, 0}},
            {"no escape", g_oConverterUTF16Esc, "U+20ac", 8, false, {u"U+20ac", 6, Stop::SOURCE_USED, 0}},
            {"a pair", g_oConverterUTF16Esc, "U+D83DU+DE00", 8, false, {{0xD83D, 0xDE00}, 12, Stop::SOURCE_USED, 0}},
            {"high", g_oConverterUTF16Esc, "AU+D83DB", 8, false, {u"A", 1, Stop::ILLEGAL, 6}},
            {"low", g_oConverterUTF16Esc, "AU+DE00B", 8, false, {u"A", 1, Stop::ILLEGAL, 6}},
            {"high high", g_oConverterUTF16Esc, "U+D83DU+D83DU+DE00", 8, false, {u"", 0, Stop::ILLEGAL, 6}},
            {"high, cut", g_oConverterUTF16Esc, "AU+D83D", 8, false, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"high, last", g_oConverterUTF16Esc, "AU+D83D", 8, true, {u"A", 1, Stop::ILLEGAL, 6}},
            {"high and what cannot be a low one",
             g_oConverterUTF16Esc,
             "U+D83DU-",
             8,
             false,
             {u"", 0, Stop::ILLEGAL, 6}},
            {"cut escape, last", g_oConverterUTF16Esc, "U+20A", 8, true, {u"U+20A", 5, Stop::SOURCE_USED, 0}},
        },
        true);
}

// The encoder writes each of these as its byte.
TEST(MultibyteEngines, StrictEscapedFormRefusesEscapesOfASCII)
{
    expectRanges(
        {
            {"U+0000", g_oConverterUTF16Esc, "U+0000", 8, true, {u"", 0, Stop::ILLEGAL, 6}},
            {"a slash", g_oConverterUTF16Esc, "..U+002F", 8, false, {u"..", 2, Stop::ILLEGAL, 6}},
            {"the beginning of another", g_oConverterUTF16Esc, "U+0055+20AC", 8, true, {u"", 0, Stop::ILLEGAL, 6}},
            {"the last of them", g_oConverterUTF16Esc, "U+007F", 8, true, {u"", 0, Stop::ILLEGAL, 6}},
            {"the first that is written", g_oConverterUTF16Esc, "U+0080", 8, true, {u"\x80", 6, Stop::SOURCE_USED, 0}},
            {"for a low surrogate", g_oConverterUTF16Esc, "U+D83DU+0041", 8, true, {u"", 0, Stop::ILLEGAL, 6}},
            {"no digits of an escape", g_oConverterUTF16Esc, "U+002f", 8, true, {u"U+002f", 6, Stop::SOURCE_USED, 0}},
            {"truncated", g_oConverterUTF16Esc, "aU+002", 8, false, {u"a", 1, Stop::SOURCE_TRUNCATED, 0}},
            {"truncated, last, is text", g_oConverterUTF16Esc, "U+002", 8, true, {u"U+002", 5, Stop::SOURCE_USED, 0}},
        },
        true);
    RangeProbe lenient(g_oConverterUTF16Esc);
    EXPECT_EQ(lenient.decode("U+002F", 8), (DecodedRange{u"/", 6, Stop::SOURCE_USED, 0}));
}

// Each unit alone, as the encoder writes it and as an escape.
TEST(MultibyteEngines, StrictEscapedFormReadsOnlyWhatTheEncoderWrites)
{
    RangeProbe strict(g_oConverterUTF16Esc, true);
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        char escape[8];
        snprintf(escape, sizeof escape, "U+%04X", unit);
        unsigned short const text[] = {static_cast<unsigned short>(unit), 0};
        char written[8] = {};
        unsigned int const length = g_oConverterUTF16Esc.fromUTF16(written, text, 6, ILLCHAR_STOP, nullptr);
        bool const isEscaped = std::string(written, length) == escape;
        bool const isSurrogate = unit >= 0xD800 && unit <= 0xDFFF;
        ASSERT_EQ(strict.decode(escape, 8, true).stop == Stop::SOURCE_USED, isEscaped && !isSurrogate) << unit;
    }
}

TEST(MultibyteEngines, StrictDecodersOfTheOthersAreTheLenientOnes)
{
    for (MultibyteSet const& set : multibyteSets()) {
        if (set.isWide || &set.converter == &g_oConverterUTF16Esc || &set.converter == &g_oConverterEUCJP)
            continue;
        SCOPED_TRACE(set.name);
        RangeProbe lenient(set.converter);
        RangeProbe strict(set.converter, true);
        forEachText(byteFragmentsOf(set), [&](std::string const& bytes) {
            for (bool const last : {false, true})
                ASSERT_EQ(strict.decode(bytes, 16, last), lenient.decode(bytes, 16, last)) << hex(bytes);
        });
    }
}

TEST(MultibyteEngines, StrictEUCJPTakesPairsInRangeAndTheTwoThatTheEncoderWritesBesideThem)
{
    RangeProbe lenient(g_oConverterEUCJP);
    RangeProbe strict(g_oConverterEUCJP, true);
    for (unsigned int lead = 0x7F; lead <= 0xFF; ++lead) {
        for (unsigned int trail = 0; trail <= 0xFF; ++trail) {
            std::string const bytes = {static_cast<char>(lead), static_cast<char>(trail), 'A'};
            auto const inRange = [](unsigned int byte) { return byte >= 0xA1 && byte <= 0xFE; };
            bool const isYenOrOverline = lead == 0x80 && (trail == 0xDC || trail == 0xFE);
            bool const isKatakana = lead == 0x8E;
            bool const isGood = isYenOrOverline || isKatakana || (inRange(lead) && inRange(trail));
            if (isGood)
                EXPECT_EQ(strict.decode(bytes, 16, true), lenient.decode(bytes, 16, true)) << hex(bytes);
            else
                EXPECT_EQ(strict.decode(bytes, 16, true), (Ranged<std::u16string>{u"", 0, Stop::ILLEGAL, 1}))
                    << hex(bytes);
        }
    }
}

TEST(MultibyteEngines, BytesGivenWithACountAreThePublishedConversionOfWhatItCovers)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        PageEnd<unsigned char> memory;
        Fenced<unsigned short> dest;
        unsigned int const size = set.converter.getNullCharSize();
        for (std::string const& a : byteFragmentsOf(set))
            for (std::string const& b : set.byteFragments) {
                std::string const whole = a + b;
                for (size_t count = 0; count <= whole.size(); ++count) {
                    std::string const bytes = whole.substr(0, count);
                    std::string padded = bytes;  // zeros stand in for what the count truncates
                    padded.resize((count + size - 1) / size * size);
                    // Wide text is given as much capacity as it has whole units.
                    auto const most = static_cast<unsigned int>(set.isWide ? count / size : count + 1);
                    for (unsigned int capacity = 0; capacity <= most; ++capacity)
                        for (int limit = -1; limit <= static_cast<int>(count) + 1; ++limit) {
                            unsigned short* const out = dest.arm(capacity + size_t{1});
                            unsigned int const length = kx7::decodeCounted(
                                set.converter, out, reinterpret_cast<char const*>(memory.hold(bytes, 0)),
                                static_cast<unsigned int>(count), capacity, limit);
                            Units const expected = set.model->toUTF16({padded, capacity, ILLCHAR_REPLACE, limit}).units;
                            ASSERT_TRUE(sameText(Units(out, out + length), expected))
                                << hex(bytes) << " capacity " << capacity << " limit " << limit;
                            ASSERT_TRUE(dest.intact()) << hex(bytes);
                            ASSERT_EQ(out[length], 0u);
                        }
                }
            }
    }
}
