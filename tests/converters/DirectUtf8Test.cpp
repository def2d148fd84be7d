// kx7text tests - short texts directly to and from UTF-8, against the conversion in two steps by the plain engine.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"
#include "kx7/convert.h"
#include "kx7/converters/Engine.h"
#include "tests/support/AllSets.h"
#include "tests/support/CharSets.h"
#include "tests/support/Hex.h"
#include "tests/support/KernelSets.h"
#include "tests/support/Memory.h"
#include "tests/support/OneIn.h"

using namespace kx7test;

namespace {

constexpr size_t LONGEST = 300;  ///< more than is taken

/** One direction of one set. */
struct Way {
    std::string name;
    KX7CharSetConverter& from;
    KX7CharSetConverter& to;
    std::vector<std::string> plain;      ///< characters that both sides have
    std::vector<std::string> fragments;  ///< anything

    bool isToUTF8() const { return &to == &g_oConverterUTF8; }

    size_t convert(unsigned char const* source, unsigned char* dest, size_t capacity) const
    {
        return isToUTF8() ? kx7::engineOf(from)->toUTF8(from, source, dest, capacity)
                          : kx7::engineOf(to)->fromUTF8(to, source, dest, capacity);
    }
};

std::string inTwoSteps(Way const& way, std::string const& text, size_t capacity)
{
    Using const plain(kx7::InstructionSet::PLAIN);
    std::string result(capacity + 1, '\0');
    result.resize(kx7::convertThroughUTF16(way.from, text.c_str(), way.to, result.data(),
                                           static_cast<unsigned int>(capacity), {false, ILLCHAR_REPLACE}));
    return result;
}

/** Every set of bytes, both ways. */
std::vector<Way> const& ways()
{
    static std::vector<Way> const all = [] {
        std::vector<Way> found;
        for (MultibyteSet const& set : allSets()) {
            if (set.isWide || &set.converter == &g_oConverterUTF8 || &set.converter == &g_oConverterUTF16Esc)
                continue;
            Way to{std::string(set.name) + " to UTF-8", set.converter, g_oConverterUTF8, {}, set.byteFragments};
            Way from{std::string(set.name) + " from UTF-8", g_oConverterUTF8, set.converter, {}, utf8Fragments()};
            std::vector<std::u16string> units = set.unitFragments;
            for (char16_t const unit : {u'a', u'<', u' ', u'\n', u'~', u'\x1C', u'\xE9', u'\x44F', u'\xE01', u'\x3042',
                                        u'\x4E00', u'\xAC00', u'\xAC02', u'\x20AC'})
                units.emplace_back(1, unit);
            for (std::u16string const& text : units) {
                auto const* const source = reinterpret_cast<unsigned short const*>(text.c_str());
                unsigned char bytes[16];
                std::string const utf8(bytes, bytes + UTF16ToUTF8(bytes, source, sizeof bytes));
                std::string const local(
                    bytes, bytes + set.converter.fromUTF16(bytes, source, sizeof bytes - 1, ILLCHAR_REPLACE, nullptr));
                from.fragments.push_back(utf8);
                if (local != "?" && inTwoSteps(from, utf8, 16) == local && inTwoSteps(to, local, 16) == utf8) {
                    to.plain.push_back(local);
                    from.plain.push_back(utf8);
                }
            }
            found.push_back(to);
            found.push_back(from);
        }
        return found;
    }();
    return all;
}

/** A text of about `length` bytes: runs of ASCII, of characters, and `broken` fragments in a thousand. */
std::string textOf(Way const& way, std::mt19937& random, size_t length, unsigned int broken)
{
    std::string text;
    while (text.size() < length) {
        bool const isASCII = random() % 2 == 0;
        for (size_t n = random() % 24; n != 0; --n) {
            if (random() % 1000 < broken)
                text += way.fragments[random() % way.fragments.size()];
            else if (isASCII)
                text += static_cast<char>('a' + random() % 26);
            else
                text += way.plain[random() % way.plain.size()];
        }
    }
    while (text.size() > length)
        text.pop_back();
    return text;
}

class Direct {
public:
    /** A text `after` bytes before an unreadable page is converted as in two steps, or left to them. */
    testing::AssertionResult isAsInTwoSteps(Way const& way, std::string const& text, size_t capacity, size_t after = 0)
    {
        unsigned char const* const source = m_source.hold(text, 1 + after);
        unsigned char* const dest = m_dest.arm(capacity);
        std::vector<unsigned char> const before(dest, dest + capacity);
        size_t const written = way.convert(source, dest, capacity);
        std::string const expected = inTwoSteps(way, text, capacity);
        bool const isTaken = written != kx7::NOT_DIRECT;
        m_taken += isTaken;
        bool isRight = m_dest.intact() && (!isTaken || written == expected.size());
        for (size_t i = 0; i < capacity && isRight; ++i) {
            bool const isExpected = i < expected.size() && dest[i] == static_cast<unsigned char>(expected[i]);
            isRight = isExpected || (dest[i] == before[i] && (!isTaken || i >= expected.size()));
        }
        if (isRight)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << way.name << ", capacity " << capacity << ", " << after << " after, of " << hex(text, text.size())
               << "\n  " << static_cast<ptrdiff_t>(written) << " written, expected " << hex(expected, expected.size());
    }

    /** Texts that were not left. */
    size_t taken() const { return m_taken; }

private:
    PageEnd<unsigned char> m_source;
    Fenced<unsigned char> m_dest;
    size_t m_taken = 0;
};

}  // namespace

TEST(DirectUtf8, EveryLengthAndEveryPlaceInFrontOfAPage)
{
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        std::mt19937 random(1);
        Direct direct;
        for (Way const& way : ways())
            for (size_t length = 0; length <= LONGEST; ++length)
                for (unsigned int const broken : {0U, 1U, 10U, 100U})
                    ASSERT_TRUE(direct.isAsInTwoSteps(way, textOf(way, random, length, broken), 4 * length,
                                                      random() % 2 * (random() % 128)))
                        << nameOf(set);
    }
}

TEST(DirectUtf8, EveryCapacity)
{
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        std::mt19937 random(2);
        Direct direct;
        for (Way const& way : ways())
            for (unsigned int const length : {1U, 3U, 7U, 15U, 16U, 17U, 24U, 33U, 64U, 70U, 100U}) {
                std::string const text = textOf(way, random, length, 2);
                for (size_t capacity = 0; capacity <= 3 * length + 4; ++capacity)
                    ASSERT_TRUE(direct.isAsInTwoSteps(way, text, capacity)) << nameOf(set);
            }
    }
}

TEST(DirectUtf8, EveryFragmentAtEveryPlace)
{
    OneIn isTaken(5);
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        std::mt19937 random(3);
        Direct direct;
        for (Way const& way : ways())
            for (std::string const& fragment : way.fragments)
                for (std::string const& next : {std::string("x"), way.fragments[random() % way.fragments.size()]})
                    for (size_t before = 0; before <= 66; ++before) {
                        if (!isTaken())
                            continue;
                        std::string const text = textOf(way, random, before, 0) + fragment + next;
                        ASSERT_TRUE(direct.isAsInTwoSteps(way, text, 4 * text.size())) << nameOf(set);
                    }
    }
}

TEST(DirectUtf8, WhatBothSidesHaveIsTaken)
{
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        for (Way const& way : ways()) {
            Direct direct;
            size_t texts = 0;
            for (size_t count = 1; count <= 60; ++count)
                for (std::string const& character : way.plain) {
                    std::string text;
                    for (size_t i = 0; i < count; ++i)
                        text += character;
                    ++texts;
                    ASSERT_TRUE(direct.isAsInTwoSteps(way, text, 4 * text.size())) << nameOf(set);
                }
            EXPECT_EQ(direct.taken(), texts) << way.name << ", " << nameOf(set);
            EXPECT_GE(way.plain.size(), 5u) << way.name;
        }
    }
}

TEST(DirectUtf8, NothingAfterTheEndIsReadWhereAListMapsAByteToIt)
{
    std::vector<unsigned short> list = {0x10, 0};
    for (unsigned short byte = 1; byte < 0x80; ++byte)
        if (byte != 0x10)
            list.insert(list.end(), {byte, byte});
    list.insert(list.end(), {0, 0});
    KX7CharSetConverterSBCS own(list.data(), static_cast<KX7CharSet>(7777));
    Way const way{"a list with U+0000", g_oConverterUTF8, own, {}, {}};
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        Direct direct;
        PageEnd<unsigned char> page;
        for (size_t length = 0; length <= LONGEST; ++length)
            for (std::string const& end : {std::string(), std::string("\xC0\x80zz"), std::string("\xC3\xA9zz")}) {
                std::string const text = std::string(length, 'x') + end;
                ASSERT_TRUE(direct.isAsInTwoSteps(way, text, 4 * text.size())) << nameOf(set);
                std::string const expected = inTwoSteps(way, text, 2 * text.size());
                auto const* const source = reinterpret_cast<char const*>(page.hold(text, 1));
                std::string found(2 * text.size() + 1, '\0');
                found.resize(kx7::convertThroughUTF16(way.from, source, own, found.data(),
                                                      static_cast<unsigned int>(2 * text.size()),
                                                      {false, ILLCHAR_REPLACE}));
                ASSERT_EQ(hex(found, found.size()), hex(expected, expected.size())) << nameOf(set) << ", " << length;
            }
    }
}

TEST(DirectUtf8, InOneBufferAsInTwo)
{
    OneIn isTaken(7);
    for (kx7::InstructionSet const set : sets()) {
        Using const kernels(set);
        std::mt19937 random(4);
        for (Way const& way : ways()) {
            KX7CharSet const charSet = charSetOf(way.isToUTF8() ? way.from : way.to);
            auto const convert = [&](void* dest, void const* source, size_t capacity) -> size_t {
                auto const bytes = static_cast<int>(capacity);
                return way.isToUTF8() ? LocalToUTF8(static_cast<unsigned char*>(dest), static_cast<char const*>(source),
                                                    bytes, charSet)
                                      : UTF8ToLocal(static_cast<char*>(dest), static_cast<unsigned char const*>(source),
                                                    bytes, charSet);
            };
            bool const onlyShrinks = dynamic_cast<KX7CharSetConverterSBCS*>(&way.to) != nullptr;
            for (size_t length = 0; length <= (onlyShrinks ? 5000u : 1500u); length += length < 80 ? 1 : 37)
                for (size_t const shift : {0U, 1U, 7U, 40U}) {
                    if (!isTaken())
                        continue;
                    std::string const text = textOf(way, random, length, 3);
                    size_t const capacity = 4 * length + 1;
                    std::vector<unsigned char> apart(capacity);
                    size_t const expected = convert(apart.data(), text.c_str(), capacity);
                    // The result begins where the text does, or before it.
                    std::vector<unsigned char> buffer(capacity + shift);
                    memcpy(buffer.data() + shift, text.c_str(), length + 1);
                    ASSERT_EQ(convert(buffer.data(), buffer.data() + shift, capacity), expected)
                        << way.name << ", " << length << " bytes, " << shift << ", " << nameOf(set);
                    ASSERT_EQ(memcmp(buffer.data(), apart.data(), expected + 1), 0)
                        << way.name << ", " << length << " bytes, " << shift << ", " << nameOf(set);
                }
        }
    }
}

TEST(DirectUtf8, InOneBufferWhereTheResultGetsLongerThanTheText)
{
    struct {
        char const* name;
        KX7CharSetConverter& to;
        ILLCHAR_OPTYPE op;
        char const* shrinks;
        char const* grows;
    } const cases[] = {
        {"escapes of 1251", g_oConverterWCP1251, ILLCHAR_ESCAPE, "\xD0\xB0", "\xF0\x9F\x98\x80"},
        {"GB 18030, four bytes for two", g_oConverterGB18030, ILLCHAR_REPLACE, "\xE4\xB8\x80", "\xC2\x80"},
        {"GB 18030, four bytes for one", g_oConverterGB18030, ILLCHAR_REPLACE, "\xE4\xB8\x80", "\xFF"},
    };
    constexpr size_t SHIFT = 64;
    for (auto const& c : cases) {
        for (size_t shrinking = 0; shrinking <= 2000; shrinking += 100)
            for (size_t growing = 20; growing <= 820; growing += 50) {
                // One at first makes a piece of what follows it.
                std::string text;
                for (auto const& [part, count] : {std::pair(c.shrinks, size_t{50}),
                                                  {c.grows, 1},
                                                  {c.shrinks, shrinking},
                                                  {c.grows, growing},
                                                  {c.shrinks, 3000}})
                    for (size_t i = 0; i < count; ++i)
                        text += part;
                size_t const capacity = 3 * text.size();
                auto const convert = [&](char* dest, char const* source) {
                    unsigned int const bytes = kx7::convertThroughUTF16(
                        g_oConverterUTF8, source, c.to, dest, static_cast<unsigned int>(capacity), {false, c.op});
                    return std::string(dest, bytes);
                };
                std::vector<char> apart(capacity + SHIFT);
                std::string const expected = convert(apart.data(), text.c_str());
                auto const isRight = [&](kx7::InstructionSet set) {
                    Using const kernels(set);
                    std::vector<char> buffer(capacity + SHIFT);
                    memcpy(buffer.data() + SHIFT, text.c_str(), text.size() + 1);
                    return convert(buffer.data(), buffer.data() + SHIFT) == expected;
                };
                ASSERT_TRUE(isRight(kx7::InstructionSet::PLAIN)) << c.name << ", " << shrinking << " and " << growing;
                for (kx7::InstructionSet const set : sets())
                    ASSERT_TRUE(isRight(set))
                        << c.name << ", " << shrinking << " and " << growing << ", " << nameOf(set);
            }
    }
}
