// kx7text tests - how a call of a transcoder works: what it counts, where it puts the text between, what replaces what.
#include <gtest/gtest.h>

#include "tests/convert/Samples.h"

using namespace kx7test;  // NOLINT

namespace {

constexpr size_t ENOUGH = 16000;

/** A transcoder whose calls are all of one kind, as runStream takes it. */
class Calls {
public:
    static constexpr size_t MINIMUM_CAPACITY = kx7::Transcoder::MINIMUM_CAPACITY;

    Calls(kx7::Transcoder const& transcoder, kx7::LineFeeds lineFeeds, size_t bufferSize)
        : m_transcoder(transcoder), m_lineFeeds(lineFeeds), m_buffer(bufferSize)
    {
    }

    kx7::StreamResult convert(kx7::Span<char const> source, kx7::Span<char> dest, bool last)
    {
        kx7::TranscoderCall call;
        call.last = last;
        call.lineFeeds = m_lineFeeds;
        call.buffer = {m_buffer.data(), m_buffer.size()};
        return m_transcoder.convert(source, dest, call);
    }

    unsigned long long errorCount() const { return m_transcoder.errorCount(); }
    kx7::Error const& firstError() const { return m_transcoder.firstError(); }
    kx7::Error const& lastError() const { return m_transcoder.lastError(); }

private:
    kx7::Transcoder m_transcoder;
    kx7::LineFeeds m_lineFeeds;
    std::vector<char16_t> m_buffer;
};

template <class Stream>
Streamed<std::string> streamed(Stream const& stream, std::string const& text)
{
    return runStream<std::string>(stream, text, {3, 17}, ENOUGH);
}

class TranscoderCalls : public testing::TestWithParam<CharSetRow> {};

TEST_P(TranscoderCalls, CountTheSameLinesInBytesAndInText)
{
    KX7CharSet const from = GetParam().charSet;
    std::string const text = brokenBytes(from) + brokenBytes(from);
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Transcoder const transcoder(from, KX7CS_WCP1251, options);
        Streamed<std::string> const expected = streamed(transcoder, text);
        EXPECT_TRUE(streamed(Calls(transcoder, kx7::LineFeeds::IN_TEXT, 0), text) == expected);
        if (kx7::lineFeedsAreBytes(from)) {
            EXPECT_TRUE(streamed(Calls(transcoder, kx7::LineFeeds::IN_BYTES, 0), text) == expected);
        }
    }
}

TEST_P(TranscoderCalls, DifferInLinesOnlyWhereNoneAreCounted)
{
    KX7CharSet const from = GetParam().charSet;
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Transcoder const transcoder(from, KX7CS_WCP1251, options);
        Streamed<std::string> expected = streamed(transcoder, brokenBytes(from));
        expected.first.lineFeeds = 0;
        for (kx7::Error& error : expected.errors)
            error.lineFeeds = 0;
        EXPECT_TRUE(streamed(Calls(transcoder, kx7::LineFeeds::NONE, 0), brokenBytes(from)) == expected);
    }
}

TEST_P(TranscoderCalls, DoNotDependOnTheirBuffer)
{
    KX7CharSet const from = GetParam().charSet;
    for (kx7::Options const& options : everyPolicy()) {
        kx7::Transcoder const transcoder(from, KX7CS_WCP932, options);
        Streamed<std::string> const expected = streamed(transcoder, brokenBytes(from));
        for (size_t const size : {1U, 2U, 3U, 8192U})
            EXPECT_TRUE(streamed(Calls(transcoder, kx7::LineFeeds::IN_TEXT, size), brokenBytes(from)) == expected)
                << size;
    }
}

INSTANTIATE_TEST_SUITE_P(EverySet, TranscoderCalls, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(TranscoderCall, CountsWhatItSays)
{
    std::string const text = "a\nb\n\x82\n";
    char bytes[64];
    struct {
        kx7::LineFeeds lineFeeds;
        unsigned long long first, all;
    } const rows[] = {{kx7::LineFeeds::IN_TEXT, 2, 3}, {kx7::LineFeeds::IN_BYTES, 2, 3}, {kx7::LineFeeds::NONE, 0, 0}};
    for (auto const& row : rows) {
        kx7::Transcoder transcoder(KX7CS_WCP932, KX7CS_UTF8, {kx7::ErrorPolicy::SKIP});
        EXPECT_EQ(transcoder.convert(text, {bytes, sizeof bytes}, {true, row.lineFeeds, {}}).status, kx7::Status::DONE);
        EXPECT_EQ(transcoder.firstError().lineFeeds, row.first);
        EXPECT_EQ(transcoder.lineFeeds(), row.all);
    }
}

/** "a", a malformed byte, a character that most sets lack. */
std::string replaced(KX7CharSet to, kx7::ErrorPolicy errors, char32_t malformed, char32_t lacking)
{
    kx7::Transcoder transcoder(KX7CS_UTF8, to, {errors, U'#'});
    transcoder.setSubstitutes(malformed, lacking);
    std::string const text = "a\xFF\xFF\xE0\xB8\x81z";
    EXPECT_GE(transcoder.maxBytes(text.size()), 7U);
    return runStream<std::string>(transcoder, text, {2}, 3).text;
}

TEST(TranscoderSubstitutes, TellMalformedFromLacking)
{
    using kx7::ErrorPolicy;
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::REPLACE, U'!', U'_'), "a!!_z");
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::REPLACE, U'_', U'_'), "a___z");
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::REPLACE, 0, U'\xE9'), "a??\xE9z");
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::REPLACE, U'\x416', U'\x416'), "a???z");
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::ESCAPE, U'!', U'_'), "a!!U+0E01z");
    EXPECT_EQ(replaced(KX7CS_WCP1252, ErrorPolicy::SKIP, U'!', U'_'), "az");
    EXPECT_EQ(replaced(KX7CS_UTF8, ErrorPolicy::REPLACE, 0, U'?'), "a\xEF\xBF\xBD\xEF\xBF\xBD\xE0\xB8\x81z");
    EXPECT_EQ(replaced(KX7CS_UTF8, ErrorPolicy::REPLACE, U'\x1F600', U'?'),
              "a\xF0\x9F\x98\x80\xF0\x9F\x98\x80\xE0\xB8\x81z");
    EXPECT_EQ(replaced(KX7CS_WCP932, ErrorPolicy::REPLACE, U'\x3042', U'?'), "a\x82\xA0\x82\xA0?z");
}

TEST(TranscoderSubstitutes, MayBeSetWithoutAConverter)
{
    kx7::Transcoder transcoder(KX7CS_UTF8, KX7CS_UTF16BE);
    transcoder.setSubstitutes(U'!', U'_');
    char byte;
    EXPECT_EQ(transcoder.convert(std::string_view("a"), {&byte, 1}, true).status, kx7::Status::NO_CONVERTER);
}

TEST(TranscoderSubstitutes, AreWithinTheMostBytes)
{
    for (CharSetRow const& to : charSetRows())
        for (char32_t const malformed : {U'!', U'\xE9', U'\x3042', U'\x1F600'}) {
            std::string const text = std::string(64, '\xFF') + "\xE0\xB8\x81";
            kx7::Transcoder transcoder(KX7CS_UTF8, to.charSet, {kx7::ErrorPolicy::REPLACE});
            transcoder.setSubstitutes(malformed, U'?');
            size_t const most = *transcoder.maxBytes(text.size());
            EXPECT_LE(runStream<std::string>(transcoder, text, {}, ENOUGH).text.size(), most) << to.name;
        }
}

}  // namespace
