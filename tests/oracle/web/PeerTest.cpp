// kx7text tests - the model of the Encoding Standard against encoding_rs.
#include <gtest/gtest.h>

#include <random>

#include "tests/oracle/web/Peer.h"

using namespace kx7test;

namespace {

std::string fileName(std::string encoding)
{
    for (char& c : encoding) {
        if (c == '-')
            c = '_';
    }
    return encoding;
}

bool hasEncoder(std::string const& encoding)
{
    return webOutputEncoding(encoding) == encoding;
}

/** The bytes at the edges of what an encoding's decoder distinguishes. */
std::string classesOf(std::string const& encoding)
{
    using namespace std::string_literals;
    if (encoding == "UTF-8")
        return "\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF3\xF4\xF5\xFF"s;
    if (encoding == "GBK" || encoding == "gb18030")
        return "\x00\x2F\x30\x31\x35\x37\x39\x3A\x40\x59\x7E\x7F\x80\x81\x84\x90\xA0\xA3\xA6\xE3\xF4\xFE\xFF"s;
    if (encoding == "Big5")
        return "\x00\x3F\x40\x62\x7E\x7F\x80\x81\x87\x88\xA0\xA1\xA3\xC6\xF9\xFE\xFF"s;
    if (encoding == "EUC-JP")
        return "\x00\x41\x7F\x80\x8D\x8E\x8F\x90\xA0\xA1\xA2\xB0\xDF\xE0\xF4\xFC\xFE\xFF"s;
    if (encoding == "ISO-2022-JP")
        return "\x0A\x0E\x1B\x20\x21\x24\x28\x30\x40\x42\x49\x4A\x5C\x5F\x60\x7E\x7F\x80\xFF"s;
    if (encoding == "Shift_JIS")
        return "\x00\x3F\x40\x5C\x7E\x7F\x80\x81\x9F\xA0\xA1\xDF\xE0\xED\xEF\xF0\xF9\xFA\xFC\xFD\xFF"s;
    if (encoding == "EUC-KR")
        return "\x00\x40\x41\x5A\x5B\x61\x7A\x7B\x7F\x80\x81\xA0\xA1\xAD\xB0\xC6\xC9\xFE\xFF"s;
    if (encoding == "UTF-16BE" || encoding == "UTF-16LE")
        return "\x00\x41\xD7\xD8\xDB\xDC\xDF\xE0\xFE\xFF"s;
    return "\x00\x41\x7F\x80\xA1\xDF\xFF"s;
}

/** Calls visit with each sequence of `length` of these bytes. */
template <class Visit>
void sequences(std::string const& bytes, size_t length, Visit const& visit)
{
    std::string sequence(length, '\0');
    std::vector<size_t> at(length);
    for (;;) {
        for (size_t i = 0; i < length; ++i)
            sequence[i] = bytes[at[i]];
        visit(sequence);
        size_t i = length;
        while (i > 0 && ++at[i - 1] == bytes.size())
            at[--i] = 0;
        if (i == 0)
            return;
    }
}

std::string allBytes()
{
    std::string bytes;
    for (int b = 0; b < 256; ++b)
        bytes += static_cast<char>(b);
    return bytes;
}

class WebPeer : public testing::TestWithParam<std::string> {
protected:
    std::string const m_encoding = GetParam();
    Peer m_peer{fileName(m_encoding)};
};

std::vector<std::string> encodings()
{
    std::vector<std::string> names;
    for (auto const& [name, labels] : webEncodings())
        names.push_back(name);
    return names;
}

}  // namespace

TEST_P(WebPeer, DecodesEverySequenceOfUpToTwoBytes)
{
    m_peer.decode(m_encoding, "");
    for (size_t const length : {1U, 2U})
        sequences(allBytes(), length, [&](std::string const& bytes) { m_peer.decode(m_encoding, bytes); });
    m_peer.compare();
}

TEST_P(WebPeer, DecodesSequencesOfThreeAndFourBytesByClass)
{
    for (size_t const length : {3U, 4U})
        sequences(classesOf(m_encoding), length, [&](std::string const& bytes) { m_peer.decode(m_encoding, bytes); });
    m_peer.compare();
}

TEST_P(WebPeer, DecodesRandomBytes)
{
    std::mt19937 random(20);
    auto const below = [&](size_t bound) { return static_cast<size_t>(random()) % bound; };
    std::string const all = allBytes();
    std::string const classes = classesOf(m_encoding);
    static char const* const escapes[] = {"\x1B(B", "\x1B(J", "\x1B(I", "\x1B$@", "\x1B$B"};
    for (int i = 0; i < 20000; ++i) {
        std::string bytes;
        for (size_t length = 1 + below(24); bytes.size() < length;) {
            if (m_encoding == "ISO-2022-JP" && below(4) == 0)
                bytes += escapes[below(5)];
            else
                bytes += below(3) == 0 ? all[below(256)] : classes[below(classes.size())];
        }
        m_peer.decode(m_encoding, bytes);
    }
    m_peer.compare();
}

TEST_P(WebPeer, EncodesEveryCodePointOfTheBmpAndOfTheIndexes)
{
    if (!hasEncoder(m_encoding))
        GTEST_SKIP() << "it has no encoder";
    bool const all = m_encoding == "UTF-8" || m_encoding == "gb18030";
    std::u32string line;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        // Of the planes that no other encoding has characters in, the first and the last ones and some.
        if (all || c < 0x30000 || c % 997 == 0 || (c & 0xFFFF) < 2 || (c & 0xFFFF) > 0xFFFD)
            line += c;
        if (line.size() == 64 || c == 0x10FFFF) {
            m_peer.encode(m_encoding, line);
            line.clear();
        }
    }
    m_peer.compare();
}

TEST_P(WebPeer, EncodesRandomCodePoints)
{
    if (!hasEncoder(m_encoding))
        GTEST_SKIP() << "it has no encoder";
    std::mt19937 random(21);
    auto const below = [&](unsigned int bound) { return static_cast<unsigned int>(random()) % bound; };
    static char32_t const chosen[] = {0x00,   0x0E,   0x0F,   0x1B,   0x41,   0x5C,   0x7E,   0x7F,   0x80,    0xA5,
                                      0x203E, 0x2212, 0x3042, 0xFF0D, 0xFF61, 0xFF9F, 0xFFFD, 0x20AC, 0x1F600, 0xAC02};
    for (int i = 0; i < 20000; ++i) {
        std::u32string text;
        for (unsigned int length = 1 + below(10); text.size() < length;) {
            char32_t const c = below(2) == 0 ? chosen[below(20)] : below(4) == 0 ? below(0x110000) : below(0x10000);
            if (c < 0xD800 || c > 0xDFFF)
                text += c;
        }
        m_peer.encode(m_encoding, text);
    }
    m_peer.compare();
}

TEST_P(WebPeer, AgreesOnTheHooks)
{
    std::string const tails[] = {"", "A", "\xA4\xA2", "\x80\x30", "\xD8\x00\xDC\x00", "\x1B$B0!"};
    for (std::string const bom : {"", "\xEF", "\xEF\xBB", "\xEF\xBB\xBF", "\xFE", "\xFE\xFF", "\xFF", "\xFF\xFE",
                                  "\xEF\xBB\xBF\xEF\xBB\xBF", "\xFE\xFF\xFE\xFF", "\xFF\xFE\xFF\xFE", "\xEF\xBB\x41"}) {
        for (std::string const& tail : tails)
            m_peer.ask("x " + m_encoding + " " + hexOf(bom + tail), [&] {
                std::string const text = hexOf(webDecode(bom + tail, m_encoding));
                return text.empty() ? text : text.substr(1);
            }());
    }
    m_peer.ask("o " + m_encoding, webOutputEncoding(m_encoding));
    std::u32string const texts[] = {U"", U"Aé€", U"あ\U0001F600¥", U"¥\u001B\\~", U"\U0001F600", U"\uFFFD\u0E01"};
    for (std::u32string const& text : texts)
        m_peer.ask("h " + m_encoding + hexOf(text), hexOf(webEncode(text, webOutputEncoding(m_encoding))));
    m_peer.compare();
}

INSTANTIATE_TEST_SUITE_P(All, WebPeer, testing::ValuesIn(encodings()), [](auto const& encoding) {
    std::string name;
    for (char const c : encoding.param)
        name += c == '-' ? '_' : c;
    return name;
});

// What the peer is expected to answer follows the list, so the tests above fail, too, where it agrees with the
// standard. This one says so.
TEST(WebPeerGb18030, EveryListedDifferenceIsThere)
{
    for (PeerDifference const& row : PEER_DIFFERENCES) {
        Peer peer("differences");
        std::string const question = hexOf(std::string_view(row.code));
        SCOPED_TRACE(question + ": take the row out if the peer now answers as the model");
        std::u32string const standards(1, row.codePoint);
        std::u32string const privateUse(1, row.privateUse);
        for (std::string const encoding : {"GBK", "gb18030"}) {
            EXPECT_EQ(webReplaced(WebDecoder{encoding}.decode(row.code)), standards);
            EXPECT_EQ(webEncode(standards, encoding), row.code);
            EXPECT_EQ(webEncode(privateUse, encoding), row.code);
            peer.ask("d " + encoding + " " + question, hexOf(privateUse).substr(1));
            peer.ask("e " + encoding + hexOf(privateUse), question);
        }
        EXPECT_EQ(webReplaced(WebDecoder{"gb18030"}.decode(row.fourBytes)), standards);
        peer.ask("e gb18030" + hexOf(standards), hexOf(std::string_view(row.fourBytes)));
        peer.ask("e GBK" + hexOf(standards), "!" + hexOf(static_cast<size_t>(row.codePoint)));
        peer.compare();
    }
}

TEST(WebPeerGb18030, DecodesEveryFourByteSequence)
{
    Peer peer("gb18030_four");
    for (int first = 0x81; first <= 0xFE; ++first) {
        for (int second = 0x30; second <= 0x39; ++second) {
            std::string bytes;
            for (int third = 0x81; third <= 0xFE; ++third) {
                for (int fourth = 0x30; fourth <= 0x39; ++fourth) {
                    for (int const byte : {first, second, third, fourth})
                        bytes += static_cast<char>(byte);
                }
            }
            peer.decode("gb18030", bytes);
        }
    }
    peer.compare();
}

TEST(WebPeerEucJp, DecodesEveryThreeByteSequence)
{
    Peer peer("eucjp_three");
    for (int second = 0xA0; second <= 0xFF; ++second) {
        for (int third = 0x00; third <= 0xFF; ++third)
            peer.decode("EUC-JP", {'\x8F', static_cast<char>(second), static_cast<char>(third)});
    }
    peer.compare();
}

TEST(WebPeerIso2022Jp, DecodesEveryCodeInEveryState)
{
    Peer peer("iso2022jp_states");
    for (std::string const escape : {"\x1B(B", "\x1B(J", "\x1B(I", "\x1B$@", "\x1B$B"}) {
        for (size_t const length : {1U, 2U})
            sequences(allBytes(), length,
                      [&](std::string const& bytes) { peer.decode("ISO-2022-JP", escape + bytes + "\x1B(J\\"); });
    }
    peer.compare();
}

TEST(WebPeerIso2022Jp, EncodesEveryCodePointInEveryState)
{
    Peer peer("iso2022jp_encoder");
    for (std::u32string const before : {U"", U"¥", U"あ"}) {
        for (char32_t c = 0; c < 0x10000; ++c) {
            if (c < 0xD800 || c > 0xDFFF)
                peer.encode("ISO-2022-JP", before + c);
        }
    }
    peer.compare();
}

TEST(WebPeerUtf16, DecodesFiveAndSixBytesByClass)
{
    for (std::string const encoding : {"UTF-16BE", "UTF-16LE"}) {
        Peer peer(encoding);
        for (size_t const length : {5U, 6U})
            sequences({"\x00\x41\xD8\xDB\xDC\xDF", 6}, length,
                      [&](std::string const& bytes) { peer.decode(encoding, bytes); });
        peer.compare();
    }
}

TEST(WebPeerLabels, EveryLabelAndWhatIsNone)
{
    Peer peer("labels");
    auto const ask = [&](std::string const& label) {
        std::string const name = webEncodingOf(label);
        peer.ask("l " + hexOf(label), name.empty() ? "-" : name);
    };
    for (auto const& [name, labels] : webEncodings()) {
        ask(name);
        for (std::string const& label : labels) {
            EXPECT_EQ(webEncodingOf(label), name);
            std::string upper;
            for (char const c : label)
                upper += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            for (std::string const& asked :
                 {label, upper, " \t\n\f\r" + label + "\r\f\n\t ", "\v" + label, label + '\0', label + "x",
                  label.substr(1), label.substr(0, label.size() - 1), label + " x", label + "\xC2\xA0"})
                ask(asked);
        }
    }
    for (std::string const asked : {"", " ", "\t\n", "utf-7", "utf-32", "cesu-8", "cp932", "windows-936",
                                    "\xE2\x84\xAA"
                                    "oi8-r"})
        ask(asked);
    peer.compare();
}
