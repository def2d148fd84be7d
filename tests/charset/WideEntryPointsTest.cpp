// kx7text tests - the exported conversion functions with UTF-16, UTF-32 and the escaped form as the local encoding.
#include <gtest/gtest.h>

#include <cstring>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "tests/charset/EntryPointReference.h"
#include "tests/support/ByteOrder.h"
#include "tests/support/Guarded.h"
#include "tests/support/Hex.h"

using namespace std::string_literals;
using kx7test::FILL;
using kx7test::Guarded;
using kx7test::hex;
using kx7test::inLargeBuffer;
using kx7test::Outcome;
using kx7test::referenceThroughUTF16;

namespace {

struct WideSet {
    char const* name;
    KX7CharSet charSet;
    KX7CharSetConverter& converter;
    unsigned int terminator;
};

WideSet const SETS[] = {
    {"UTF-16", KX7CS_UTF16, g_oConverterUTF16, 2},
    {"UTF-32", KX7CS_UTF32, g_oConverterUTF32, 4},
    {"UTF-16 escape", KX7CS_UTF16ESC, g_oConverterUTF16Esc, 1},
};

/** The bytes of values in host byte order. */
template <class T>
std::string bytesOf(std::basic_string<T> const& values)
{
    return std::string(reinterpret_cast<char const*>(values.data()), values.size() * sizeof(T));
}

/** Runs `call` on a destination of `capacity` bytes that an unreadable page follows. */
template <class Call>
Outcome atPageEnd(size_t capacity, Call const& call)
{
    Guarded<char> memory(capacity);
    memset(memory.data(), FILL, capacity);
    unsigned int const result = call(memory.data());
    return {result, std::string(memory.data(), capacity)};
}

void expectSame(Outcome const& actual, Outcome const& expected, std::string const& what)
{
    EXPECT_EQ(actual.result, expected.result) << what;
    EXPECT_EQ(hex(actual.dest), hex(expected.dest)) << what;
}

std::string const UTF8_TEXTS[] = {"",         "a",    "abc",           u8"\u00E9\u20AC", u8"a\U0001F600b",
                                  "\xC3\x28", "\x80", "\xED\xA0\x80z", "U+20AC"};

}  // namespace

TEST(WideEntryPoints, EmptyUTF8SourceStoresAWholeTerminator)
{
    for (WideSet const& set : SETS) {
        Outcome const stored = atPageEnd(10, [&](char* dest) {
            return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>(""), 10, set.charSet);
        });
        EXPECT_EQ(stored.result, 0u) << set.name;
        EXPECT_EQ(hex(stored.dest),
                  hex(std::string(set.terminator, '\0') + std::string(10 - set.terminator, static_cast<char>(FILL))))
            << set.name;
    }
}

TEST(WideEntryPoints, TerminatorThatDoesNotFitLeavesTheDestinationAlone)
{
    unsigned short const units[] = {'a', 0};
    for (WideSet const& set : SETS)
        for (unsigned int capacity = 0; capacity < set.terminator; ++capacity) {
            int const size = static_cast<int>(capacity);
            for (char const* const text : {"a", ""}) {
                Outcome const stored = atPageEnd(capacity, [&](char* dest) {
                    return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>(text), size, set.charSet);
                });
                expectSame(stored, {0, std::string(capacity, static_cast<char>(FILL))}, set.name);
            }
            expectSame(atPageEnd(capacity, [&](char* dest) { return UTF16ToLocal(dest, units, size, set.charSet); }),
                       {0, std::string(capacity, static_cast<char>(FILL))}, set.name);
        }
}

TEST(WideEntryPoints, LetterIntoUTF16)
{
    Outcome const none = atPageEnd(
        1, [](char* dest) { return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>("a"), 1, KX7CS_UTF16); });
    EXPECT_EQ(none.result, 0u);
    Outcome const terminator = atPageEnd(
        3, [](char* dest) { return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>("a"), 3, KX7CS_UTF16); });
    EXPECT_EQ(terminator.result, 0u);
    EXPECT_EQ(hex(terminator.dest), hex("\0\0"s + static_cast<char>(FILL)));
    Outcome const letter = atPageEnd(
        4, [](char* dest) { return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>("a"), 4, KX7CS_UTF16); });
    EXPECT_EQ(letter.result, 2u);
    EXPECT_EQ(hex(letter.dest), hex(bytesOf(u"a\0"s)));
}

TEST(WideEntryPoints, UTF8ToLocalAtEveryCapacity)
{
    for (WideSet const& set : SETS)
        for (std::string const& text : UTF8_TEXTS) {
            Guarded<char> const source(text.c_str(), text.size() + 1);
            auto const* const utf8 = reinterpret_cast<unsigned char const*>(source.data());
            for (unsigned int capacity = 0; capacity <= 6 * text.size() + 10; ++capacity) {
                Outcome expected{0, std::string(capacity, static_cast<char>(FILL))};
                if (capacity >= set.terminator)
                    expected =
                        referenceThroughUTF16(g_oConverterUTF8, source.data(), set.converter, capacity, set.terminator);
                expectSame(atPageEnd(capacity,
                                     [&](char* dest) {
                                         return UTF8ToLocal(dest, utf8, static_cast<int>(capacity), set.charSet);
                                     }),
                           expected, set.name + (": " + hex(text)) + " in " + std::to_string(capacity));
            }
        }
}

TEST(WideEntryPoints, UTF16ToLocalAtEveryCapacity)
{
    std::u16string const texts[] = {u"", u"a", u"a\u20ACb", u"\U0001F600z", {0xD800}, {0xD800, u'z'}, {0xDC00, u'z'}};
    for (WideSet const& set : SETS)
        for (std::u16string const& text : texts) {
            Guarded<unsigned short> const source(text.c_str(), text.size() + 1);
            for (unsigned int capacity = set.terminator; capacity <= 6 * text.size() + 10; ++capacity) {
                auto const convert = [&](char* dest) {
                    return UTF16ToLocal(dest, source.data(), static_cast<int>(capacity), set.charSet);
                };
                Outcome const expected = inLargeBuffer(capacity, [&](char* dest) {
                    return set.converter.fromUTF16(dest, source.data(), capacity - set.terminator, ILLCHAR_REPLACE,
                                                   nullptr);
                });
                expectSame(atPageEnd(capacity, convert), expected,
                           set.name + (": " + hex(text)) + " in " + std::to_string(capacity));
            }
        }
}

TEST(WideEntryPoints, UTF16AsSourceGivesNothing)
{
    // It converts nothing without a limit, and these functions give none.
    std::string const source = bytesOf(u"\u6162\u6364\u6566\0"s);  // in either byte order no zero byte at the front
    for (unsigned int capacity = 1; capacity <= 12; ++capacity) {
        Outcome const utf8 = atPageEnd(capacity, [&](char* dest) {
            return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), source.c_str(), static_cast<int>(capacity),
                               KX7CS_UTF16);
        });
        expectSame(utf8, {0, std::string(capacity, static_cast<char>(FILL))}, "LocalToUTF8 leaves it alone");
        Guarded<unsigned short> units(capacity);
        std::fill_n(units.data(), capacity, static_cast<unsigned short>(0xEEEE));
        EXPECT_EQ(LocalToUTF16(units.data(), source.c_str(), static_cast<int>(capacity), KX7CS_UTF16), 0u);
        EXPECT_EQ(units[0], 0u) << "LocalToUTF16 writes the terminator";
        if (capacity > 1) {
            EXPECT_EQ(units[1], 0xEEEEu);
        }
    }
    EXPECT_EQ(GetNumUnits(source.c_str(), KX7CS_UTF16), 3u) << "although it can be counted";
}

TEST(WideEntryPoints, UTF32AsSourceIsBoundedByItsFirstZeroByte)
{
    if (!isLittleEndian())
        GTEST_SKIP() << "every UTF-32 text begins with a zero byte";
    struct Row {
        std::u32string source;
        std::string utf8;
    };
    // Each has as many units of capacity as it has bytes before its first zero byte.
    Row const rows[] = {
        {U"abc", "a"},
        {{0x4E2D, 0x6587, U'z'}, u8"\u4E2D\u6587"},
        {{0x1F601, 0x1F602}, u8"\U0001F601"},
        {{0x010101, U'z', U'z', U'z', U'z'}, u8"\U00010101z"},
        {{0x100, U'z'}, ""},
    };
    for (Row const& row : rows) {
        std::string const bytes = bytesOf(row.source) + std::string(4, '\0');
        Guarded<char> const source(bytes.data(), bytes.size());
        for (unsigned int capacity = 1; capacity <= row.utf8.size() + 4; ++capacity) {
            Outcome const expected =
                referenceThroughUTF16(g_oConverterUTF32, source.data(), g_oConverterUTF8, capacity, 1);
            Outcome const actual = atPageEnd(capacity, [&](char* dest) {
                return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), source.data(), static_cast<int>(capacity),
                                   KX7CS_UTF32);
            });
            expectSame(actual, expected, hex(row.source) + " in " + std::to_string(capacity));
        }
        unsigned char whole[32] = {};
        EXPECT_EQ(LocalToUTF8(whole, source.data(), sizeof whole, KX7CS_UTF32), row.utf8.size()) << hex(row.source);
        EXPECT_STREQ(reinterpret_cast<char const*>(whole), row.utf8.c_str()) << hex(row.source);
    }
}

TEST(WideEntryPoints, UTF32WithoutAZeroByteInFrontIsReadToItsTerminator)
{
    // Above U+10FFFF there are code points of four bytes that are not zero.
    std::u32string const source{0x01020304, 0x05060708};
    std::string const bytes = bytesOf(source) + std::string(4, '\0');
    Guarded<char> const guarded(bytes.data(), bytes.size());
    for (unsigned int capacity = 1; capacity <= 20; ++capacity)
        expectSame(atPageEnd(capacity,
                             [&](char* dest) {
                                 return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), guarded.data(),
                                                    static_cast<int>(capacity), KX7CS_UTF32);
                             }),
                   referenceThroughUTF16(g_oConverterUTF32, guarded.data(), g_oConverterUTF8, capacity, 1),
                   std::to_string(capacity));
}

TEST(WideEntryPoints, UTF32IntoUTF16AtEveryCapacity)
{
    std::string const bytes = bytesOf(U"a\U0001F600\u20AC\0"s);
    Guarded<char> const source(bytes.data(), bytes.size());
    for (unsigned int capacity = 1; capacity <= 8; ++capacity) {
        auto const convert = [&](char* dest) {
            return LocalToUTF16(reinterpret_cast<unsigned short*>(dest), source.data(), static_cast<int>(capacity),
                                KX7CS_UTF32);
        };
        Outcome const expected = inLargeBuffer(2 * capacity, [&](char* dest) {
            return g_oConverterUTF32.toUTF16(reinterpret_cast<unsigned short*>(dest), source.data(), capacity - 1,
                                             ILLCHAR_REPLACE, nullptr, -1);
        });
        expectSame(atPageEnd(2 * capacity, convert), expected, std::to_string(capacity));
    }
    unsigned short units[8];
    EXPECT_EQ(LocalToUTF16(units, source.data(), 8, KX7CS_UTF32), 4u);
    EXPECT_EQ(GetNumUnits(source.data(), KX7CS_UTF32), 3u) << "code points";
    EXPECT_EQ(GetNumBytes(units, KX7CS_UTF32), 12u);
    EXPECT_EQ(GetNumBytes(units, KX7CS_UTF16), 8u);
    EXPECT_EQ(GetNumBytes(units, KX7CS_UTF16ESC), 1u + 3 * 6);
}

TEST(WideEntryPoints, EscapedFormAsSourceAndBack)
{
    unsigned char utf8[32];
    EXPECT_EQ(LocalToUTF8(utf8, "AU+00E9U+D83DU+DE00", sizeof utf8, KX7CS_UTF16ESC), 7u);
    EXPECT_STREQ(reinterpret_cast<char const*>(utf8), u8"A\u00E9\U0001F600");
    char local[32];
    EXPECT_EQ(UTF8ToLocal(local, utf8, sizeof local, KX7CS_UTF16ESC), 19u);
    EXPECT_STREQ(local, "AU+00E9U+D83DU+DE00");
    EXPECT_EQ(LocalToUTF8(utf8, "U+0000A", sizeof utf8, KX7CS_UTF16ESC), 0u) << "an escaped zero ends the text";
}

TEST(WideEntryPoints, Sizes)
{
    for (WideSet const& set : SETS)
        EXPECT_EQ(GetNullCharSize(set.charSet), set.terminator) << set.name;
    EXPECT_EQ(GetMinUnitSize(KX7CS_UTF16), 2u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_UTF16), 2u);
    EXPECT_EQ(GetMinUnitSize(KX7CS_UTF32), 4u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_UTF32), 4u);
    EXPECT_EQ(GetMinUnitSize(KX7CS_UTF16ESC), 1u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_UTF16ESC), 6u);
}
