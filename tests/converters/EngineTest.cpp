// kx7text tests - engines: conversions of ranges, and of text without its terminator.
#include "kx7/converters/Engine.h"

#include <gtest/gtest.h>

#include <climits>

#include "kx7/converters/Loop.h"
#include "kx7/tables/MappingLists.h"
#include "tests/converters/Foreign.h"
#include "tests/converters/RangeProbe.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/CharSets.h"
#include "tests/support/SingleByteLists.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;
using kx7::Progress;
using kx7::Stop;
using kx7::TextProgress;

namespace {

static_assert(PIECE_UNITS == kx7::PIECE, "texts are long enough to cross a piece boundary");

SingleByteModel const thai(pairsOf(oCP874map));
Utf8Model const utf8;
Utf8Model const utf8WithinItsCapacity(6);

struct Subject {
    char const* name;
    KX7CharSetConverter& converter;
    Model const& model;
    Model const& modelWithinItsCapacity;
    std::vector<std::string> byteFragments;
    std::vector<std::u16string> unitFragments;
};

/** Fragments for both engines; a zero byte and a 0 unit among them. */
std::vector<Subject> subjects()
{
    std::vector<std::string> utf8Bytes = utf8Fragments();
    std::vector<std::u16string> utf8Units = utf16Fragments();
    std::vector<std::string> thaiBytes{"A", "\xA1", "\xDB", "\x1A", "\xFB"};
    std::vector<std::u16string> thaiUnits{{u'A'}, {0x0E01}, {0x4E00}, {0x1C}, {0xD83D, 0xDE00}};
    for (auto* fragments : {&utf8Bytes, &thaiBytes})
        fragments->push_back("\0"s);
    for (auto* fragments : {&utf8Units, &thaiUnits})
        fragments->push_back(u"\0"s);
    return {{"UTF-8", g_oConverterUTF8, utf8, utf8WithinItsCapacity, utf8Bytes, utf8Units},
            {"code page 874", g_oConverterWCP874, thai, thai, thaiBytes, thaiUnits}};
}

template <class Text>
std::vector<Text> triplesOf(std::vector<Text> const& fragments)
{
    std::vector<Text> texts;
    for (Text const& a : fragments)
        for (Text const& b : fragments)
            for (Text const& c : fragments)
                texts.push_back(a + b + c);
    return texts;
}

}  // namespace

TEST(Engines, EveryConverterOfTheLibraryHasOne)
{
    ASSERT_NE(kx7::engineOf(g_oConverterUTF8), nullptr);
    for (SingleByteList const& stored : SINGLE_BYTE_LISTS) {
        EXPECT_NE(kx7::engineOf(stored.converter), nullptr) << stored.name;
        EXPECT_NE(kx7::engineOf(stored.converter), kx7::engineOf(g_oConverterUTF8)) << stored.name;
    }
}

TEST(Engines, NothingBecomesNothingWithNullPointers)
{
    for (CharSetRow const& row : charSetRows()) {
        kx7::Engine const& engine = *kx7::engineOf(*row.converter);
        unsigned char byte = 0;
        unsigned short unit = 0;
        Progress const results[] = {
            engine.decode(*row.converter, nullptr, nullptr, nullptr, nullptr, true),
            engine.decodeStrict(*row.converter, nullptr, nullptr, nullptr, nullptr, true),
            engine.encode(*row.converter, nullptr, nullptr, nullptr, nullptr, true),
            engine.decode(*row.converter, nullptr, nullptr, &unit, &unit + 1, true),
            engine.encode(*row.converter, nullptr, nullptr, &byte, &byte + 1, true),
        };
        for (Progress const& result : results) {
            EXPECT_EQ(result.consumed, 0u) << row.name;
            EXPECT_EQ(result.written, 0u) << row.name;
            EXPECT_EQ(result.stop, Stop::SOURCE_USED) << row.name;
        }
    }
}

TEST(Engines, DerivedAndForeignConvertersHaveNone)
{
    DerivedSingleByte const derivedSingleByte;
    DerivedUtf8 const derivedUtf8;
    Wide const wide;
    EXPECT_EQ(kx7::engineOf(derivedSingleByte), nullptr);
    EXPECT_EQ(kx7::engineOf(derivedUtf8), nullptr);
    EXPECT_EQ(kx7::engineOf(wide), nullptr);
}

TEST(Engines, DecodeSaysWhyItStopsAndHowFarItCame)
{
    struct Row {
        char const* what;
        KX7CharSetConverter& converter;
        std::string bytes;
        size_t capacity;
        DecodedRange expected;
    };
    Row const rows[] = {
        {"nothing", g_oConverterUTF8, "", 4, {u"", 0, Stop::SOURCE_USED, 0}},
        {"nothing into nothing", g_oConverterUTF8, "", 0, {u"", 0, Stop::SOURCE_USED, 0}},
        {"letters", g_oConverterUTF8, "AB", 4, {u"AB", 2, Stop::SOURCE_USED, 0}},
        {"capacity of the text", g_oConverterUTF8, "AB", 2, {u"AB", 2, Stop::SOURCE_USED, 0}},
        {"no space", g_oConverterUTF8, "AB", 0, {u"", 0, Stop::DESTINATION_FULL, 0}},
        {"space for one", g_oConverterUTF8, "AB", 1, {u"A", 1, Stop::DESTINATION_FULL, 0}},
        {"zero is a character", g_oConverterUTF8, "A\0B"s, 4, {u"A\0B"s, 3, Stop::SOURCE_USED, 0}},
        {"a pair", g_oConverterUTF8, "\xF0\x9F\x98\x80", 2, {{0xD83D, 0xDE00}, 4, Stop::SOURCE_USED, 0}},
        {"a pair stays whole", g_oConverterUTF8, "\xF0\x9F\x98\x80", 1, {u"", 0, Stop::DESTINATION_FULL, 0}},
        {"cut after one", g_oConverterUTF8, "A\xE2", 4, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
        {"cut after two", g_oConverterUTF8, "A\xE2\x82", 4, {u"A", 1, Stop::SOURCE_TRUNCATED, 0}},
        {"cut after three", g_oConverterUTF8, "\xF0\x9F\x98", 4, {u"", 0, Stop::SOURCE_TRUNCATED, 0}},
        {"zero does not continue", g_oConverterUTF8, "A\xE2\0"s, 4, {u"A", 1, Stop::ILLEGAL, 1}},
        {"malformed",
         g_oConverterUTF8,
         "A\xE2\x82"
         "B",
         4,
         {u"A", 1, Stop::ILLEGAL, 1}},
        {"stray",
         g_oConverterUTF8,
         "A\x80"
         "B",
         4,
         {u"A", 1, Stop::ILLEGAL, 1}},
        {"overlong passes", g_oConverterUTF8, "\xC0\x80", 4, {u"\0"s, 2, Stop::SOURCE_USED, 0}},
        {"full goes before illegal", g_oConverterUTF8, "A\x80", 1, {u"A", 1, Stop::DESTINATION_FULL, 0}},
        {"Thai", g_oConverterWCP874, "A\xA1\0\xFB"s, 4, {{'A', 0x0E01, 0, 0x0E5B}, 4, Stop::SOURCE_USED, 0}},
        {"undefined byte",
         g_oConverterWCP874,
         "A\xDB"
         "B",
         4,
         {u"A", 1, Stop::ILLEGAL, 1}},
        {"Thai without capacity", g_oConverterWCP874, "A\xA1", 1, {u"A", 1, Stop::DESTINATION_FULL, 0}},
    };
    for (Row const& row : rows) {
        RangeProbe probe(row.converter);
        EXPECT_EQ(probe.decode(row.bytes, row.capacity), row.expected) << row.what;
    }
}

TEST(Engines, EncodeSaysWhyItStopsAndHowFarItCame)
{
    struct Row {
        char const* what;
        KX7CharSetConverter& converter;
        std::u16string units;
        size_t capacity;
        EncodedRange expected;
    };
    Row const rows[] = {
        {"nothing", g_oConverterUTF8, u"", 4, {"", 0, Stop::SOURCE_USED, 0}},
        {"letters", g_oConverterUTF8, u"AB", 2, {"AB", 2, Stop::SOURCE_USED, 0}},
        {"no space", g_oConverterUTF8, u"AB", 0, {"", 0, Stop::DESTINATION_FULL, 0}},
        {"zero is a character", g_oConverterUTF8, u"A\0B"s, 4, {"A\0B"s, 3, Stop::SOURCE_USED, 0}},
        {"two bytes into one", g_oConverterUTF8, {'A', 0xE9}, 2, {"A", 1, Stop::DESTINATION_FULL, 0}},
        {"pair", g_oConverterUTF8, {0xD83D, 0xDE00}, 4, {"\xF0\x9F\x98\x80", 2, Stop::SOURCE_USED, 0}},
        {"pair into three", g_oConverterUTF8, {0xD83D, 0xDE00}, 3, {"", 0, Stop::DESTINATION_FULL, 0}},
        {"cut pair", g_oConverterUTF8, {'A', 0xD83D}, 8, {"A", 1, Stop::SOURCE_TRUNCATED, 0}},
        {"high surrogate alone", g_oConverterUTF8, {'A', 0xD83D, 'B'}, 8, {"A", 1, Stop::UNMAPPABLE, 1}},
        {"high surrogate before 0", g_oConverterUTF8, {'A', 0xD83D, 0}, 8, {"A", 1, Stop::UNMAPPABLE, 1}},
        {"low surrogate alone", g_oConverterUTF8, {0xDC00}, 8, {"\xED\xB0\x80", 1, Stop::SOURCE_USED, 0}},
        {"Thai", g_oConverterWCP874, {'A', 0x0E01, 0, 0x0E5B}, 4, {"A\xA1\0\xFB"s, 4, Stop::SOURCE_USED, 0}},
        {"not in Thai", g_oConverterWCP874, {'A', 0x4E00, 'B'}, 4, {"A", 1, Stop::UNMAPPABLE, 1}},
        {"a pair is two units", g_oConverterWCP874, {0xD83D, 0xDE00}, 4, {"", 0, Stop::UNMAPPABLE, 1}},
    };
    for (Row const& row : rows) {
        RangeProbe probe(row.converter);
        EXPECT_EQ(probe.encode(row.units, row.capacity), row.expected) << row.what;
    }
}

TEST(Engines, CutCharacterIsIllegalWhereNoMoreSourceFollows)
{
    RangeProbe lenient(g_oConverterUTF8);
    RangeProbe strict(g_oConverterUTF8, true);
    for (RangeProbe* probe : {&lenient, &strict}) {
        EXPECT_EQ(probe->decode("A\xE2", 4, true), (DecodedRange{u"A", 1, Stop::ILLEGAL, 1}));
        EXPECT_EQ(probe->decode("A\xE2\x82", 4, true), (DecodedRange{u"A", 1, Stop::ILLEGAL, 2}));
        EXPECT_EQ(probe->decode("\xF0\x9F\x98", 4, true), (DecodedRange{u"", 0, Stop::ILLEGAL, 3}));
        EXPECT_EQ(probe->decode("\xE2\x82\xAC", 4, true), (DecodedRange{u"\u20AC", 3, Stop::SOURCE_USED, 0}));
        EXPECT_EQ(probe->decode("A\xE2", 1, true), (DecodedRange{u"A", 1, Stop::DESTINATION_FULL, 0}));
        EXPECT_EQ(probe->decode("", 4, true), (DecodedRange{u"", 0, Stop::SOURCE_USED, 0}));
    }
    EXPECT_EQ(lenient.encode({'A', 0xD83D}, 8, true), (EncodedRange{"A", 1, Stop::UNMAPPABLE, 1}));
    EXPECT_EQ(lenient.encode({0xD83D, 0xDE00}, 8, true), (EncodedRange{"\xF0\x9F\x98\x80", 2, Stop::SOURCE_USED, 0}));
    EXPECT_EQ(lenient.encode({'A', 0xD83D}, 1, true), (EncodedRange{"A", 1, Stop::DESTINATION_FULL, 0}));
}

TEST(Engines, TwoRangesDecodeAsOneWhereverTheyAreSplit)
{
    for (Subject const& subject : subjects())
        for (bool const strict : {false, true}) {
            SCOPED_TRACE(subject.name);
            RangeProbe probe(subject.converter, strict);
            for (std::string const& bytes : triplesOf(subject.byteFragments)) {
                auto const decode = [&](std::string const& range, bool last) { return probe.decode(range, 16, last); };
                DecodedRange const whole = decode(bytes, true);
                for (size_t split = 0; split <= bytes.size(); ++split)
                    ASSERT_EQ(inTwoRanges(bytes, split, decode), whole) << hex(bytes) << " split at " << split;
            }
        }
}

TEST(Engines, TwoRangesEncodeAsOneWhereverTheyAreSplit)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        RangeProbe probe(subject.converter);
        for (std::u16string const& units : triplesOf(subject.unitFragments)) {
            auto const encode = [&](std::u16string const& range, bool last) { return probe.encode(range, 32, last); };
            EncodedRange const whole = encode(units, true);
            for (size_t split = 0; split <= units.size(); ++split)
                ASSERT_EQ(inTwoRanges(units, split, encode), whole) << hex(units) << " split at " << split;
        }
    }
}

TEST(Engines, DecodingGoesOnWhereAFullDestinationEndedIt)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        RangeProbe probe(subject.converter);
        for (std::string const& bytes : triplesOf(subject.byteFragments)) {
            DecodedRange const whole = probe.decode(bytes, 16);
            for (size_t capacity = 0; capacity <= whole.text.size() + 1; ++capacity) {
                DecodedRange const first = probe.decode(bytes, capacity);
                if (first.stop == Stop::DESTINATION_FULL) {
                    ASSERT_GE(first.text.size() + 1, capacity) << "only a pair may leave capacity: " << hex(bytes);
                    DecodedRange rest = probe.decode(bytes.substr(first.consumed), 16);
                    rest.text = first.text + rest.text;
                    rest.consumed += first.consumed;
                    ASSERT_EQ(rest, whole) << hex(bytes) << " capacity " << capacity;
                }
                else {
                    ASSERT_EQ(first, whole) << hex(bytes) << " capacity " << capacity;
                }
            }
        }
    }
}

TEST(Engines, EncodingGoesOnWhereAFullDestinationEndedIt)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        RangeProbe probe(subject.converter);
        for (std::u16string const& units : triplesOf(subject.unitFragments)) {
            EncodedRange const whole = probe.encode(units, 32);
            for (size_t capacity = 0; capacity <= whole.text.size() + 1; ++capacity) {
                EncodedRange const first = probe.encode(units, capacity);
                if (first.stop == Stop::DESTINATION_FULL) {
                    ASSERT_GE(first.text.size() + 3, capacity) << "a character is four bytes at most: " << hex(units);
                    EncodedRange rest = probe.encode(units.substr(first.consumed), 32);
                    rest.text = first.text + rest.text;
                    rest.consumed += first.consumed;
                    ASSERT_EQ(rest, whole) << hex(units) << " capacity " << capacity;
                }
                else {
                    ASSERT_EQ(first, whole) << hex(units) << " capacity " << capacity;
                }
            }
        }
    }
}

TEST(Engines, RangesWithTheirStopsHandledAreThePublishedConversion)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        RangeProbe probe(subject.converter);
        std::mt19937 random(3);
        for (int i = 0; i < 100; ++i) {
            std::string bytes = randomText(random, subject.byteFragments, random() % 6000);
            std::replace(bytes.begin(), bytes.end(), '\0', 'z');
            std::u16string units;
            size_t at = 0;
            while (at != bytes.size()) {
                DecodedRange const range = probe.decode(bytes.substr(at), 2 + random() % 5000, true);
                units += range.text;
                at += range.consumed;
                if (range.stop != Stop::ILLEGAL)
                    continue;
                bool const stray = &subject.converter == &g_oConverterUTF8 && (bytes[at] & 0xC0) == 0x80;
                units += std::u16string(stray ? 0 : 1, char16_t{0xFFFD});
                at += range.length;
            }
            ASSERT_TRUE(sameText(units, subject.model.toUTF16({bytes, INT_MAX, ILLCHAR_REPLACE, -1}).units));
        }
    }
}

TEST(Engines, DecodeTextIsThePublishedConversionWithoutItsTerminator)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        kx7::Engine const& engine = *kx7::engineOf(subject.converter);
        PageEnd<unsigned char> memory;
        Fenced<unsigned short> dest;
        for (std::string const& bytes : triplesOf(subject.byteFragments))
            for (unsigned int capacity = 0; capacity <= bytes.size() + 1; ++capacity)
                for (bool const bounded : {false, true}) {
                    unsigned char const* const begin = memory.hold(bytes, bounded ? 0 : 1);
                    unsigned short* const out = dest.arm(capacity);
                    TextProgress const text = engine.decodeText(
                        subject.converter, {begin, bounded ? begin + bytes.size() : nullptr}, out, capacity);
                    std::u16string expected = subject.model.toUTF16({bytes, capacity, ILLCHAR_REPLACE, -1}).units;
                    bool const fillsTheCapacity = expected.size() == capacity;
                    // The published conversion replaces a pair that finds space for one unit; this leaves it.
                    std::u16string const more = subject.model.toUTF16({bytes, capacity + 1, ILLCHAR_REPLACE, -1}).units;
                    bool const pairDoesNotFit = fillsTheCapacity && capacity != 0 && more.size() == capacity + 1 &&
                                                more.compare(0, capacity, expected) != 0;
                    if (pairDoesNotFit)
                        expected.pop_back();
                    ASSERT_TRUE(sameText(std::u16string(out, out + text.written), expected))
                        << hex(bytes) << " capacity " << capacity << " bounded " << bounded;
                    ASSERT_EQ(text.full, fillsTheCapacity) << hex(bytes) << " capacity " << capacity;
                    ASSERT_TRUE(dest.intact()) << hex(bytes) << " capacity " << capacity;
                }
    }
}

TEST(Engines, DecodeTextGoesOnWhereItWasFull)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        kx7::Engine const& engine = *kx7::engineOf(subject.converter);
        PageEnd<unsigned char> memory;
        std::mt19937 random(4);
        for (int i = 0; i < 200; ++i) {
            std::string bytes = randomText(random, subject.byteFragments, random() % 6000);
            std::replace(bytes.begin(), bytes.end(), '\0', 'z');
            unsigned char const* in = memory.hold(bytes, 1);
            std::u16string units;
            unsigned short piece[3000];
            for (;;) {
                unsigned int const capacity = 2 + static_cast<unsigned int>(random() % 2990);
                TextProgress const text = engine.decodeText(subject.converter, {in, nullptr}, piece, capacity);
                units.append(piece, piece + text.written);
                in += text.consumed;
                if (!text.full)
                    break;
                ASSERT_NE(text.written, 0u);
            }
            EXPECT_EQ(*in, 0) << "all of it is consumed";
            ASSERT_TRUE(sameText(units, subject.model.toUTF16({bytes, INT_MAX, ILLCHAR_REPLACE, -1}).units));
        }
    }
}

TEST(Engines, EncodeTextIsThePublishedConversionWithinItsCapacity)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        kx7::Engine const& engine = *kx7::engineOf(subject.converter);
        Model const& model = subject.modelWithinItsCapacity;
        PageEnd<unsigned short> memory;
        Fenced<unsigned char> dest;
        for (std::u16string const& units : triplesOf(subject.unitFragments))
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= 3 * units.size() + 3; ++capacity)
                    for (bool const bounded : {false, true}) {
                        unsigned short const* const begin = memory.hold(units, bounded ? 0 : 1);
                        unsigned char* const out = dest.arm(capacity);
                        TextProgress const text =
                            engine.encodeText(subject.converter, {begin, bounded ? begin + units.size() : nullptr}, out,
                                              capacity, op, true);
                        std::string const expected = model.fromUTF16({units, capacity, op}).bytes;
                        std::string const more = model.fromUTF16({units, capacity + 6, op}).bytes;
                        ASSERT_TRUE(sameText(std::string(out, out + text.written), expected))
                            << hex(units) << " capacity " << capacity << " operation " << op << " bounded " << bounded;
                        ASSERT_EQ(text.full, expected.size() == capacity || more != expected)
                            << hex(units) << " capacity " << capacity << " operation " << op;
                        ASSERT_TRUE(dest.intact()) << hex(units) << " capacity " << capacity << " operation " << op;
                    }
    }
}

TEST(Engines, EncodeTextGoesOnWhereItWasFull)
{
    for (Subject const& subject : subjects())
        for (ILLCHAR_OPTYPE const op : {ILLCHAR_REPLACE, ILLCHAR_ESCAPE}) {
            SCOPED_TRACE(subject.name);
            kx7::Engine const& engine = *kx7::engineOf(subject.converter);
            PageEnd<unsigned short> memory;
            std::mt19937 random(5);
            for (int i = 0; i < 200; ++i) {
                std::u16string units = randomText(random, subject.unitFragments, random() % 6000);
                std::replace(units.begin(), units.end(), u'\0', u'z');
                unsigned short const* in = memory.hold(units, 1);
                std::string bytes;
                unsigned char piece[3000];
                for (;;) {
                    unsigned int const capacity = 6 + static_cast<unsigned int>(random() % 2990);
                    TextProgress const text =
                        engine.encodeText(subject.converter, {in, nullptr}, piece, capacity, op, true);
                    bytes.append(piece, piece + text.written);
                    in += text.consumed;
                    if (!text.full)
                        break;
                    ASSERT_NE(text.written, 0u);
                }
                EXPECT_EQ(*in, 0) << "all of it is consumed";
                ASSERT_TRUE(sameText(bytes, subject.model.fromUTF16({units, INT_MAX, op}).bytes));
            }
        }
}
