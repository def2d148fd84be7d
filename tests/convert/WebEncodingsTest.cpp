// kx7text tests - the encodings of the Encoding Standard by their names: byte for byte what the model makes, both ways,
// whole, in pieces and through UTF-8.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/convert.h"
#include "tests/support/OneIn.h"
#include "tests/support/WebEncodings.h"

using namespace kx7test;  // NOLINT

namespace {

class WebEncoding : public testing::TestWithParam<std::string> {
protected:
    std::string const& encoding() const { return GetParam(); }
    /** Without the name, only the tests fail. */
    KX7CharSet charSet() const { return kx7::findCharSet(encoding()).value_or(KX7CS_OS_DEFAULT); }
    bool isMultibyte() const { return isMultibyteWebEncoding(encoding()); }

    void decodesAsTheModel(std::string const& bytes) const;
};

/** Every code point of the Basic Multilingual Plane that is no surrogate, and one of each other plane. */
std::u32string everyCodePoint()
{
    std::u32string text;
    for (char32_t c = 0; c < 0x110000; c += c < 0xFFFF ? 1 : 0x10000)
        if (c < 0xD800 || c > 0xDFFF)
            text += c;
    return text;
}

std::string randomBytes(size_t size, unsigned int seed, bool isMostlyAscii)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() & (isMostlyAscii && random() % 8 != 0 ? 0x7F : 0xFF));
    return bytes;
}

size_t errorsOf(std::vector<WebDecoded> const& results)
{
    return static_cast<size_t>(std::count_if(results.begin(), results.end(), [](auto const& r) { return r.isError; }));
}

void WebEncoding::decodesAsTheModel(std::string const& bytes) const
{
    std::vector<WebDecoded> const results = WebDecoder{encoding()}.decode(bytes);
    auto const error = std::find_if(results.begin(), results.end(), [](auto const& r) { return r.isError; });
    kx7::Units const replaced = kx7::decode(bytes, charSet(), {kx7::ErrorPolicy::REPLACE});
    ASSERT_EQ(replaced.text, unitsOf(webReplaced(results)));
    ASSERT_EQ(replaced.errorCount, errorsOf(results));
    kx7::Units const strict = kx7::decode(bytes, charSet());
    ASSERT_EQ(strict.text, unitsOf(webReplaced({results.begin(), error})));
    ASSERT_EQ(strict.isLossless(), error == results.end());
    if (error != results.end()) {
        ASSERT_EQ(strict.first.byteOffset, error->begin);
        ASSERT_EQ(strict.first.length, error->end - error->begin);
    }
}

TEST_P(WebEncoding, EverySequenceOfTwoBytesIsAsInTheStandard)
{
    OneIn isTaken(isMultibyte() ? 5 : 1);
    for (unsigned int first = 0; first < 0x100; ++first)
        for (unsigned int second = 0; second < (isMultibyte() ? 0x100U : 1U); ++second)
            for (char const* const rest : {"", "a", "\xA1", "\x81\x41"}) {
                if (!isTaken())
                    continue;
                decodesAsTheModel(std::string{static_cast<char>(first), static_cast<char>(second)} + rest);
                if (HasFatalFailure())
                    FAIL() << first << ' ' << second << ' ' << rest;
            }
}

TEST_P(WebEncoding, EverySequenceOfThreeBytesThatBeginsWithAShiftIsAsInTheStandard)
{
    if (!isMultibyte())
        GTEST_SKIP() << "every character is one byte";
    OneIn isTaken(5);
    for (unsigned int second = 0; second < 0x100; ++second)
        for (unsigned int third = 0; third < 0x100; ++third)
            for (char const* const rest : {"", "a", "\xA1\xA1"}) {
                if (!isTaken())
                    continue;
                decodesAsTheModel(std::string{'\x8F', static_cast<char>(second), static_cast<char>(third)} + rest);
                if (HasFatalFailure())
                    FAIL() << second << ' ' << third << ' ' << rest;
            }
}

TEST_P(WebEncoding, EveryByteIsTheCharacterOfTheStandard)
{
    for (unsigned int value = 0; value < 0x100; ++value) {
        std::string const byte(1, static_cast<char>(value));
        WebDecoded const expected = WebDecoder{encoding()}.decode(byte).at(0);
        kx7::Units const strict = kx7::decode(byte, charSet());
        ASSERT_EQ(strict.text, unitsOf(expected.codePoints)) << value;
        ASSERT_EQ(strict.isLossless(), !expected.isError) << value;
        if (!expected.isError)
            continue;
        EXPECT_EQ(strict.first.status, kx7::Status::INVALID);
        EXPECT_EQ(strict.first.length, 1U);
        EXPECT_EQ(strict.first.bytes[0], value);
        EXPECT_EQ(kx7::decode(byte, charSet(), {kx7::ErrorPolicy::REPLACE}).text, u"\xFFFD") << value;
    }
}

TEST_P(WebEncoding, EveryCharacterIsTheByteOfTheStandard)
{
    for (char32_t const c : everyCodePoint()) {
        WebEncoded const expected = WebEncoder{encoding()}.encode(std::u32string(1, c)).at(0);
        kx7::Bytes const bytes = kx7::encode(unitsOf(std::u32string(1, c)), charSet());
        ASSERT_EQ(bytes.text, expected.bytes) << static_cast<unsigned int>(c);
        ASSERT_EQ(bytes.isLossless(), !expected.isError) << static_cast<unsigned int>(c);
        if (expected.isError) {
            ASSERT_EQ(bytes.first.codePoint, c);
        }
    }
}

TEST_P(WebEncoding, EveryCharacterThatIsEncodedComesBack)
{
    for (char32_t const c : everyCodePoint()) {
        std::u16string const units = unitsOf(std::u32string(1, c));
        kx7::Bytes const bytes = kx7::encode(units, charSet());
        bool const isOneWay = encoding() != "EUC-KR" && isMultibyte() && (c == 0xA5 || c == 0x203E || c == 0x2212);
        if (bytes.isLossless()) {
            ASSERT_EQ(kx7::decode(bytes.text, charSet()).text == units, !isOneWay) << static_cast<unsigned int>(c);
        }
    }
}

TEST_P(WebEncoding, LongTextsDecodeWholeInPiecesAndToUtf8)
{
    for (bool const isMostlyAscii : {false, true}) {
        std::string const bytes = randomBytes(5000, 7 + isMostlyAscii, isMostlyAscii);
        std::vector<WebDecoded> const results = WebDecoder{encoding()}.decode(bytes);
        std::u16string const expected = unitsOf(webReplaced(results));
        kx7::Units const whole = kx7::decode(bytes, charSet(), {kx7::ErrorPolicy::REPLACE});
        ASSERT_EQ(whole.text, expected);
        ASSERT_EQ(whole.errorCount, errorsOf(results));
        auto const first = std::find_if(results.begin(), results.end(), [](auto const& r) { return r.isError; });
        if (first != results.end()) {
            EXPECT_EQ(whole.first.byteOffset, first->begin);
        }

        kx7::Bytes const utf8 = kx7::transcode(bytes, charSet(), KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE});
        EXPECT_EQ(utf8.text, kx7::encode(expected, KX7CS_UTF8).text);

        std::mt19937 random(99);  // NOLINT: the same pieces in every run
        kx7::Decoder decoder(charSet(), {kx7::ErrorPolicy::REPLACE});
        std::u16string text;
        for (size_t at = 0; at < bytes.size();) {
            char16_t units[70];
            size_t const size = std::min<size_t>(1 + random() % 70, bytes.size() - at);
            kx7::StreamResult const step =
                decoder.convert(std::string_view(bytes).substr(at, size), {units, 70}, at + size == bytes.size());
            ASSERT_EQ(step.status, kx7::Status::DONE);
            text.append(units, step.written);
            at += step.consumed;
        }
        EXPECT_EQ(text, expected);
        EXPECT_EQ(decoder.errorCount(), whole.errorCount);
    }
}

TEST_P(WebEncoding, LongTextsEncodeWholeInPiecesAndFromUtf8)
{
    std::u32string text = everyCodePoint();
    std::shuffle(text.begin(), text.end(), std::mt19937(5));  // NOLINT: the same order in every run
    for (WebDecoded const& result : WebDecoder{encoding()}.decode(randomBytes(5000, 3, true)))
        text += result.codePoints;
    std::string expected;
    for (WebEncoded const& result : WebEncoder{encoding()}.encode(text))
        expected += result.isError ? "?" : result.bytes;
    std::u16string const units = unitsOf(text);
    kx7::Options const replacing = {kx7::ErrorPolicy::REPLACE, U'?'};
    EXPECT_EQ(kx7::encode(units, charSet(), replacing).text, expected);

    std::string const utf8 = kx7::encode(units, KX7CS_UTF8).text;
    EXPECT_EQ(kx7::transcode(utf8, KX7CS_UTF8, charSet(), replacing).text, expected);

    std::mt19937 random(98);  // NOLINT: the same pieces in every run
    kx7::Encoder encoder(charSet(), replacing);
    std::string bytes;
    for (size_t at = 0; at < units.size();) {
        char piece[2000];
        size_t const size = std::min<size_t>(1 + random() % 900, units.size() - at);
        kx7::StreamResult const step =
            encoder.convert(std::u16string_view(units).substr(at, size), {piece, 2000}, at + size == units.size());
        ASSERT_EQ(step.status, kx7::Status::DONE);
        bytes.append(piece, step.written);
        at += step.consumed;
    }
    EXPECT_EQ(bytes, expected);
}

TEST_P(WebEncoding, NameAndLabelsLeadToTheEncoding)
{
    // What IANA registered under such a label, or the number in it, is another set.
    struct Other {
        KX7CharSet charSet;
        std::set<std::string> labels;
    };
    std::map<std::string, Other> const others = {
        {"windows-1252",
         {KX7CS_ISO_8859_1,
          {"cp819", "csisolatin1", "ibm819", "iso-8859-1", "iso-ir-100", "iso_8859-1", "iso_8859-1:1987", "l1",
           "latin1"}}},
        {"windows-1254",
         {KX7CS_ISO_8859_9,
          {"csisolatin5", "iso-8859-9", "iso-ir-148", "iso_8859-9", "iso_8859-9:1989", "l5", "latin5"}}},
        {"windows-874", {KX7CS_ISO_8859_11, {"iso-8859-11", "tis-620"}}},
        {"windows-1253", {KX7CS_WCP1253, {"cp1253"}}},
        {"windows-1255", {KX7CS_WCP1255, {"cp1255"}}},
        {"Shift_JIS", {KX7CS_WCP932, {"windows-31j"}}},
        {"EUC-KR",
         {KX7CS_WCP949, {"csksc56011987", "iso-ir-149", "korean", "ks_c_5601-1987", "ks_c_5601-1989", "ksc_5601"}}},
    };
    ASSERT_NE(charSet(), KX7CS_OS_DEFAULT);
    EXPECT_EQ(kx7::findCharSet(encoding(), kx7::Labels::WHATWG_FIRST), charSet());
    std::set<std::string> elsewhere;
    for (auto const& [name, labels] : webEncodings()) {
        if (name != encoding())
            continue;
        for (std::string const& label : labels) {
            EXPECT_EQ(kx7::findCharSet(label, kx7::Labels::WHATWG_FIRST), charSet()) << label;
            if (kx7::findCharSet(label) != charSet())
                elsewhere.insert(label);
        }
    }
    auto const other = others.find(encoding());
    EXPECT_EQ(elsewhere, other == others.end() ? std::set<std::string>() : other->second.labels);
    for (std::string const& label : elsewhere)
        EXPECT_EQ(kx7::findCharSet(label), other->second.charSet) << label;
}

TEST_P(WebEncoding, LinesAndBoundariesShowInTheBytes)
{
    std::string const bytes = randomBytes(100, 1, false);
    EXPECT_TRUE(kx7::hasConverter(charSet()));
    EXPECT_TRUE(kx7::lineFeedsAreBytes(charSet()));
    if (!isMultibyte()) {
        EXPECT_EQ(kx7::wholeCharacters(bytes, charSet()), bytes);
    }
    EXPECT_EQ(kx7::Decoder(charSet()).maxUnits(10), 10U);
    EXPECT_EQ(kx7::Encoder(charSet()).maxBytes(10), isMultibyte() ? 20U : 10U);

    // What precedes the cut and what follows it are decoded as in the whole text.
    for (size_t length = 0; length <= bytes.size(); ++length) {
        size_t const cut = kx7::wholeCharacters(std::string_view(bytes).substr(0, length), charSet()).size();
        kx7::Options const replacing = {kx7::ErrorPolicy::REPLACE};
        EXPECT_EQ(kx7::decode(bytes.substr(0, cut), charSet(), replacing).text +
                      kx7::decode(bytes.substr(cut), charSet(), replacing).text,
                  kx7::decode(bytes, charSet(), replacing).text)
            << length;
    }
}

std::string testName(testing::TestParamInfo<std::string> const& info)
{
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Encodings, WebEncoding, testing::ValuesIn(exactWebEncodings()), testName);

TEST(WebSets, AreTheSingleByteOnesTheUserDefinedOneAndThreeOfTwoBytes)
{
    EXPECT_EQ(exactWebEncodings().size(), 28U + 1U + 3U);
}

TEST(WebSets, NumbersAndNamesOfThePublishedOnesMeanThose)
{
    for (kx7::Labels const labels : {kx7::Labels::IANA_FIRST, kx7::Labels::WHATWG_FIRST}) {
        for (char const* const name : {"874", "wcp874", "KX7CS_WCP874"})
            EXPECT_EQ(kx7::findCharSet(name, labels), KX7CS_WCP874) << name;
        for (char const* const name : {"1253", "wcp1253", "KX7CS_WCP1253"})
            EXPECT_EQ(kx7::findCharSet(name, labels), KX7CS_WCP1253) << name;
        for (char const* const name : {"KX7CS_IBM866", "wcp866", "KX7CS_windows-874", "web::IBM866"})
            EXPECT_EQ(kx7::findCharSet(name, labels), std::nullopt) << name;
    }
    for (char const* const name : {"30932", "shiftjis", "KX7CS_SHIFTJIS"})
        EXPECT_EQ(kx7::findCharSet(name), KX7CS_SHIFTJIS) << name;
    for (char const* const name : {"51949", "euc_kr", "KX7CS_EUC_KR"})
        EXPECT_EQ(kx7::findCharSet(name), KX7CS_EUC_KR) << name;
    EXPECT_EQ(kx7::findCharSet("117485"), kx7::web::EUC_KR);
    EXPECT_EQ(kx7::findCharSet("1174850"), std::nullopt);
    EXPECT_EQ(kx7::decode("\x1A", KX7CS_WCP874).text, u"\x1C");
    EXPECT_EQ(kx7::decode("\xAA", KX7CS_WCP1253).text, u"\xAA");
    EXPECT_FALSE(kx7::decode("\xCA", KX7CS_WCP1255).isLossless());
}

TEST(WebSets, ThePublishedFunctionsTakeThemForUtf8)
{
    for (KX7CharSet const charSet : kx7::web::ALL) {
        unsigned short units[4];
        EXPECT_EQ(LocalToUTF16(units, "\xC3\xA9", 4, charSet), 1U);
        EXPECT_EQ(units[0], 0xE9);
        EXPECT_EQ(KX7CharSetConverter::getConverter(charSet), KX7CharSetConverter::getConverter(KX7CS_UTF8));
        EXPECT_STREQ(KX7CharSetToString(charSet), "KX7CS_OS_DEFAULT");
        EXPECT_EQ(KX7CharSetFromString(kx7::charSetInfo(charSet)->name), KX7CS_OS_DEFAULT);
    }
}

}  // namespace
