// kx7text tests - decoding of bytes that come with a count.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/converters/Engine.h"
#include "tests/converters/Foreign.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/Heap.h"
#include "tests/support/Hex.h"
#include "tests/support/Memory.h"
#include "tests/support/SingleByteLists.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

Utf8Model const utf8;
SingleByteModel const thai(pairsOf(oCP874map));

/** decodeCounted in watched memory: nothing after the count can be read. */
class CountedDecoder {
public:
    explicit CountedDecoder(KX7CharSetConverter& converter) : m_converter(converter) {}

    std::u16string operator()(std::string const& bytes, unsigned int capacity, int limit)
    {
        auto const* const source = reinterpret_cast<char const*>(m_source.hold(bytes, 0));
        unsigned short* const dest = m_dest.arm(capacity + size_t{1});
        unsigned int const units =
            kx7::decodeCounted(m_converter, dest, source, static_cast<unsigned int>(bytes.size()), capacity, limit);
        EXPECT_TRUE(m_dest.intact()) << hex(bytes) << " capacity " << capacity << " limit " << limit;
        EXPECT_LE(units, capacity) << hex(bytes);
        EXPECT_EQ(dest[units], 0u) << hex(bytes);
        return std::u16string(dest, dest + units);
    }

private:
    KX7CharSetConverter& m_converter;
    PageEnd<unsigned char> m_source;
    Fenced<unsigned short> m_dest;
};

void expectAsTheModelOfCutText(KX7CharSetConverter& converter, Model const& model,
                               std::vector<std::string> const& fragments)
{
    CountedDecoder decode(converter);
    for (std::string const& a : fragments)
        for (std::string const& b : fragments) {
            std::string const whole = a + b + "C";
            for (size_t count = 0; count <= whole.size(); ++count) {
                std::string const bytes = whole.substr(0, count);
                for (unsigned int capacity = 0; capacity <= count + 2; ++capacity)
                    for (int limit = -1; limit <= static_cast<int>(count) + 1; ++limit)
                        ASSERT_TRUE(sameText(decode(bytes, capacity, limit),
                                             model.toUTF16({bytes, capacity, ILLCHAR_REPLACE, limit}).units))
                            << hex(bytes) << " capacity " << capacity << " limit " << limit;
            }
        }
}

}  // namespace

TEST(DecodeCounted, CutOffCharacterMeetsAZeroByte)
{
    CountedDecoder decode(g_oConverterUTF8);
    EXPECT_EQ(decode("A\xC3", 8, -1), u"A\uFFFD");
    EXPECT_EQ(decode("A\xE2", 8, -1), u"A\uFFFD");
    EXPECT_EQ(decode("A\xE2\x82", 8, -1), u"A\uFFFD") << "the second byte is a stray one then";
    EXPECT_EQ(decode("\xF0\x9F\x98", 8, -1), u"\uFFFD");
    EXPECT_EQ(decode("\xF0\x9F\x98\x80", 8, -1), u"\U0001F600");
    EXPECT_EQ(decode("\xF0\x9F\x98\x80", 1, -1), u"\uFFFD") << "no space for the pair";
    EXPECT_EQ(decode("", 8, -1), u"");
}

TEST(DecodeCounted, ZeroByteEndsTheText)
{
    CountedDecoder decode(g_oConverterUTF8);
    EXPECT_EQ(decode("A\0B"s, 8, -1), u"A");
    EXPECT_EQ(decode("\0A"s, 8, -1), u"");
    CountedDecoder decodeThai(g_oConverterWCP874);
    EXPECT_EQ(decodeThai("\xA1\0B"s, 8, -1), u"\u0E01");
}

TEST(DecodeCounted, SourceLimitMeansWhatItMeansForTheConverter)
{
    CountedDecoder decode(g_oConverterUTF8);
    EXPECT_EQ(decode("ABC", 8, 0), u"ABC");
    EXPECT_EQ(decode("\xE2\x82\xAC"
                     "B",
                     8, 1),
              u"\u20AC");
    CountedDecoder decodeThai(g_oConverterWCP874);
    EXPECT_EQ(decodeThai("ABC", 8, 0), u"");
    EXPECT_EQ(decodeThai("ABC", 8, 2), u"AB");
}

TEST(DecodeCounted, UTF8IsThePublishedConversionOfWhatTheCountCovers)
{
    expectAsTheModelOfCutText(g_oConverterUTF8, utf8, utf8Fragments());
}

TEST(DecodeCounted, SingleByteSetsAreThePublishedConversionOfWhatTheCountCovers)
{
    expectAsTheModelOfCutText(g_oConverterWCP874, thai, {"A", "\xA1", "\xDB", "\x1A", "AB\xDB\xA1", "\0"s});
}

TEST(DecodeCounted, LongTextsCutAnywhere)
{
    CountedDecoder decode(g_oConverterUTF8);
    std::mt19937 random(6);
    for (int i = 0; i < 400; ++i) {
        std::string const bytes = randomText(random, utf8Fragments(), random() % 7000);
        std::string const cut = bytes.substr(0, random() % (bytes.size() + 1));
        auto const capacity = static_cast<unsigned int>(random() % (cut.size() + 1));
        for (unsigned int const r : {capacity, static_cast<unsigned int>(cut.size())})
            for (int const limit : {-1, static_cast<int>(random() % (cut.size() + 1))})
                ASSERT_TRUE(sameText(decode(cut, r, limit), utf8.toUTF16({cut, r, ILLCHAR_REPLACE, limit}).units));
    }
}

TEST(DecodeCounted, DerivedConverterWorksThroughItsOwnOperation)
{
    DerivedSingleByte derivedSingleByte;
    expectAsTheModelOfCutText(derivedSingleByte, thai, {"A", "\xA1", "\xDB", "AB\xDB\xA1"});
    DerivedUtf8 derivedUtf8;
    CountedDecoder decode(derivedUtf8);
    EXPECT_EQ(decode("A\xC3\xA9"
                     "A\xE2\x82",
                     8, -1),
              u"B\u00E9B\uFFFD");
    EXPECT_EQ(decode("AA", 1, -1), u"B");
    EXPECT_EQ(decode("", 8, -1), u"");
}

TEST(DecodeCounted, ForeignConverterFindsAWholeTerminatorAfterACutCharacter)
{
    for (size_t count = 0; count <= 12; ++count) {
        Wide wide;
        CountedDecoder decode(wide);
        std::string const bytes = "A\0\0\0B\0\0\0C\0\0\0"s.substr(0, count);
        std::u16string const expected = u"ABC"s.substr(0, (count + 3) / 4);
        EXPECT_EQ(decode(bytes, 8, -1), expected) << count;
        // The copy that it is given must hold all that a decoder of four-byte units reads.
        EXPECT_LE(wide.bytesLookedAt, HeapWatch::lastArraySize()) << count << " bytes";
    }
}

TEST(DecodeCounted, ForeignConverterIsGivenNothingAfterTheTerminator)
{
    // Counts beyond the text, which ends with its terminator where an unreadable page begins.
    unsigned int const counts[] = {5, 300, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF8, 0xFFFFFFF9, 0xFFFFFFFC, 0xFFFFFFFE};
    PageEnd<unsigned char> memory;
    unsigned short dest[8];
    DerivedSingleByte narrow;
    Wide wide;
    EXPECT_EQ(kx7::decodeCounted(narrow, dest, "a", 1, 7, -1), 1u) << "and the tables are there";
    for (unsigned int const count : counts) {
        SCOPED_TRACE(count);
        auto const* const text = reinterpret_cast<char const*>(memory.hold("abc"s, 1));
        EXPECT_EQ(kx7::decodeCounted(narrow, dest, text, count, 7, -1), 3u);
        EXPECT_EQ(std::u16string(dest, dest + 4), u"abc\0"s);
        EXPECT_LE(HeapWatch::lastArraySize(), 16u);
        // Zeros within the values are no terminator, and a value that stands across addresses of four is one.
        for (std::string const& front : {""s, "x"s}) {
            auto const* const values = reinterpret_cast<char const*>(memory.hold("a\0\0\0b\0\0\0\0\0\0\0"s + front, 0));
            EXPECT_EQ(kx7::decodeCounted(wide, dest, values, count, 7, -1), 2u);
            EXPECT_EQ(std::u16string(dest, dest + 3), u"ab\0"s);
        }
    }
}
