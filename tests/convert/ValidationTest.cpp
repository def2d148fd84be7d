// kx7text tests - validation against a plain model, and byte-order marks.
#include <gtest/gtest.h>

#include <random>

#include "kx7/convert.h"

namespace {

/** Length of the well-formed UTF-8 sequence that a text begins with; 0: none. Decoded without care, encoded again. */
size_t sequenceLength(std::string const& text)
{
    auto const at = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    for (size_t length = 1; length <= 4 && length <= text.size(); ++length) {
        unsigned int value = length == 1 ? at(0) : at(0) & (0x7FU >> length);
        bool continues = true;
        for (size_t i = 1; i < length; ++i) {
            continues = continues && (at(i) & 0xC0) == 0x80;
            value = value << 6 | (at(i) & 0x3F);
        }
        std::string again;
        if (length == 1)
            again = {static_cast<char>(value)};
        else {
            for (size_t i = length; --i != 0; value >>= 6)
                again.insert(again.begin(), static_cast<char>(0x80 | (value & 0x3F)));
            again.insert(again.begin(), static_cast<char>((0xFF00U >> length & 0xFF) | value));
            value = 0;
            for (size_t i = 0; i < length; ++i)
                value = i == 0 ? at(0) & (0x7FU >> length) : value << 6 | (at(i) & 0x3F);
        }
        unsigned int const least[] = {0, 0, 0x80, 0x800, 0x10000};
        unsigned int const greatest[] = {0, 0x7F, 0x7FF, 0xFFFF, 0x10FFFF};
        bool const isSurrogate = value >= 0xD800 && value <= 0xDFFF;
        if (continues && again == text.substr(0, length) && value >= least[length] && value <= greatest[length] &&
            !isSurrogate)
            return length;
    }
    return 0;
}

/** Something well-formed begins with `text`. */
bool beginsSequence(std::string const& text)
{
    for (char const tail : {'\x80', '\x90', '\xA0', '\xBF'})
        for (size_t more = 0; more <= 3; ++more) {
            std::string whole = text;
            if (more != 0)
                whole += tail + std::string(more - 1, '\x80');
            if (sequenceLength(whole) >= text.size() && sequenceLength(whole) != 0)
                return true;
        }
    return false;
}

kx7::Validity modelOf(std::string const& text)
{
    size_t at = 0;
    while (at != text.size()) {
        size_t const length = sequenceLength(text.substr(at));
        if (length == 0) {
            size_t bad = 1;
            while (at + bad < text.size() && beginsSequence(text.substr(at, bad + 1)))
                ++bad;
            return {at, bad};
        }
        at += length;
    }
    return {at, 0};
}

void expectAsModel(std::string const& text)
{
    kx7::Validity const expected = modelOf(text);
    kx7::Validity const found = kx7::validateUtf8(text);
    ASSERT_EQ(found.offset, expected.offset) << testing::PrintToString(text);
    ASSERT_EQ(found.length, expected.length) << testing::PrintToString(text);
}

TEST(ValidateUtf8, EveryTwoBytesAndWhatMayFollow)
{
    for (unsigned int first = 0; first < 0x100; ++first)
        for (unsigned int second = 0; second < 0x100; ++second)
            for (char const* const rest : {"", "\x80", "\xBF\x80", "\x80\x80z", "z", "\xC3\xA9"})
                expectAsModel(std::string{static_cast<char>(first), static_cast<char>(second)} + rest);
}

// Long enough for what converts many bytes at once, the malformed sequence at every place of it.
TEST(ValidateUtf8, InLongTexts)
{
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "az\xC3\xA9\xED\x95\x9C\xE3\x81\x82\xF0\x9F\x98\x80" + std::string(static_cast<size_t>(i), 'x');
    ASSERT_TRUE(kx7::validateUtf8(text));
    for (char const* const bad :
         {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF\x80\x80\x80", "\x80"})
        for (size_t at = 0; at <= text.size(); ++at) {
            if (at < text.size() && (text[at] & '\xC0') == '\x80')
                continue;
            kx7::Validity const found = kx7::validateUtf8(std::string(text).insert(at, bad));
            ASSERT_EQ(found.offset, at) << testing::PrintToString(std::string(bad));
            ASSERT_EQ(found.length, 1U);
        }
}

TEST(ValidateUtf16, EveryUnitBetweenOthers)
{
    for (unsigned int unit = 0; unit < 0x10000; ++unit)
        for (std::u16string const& before : {std::u16string(), std::u16string(u"a"), std::u16string(u"\xD83D\xDE00")})
            for (std::u16string const& after : {std::u16string(), std::u16string(u"a"), std::u16string(u"\xDE00")}) {
                std::u16string const text = before + static_cast<char16_t>(unit) + after;
                bool const isHigh = unit >= 0xD800 && unit < 0xDC00;
                bool const isLow = unit >= 0xDC00 && unit < 0xE000;
                bool const hasPartner = after == u"\xDE00";
                size_t const offset = isLow || (isHigh && !hasPartner) ? before.size()
                                      : hasPartner && !isHigh          ? before.size() + 1
                                                                       : text.size();
                kx7::Validity const found = kx7::validateUtf16(text);
                ASSERT_EQ(found.offset, offset) << unit;
                ASSERT_EQ(found.length, offset == text.size() ? 0U : 1U) << unit;
            }
    EXPECT_EQ(kx7::validateUtf16(std::string_view("a\0b", 3)).offset, 2U);
    EXPECT_EQ(kx7::validateUtf16(std::string_view("a\0b", 3)).length, 1U);
    EXPECT_EQ(kx7::validateUtf16(std::string_view(reinterpret_cast<char const*>(u"a\xDC00"), 4)).offset, 2U);
    std::u16string const longText(5000, u'\x4E00');
    for (size_t at = 0; at < longText.size(); at += 13) {
        std::u16string text = longText;
        text[at] = u'\xDC00';
        ASSERT_EQ(kx7::validateUtf16(text).offset, at);
    }
}

TEST(ValidateUtf32, EveryValueThatMatters)
{
    for (char32_t value = 0; value < 0x120000; ++value) {
        bool const isValid = value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
        ASSERT_EQ(static_cast<bool>(kx7::validateUtf32(std::u32string_view(&value, 1))), isValid);
    }
    EXPECT_FALSE(kx7::validateUtf32(std::u32string(1, char32_t{0xFFFFFFFF})));
    EXPECT_EQ(kx7::validateUtf32(U"ab" + std::u32string(1, char32_t{0xD800})).offset, 2U);
    EXPECT_EQ(kx7::validateUtf32(std::string_view(reinterpret_cast<char const*>(U"aa"), 6)).offset, 4U);
    EXPECT_EQ(kx7::validateUtf32(std::string_view(reinterpret_cast<char const*>(U"aa"), 6)).length, 2U);
}

TEST(DetectBom, EverySignature)
{
    struct {
        std::string_view bytes;
        KX7CharSet charSet;
        size_t length;
    } const rows[] = {
        {{"\xEF\xBB\xBFx", 4}, KX7CS_UTF8, 3},
        {{"\xEF\xBB\xBF", 3}, KX7CS_UTF8, 3},
        {{"\xEF\xBB", 2}, KX7CS_OS_DEFAULT, 0},
        {{"\xFF\xFE"
          "a\0",
          4},
         KX7CS_UTF16,
         2},
        {{"\xFE\xFF\0a", 4}, KX7CS_UTF16BE, 2},
        {{"\xFF\xFE\0\0", 4}, KX7CS_UTF32, 4},
        {{"\xFF\xFE\0", 3}, KX7CS_UTF16, 2},
        {{"\0\0\xFE\xFF", 4}, KX7CS_UTF32BE, 4},
        {{"\x84\x31\x95\x33", 4}, KX7CS_GB18030, 4},
        {{"", 0}, KX7CS_OS_DEFAULT, 0},
        {{"abcd", 4}, KX7CS_OS_DEFAULT, 0},
    };
    constexpr bool isLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    for (auto const& row : rows) {
        // The rows are those of a little-endian host.
        if (!isLittleEndian && row.length != 0 && row.charSet != KX7CS_UTF8 && row.charSet != KX7CS_GB18030)
            continue;
        kx7::DetectedBom const found = kx7::detectBom(row.bytes);
        EXPECT_EQ(found.charSet, row.charSet);
        EXPECT_EQ(found.length, row.length);
        EXPECT_EQ(static_cast<bool>(found), row.length != 0);
    }
}

TEST(DetectBom, OfTheHost)
{
    std::string_view const utf16(reinterpret_cast<char const*>(u"\xFEFF"
                                                               u"a"),
                                 4);
    EXPECT_EQ(kx7::detectBom(utf16).charSet, KX7CS_UTF16);
    std::string_view const utf32(reinterpret_cast<char const*>(U"\xFEFF"), 4);
    EXPECT_EQ(kx7::detectBom(utf32).charSet, KX7CS_UTF32);
}

}  // namespace
