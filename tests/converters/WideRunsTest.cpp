// kx7text tests - UTF-16 and UTF-32 at every length and capacity around the blocks that are converted at once.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "kx7/charset/Converters.h"
#include "tests/support/Guarded.h"

namespace {

using kx7test::Guarded;

constexpr size_t LONGEST = 100;

/** Characters of one unit and of two, the edges of the surrogates among them; `pairs` of a hundred have two units. */
std::u32string randomText(std::mt19937& random, size_t length, unsigned int pairs)
{
    std::u32string text;
    while (text.size() < length)
        text += random() % 100 < pairs ? U"\U00010000\U0001F600\U0010FFFF"[random() % 3]
                                       : U"a\u0436\uD7FF\uE000\uFFFF"[random() % 5];
    return text;
}

std::u16string unitsOf(std::u32string const& text)
{
    std::u16string units;
    for (char32_t const c : text) {
        if (c > 0xFFFF) {
            units += static_cast<char16_t>(0xD7C0 + (c >> 10));
            units += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        }
        else {
            units += static_cast<char16_t>(c);
        }
    }
    return units;
}

/** The part of `units` that fits into `capacity` without cutting a pair. */
std::u16string cut(std::u16string units, size_t capacity)
{
    if (units.size() > capacity) {
        units.resize(capacity);
        if (capacity != 0 && (units.back() & 0xFC00) == 0xD800)
            units.pop_back();
    }
    return units;
}

/** What `convert` (destination, capacity) writes, which is at most `size` values of T with the terminator. */
template <class T, class Convert>
std::basic_string<T> written(size_t size, Convert convert)
{
    Guarded<T> dest(size);
    size_t const n = convert(dest.data());
    EXPECT_EQ(dest[n], 0);
    return {dest.data(), n};
}

/** A terminated text that ends at an unreadable page and begins `shift` bytes off its alignment. */
template <class T>
class Source {
public:
    Source(std::basic_string<T> const& text, size_t shift) : m_bytes((text.size() + 1) * sizeof(T) + shift)
    {
        memcpy(m_bytes.data(), text.c_str(), (text.size() + 1) * sizeof(T));
        memset(m_bytes.data() + (text.size() + 1) * sizeof(T), 0, shift);
    }
    unsigned char* data() { return m_bytes.data(); }

private:
    Guarded<unsigned char> m_bytes;
};

TEST(WideRuns, Utf32AtEveryLengthAndCapacity)
{
    std::mt19937 random(31);
    for (size_t length = 0; length <= LONGEST; ++length) {
        for (unsigned int const pairs : {0U, 5U, 60U, 100U}) {
            std::u32string const text = randomText(random, length, pairs);
            std::u16string const units = unitsOf(text);
            Source<char32_t> bytes(text, length % 4);
            Source<char16_t> source(units, 0);
            for (size_t capacity = units.size() < 40 ? 0 : units.size() - 40; capacity <= units.size() + 2;
                 ++capacity) {
                auto const unitCapacity = static_cast<unsigned int>(capacity);
                ASSERT_EQ(written<char16_t>(std::min(capacity, units.size()) + 1,
                                            [&](char16_t* dest) {
                                                return g_oConverterUTF32.toUTF16(
                                                    reinterpret_cast<unsigned short*>(dest), bytes.data(), unitCapacity,
                                                    ILLCHAR_REPLACE, nullptr, -1);
                                            }),
                          cut(units, capacity))
                    << length << ' ' << capacity;
                size_t const fitting = std::min(capacity, text.size());
                ASSERT_EQ(written<char32_t>(fitting + 1,
                                            [&](char32_t* dest) {
                                                return g_oConverterUTF32.fromUTF16(
                                                           dest, reinterpret_cast<unsigned short*>(source.data()),
                                                           4 * unitCapacity + unitCapacity % 4, ILLCHAR_REPLACE,
                                                           nullptr) /
                                                       4;
                                            }),
                          text.substr(0, fitting))
                    << length << ' ' << capacity;
            }
            ASSERT_EQ(g_oConverterUTF32.getNumUnits(bytes.data(), 0xFFFFFFFF), text.size());
            ASSERT_EQ(g_oConverterUTF32.getNumUnits(bytes.data(), static_cast<unsigned int>(2 * length)), length / 2);
        }
    }
}

TEST(WideRuns, UnpairedSurrogatesAtEveryPlaceOfUtf32Blocks)
{
    for (size_t length = 1; length <= 50; ++length) {
        for (size_t at = 0; at != length; ++at) {
            for (char16_t const surrogate : {char16_t{0xD800}, char16_t{0xDBFF}, char16_t{0xDC00}, char16_t{0xDFFF}}) {
                std::u16string units(length, u'a');
                units[at] = surrogate;
                // A low surrogate passes as it is; a high one alone is replaced.
                std::u32string expected(length, U'a');
                expected[at] = surrogate < 0xDC00 ? U'?' : char32_t{surrogate};
                Source<char16_t> source(units, 0);
                ASSERT_EQ(written<char32_t>(length + 1,
                                            [&](char32_t* dest) {
                                                return g_oConverterUTF32.fromUTF16(
                                                           dest, reinterpret_cast<unsigned short*>(source.data()),
                                                           static_cast<unsigned int>(4 * length), ILLCHAR_REPLACE,
                                                           nullptr) /
                                                       4;
                                            }),
                          expected);
            }
        }
    }
}

/** Bytes of the codes of UTF-32: one a unit or pair; a high surrogate at the end adds nothing. */
unsigned int bytesAsUtf32(std::u16string const& units)
{
    unsigned int codes = 0;
    for (size_t i = 0; i < units.size(); ++i, ++codes) {
        if ((units[i] & 0xFC00) != 0xD800)
            continue;
        if (i + 1 == units.size())
            break;
        if ((units[i + 1] & 0xFC00) == 0xDC00)
            ++i;
    }
    return 4 * codes;
}

TEST(WideRuns, CountsOfSurrogatesInAnyOrder)
{
    constexpr size_t PIECE = 2048;  // counted at once
    std::mt19937 random(33);
    std::vector<size_t> lengths = {PIECE - 1, PIECE, PIECE + 1, 2 * PIECE + 1, 70000};
    for (size_t length = 0; length <= LONGEST; ++length)
        lengths.push_back(length);
    for (size_t const length : lengths) {
        for (int round = 0; round != 20; ++round) {
            std::u16string units;
            while (units.size() < length)
                units += u"a\uD7FF\uE000\xD800\xDBFF\xDC00\xDFFF\xD800\xDC00"[random() % 9];
            Source<char16_t> source(units, 0);
            auto const* const text = reinterpret_cast<unsigned short const*>(source.data());
            ASSERT_EQ(g_oConverterUTF32.getNumBytes(text, 0xFFFFFFFF), bytesAsUtf32(units)) << length;
            ASSERT_EQ(g_oConverterUTF16.getNumBytes(text, 0xFFFFFFFF), 2 * length);
            size_t const some = length / 2 + 1;
            ASSERT_EQ(g_oConverterUTF32.getNumBytes(text, static_cast<unsigned int>(some)),
                      bytesAsUtf32(units.substr(0, some)));
            ASSERT_EQ(g_oConverterUTF16.getNumBytes(text, static_cast<unsigned int>(some)), 2 * std::min(some, length));
        }
    }
}

TEST(WideRuns, Utf16AtEveryLengthCapacityAndLimit)
{
    std::mt19937 random(32);
    for (size_t length = 0; length <= LONGEST; ++length) {
        std::u16string units = unitsOf(randomText(random, length, 20));
        units.resize(length);
        for (size_t const shift : {size_t{0}, size_t{1}}) {
            Source<char16_t> source(units, shift);
            ASSERT_EQ(g_oConverterUTF16.getNumUnits(source.data(), 0xFFFFFFFF), length);
            for (size_t capacity = length < 20 ? 0 : length - 20; capacity <= length + 2; ++capacity) {
                auto const unitCapacity = static_cast<unsigned int>(capacity);
                for (int const limit : {static_cast<int>(length) + 1, static_cast<int>(length / 2) + 1})
                    ASSERT_EQ(written<char16_t>(std::min(capacity, length) + 1,
                                                [&](char16_t* dest) {
                                                    return g_oConverterUTF16.toUTF16(
                                                        reinterpret_cast<unsigned short*>(dest), source.data(),
                                                        unitCapacity, ILLCHAR_REPLACE, nullptr, limit);
                                                }),
                              units.substr(0, std::min(capacity, static_cast<size_t>(limit))))
                        << length << ' ' << capacity;
                if (shift == 0) {
                    ASSERT_EQ(written<char16_t>(std::min(capacity, length) + 1,
                                                [&](char16_t* dest) {
                                                    return g_oConverterUTF16.fromUTF16(
                                                               dest, reinterpret_cast<unsigned short*>(source.data()),
                                                               2 * unitCapacity + capacity % 2, ILLCHAR_REPLACE,
                                                               nullptr) /
                                                           2;
                                                }),
                              units.substr(0, std::min(capacity, length)));
                }
            }
        }
    }
}

}  // namespace
