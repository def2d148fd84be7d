// kx7text tests - where bytes can be cut, and how lines show in them.
#include <gtest/gtest.h>

#include "kx7/charset/CharSetConverterManager.h"
#include "tests/convert/Samples.h"

using namespace kx7test;  // NOLINT

namespace {

class Boundaries : public testing::TestWithParam<CharSetRow> {};

/** What is converted of bytes that may go on, by a stream that keeps an incomplete character. */
size_t convertedOf(std::string_view bytes, KX7CharSet from)
{
    kx7::Decoder decoder(from, {kx7::ErrorPolicy::SKIP});
    std::vector<char16_t> units(2 * bytes.size() + 2);
    decoder.convert(bytes, units, false);
    return static_cast<size_t>(decoder.bytePosition());
}

TEST_P(Boundaries, LieBeforeWhatAStreamKeeps)
{
    KX7CharSet const from = GetParam().charSet;
    std::string const lines = manyCharactersIn(from) + manyCharactersIn(from);
    for (std::string const& text : {brokenBytes(from), lines, std::string(lines.size(), '\xA1')})
        for (size_t size = 0; size <= text.size(); ++size) {
            std::string_view const bytes(text.data(), size);
            std::string_view const whole = kx7::wholeCharacters(bytes, from);
            ASSERT_EQ(whole.data(), bytes.data());
            ASSERT_EQ(whole.size(), convertedOf(bytes, from)) << "of " << size << " bytes";
            ASSERT_LT(size - whole.size(), 16U);
        }
}

TEST_P(Boundaries, PartsBecomeWhatTheWholeDoes)
{
    KX7CharSet const from = GetParam().charSet;
    kx7::Options const options = {kx7::ErrorPolicy::REPLACE};
    std::string const text = brokenBytes(from);
    std::u16string const expected = kx7::decode(text, from, options).text;
    for (size_t size = 0; size <= text.size(); ++size) {
        std::string_view const bytes(text.data(), size);
        std::u16string units(2 * size + 2, u'x');
        units.resize(kx7::Decoder(from, options).convert(bytes, units, false).written);
        size_t const whole = kx7::wholeCharacters(bytes, from).size();
        ASSERT_EQ(units + kx7::decode(std::string_view(text).substr(whole), from, options).text, expected)
            << "cut at " << whole;
    }
}

TEST_P(Boundaries, LineFeedsAreBytesWhereAllOfThemAre)
{
    KX7CharSet const from = GetParam().charSet;
    EXPECT_EQ(kx7::lineFeedsAreBytes(from), GetParam().converter->getNullCharSize() == 1);
    std::string const text = brokenBytes(from);
    std::u16string const units = kx7::decode(text, from, {kx7::ErrorPolicy::SKIP}).text;
    if (kx7::lineFeedsAreBytes(from)) {
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), std::count(units.begin(), units.end(), u'\n'));
    }
}

INSTANTIATE_TEST_SUITE_P(EverySet, Boundaries, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(Boundary, ThereIsNoneWithoutAConverter)
{
    for (KX7CharSet const from : {KX7CS_UTF16BE, KX7CS_ISO_2022JP, static_cast<KX7CharSet>(437)}) {
        EXPECT_EQ(kx7::wholeCharacters("abc", from), "");
        EXPECT_FALSE(kx7::lineFeedsAreBytes(from));
    }
}

// A character of a code that is left whole, where a part of it is seen alone.
TEST(Boundary, IsNeverWithinAPairOrACode)
{
    struct {
        KX7CharSet from;
        std::string_view bytes;
        size_t whole;
    } const rows[] = {
        {KX7CS_UTF8, "\xF0\x9F\x98", 0},       {KX7CS_UTF8, "a\x80\x80\x80\x80\x80", 6},
        {KX7CS_UTF8, {"\xE2\x82\0", 3}, 3},    {KX7CS_UTF16, {"a\0b", 3}, 2},
        {KX7CS_UTF16, {"a\0\x3D\xD8", 4}, 2},  {KX7CS_UTF16, {"a\0\x3D\xD8\x00\xDE", 6}, 6},
        {KX7CS_UTF32, {"a\0\0\0b\0\0", 7}, 4}, {KX7CS_WCP932, "\x82\xA0\x82", 2},
        {KX7CS_WCP932, "\x82\xA0 \x82", 3},    {KX7CS_GB18030, "\x81\x30\x81", 0},
        {KX7CS_UTF16ESC, "aU+D83DU+DE0", 1},   {KX7CS_WCP1252, "\xE2\x82", 2},
    };
    constexpr bool isLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    for (auto const& row : rows)
        if (isLittleEndian || (row.from != KX7CS_UTF16 && row.from != KX7CS_UTF32)) {
            EXPECT_EQ(kx7::wholeCharacters(row.bytes, row.from).size(), row.whole) << row.from;
        }
}

}  // namespace
