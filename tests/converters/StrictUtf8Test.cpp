// kx7text tests - the strict decoder of UTF-8, against the table of well-formed sequences.
#include <gtest/gtest.h>

#include "kx7/charset/Converters.h"
#include "kx7/converters/Engine.h"
#include "tests/support/Hex.h"
#include "tests/support/Memory.h"

using namespace kx7test;
using namespace std::string_literals;
using kx7::Progress;
using kx7::Stop;

namespace {

struct ByteRange {
    unsigned char first;
    unsigned char last;
};

/** One line of the Unicode Standard's table of well-formed byte sequences. */
struct WellFormed {
    unsigned int length;
    ByteRange bytes[4];
};

WellFormed const WELL_FORMED[] = {
    {1, {{0x00, 0x7F}}},
    {2, {{0xC2, 0xDF}, {0x80, 0xBF}}},
    {3, {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}},
    {3, {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {3, {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}},
    {3, {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}},
};

/** What stands at the front of some bytes. */
struct Front {
    Stop stop;            // SOURCE_USED: a character
    unsigned int length;  // of the character, or of the maximal subpart of one
};

Front frontOf(unsigned char const* bytes, unsigned int count)
{
    unsigned int longest = 0;
    for (WellFormed const& line : WELL_FORMED) {
        unsigned int n = 0;
        while (n < count && n < line.length && bytes[n] >= line.bytes[n].first && bytes[n] <= line.bytes[n].last)
            ++n;
        if (n == line.length)
            return {Stop::SOURCE_USED, n};
        longest = std::max(longest, n);
    }
    if (longest == count)
        return {Stop::SOURCE_TRUNCATED, 0};
    return {Stop::ILLEGAL, std::max(longest, 1U)};
}

unsigned int codePointAt(unsigned char const* bytes, unsigned int length)
{
    unsigned int const leadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
    unsigned int c = bytes[0] & leadBits[length - 1];
    for (unsigned int i = 1; i < length; ++i)
        c = c * 64 + (bytes[i] & 0x3F);
    return c;
}

class StrictUTF8 : public testing::Test {
protected:
    /** The first thing in `count` bytes is what the table says; what follows it is not looked at. */
    void expectAsInTheTable(unsigned char const* bytes, unsigned int count)
    {
        unsigned char const* const source = m_source.hold(std::string(bytes, bytes + count), 0);
        unsigned short units[2] = {};
        Front const front = frontOf(bytes, count);
        bool const isCharacter = front.stop == Stop::SOURCE_USED;
        // Only one character is asked for: the range ends after it.
        unsigned char const* const end = source + (isCharacter ? front.length : count);
        Progress const progress = m_engine.decodeStrict(g_oConverterUTF8, source, end, units, units + 2, false);

        bool right = progress.stop == front.stop;
        if (isCharacter) {
            unsigned int const c = codePointAt(bytes, front.length);
            bool const pair = c > 0xFFFF;
            right = right && progress.consumed == front.length && progress.length == 0 &&
                    progress.written == (pair ? 2U : 1U);
            right = right && (pair ? 0x10000U + (units[0] - 0xD800U) * 0x400U + units[1] - 0xDC00U : units[0]) == c;
        }
        else {
            right = right && progress.consumed == 0 && progress.written == 0 && progress.length == front.length;
        }
        if (right || ++m_failures > 12)
            return;
        ADD_FAILURE() << hex(std::string(bytes, bytes + count)) << ": stop " << static_cast<int>(progress.stop)
                      << " expected " << static_cast<int>(front.stop) << ", length " << progress.length << " expected "
                      << front.length << ", consumed " << progress.consumed << ", written " << progress.written;
    }

    kx7::Engine const& m_engine = *kx7::engineOf(g_oConverterUTF8);
    PageEnd<unsigned char> m_source;
    unsigned int m_failures = 0;
};

}  // namespace

TEST_F(StrictUTF8, EverySequenceUpToThreeBytes)
{
    for (unsigned int a = 0; a <= 0xFF; ++a) {
        unsigned char bytes[3] = {static_cast<unsigned char>(a)};
        expectAsInTheTable(bytes, 1);
        for (unsigned int b = 0; b <= 0xFF; ++b) {
            bytes[1] = static_cast<unsigned char>(b);
            expectAsInTheTable(bytes, 2);
            if (a < 0x80)
                continue;  // the first byte is a character
            for (unsigned int c = 0; c <= 0xFF; ++c) {
                bytes[2] = static_cast<unsigned char>(c);
                expectAsInTheTable(bytes, 3);
            }
        }
    }
}

TEST_F(StrictUTF8, EveryLeadOfFourWithEverySecondByte)
{
    unsigned char const others[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xF0, 0xFF};
    for (unsigned int a = 0xF0; a <= 0xFF; ++a)
        for (unsigned int b = 0; b <= 0xFF; ++b)
            for (unsigned char const c : others)
                for (unsigned char const d : others) {
                    unsigned char const bytes[] = {static_cast<unsigned char>(a), static_cast<unsigned char>(b), c, d};
                    expectAsInTheTable(bytes, 4);
                }
}

TEST_F(StrictUTF8, RefusesWhatThePublishedDecoderTakes)
{
    struct Row {
        char const* what;
        std::string bytes;
        unsigned int length;
    };
    Row const rows[] = {
        {"overlong U+0000", "\xC0\x80", 1},
        {"overlong slash in two bytes", "\xC0\xAF", 1},
        {"overlong slash in three bytes", "\xE0\x80\xAF", 1},
        {"overlong slash in four bytes", "\xF0\x80\x80\xAF", 1},
        {"high surrogate", "\xED\xA0\x80", 1},
        {"low surrogate", "\xED\xBF\xBF", 1},
        {"U+110000", "\xF4\x90\x80\x80", 1},
        {"lead F5", "\xF5\x80\x80\x80", 1},
        {"lead of five", "\xF8\x88\x80\x80\x80", 1},
        {"lead of six", "\xFC\x84\x80\x80\x80\x80", 1},
        {"FE", "\xFE", 1},
        {"FF", "\xFF\xBF\xBF\xBF", 1},
        {"stray", "\x80", 1},
        {"three bytes, two of them good",
         "\xE2\x82"
         "A",
         2},
        {"four bytes, two of them good",
         "\xF0\x9F"
         "A",
         2},
        {"four bytes, three of them good",
         "\xF0\x9F\x98"
         "A",
         3},
        {"zero does not continue", "\xF0\x9F\x98\0"s, 3},
    };
    for (Row const& row : rows)
        for (size_t letters = 0; letters < 32; ++letters) {
            unsigned char const* const source = m_source.hold(std::string(letters, 'a') + row.bytes + "B", 0);
            unsigned short units[64];
            Progress const progress = m_engine.decodeStrict(
                g_oConverterUTF8, source, source + letters + row.bytes.size() + 1, units, units + 64, false);
            EXPECT_EQ(progress.stop, Stop::ILLEGAL) << row.what;
            EXPECT_EQ(progress.consumed, letters) << row.what;
            EXPECT_EQ(progress.written, letters) << row.what;
            EXPECT_EQ(progress.length, row.length) << row.what;
        }
}

TEST_F(StrictUTF8, CapacityRunsOutBeforeAPairWhole)
{
    unsigned char const* const source = m_source.hold("A\xF0\x9F\x98\x80"s, 0);
    unsigned short units[3];
    Progress const progress = m_engine.decodeStrict(g_oConverterUTF8, source, source + 5, units, units + 2, false);
    EXPECT_EQ(progress.stop, Stop::DESTINATION_FULL);
    EXPECT_EQ(progress.consumed, 1u);
    EXPECT_EQ(progress.written, 1u);
    EXPECT_EQ(progress.length, 0u);
}

TEST_F(StrictUTF8, SingleByteSetsHaveNothingToBeStricterAbout)
{
    kx7::Engine const& engine = *kx7::engineOf(g_oConverterWCP874);
    for (unsigned int byte = 0; byte <= 0xFF; ++byte) {
        unsigned char const* const source = m_source.hold(std::string(1, static_cast<char>(byte)), 0);
        unsigned short lenientUnit = 0;
        unsigned short strictUnit = 0;
        Progress const lenient =
            engine.decode(g_oConverterWCP874, source, source + 1, &lenientUnit, &lenientUnit + 1, true);
        Progress const strict =
            engine.decodeStrict(g_oConverterWCP874, source, source + 1, &strictUnit, &strictUnit + 1, true);
        EXPECT_EQ(strict.stop, lenient.stop) << byte;
        EXPECT_EQ(strict.consumed, lenient.consumed) << byte;
        EXPECT_EQ(strict.length, lenient.length) << byte;
        EXPECT_EQ(strictUnit, lenientUnit) << byte;
    }
}
