// kx7text tests - conversion between two converters in pieces, which must not show.
#include <gtest/gtest.h>

#include "kx7/converters/Engine.h"
#include "tests/converters/Foreign.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/Hex.h"
#include "tests/support/HugeText.h"
#include "tests/support/Memory.h"
#include "tests/support/OneIn.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

using kx7::Transit;

Transit const PLAIN{false, ILLCHAR_REPLACE};
Transit const TRANSITS[] = {PLAIN, {false, ILLCHAR_ESCAPE}, {true, ILLCHAR_REPLACE}, {true, ILLCHAR_ESCAPE}};

/** Every escape turned into the unit it names; what that makes is not looked at again. */
std::u16string unescaped(std::u16string const& units)
{
    std::u16string const digits = u"0123456789ABCDEF";
    std::u16string result;
    for (size_t i = 0; i < units.size();) {
        bool isEscape = units.compare(i, 2, u"U+") == 0 && units.size() - i >= 6;
        size_t value = 0;
        for (size_t k = 2; isEscape && k < 6; ++k) {
            isEscape = digits.find(units[i + k]) != std::u16string::npos;
            value = value * 16 + digits.find(units[i + k]);
        }
        result += isEscape ? static_cast<char16_t>(value) : units[i];
        i += isEscape ? 6 : 1;
    }
    return result;
}

/** One call of toUTF16 and one of fromUTF16; the latter as modelled where it might go beyond its capacity. */
std::string inOnePass(KX7CharSetConverter& from, std::string const& bytes, KX7CharSetConverter& to,
                      unsigned int capacity, Transit transit)
{
    std::vector<unsigned short> decoded(bytes.size() + 1);
    auto const unitCapacity = static_cast<unsigned int>(bytes.size());
    unsigned int const length = from.toUTF16(decoded.data(), bytes.c_str(), unitCapacity, ILLCHAR_REPLACE, nullptr, -1);
    std::u16string units(decoded.data(), decoded.data() + length);
    if (transit.unescape)
        units = unescaped(units);
    if (&to == &g_oConverterUTF8)
        return Utf8Model(6).fromUTF16({units, capacity, transit.op}).bytes;
    static PageEnd<unsigned short> memory;
    std::string result(capacity + size_t{4}, '\0');
    result.resize(to.fromUTF16(result.data(), memory.hold(units, 1), capacity, transit.op, nullptr));
    return result;
}

class Passage {
public:
    /** convertThroughUTF16 gives what one pass gives, and stays within its capacity. */
    testing::AssertionResult isOnePass(KX7CharSetConverter& from, std::string const& bytes, KX7CharSetConverter& to,
                                       unsigned int capacity, Transit transit = PLAIN)
    {
        auto const* const source = reinterpret_cast<char const*>(m_source.hold(bytes, 1));
        unsigned char* const dest = m_dest.arm(capacity + size_t{1});
        unsigned int const written = kx7::convertThroughUTF16(from, source, to, dest, capacity, transit);
        std::vector<unsigned short> units(bytes.size() + 1);
        bool const nothing = from.toUTF16(units.data(), bytes.c_str(), static_cast<unsigned int>(bytes.size()),
                                          ILLCHAR_REPLACE, nullptr, -1) == 0;
        if (nothing && (written != 0 || !m_dest.untouched()))
            return testing::AssertionFailure() << "nothing to convert, but something is written: " << hex(bytes);
        if (nothing)
            return testing::AssertionSuccess();
        if (!m_dest.intact() || written > capacity || dest[written] != 0)
            return testing::AssertionFailure() << "outside its capacity, or not terminated: " << hex(bytes);
        std::string const expected = inOnePass(from, bytes, to, capacity, transit);
        std::string const got(dest, dest + written);
        return sameText(got, expected) << "\n  of " << hex(bytes, bytes.size()) << " capacity " << capacity
                                       << " operation " << transit.op << " unescape " << transit.unescape;
    }

    /** The same with every transit. */
    testing::AssertionResult isAlwaysOnePass(KX7CharSetConverter& from, std::string const& bytes,
                                             KX7CharSetConverter& to, unsigned int capacity)
    {
        for (Transit const transit : TRANSITS)
            if (testing::AssertionResult const result = isOnePass(from, bytes, to, capacity, transit); !result)
                return result;
        return testing::AssertionSuccess();
    }

private:
    PageEnd<unsigned char> m_source;
    Fenced<unsigned char> m_dest;
};

/** What UTF-8 can meet, and escapes, whole, broken and of surrogates. */
std::vector<std::string> fragmentsAndEscapes()
{
    std::vector<std::string> fragments = utf8Fragments();
    for (char const* escape :
         {"U+20AC", "U+20ac", "U+20A", "U+", "U", "UU+0041", "U+D83D", "U+DE00", "U+0055", "U+0000"})
        fragments.emplace_back(escape);
    return fragments;
}

}  // namespace

TEST(ThroughUTF16, EveryFragmentAtAPieceBoundary)
{
    Passage passage;
    size_t turn = 0;
    std::vector<std::string> const fragments = fragmentsAndEscapes();
    for (size_t before = 0; before <= 7; ++before)
        for (std::string const& a : fragments)
            for (std::string const& b : fragments) {
                std::string const bytes = std::string(PIECE_UNITS - before, 'x') + a + b + "C";
                auto const length = static_cast<unsigned int>(bytes.size());
                Transit const transit = TRANSITS[++turn % 4];
                ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, bytes, g_oConverterUTF8, 3 * length));
                ASSERT_TRUE(passage.isOnePass(g_oConverterUTF8, bytes, g_oConverterUTF8, length - 3, transit));
                ASSERT_TRUE(passage.isOnePass(g_oConverterUTF8, bytes, g_oConverterWCP874, 3 * length, transit));
            }
}

TEST(ThroughUTF16, EveryCapacityOfShortTexts)
{
    OneIn isTaken(5);
    Passage passage;
    std::vector<std::string> const fragments = fragmentsAndEscapes();
    for (std::string const& a : fragments)
        for (std::string const& b : fragments)
            for (unsigned int capacity = 0; capacity <= 16; ++capacity) {
                if (!isTaken())
                    continue;
                ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, a + b, g_oConverterUTF8, capacity));
                ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, a + b, g_oConverterWCP874, capacity));
                ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterWCP874, a + b, g_oConverterUTF8, capacity));
            }
}

TEST(ThroughUTF16, RandomLongTexts)
{
    Passage passage;
    std::mt19937 random(7);
    for (int i = 0; i < 200; ++i) {
        std::string const bytes = randomText(random, fragmentsAndEscapes(), random() % 20000);
        auto const length = static_cast<unsigned int>(bytes.size());
        for (unsigned int const capacity : {3 * length, static_cast<unsigned int>(random() % (length + 1))}) {
            ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, bytes, g_oConverterUTF8, capacity));
            ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, bytes, g_oConverterWCP1252, capacity));
            ASSERT_TRUE(passage.isAlwaysOnePass(g_oConverterWCP1252, bytes, g_oConverterUTF8, capacity));
        }
    }
}

// A piece may end as much as an eighth early, before a character or an escape that begins anywhere there.
TEST(ThroughUTF16, EscapesWhereverAPieceMayEnd)
{
    struct {
        char const* character;
        KX7CharSetConverter& from;
        size_t units;
    } const texts[] = {{"x", g_oConverterUTF8, 1},
                       {"\xC3\xA9", g_oConverterUTF8, 1},
                       {"\xE2\x82\xAC", g_oConverterUTF8, 1},
                       {"\xF0\x9F\x98\x80", g_oConverterUTF8, 2},
                       {"\xE9", g_oConverterWCP1252, 1},
                       {"\x82\xA0", g_oConverterWCP932, 1}};
    Passage passage;
    for (auto const& text : texts)
        for (size_t units = PIECE_UNITS - PIECE_UNITS / 8 - 16; units <= PIECE_UNITS + 8; units += text.units) {
            std::string bytes(units % 2 == 0 ? "" : "a");
            for (size_t i = 0; i < units / text.units; ++i)
                bytes += text.character;
            bytes += "U+00E9UU+20ACz";
            auto const capacity = static_cast<unsigned int>(3 * bytes.size());
            ASSERT_TRUE(passage.isOnePass(text.from, bytes, g_oConverterUTF8, capacity, {true, ILLCHAR_REPLACE}))
                << units;
            ASSERT_TRUE(passage.isOnePass(text.from, bytes, g_oConverterWCP1252, capacity, {true, ILLCHAR_ESCAPE}))
                << units;
        }
}

TEST(ThroughUTF16, ZeroUnitWithinTheTextEndsIt)
{
    char dest[16] = {};
    EXPECT_EQ(kx7::convertThroughUTF16(g_oConverterUTF8,
                                       "A\xC0\x80"
                                       "B",
                                       g_oConverterUTF8, dest, 15, PLAIN),
              1u);
    EXPECT_STREQ(dest, "A");
    Passage passage;
    for (size_t const letters : {PIECE_UNITS - 2, PIECE_UNITS - 1, PIECE_UNITS, PIECE_UNITS + 1})
        EXPECT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8,
                                            std::string(letters, 'x') + "\xC0\x80" + std::string(5000, 'y'),
                                            g_oConverterUTF8, 20000));
}

TEST(ThroughUTF16, TextThatDecodesToNothingWritesNothing)
{
    Passage passage;
    for (std::string const& bytes : {""s, "\x80"s, std::string(3 * PIECE_UNITS, '\xBF')})
        EXPECT_TRUE(passage.isAlwaysOnePass(g_oConverterUTF8, bytes, g_oConverterUTF8, 8));
}

TEST(ThroughUTF16, DerivedAndForeignConvertersTakePart)
{
    DerivedUtf8 derived;
    Passage passage;
    char dest[32] = {};
    EXPECT_EQ(kx7::convertThroughUTF16(derived,
                                       "A\xC3\xA9"
                                       "A",
                                       g_oConverterUTF8, dest, 31, PLAIN),
              4u);
    EXPECT_STREQ(dest, "B\xC3\xA9"
                       "B");
    EXPECT_TRUE(passage.isOnePass(g_oConverterUTF8, std::string(5000, 'x') + "\xF0\x9F\x98\x80", derived, 20000));
    EXPECT_TRUE(passage.isAlwaysOnePass(derived, std::string(5000, 'A') + "\xF0\x9F\x98\x80", g_oConverterUTF8, 20000));

    Wide wide;
    unsigned char units[16];
    EXPECT_EQ(kx7::convertThroughUTF16(g_oConverterUTF8, "A\xC3\xA9", wide, units, 12, PLAIN), 8u);
    unsigned char const expected[] = {'A', 0, 0, 0, 0xE9, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(memcmp(units, expected, sizeof expected), 0);
}

// A converter of a caller is given the whole text, for which 32-bit code has no memory from 1 GiB on: twice its bytes
// and two are then more than an object can have, and may be more than a size can say.
TEST(ThroughUTF16, ATextThatNoMemoryHoldsConvertsToNothingWithAForeignConverter)
{
    if (sizeof(size_t) > 4)
        GTEST_SKIP() << "there is memory for such a text";
    for (size_t const length : {size_t{1} << 30, size_t{0x7FC00000}}) {
        HugeText text(length, "a");
        if (!text.terminate(1).data())
            GTEST_SKIP() << "this machine gives no text so many addresses, or is too slow for it";
        DerivedUtf8 derived;
        char dest[] = "unchanged";
        EXPECT_EQ(kx7::convertThroughUTF16(derived, text.data(), g_oConverterUTF8, dest, sizeof dest - 1, PLAIN), 0u);
        EXPECT_STREQ(dest, "unchanged");
    }
}
