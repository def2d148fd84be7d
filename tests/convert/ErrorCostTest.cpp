// kx7text tests - what errors cost: no text is looked at again and again, however many errors there are in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "kx7/convert.h"
#include "tests/support/KernelSets.h"

namespace {

using kx7::ErrorPolicy;
using kx7::Span;

constexpr double MOST = 5;  ///< times the cost that it is compared with
constexpr size_t SIZE = 16000;

double processorTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/** Converts all of a text, `piece` elements at a time, going on after errors. */
template <class Stream, class Text, class Dest>
void convert(Stream stream, Text const& text, size_t piece, std::vector<Dest>& dest)
{
    using Char = typename Text::value_type;
    for (size_t at = 0; at < text.size();) {
        size_t const end = std::min(text.size(), at + piece);
        while (at != end)
            at += stream
                      .convert(Span<Char const>(text.data() + at, end - at), Span<Dest>(dest.data(), dest.size()),
                               end == text.size())
                      .consumed;
    }
}

/** The least time of some rounds of each, in turn, so that what else the machine does counts for neither. */
template <class One, class Other>
double ratioOf(One const& one, Other const& other)
{
    double least[2] = {1e30, 1e30};
    double ratio = MOST + 1;
    for (int round = 0; round < 40 && (round < 3 || ratio > MOST); ++round) {
        double const begin = processorTime();
        one();
        double const middle = processorTime();
        other();
        least[0] = std::min(least[0], middle - begin);
        least[1] = std::min(least[1], processorTime() - middle);
        ratio = least[0] / least[1];
    }
    return ratio;
}

template <class Text>
Text repeated(Text const& element, size_t size)
{
    Text text;
    while (text.size() < size)
        text += element;
    return text;
}

/** What one piece costs is no more than what short ones do, after whose ends nothing can be looked at. */
template <class Stream, class Dest, class Text>
void expectNothingLookedAtAgain(std::string const& name, Stream const& stream, Text const& text)
{
    constexpr size_t SHORT = 64;
    static std::vector<Dest> dest(24 * SIZE);
    double const ratio =
        ratioOf([&] { convert(stream, text, text.size(), dest); }, [&] { convert(stream, text, SHORT, dest); });
    EXPECT_LE(ratio, MOST) << name;
}

ErrorPolicy const POLICIES[] = {ErrorPolicy::STRICT, ErrorPolicy::REPLACE, ErrorPolicy::SKIP, ErrorPolicy::ESCAPE};

/** A text of errors, and one of 39 characters for each. */
template <class Text, class Expect>
void forDenseAndSparse(Text const& good, Text const& bad, Expect const& expect)
{
    expect(" of errors", repeated(bad, SIZE));
    expect(" of some errors", repeated(repeated(good, 39 * good.size()) + bad, SIZE));
}

}  // namespace

TEST(ErrorCost, NoUnitIsLookedAtAgainAfterEachErrorOfAnEncoder)
{
    struct {
        char const* name;
        KX7CharSet to;
        std::u16string good, bad;
    } const rows[] = {
        {"1252", KX7CS_WCP1252, u"\xE9", u"\x4E00"},
        {"1252, pairs", KX7CS_WCP1252, u"a", u"\xD83D\xDE00"},
        {"932", KX7CS_WCP932, u"\x3042", u"\xE9"},
        {"EUC-KR", KX7CS_EUC_KR, u"\xAC00", u"\xE01"},
        {"EUC-JP", KX7CS_EUC_JP, u"\x3042", u"\xE01"},
        {"Shift_JIS-2004", KX7CS_SJIS0213, u"\x3042", u"\xE01"},
        {"GB 18030, surrogates", KX7CS_GB18030, u"a", u"\xD800"},
        {"UTF-8, surrogates", KX7CS_UTF8, u"a", u"\xDC00"},
        {"UTF-16, surrogates", KX7CS_UTF16, u"a", u"\xDC00"},
        {"UTF-32, surrogates", KX7CS_UTF32, u"a", u"\xDC00"},
    };
    for (auto const& row : rows)
        for (ErrorPolicy const policy : POLICIES)
            forDenseAndSparse(row.good, row.bad, [&](char const* kind, std::u16string const& text) {
                expectNothingLookedAtAgain<kx7::Encoder, char>(row.name + std::string(kind) + ", policy " +
                                                                   std::to_string(static_cast<int>(policy)),
                                                               kx7::Encoder(row.to, {policy}), text);
            });
}

TEST(ErrorCost, NoByteIsLookedAtAgainAfterEachErrorOfADecoderOrTranscoder)
{
    struct {
        char const* name;
        KX7CharSet from, to;
        std::string good, bad;
    } const rows[] = {
        {"UTF-8 to 1252, unrepresentable", KX7CS_UTF8, KX7CS_WCP1252, "\xC3\xA9", "\xE4\xB8\xAD"},
        {"UTF-8 to 932, unrepresentable", KX7CS_UTF8, KX7CS_WCP932, "\xE3\x81\x82", "\xC3\xA9"},
        {"932 to 1252, unrepresentable", KX7CS_WCP932, KX7CS_WCP1252, "a", "\x82\xA0"},
        {"1252 to 1251, unrepresentable", KX7CS_WCP1252, KX7CS_WCP1251, "a", "\xE9"},
        {"UTF-8 to UTF-16, malformed", KX7CS_UTF8, KX7CS_UTF16, "\xC3\xA9", "\xFF"},
        {"GB 18030 to UTF-8, malformed", KX7CS_GB18030, KX7CS_UTF8, "\xB0\xA1", "\xFF"},
        {"EUC-JP to UTF-8, malformed", KX7CS_EUC_JP, KX7CS_UTF8, "\xA4\xA2", "\xFF"},
        {"escapes to UTF-8, malformed", KX7CS_UTF16ESC, KX7CS_UTF8, "U+20AC", "\xFF"},
    };
    for (auto const& row : rows)
        for (ErrorPolicy const policy : POLICIES)
            forDenseAndSparse(row.good, row.bad, [&](char const* kind, std::string const& text) {
                std::string const name =
                    row.name + std::string(kind) + ", policy " + std::to_string(static_cast<int>(policy));
                expectNothingLookedAtAgain<kx7::Transcoder, char>(name, kx7::Transcoder(row.from, row.to, {policy}),
                                                                  text);
                expectNothingLookedAtAgain<kx7::Decoder, char16_t>(name + ", decoding",
                                                                   kx7::Decoder(row.from, {policy}), text);
            });
}

// By the steps alone, so that what is compared is not how fast the kernels of a machine are with what is no error.
TEST(ErrorCost, ATextOfErrorsCostsNoMoreThanFiveTimesAnother)
{
    kx7test::Using const kernels(kx7::InstructionSet::PLAIN);
    std::vector<char> bytes(24 * SIZE);
    std::vector<char16_t> units(24 * SIZE);
    for (ErrorPolicy const policy : {ErrorPolicy::REPLACE, ErrorPolicy::SKIP}) {
        for (auto const& [to, good, bad] : {std::tuple(KX7CS_WCP1252, u"\xE9", u"\x4E00"),
                                            {KX7CS_WCP932, u"\x3042", u"\xE9"},
                                            {KX7CS_EUC_JP, u"\x3042", u"\xE01"},
                                            {KX7CS_UTF8, u"\x4E00", u"\xDC00"}}) {
            std::u16string const goods = repeated(std::u16string(good), SIZE);
            std::u16string const bads = repeated(std::u16string(bad), SIZE);
            kx7::Encoder const encoder(to, {policy});
            EXPECT_LE(ratioOf([&, &bads = bads] { convert(encoder, bads, SIZE, bytes); },
                              [&, &goods = goods] { convert(encoder, goods, SIZE, bytes); }),
                      MOST)
                << "encoding " << to;
        }
        for (auto const& [from, good] : {std::pair(KX7CS_UTF8, "\xE4\xB8\xAD"),
                                         {KX7CS_WCP932, "\x82\xA0"},
                                         {KX7CS_GB18030, "\xB0\xA1"},
                                         {KX7CS_EUC_JP, "\xA4\xA2"}}) {
            std::string const goods = repeated(std::string(good), SIZE);
            std::string const bads(SIZE, '\xFF');
            kx7::Decoder const decoder(from, {policy});
            EXPECT_LE(
                ratioOf([&] { convert(decoder, bads, SIZE, units); }, [&] { convert(decoder, goods, SIZE, units); }),
                MOST)
                << "decoding " << from;
        }
    }
}
