// kx7text tests - streams: the result does not depend on where pieces end or how much capacity a call has.
#include <gtest/gtest.h>

#include "tests/convert/Samples.h"

using namespace kx7test;  // NOLINT

namespace {

constexpr size_t ENOUGH = 16000;

template <class Text, class Stream, class Source>
void expectSameInPieces(Stream const& stream, Source const& source, std::string const& what)
{
    Streamed<Text> const whole = runStream<Text>(stream, source, {}, ENOUGH);
    for (size_t split = 0; split <= source.size(); ++split)
        ASSERT_TRUE(whole == runStream<Text>(stream, source, {split}, ENOUGH)) << what << " split at " << split;
    for (size_t const length : {1U, 2U, 3U, 5U, 13U})
        for (size_t const capacity : {0U, 1U, 7U})
            ASSERT_TRUE(whole ==
                        runStream<Text>(stream, source, std::vector<size_t>(source.size() / length, length), capacity))
                << what << " pieces of " << length << " capacity " << capacity;
    for (size_t capacity = 0; capacity <= 40; ++capacity)
        ASSERT_TRUE(whole == runStream<Text>(stream, source, {}, capacity)) << what << " capacity " << capacity;
}

std::string nameOf(char const* set, kx7::Options const& options)
{
    return std::string(set) + " policy " + std::to_string(static_cast<int>(options.errors)) + " substitute " +
           std::to_string(options.substitute) + " bom " + std::to_string(static_cast<int>(options.bom));
}

class Streams : public testing::TestWithParam<CharSetRow> {};

TEST_P(Streams, DecoderInPieces)
{
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Decoder const decoder(GetParam().charSet, options);
        expectSameInPieces<std::u16string>(decoder, brokenBytes(GetParam().charSet), nameOf("broken", options));
        expectSameInPieces<std::u16string>(decoder, manyCharactersIn(GetParam().charSet), nameOf("clean", options));
        expectSameInPieces<std::u16string>(decoder, std::string(), nameOf("empty", options));
    }
}

TEST_P(Streams, EncoderInPieces)
{
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Encoder const encoder(GetParam().charSet, options);
        expectSameInPieces<std::string>(encoder, brokenUnits(), nameOf("broken", options));
        expectSameInPieces<std::string>(encoder, std::u16string(), nameOf("empty", options));
    }
}

TEST_P(Streams, TranscoderInPieces)
{
    for (kx7::Options const& options : everyPolicy())
        for (KX7CharSet const to : {KX7CS_UTF8, KX7CS_WCP932, KX7CS_UTF16}) {
            kx7::Transcoder const transcoder(GetParam().charSet, to, options);
            std::string const what = nameOf(KX7CharSetToString(to), options);
            expectSameInPieces<std::string>(transcoder, brokenBytes(GetParam().charSet), what);
        }
}

// Longer than what a transcoder decodes in one go, with an error in every part.
TEST_P(Streams, TranscoderOfLongText)
{
    std::string source;
    while (source.size() < 20000)
        source += brokenBytes(GetParam().charSet) + std::string(source.size() % 3, 'x');
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Transcoder const transcoder(GetParam().charSet, KX7CS_WCP1252, options);
        auto const whole = runStream<std::string>(transcoder, source, {}, 8 * ENOUGH);
        for (size_t const capacity : {30U, 4095U, 4096U, 4097U})
            ASSERT_TRUE(whole == runStream<std::string>(transcoder, source, {}, capacity))
                << nameOf("capacity", options) << capacity;
        ASSERT_TRUE(whole == runStream<std::string>(transcoder, source, std::vector<size_t>(5, 4099), 777));
    }
}

// A transcoder is a decoder and an encoder, and its errors those of the two in the order of the text.
TEST_P(Streams, TranscoderIsBoth)
{
    KX7CharSet const from = GetParam().charSet;
    std::string const source = brokenBytes(from);
    for (CharSetRow const& to : charSetRows())
        for (kx7::Options const& options : everyPolicy()) {
            if (options.errors != kx7::ErrorPolicy::REPLACE && options.errors != kx7::ErrorPolicy::SKIP)
                continue;
            kx7::Options second = options;
            second.bom = kx7::Bom::KEEP;
            kx7::Units const units = kx7::decode(source, from, options);
            kx7::Bytes const bytes = kx7::encode(units.text, to.charSet, second);
            kx7::Bytes const direct = kx7::transcode(source, from, to.charSet, options);
            std::string expected = bytes.text;
            if (options.bom == kx7::Bom::ADD && !kx7::encode(u"\xFEFF", to.charSet).isLossless())
                expected = kx7::encode(units.text.substr(1), to.charSet, second).text;
            ASSERT_EQ(direct.text, expected) << to.name << nameOf(" from", options);
            ASSERT_EQ(direct.status, kx7::Status::DONE);
            ASSERT_GE(direct.errorCount, units.errorCount);
        }
}

INSTANTIATE_TEST_SUITE_P(EverySet, Streams, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

/** Converts nothing but the one error of a text that begins at `at`. */
void expectError(kx7::Error const& error, kx7::Status status, unsigned long long byteOffset,
                 unsigned long long unitOffset, unsigned int length)
{
    EXPECT_EQ(error.status, status);
    EXPECT_EQ(error.byteOffset, byteOffset);
    EXPECT_EQ(error.unitOffset, unitOffset);
    EXPECT_EQ(error.length, length);
}

TEST(StreamErrors, SayWhereAndWhat)
{
    using kx7::Status;
    kx7::Units const decoded = kx7::decode(std::string("a\0\xE3\x81\x82\xF0\x9F\x98\x80\xE2\x82(", 12), KX7CS_UTF8);
    expectError(decoded.first, Status::INVALID, 9, 5, 2);
    EXPECT_EQ(decoded.status, Status::INVALID);
    EXPECT_EQ(decoded.first.bytes[0], 0xE2);
    EXPECT_EQ(decoded.first.bytes[1], 0x82);
    EXPECT_EQ(decoded.first.bytes[2], 0);
    EXPECT_EQ(decoded.text, std::u16string(u"a\0\x3042\xD83D\xDE00", 5));

    kx7::Bytes const encoded = kx7::encode(u"a\xE9\xD83D\xDE00z", KX7CS_UTF8);
    EXPECT_TRUE(encoded.isLossless());
    kx7::Bytes const latin = kx7::encode(u"a\xE9\xD83D\xDE00z", KX7CS_ISO_8859_1);
    expectError(latin.first, Status::UNREPRESENTABLE, 2, 2, 2);
    EXPECT_EQ(latin.first.codePoint, U'\x1F600');
    EXPECT_EQ(latin.text, "a\xE9");
    kx7::Bytes const lone = kx7::encode(u"a\xE9\xDE00z", KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE});
    expectError(lone.first, Status::INVALID, 3, 2, 1);
    EXPECT_EQ(lone.first.codePoint, char32_t{0xDE00});
    EXPECT_EQ(lone.text, "a\xC3\xA9\xEF\xBF\xBDz");
    EXPECT_TRUE(lone.isComplete());
    EXPECT_FALSE(lone.isLossless());

    kx7::Bytes const both =
        kx7::transcode("a\n\xE3\x81\x82\n\xE2\x82\xAC\xFFz", KX7CS_UTF8, KX7CS_WCP932, {kx7::ErrorPolicy::REPLACE});
    expectError(both.first, Status::UNREPRESENTABLE, 6, 4, 3);
    EXPECT_EQ(both.first.codePoint, char32_t{0x20AC});
    EXPECT_EQ(both.first.lineFeeds, 2U);
    EXPECT_EQ(both.errorCount, 2U);
    EXPECT_EQ(both.text, "a\n\x82\xA0\n??z");
    kx7::Bytes const invalid = kx7::transcode("a\n\x82\x20", KX7CS_WCP932, KX7CS_UTF8);
    expectError(invalid.first, Status::INVALID, 2, 2, 1);
    EXPECT_EQ(invalid.first.lineFeeds, 1U);
}

TEST(StreamErrors, EscapesAreUnitByUnit)
{
    kx7::Options const escape = {kx7::ErrorPolicy::ESCAPE};
    EXPECT_EQ(kx7::encode(u"a\x20AC\xD83D\xDE00\xD800z", KX7CS_ISO_8859_1, escape).text, "aU+20ACU+D83DU+DE00U+D800z");
    EXPECT_EQ(kx7::encode(u"\xD800z", KX7CS_UTF8, escape).text, "U+D800z");
    EXPECT_EQ(kx7::encode(u"\xD83D\xDE00", KX7CS_SJIS0213, escape).text, "U+D83DU+DE00");
    EXPECT_EQ(kx7::encode(u"\xD800", KX7CS_UTF32, escape).text.size(), 24U);
    EXPECT_EQ(kx7::transcode("\xFF", KX7CS_UTF8, KX7CS_ISO_8859_1, escape).text, "?");
}

// What differs from the published converters: these texts they take.
TEST(StreamErrors, LenientInputIsRefused)
{
    for (char const* const text : {"a\x80", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(kx7::decode(text, KX7CS_UTF8).status, kx7::Status::INVALID) << text;
    EXPECT_EQ(kx7::decode("\x80\x8A", KX7CS_EUC_JP).status, kx7::Status::INVALID);
    EXPECT_EQ(kx7::decode("\xB0!", KX7CS_EUC_JP).status, kx7::Status::INVALID);
    EXPECT_EQ(kx7::encode(u"\xD800", KX7CS_UTF16).status, kx7::Status::INVALID);
    EXPECT_EQ(kx7::encode(u"a\xD800"
                          u"b",
                          KX7CS_GB18030, {kx7::ErrorPolicy::SKIP})
                  .text,
              "ab");
}

TEST(StreamErrors, AStrictStreamGoesOnAfterThem)
{
    kx7::Decoder decoder(KX7CS_UTF8);
    char16_t units[9];
    kx7::StreamResult step = decoder.convert(std::string_view("a\xE2"), {units, 9}, false);
    EXPECT_EQ(step.consumed, 2U);
    EXPECT_EQ(step.written, 1U);
    EXPECT_EQ(step.status, kx7::Status::DONE);
    EXPECT_EQ(decoder.bytePosition(), 1U);
    step = decoder.convert(std::string_view("b\xFF"), {units, 9}, false);
    EXPECT_EQ(step.consumed, 0U);
    EXPECT_EQ(step.status, kx7::Status::INVALID);
    expectError(decoder.lastError(), kx7::Status::INVALID, 1, 1, 1);
    step = decoder.convert(std::string_view("b\xFF"), {units, 9}, false);
    EXPECT_EQ(step.consumed, 2U);
    EXPECT_EQ(step.status, kx7::Status::INVALID);
    expectError(decoder.lastError(), kx7::Status::INVALID, 3, 2, 1);
    EXPECT_EQ(decoder.errorCount(), 2U);
    decoder.reset();
    EXPECT_EQ(decoder.errorCount(), 0U);
    EXPECT_EQ(decoder.bytePosition(), 0U);
    EXPECT_EQ(decoder.firstError().status, kx7::Status::DONE);
}

TEST(StreamReset, ATextBegunAnewIsConvertedAsTheFirst)
{
    kx7::Options const options = {kx7::ErrorPolicy::REPLACE, 0, kx7::Bom::ADD};
    char16_t units[9];
    kx7::Decoder decoder(KX7CS_UTF8, options);
    kx7::Decoder const freshDecoder = decoder;
    decoder.convert(std::string_view("\xFF\xE2\x82"), {units, 9}, false);
    EXPECT_EQ(decoder.errorCount(), 1U);
    decoder.reset();
    EXPECT_EQ(decoder.unitPosition(), 0U);
    EXPECT_EQ(decoder.errorCount(), 0U);
    EXPECT_TRUE(runStream<std::u16string>(decoder, std::string("\xAC!"), {}, ENOUGH) ==
                runStream<std::u16string>(freshDecoder, std::string("\xAC!"), {}, ENOUGH));

    char bytes[24];
    kx7::Encoder encoder(KX7CS_UTF8, options);
    kx7::Encoder const freshEncoder = encoder;
    encoder.convert(std::u16string_view(u"\xDE00\xD83D"), {bytes, 24}, false);
    EXPECT_EQ(encoder.errorCount(), 1U);
    encoder.reset();
    EXPECT_EQ(encoder.bytePosition(), 0U);
    EXPECT_EQ(encoder.unitPosition(), 0U);
    EXPECT_EQ(encoder.errorCount(), 0U);
    EXPECT_TRUE(runStream<std::string>(encoder, std::u16string(u"\xDE00!"), {}, ENOUGH) ==
                runStream<std::string>(freshEncoder, std::u16string(u"\xDE00!"), {}, ENOUGH));

    kx7::Transcoder transcoder(KX7CS_UTF8, KX7CS_UTF16, options);
    kx7::Transcoder const freshTranscoder = transcoder;
    transcoder.convert(std::string_view("\n\xFF\xE2\x82"), {bytes, 24}, false);
    EXPECT_EQ(transcoder.errorCount(), 1U);
    transcoder.reset();
    EXPECT_EQ(transcoder.bytePosition(), 0U);
    EXPECT_EQ(transcoder.lineFeeds(), 0U);
    EXPECT_EQ(transcoder.errorCount(), 0U);
    EXPECT_TRUE(runStream<std::string>(transcoder, std::string("\xAC!"), {}, ENOUGH) ==
                runStream<std::string>(freshTranscoder, std::string("\xAC!"), {}, ENOUGH));
}

TEST(StreamPositions, CountWhatIsConvertedAndNotWhatIsKept)
{
    char16_t units[9];
    kx7::Decoder decoder(KX7CS_UTF8);
    decoder.convert(std::string_view("\xE2\x82\xAC\xF0\x9F\x98\x80\xE2"), {units, 9}, false);
    EXPECT_EQ(decoder.bytePosition(), 7U);
    EXPECT_EQ(decoder.unitPosition(), 3U);

    char bytes[24];
    kx7::Encoder encoder(KX7CS_UTF8);
    encoder.convert(std::u16string_view(u"\x20AC\xD83D\xDE00\xD83D"), {bytes, 24}, false);
    EXPECT_EQ(encoder.bytePosition(), 7U);
    EXPECT_EQ(encoder.unitPosition(), 3U);

    kx7::Transcoder transcoder(KX7CS_UTF8, KX7CS_UTF16);
    transcoder.convert(std::string_view("\n\xE2\x82\xAC\n\xE2"), {bytes, 24}, false);
    EXPECT_EQ(transcoder.bytePosition(), 5U);
    EXPECT_EQ(transcoder.lineFeeds(), 2U);
}

TEST(StreamErrors, WhatIsNoCharacterIsNoSubstitute)
{
    for (char32_t const substitute : {char32_t{0}, char32_t{0xD800}, char32_t{0xDFFF}, char32_t{0x110000}})
        EXPECT_EQ(kx7::decode("\xFF", KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE, substitute}).text, u"\xFFFD");
    EXPECT_EQ(kx7::decode("\xFF", KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE, 0x10FFFF}).text, u"\xDBFF\xDFFF");
}

TEST(StreamErrors, ThePolicyCanChangeWithinAText)
{
    char16_t units[9];
    kx7::Decoder decoder(KX7CS_UTF8);
    EXPECT_EQ(decoder.convert(std::string_view("\xFF"), {units, 9}, false).status, kx7::Status::INVALID);
    decoder.setErrors(kx7::ErrorPolicy::SKIP);
    EXPECT_EQ(decoder.convert(std::string_view("\xFF"), {units, 9}, true).status, kx7::Status::DONE);

    char bytes[24];
    kx7::Encoder encoder(KX7CS_ISO_8859_1);
    EXPECT_EQ(encoder.convert(std::u16string_view(u"\x20AC"), {bytes, 24}, false).status, kx7::Status::UNREPRESENTABLE);
    encoder.setErrors(kx7::ErrorPolicy::ESCAPE);
    EXPECT_EQ(encoder.convert(std::u16string_view(u"\x20AC"), {bytes, 24}, true).written, 6U);

    kx7::Transcoder transcoder(KX7CS_UTF8, KX7CS_ISO_8859_1);
    EXPECT_EQ(transcoder.convert(std::string_view("\xFF"), {bytes, 24}, false).status, kx7::Status::INVALID);
    EXPECT_EQ(transcoder.convert(std::string_view("\xE2\x82\xAC"), {bytes, 24}, false).status,
              kx7::Status::UNREPRESENTABLE);
    transcoder.setErrors(kx7::ErrorPolicy::SKIP);
    EXPECT_EQ(transcoder.convert(std::string_view("\xFF"), {bytes, 24}, false).status, kx7::Status::DONE);
    EXPECT_EQ(transcoder.convert(std::string_view("\xE2\x82\xAC"), {bytes, 24}, true).status, kx7::Status::DONE);
}

// What is kept and the 15 units after it are looked at together.
TEST(StreamPieces, APairLiesAcrossTheEndOfWhatIsLookedAtTogether)
{
    std::u16string const pair = u"\xD83D\xDE00";
    for (size_t letters = 10; letters != 16; ++letters) {
        std::u16string const text = pair + std::u16string(letters, u'a') + pair;
        EXPECT_TRUE(runStream<std::string>(kx7::Encoder(KX7CS_UTF8), text, {1}, ENOUGH) ==
                    runStream<std::string>(kx7::Encoder(KX7CS_UTF8), text, {}, ENOUGH))
            << letters;
    }
}

TEST(StreamErrors, NoConverter)
{
    EXPECT_EQ(kx7::decode("a", KX7CS_ISO_2022JP).status, kx7::Status::NO_CONVERTER);
    EXPECT_EQ(kx7::encode(u"a", static_cast<KX7CharSet>(437)).status, kx7::Status::NO_CONVERTER);
    EXPECT_EQ(kx7::transcode("a", KX7CS_UTF8, KX7CS_UTF16BE).status, kx7::Status::NO_CONVERTER);
    EXPECT_EQ(kx7::transcode("a", KX7CS_EUC_TW, KX7CS_UTF8).text, "");
    EXPECT_FALSE(kx7::Decoder(KX7CS_ISO_2022JP).maxUnits(1));
    EXPECT_FALSE(kx7::Encoder(KX7CS_ISO_2022JP).maxBytes(1));
    char16_t unit;
    char byte;
    EXPECT_EQ(kx7::Decoder(KX7CS_ISO_2022JP).convert(std::string_view("a"), {&unit, 1}, true).status,
              kx7::Status::NO_CONVERTER);
    EXPECT_EQ(kx7::Encoder(KX7CS_ISO_2022JP).convert(std::u16string_view(u"a"), {&byte, 1}, true).status,
              kx7::Status::NO_CONVERTER);
}

TEST(StreamBom, EveryWay)
{
    using kx7::Bom;
    using kx7::ErrorPolicy;
    auto const with = [](Bom bom) { return kx7::Options{ErrorPolicy::STRICT, 0, bom}; };
    std::string const marked = "\xEF\xBB\xBF"
                               "a\xEF\xBB\xBF";
    EXPECT_EQ(kx7::decode(marked, KX7CS_UTF8).text, u"\xFEFF"
                                                    u"a\xFEFF");
    for (Bom const bom : {Bom::STRIP, Bom::REQUIRE})
        EXPECT_EQ(kx7::decode(marked, KX7CS_UTF8, with(bom)).text, u"a\xFEFF");
    EXPECT_EQ(kx7::decode(marked, KX7CS_UTF8, with(Bom::ADD)).text, u"\xFEFF"
                                                                    u"a\xFEFF");
    EXPECT_EQ(kx7::decode("a", KX7CS_UTF8, with(Bom::ADD)).text, u"\xFEFF"
                                                                 u"a");
    EXPECT_EQ(kx7::decode("", KX7CS_UTF8, with(Bom::ADD)).text, u"\xFEFF");
    EXPECT_EQ(kx7::decode("a", KX7CS_UTF8, with(Bom::STRIP)).text, u"a");
    for (char const* const text : {"a", "", "\xEF\xBB", "\xFF"}) {
        kx7::Units const missing = kx7::decode(text, KX7CS_UTF8, {ErrorPolicy::SKIP, 0, Bom::REQUIRE});
        EXPECT_EQ(missing.status, kx7::Status::MISSING_BOM);
        EXPECT_EQ(missing.errorCount, 1U);
        EXPECT_TRUE(missing.text.empty());
    }
    EXPECT_EQ(kx7::encode(u"a", KX7CS_UTF8, with(Bom::ADD)).text, "\xEF\xBB\xBF"
                                                                  "a");
    EXPECT_EQ(kx7::encode(u"\xFEFF"
                          u"a",
                          KX7CS_UTF8, with(Bom::ADD))
                  .text,
              "\xEF\xBB\xBF"
              "a");
    EXPECT_EQ(kx7::encode(u"\xFEFF"
                          u"a",
                          KX7CS_WCP1252, with(Bom::STRIP))
                  .text,
              "a");
    EXPECT_EQ(kx7::encode(u"a", KX7CS_WCP1252, with(Bom::ADD)).text, "a");
    EXPECT_EQ(kx7::encode(u"a", KX7CS_WCP1252, with(Bom::REQUIRE)).status, kx7::Status::MISSING_BOM);
    EXPECT_EQ(kx7::transcode(marked, KX7CS_UTF8, KX7CS_UTF16, with(Bom::ADD)).text,
              std::string(reinterpret_cast<char const*>(u"\xFEFF"
                                                        u"a\xFEFF"),
                          6));
    EXPECT_EQ(kx7::transcode("a", KX7CS_WCP1252, KX7CS_GB18030, with(Bom::ADD)).text, "\x84\x31\x95\x33"
                                                                                      "a");
    EXPECT_EQ(kx7::transcode("a", KX7CS_WCP1252, KX7CS_UTF8, with(Bom::REQUIRE)).status, kx7::Status::MISSING_BOM);
}

}  // namespace
