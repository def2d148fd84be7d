// kx7text tests - the model of the Encoding Standard against what the standard's text says of single cases.
#include <gtest/gtest.h>

#include "tests/model/web/WebHooks.h"

using namespace kx7test;

namespace {

/** "41 !1-3 20AC": code points, and where malformed sequences begin and end. */
std::string shown(std::vector<WebDecoded> const& results)
{
    std::string text;
    char piece[32];
    for (WebDecoded const& result : results) {
        if (result.isError) {
            snprintf(piece, sizeof piece, " !%zu-%zu", result.begin, result.end);
            text += piece;
        }
        for (char32_t const c : result.codePoints) {
            snprintf(piece, sizeof piece, " %X", static_cast<unsigned int>(c));
            text += piece;
        }
    }
    return text.empty() ? text : text.substr(1);
}

}  // namespace

TEST(WebModel, Decodes)
{
    using namespace std::string_literals;
    struct Case {
        char const* encoding;
        std::string bytes;
        char const* results;
    };
    Case const cases[] = {
        {"UTF-8", "\xF0\x9F\x92\xA9", "1F4A9"},
        {"UTF-8", "\xF0\x9F\x92\x41", "!0-3 41"},
        {"UTF-8", "\xE0\x80\x80", "!0-1 !1-2 !2-3"},
        {"UTF-8", "\xEF\xBB\xBF\xE2\x82", "FEFF !3-5"},
        {"IBM866", "\x80\xFF", "410 A0"},
        {"windows-1252", "\x80\x81\x8D", "20AC 81 8D"},
        {"windows-1253", "\xAA\xD2\xFF", "!0-1 !1-2 !2-3"},
        {"ISO-8859-8-I", "\xE0\xA1", "5D0 !1-2"},
        {"GBK", "\x80\xA3\xA0\xA6\xD9\xFF", "20AC 3000 FE10 !5-6"},
        {"GBK", "\x81\x35\xF4\x37\xA8\xBC", "E7C7 1E3F"},
        {"gb18030", "\x90\x30\x81\x30\xE3\x32\x9A\x35", "10000 10FFFF"},
        {"gb18030", "\xE3\x32\x9A\x36", "!0-4"},
        {"gb18030", "\x84\x31\xA4\x39\x84\x31\xA5\x30", "FFFF !4-8"},
        {"gb18030", "\x81\x30\x81\x41", "!0-1 30 4E04"},
        {"gb18030", "\x81\x30\x41", "!0-1 30 41"},
        {"gb18030", "\x81\x7F\x81\xFF\x81", "!0-1 7F !2-4 !4-5"},
        {"Big5", "\x88\x62\x88\x64\x88\xA3\x88\xA5", "CA 304 CA 30C EA 304 EA 30C"},
        {"Big5", "\x81\x40\x81\xA1\x80", "!0-1 40 !2-4 !4-5"},
        {"EUC-JP", "\x8E\xB1\x8F\xB0\xA1\xA4\xA2", "FF71 4E02 3042"},
        {"EUC-JP", "\x8F\xB0\x41\x8F\x41\x8E\xE0\x8F", "!0-2 41 !3-4 41 !5-7 !7-8"},
        {"Shift_JIS", "\x80\xF0\x40\xB1\x82\xA0\x87\x40\x81\x41\x85\x40", "80 E000 FF71 3042 2460 3001 !10-11 40"},
        {"Shift_JIS", "\xA0\xFD\x81\xFD", "!0-1 !1-2 !2-4"},
        {"EUC-KR", "\x81\x41\xB0\xA1\xC9\xA1\x81\x5B", "AC02 AC00 !4-6 !6-7 5B"},
        {"replacement", "\x1B$)C", "!0-1"},
        {"replacement", "", ""},
        {"UTF-16LE", "\x3D\xD8\xA9\xDC\x3D\xD8\x41\x00\x41"s, "1F4A9 !4-6 41 !8-9"},
        {"UTF-16BE", "\xD8\x3D\xD8\x3D\xDC\xA9\xDC\xA9", "!0-2 1F4A9 !6-8"},
        {"UTF-16BE", "\xD8\x3D\xDC", "!0-3"},
        {"x-user-defined", "\x7F\x80\xFF", "7F F780 F7FF"},
        {"ISO-2022-JP", "\x1B(J\\~\x1B(B\\", "A5 203E 5C"},
        {"ISO-2022-JP", "\x1B$B$\"\x1B(I1\x1B$@0!\x1B(B", "3042 FF71 4E9C"},
        {"ISO-2022-JP", "\x1B$B\x1B(BA", "!0-3 41"},
        {"ISO-2022-JP", "\x1B$B\x1B(B\x1B$B$\"", "!0-3 !3-6 3042"},
        {"ISO-2022-JP", "\x1B$B$\x1B(BA", "!3-4 41"},
        {"ISO-2022-JP", "\x1B$A\x1B(\x1B", "!0-1 24 41 !3-4 28 !5-6"},
        {"ISO-2022-JP", "\x1B$B$\n$\"$", "!3-5 3042 !7-8"},
        {"ISO-2022-JP", "\x0E\x80", "!0-1 !1-2"},
    };
    for (Case const& c : cases)
        EXPECT_EQ(shown(WebDecoder{c.encoding}.decode(c.bytes)), c.results) << c.encoding << ' ' << c.results;
}

TEST(WebModel, Encodes)
{
    struct Case {
        char const* encoding;
        std::u32string codePoints;
        char const* bytes;  // with a character reference for what it lacks
    };
    Case const cases[] = {
        {"UTF-8", U"aé€\U0001F4A9", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x92\xA9"},
        {"windows-1252", U"€é\u0081\u0100", "\x80\xE9\x81&#256;"},
        {"GBK", U"€中\uE5E5\u0100\uFE10\uE78D", "\x80\xD6\xD0&#58853;&#256;\xA6\xD9\xA6\xD9"},
        {"gb18030", U"€\uE5E5\uE7C7\u1E3F\U00010000", "\xA2\xE3&#58853;\x81\x35\xF4\x37\xA8\xBC\x90\x30\x81\x30"},
        {"Big5", U"═十\u43F0\u00CA", "\xF9\xF9\xA4\x51&#17392;&#202;"},
        {"EUC-JP", U"¥‾−ｱ\u4E02", "\\~\xA1\xDD\x8E\xB1&#19970;"},
        {"Shift_JIS", U"¥‾−ｱ\u0080\uE000ⅰ", "\\~\x81\x7C\xB1\x80&#57344;\xFA\x40"},
        {"EUC-KR", U"가갂", "\xB0\xA1\x81\x41"},
        {"x-user-defined", U"\uF780\uF7FF\u0080", "\x80\xFF&#128;"},
        {"ISO-2022-JP", U"¥", "\x1B(J\\\x1B(B"},
        {"ISO-2022-JP", U"¥a\\あ−ｱ\U0001F4A9", "\x1B(J\\a\x1B(B\\\x1B$B$\"!]%\"\x1B(B&#128169;"},
        {"ISO-2022-JP", U"\u001B¥\u000E", "&#65533;\x1B(J\\&#65533;\x1B(B"},
    };
    for (Case const& c : cases)
        EXPECT_EQ(webEncode(c.codePoints, c.encoding), c.bytes) << c.encoding;
    // The standard's example of outputs that must not be concatenated.
    EXPECT_EQ(webReplaced(WebDecoder{"ISO-2022-JP"}.decode(webEncode(U"¥", "ISO-2022-JP") + "\x1B(J\\\x1B(B")),
              U"¥\uFFFD¥");
}

TEST(WebModel, FatalModeStopsAtTheFirstError)
{
    EXPECT_EQ(shown(WebDecoder{"UTF-8"}.decode("A\xFF\xFF", true)), "41 !1-2");
    auto const results = WebEncoder{"ISO-2022-JP"}.encode(U"¥\U0001F4A9\u0100", true);
    EXPECT_EQ(results.size(), 3U);
    EXPECT_TRUE(results.back().isError);
    EXPECT_EQ(results.back().codePoint, U'\U0001F4A9');
    EXPECT_EQ(results.back().begin, 1U);
    EXPECT_EQ(results.back().end, 2U);
}

TEST(WebModel, Hooks)
{
    EXPECT_EQ(webEncodings().size(), 40U);
    EXPECT_EQ(webEncodingOf(" \tLatin1\n"), "windows-1252");
    EXPECT_EQ(webEncodingOf("utf-16"), "UTF-16LE");
    EXPECT_EQ(webEncodingOf("iso-2022-kr"), "replacement");
    EXPECT_EQ(webEncodingOf("utf-7"), "");
    EXPECT_EQ(webOutputEncoding("UTF-16BE"), "UTF-8");
    EXPECT_EQ(webOutputEncoding("replacement"), "UTF-8");
    EXPECT_EQ(webOutputEncoding("Big5"), "Big5");
    EXPECT_EQ(webDecode("\xEF\xBB\xBF\xEF\xBB\xBF\xE9", "windows-1252"), U"\uFEFF\uFFFD");
    EXPECT_EQ(webDecode("\xFE\xFF\x20\xAC", "UTF-8"), U"€");
    EXPECT_EQ(webDecode("\xFF\xFE\xAC\x20", "UTF-8"), U"€");
    EXPECT_EQ(webDecode("\xE9", "windows-1252"), U"é");
    EXPECT_EQ(webUtf8Decode("\xEF\xBB\xBF"
                            "A"),
              U"A");
    EXPECT_EQ(webUtf8Decode("\xFF\xFE"), U"\uFFFD\uFFFD");
    EXPECT_EQ(webUtf8DecodeWithoutBom("\xEF\xBB\xBF"
                                      "A"),
              U"\uFEFFA");
    std::u32string text;
    EXPECT_TRUE(webUtf8DecodeWithoutBomOrFail("\xC3\xA9", text));
    EXPECT_EQ(text, U"é");
    EXPECT_FALSE(webUtf8DecodeWithoutBomOrFail("\xC3", text));
    EXPECT_THROW(makeWebEncoder("UTF-16LE"), std::logic_error);
}
