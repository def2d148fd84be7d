// kx7text tests - whole texts: nothing is truncated, zeros stay, clean text is what the published converters make of
// it.
#include <gtest/gtest.h>

#include "tests/convert/Samples.h"
#include "tests/support/OneIn.h"

using namespace kx7test;  // NOLINT

namespace {

class WholeText : public testing::TestWithParam<CharSetRow> {};

TEST_P(WholeText, ThereAndBack)
{
    std::string const bytes = manyCharactersIn(GetParam().charSet);
    kx7::Units const units = kx7::decode(bytes, GetParam().charSet);
    ASSERT_TRUE(units.isLossless());
    EXPECT_EQ(units.first.status, kx7::Status::DONE);
    EXPECT_NE(units.text.find(u'\0'), std::u16string::npos);
    kx7::Bytes const back = kx7::encode(units.text, GetParam().charSet);
    EXPECT_TRUE(back.isLossless());
    // The escape that stands in the text is one when it is read.
    if (GetParam().charSet != KX7CS_UTF16ESC) {
        EXPECT_EQ(back.text, bytes);
    }
}

// Every unit alone, and a character of every plane.
TEST_P(WholeText, EncodesAsThePublishedConverter)
{
    for (unsigned int c = 1; c < 0x110000; c += c < 0xFFFF ? 1 : 4093) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        std::u16string text;
        if (c > 0xFFFF)
            text += static_cast<char16_t>(0xD7C0 + (c >> 10));
        text += static_cast<char16_t>(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c);
        unsigned short units[3] = {};
        std::copy(text.begin(), text.end(), units);
        char expected[32] = {};
        unsigned int const length = GetParam().converter->fromUTF16(expected, units, 24, ILLCHAR_STOP, nullptr);
        kx7::Bytes const bytes = kx7::encode(text, GetParam().charSet);
        ASSERT_EQ(bytes.text, std::string(expected, length)) << c;
        ASSERT_EQ(bytes.isLossless(), length != 0) << c;
        if (length == 0) {
            ASSERT_EQ(bytes.first.codePoint, c);
            ASSERT_EQ(bytes.first.length, text.size());
        }
        else if (GetParam().charSet != KX7CS_UTF16) {
            unsigned short back[24];
            unsigned int const unitCount =
                GetParam().converter->toUTF16(back, expected, 20, ILLCHAR_REPLACE, nullptr, -1);
            kx7::Units const read = kx7::decode(bytes.text, GetParam().charSet);
            // Code page 936 and its like write some characters that they cannot read.
            if (read.isLossless()) {
                ASSERT_TRUE(std::equal(read.text.begin(), read.text.end(), back, back + unitCount)) << c;
            }
            else {
                ASSERT_NE(std::find(back, back + unitCount, 0xFFFD), back + unitCount) << c;
            }
        }
    }
}

// Units that no decoder may deliver: the encoders after them rely on it.
TEST_P(WholeText, DecodersDeliverWellFormedText)
{
    OneIn isTaken(5);
    for (unsigned int first = 0; first < 0x100; ++first)
        for (unsigned int second = 0; second < 0x100; ++second)
            for (char const* const rest : {"", "\x30", "\xA1\xA1", "\x81\x30", "\xFE\x39", "+D800"}) {
                if (!isTaken())
                    continue;
                std::string const text = std::string{static_cast<char>(first), static_cast<char>(second)} + rest;
                kx7::Units const units = kx7::decode(text, GetParam().charSet, {kx7::ErrorPolicy::REPLACE});
                ASSERT_TRUE(kx7::validateUtf16(units.text)) << first << ' ' << second;
            }
}

INSTANTIATE_TEST_SUITE_P(EverySet, WholeText, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(WholeTexts, AreOfAnyLength)
{
    std::string const text(3000000, '\xA1');
    kx7::Bytes const bytes = kx7::transcode(text, KX7CS_WCP932, KX7CS_UTF8);
    EXPECT_TRUE(bytes.isLossless());
    EXPECT_EQ(bytes.text.size(), 3 * text.size());
    EXPECT_TRUE(kx7::transcode(bytes.text, KX7CS_UTF8, KX7CS_WCP932).text == text);
    kx7::Bytes const escaped =
        kx7::encode(std::u16string(100000, u'\x4E00'), KX7CS_WCP1251, {kx7::ErrorPolicy::ESCAPE});
    EXPECT_EQ(escaped.text.size(), 600000U);
    EXPECT_EQ(escaped.errorCount, 100000U);
}

TEST(WholeTexts, EmptyOnes)
{
    EXPECT_TRUE(kx7::decode({}, KX7CS_UTF8).isLossless());
    EXPECT_TRUE(kx7::encode({}, KX7CS_UTF16).isLossless());
    EXPECT_TRUE(kx7::transcode({}, KX7CS_UTF8, KX7CS_UTF16).text.empty());
}

static_assert(noexcept(std::declval<kx7::Decoder&>().convert({}, {}, true)));
static_assert(std::is_nothrow_constructible_v<kx7::Decoder, KX7CharSet>);
static_assert(std::is_trivially_copyable_v<kx7::Transcoder>);

}  // namespace
