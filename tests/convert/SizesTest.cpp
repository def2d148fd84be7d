// kx7text tests - the maximum sizes that streams name: never exceeded, reached by some text, without overflow.
#include <gtest/gtest.h>

#include <limits>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"
#include "tests/convert/Samples.h"
#include "tests/support/OneIn.h"

using namespace kx7test;  // NOLINT

namespace {

class Sizes : public testing::TestWithParam<CharSetRow> {};

/** The bytes of `charSet` that most units come from, and others that might: what is repeated in the search below. */
std::vector<std::string> codesOf(KX7CharSet charSet)
{
    std::vector<std::string> codes;
    for (int byte = 0; byte < 0x100; ++byte)
        codes.emplace_back(1, static_cast<char>(byte));
    for (char16_t const* const text : {u"a", u"\xE9", u"\x3042", u"\xD840\xDC0B"})
        codes.push_back(kx7::encode(text, charSet, {kx7::ErrorPolicy::SKIP}).text);
    for (std::u16string_view const lone : {u"\xDC00", u"\xD800"})
        codes.emplace_back(reinterpret_cast<char const*>(lone.data()), 2);
    char32_t const surrogate = 0xDC00;
    codes.emplace_back(reinterpret_cast<char const*>(&surrogate), 4);
    return codes;
}

TEST_P(Sizes, OfDecoderAreExact)
{
    for (kx7::Options const& options : everyPolicy()) {
        if (options.bom == kx7::Bom::REQUIRE)
            continue;
        kx7::Options pass = options;  // a strict text ends early; what others make of errors is no more than this
        if (pass.errors == kx7::ErrorPolicy::STRICT)
            pass.errors = kx7::ErrorPolicy::SKIP;
        kx7::Decoder const decoder(GetParam().charSet, options);
        for (size_t length = 0; length <= 9; ++length) {
            size_t most = 0;
            for (std::string const& code : codesOf(GetParam().charSet))
                for (char const filler : {'a', '\x80'}) {
                    std::string text;
                    while (!code.empty() && text.size() + code.size() <= length)
                        text += code;
                    text.resize(length, filler);
                    most = std::max(most, kx7::decode(text, GetParam().charSet, pass).text.size());
                }
            EXPECT_EQ(decoder.maxUnits(length), most)
                << length << " bytes, policy " << static_cast<int>(options.errors) << " substitute "
                << static_cast<unsigned int>(options.substitute);
        }
    }
}

TEST_P(Sizes, OfEncoderAreExact)
{
    OneIn isTaken(7);
    for (kx7::Options const& options : everyPolicy()) {
        if (options.bom == kx7::Bom::REQUIRE)
            continue;
        kx7::Options pass = options;
        if (pass.errors == kx7::ErrorPolicy::STRICT)
            pass.errors = kx7::ErrorPolicy::SKIP;
        kx7::Encoder const encoder(GetParam().charSet, options);
        EXPECT_EQ(encoder.maxBytes(0), kx7::encode({}, GetParam().charSet, pass).text.size());
        for (size_t const length : {1U, 3U}) {
            size_t most = 0;
            for (unsigned int unit = 0; unit < 0x10000; ++unit)
                if (isTaken())
                    most = std::max(
                        most, kx7::encode(std::u16string(length, static_cast<char16_t>(unit)), GetParam().charSet, pass)
                                  .text.size());
            EXPECT_EQ(encoder.maxBytes(length), most) << length << " units, policy " << static_cast<int>(options.errors)
                                                      << " bom " << static_cast<int>(options.bom);
        }
        for (unsigned int c = 0x10000; c < 0x110000; c += 257) {
            std::u16string const text = {static_cast<char16_t>(0xD7C0 + (c >> 10)),
                                         static_cast<char16_t>(0xDC00 + (c & 0x3FF))};
            ASSERT_LE(kx7::encode(text, GetParam().charSet, pass).text.size(), *encoder.maxBytes(2));
        }
    }
}

TEST_P(Sizes, OfTranscoderAreNotExceeded)
{
    std::string const source = brokenBytes(GetParam().charSet);
    for (kx7::Options const& options : everyPolicy())
        for (CharSetRow const& to : charSetRows())
            for (size_t length = 0; length < source.size(); length += 37) {
                std::string_view const text = std::string_view(source).substr(length);
                kx7::Transcoder const transcoder(GetParam().charSet, to.charSet, options);
                ASSERT_LE(kx7::transcode(text, GetParam().charSet, to.charSet, options).text.size(),
                          *transcoder.maxBytes(text.size()));
            }
}

TEST_P(Sizes, DoNotOverflow)
{
    size_t const most = std::numeric_limits<size_t>::max();
    size_t const longest = GetParam().charSet == KX7CS_EUC_JP ? 2 : GetParam().converter->getMaxUnitSize();
    kx7::Encoder const encoder(GetParam().charSet);
    EXPECT_EQ(encoder.maxBytes(most / longest), most / longest * longest);
    if (longest != 1) {
        EXPECT_EQ(encoder.maxBytes(most / longest + 1), std::nullopt);
    }
    EXPECT_EQ(encoder.maxBytes(most).has_value(), longest == 1);
    kx7::Decoder const decoder(GetParam().charSet);
    ASSERT_TRUE(decoder.maxUnits(most));
    EXPECT_LE(*decoder.maxUnits(most), most);
    kx7::Decoder const adding(GetParam().charSet, {kx7::ErrorPolicy::REPLACE, 0, kx7::Bom::ADD});
    EXPECT_EQ(adding.maxUnits(most).has_value(), GetParam().converter->getMinUnitSize() != 1);
    kx7::Transcoder const transcoder(GetParam().charSet, KX7CS_UTF8);
    EXPECT_EQ(transcoder.maxBytes(most).has_value(), *decoder.maxUnits(most) <= most / 3);
}

// What is kept counts, and the mark of the beginning only there.
TEST(SizesOfStreams, DependOnWhatIsKept)
{
    kx7::Decoder decoder(KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE, 0, kx7::Bom::ADD});
    EXPECT_EQ(decoder.maxUnits(2), 3U);
    char16_t units[9];
    decoder.convert(std::string_view("a\xE2\x82"), {units, 9}, false);
    EXPECT_EQ(decoder.maxUnits(0), 2U);
    EXPECT_EQ(decoder.maxUnits(std::numeric_limits<size_t>::max() - 1), std::nullopt);
    kx7::Encoder encoder(KX7CS_UTF8);
    char bytes[9];
    encoder.convert(std::u16string_view(u"\xD83D"), {bytes, 9}, false);
    EXPECT_EQ(encoder.maxBytes(1), 6U);
}

// Their sizes are part of the binary interface.
TEST(SizesOfStreams, ErrorsShowSoManyBytes)
{
    EXPECT_EQ(sizeof kx7::Error().bytes, 14U);
}

// A pair of surrogates, and the escape of half of one in UTF-32.
TEST(SizesOfStreams, MinimumCapacityIsNoLargerThanWhatNeedsMost)
{
    constexpr size_t UNITS = kx7::Decoder::MINIMUM_CAPACITY;
    constexpr size_t BYTES = kx7::Encoder::MINIMUM_CAPACITY;
    static_assert(kx7::Transcoder::MINIMUM_CAPACITY == BYTES, "what is encoded comes from a buffer");
    for (size_t const lacking : {1U, 0U}) {
        char16_t units[UNITS];
        kx7::Decoder decoder(KX7CS_UTF8);
        EXPECT_EQ(decoder.convert(std::string_view("\xF0\x9F\x98\x80"), {units, UNITS - lacking}, true).written,
                  lacking != 0 ? 0 : UNITS);
        char bytes[BYTES];
        kx7::Encoder encoder(KX7CS_UTF32, {kx7::ErrorPolicy::ESCAPE});
        EXPECT_EQ(encoder.convert(std::u16string_view(u"\xDC00"), {bytes, BYTES - lacking}, true).written,
                  lacking != 0 ? 0 : BYTES);
    }
}

// Only characters of JIS X 0212 have a third byte.
TEST(SizesOfStreams, OfEucJpDependOnItsLists)
{
    static unsigned short const list0208[] = {0x2121, 0x3000, 0, 0};
    static unsigned short const list0212[] = {0x2231, 0x00A1, 0, 0};
    static unsigned short const empty[] = {0, 0};
    struct {
        int number;
        unsigned short const* list0212;
        size_t most;
    } const rows[] = {{80100, list0212, 3}, {80101, empty, 2}, {80102, nullptr, 2}};
    for (auto const& row : rows) {
        auto const charSet = static_cast<KX7CharSet>(row.number);
        g_oCnvtMgr.insert(charSet, new KX7CharSetConverterEUC_JP(list0208, nullptr, row.list0212, charSet), false);
        EXPECT_EQ(kx7::Encoder(charSet).maxBytes(1), row.most);
        EXPECT_EQ(kx7::encode(u"\u00A1", charSet).text.size(), row.list0212 == list0212 ? 3U : 0U);
    }
}

INSTANTIATE_TEST_SUITE_P(EverySet, Sizes, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

}  // namespace
