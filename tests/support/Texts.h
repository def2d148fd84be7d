// kx7text tests - texts that cross every branch of a converter, and random ones.
#ifndef KX7_TESTS_SUPPORT_TEXTS_H
#define KX7_TESTS_SUPPORT_TEXTS_H

#include <random>
#include <string>
#include <vector>

namespace kx7test {

/** What UTF-8 can meet: each way to be well formed and each way not to be. */
inline std::vector<std::string> utf8Fragments()
{
    using namespace std::string_literals;
    return {
        "A"s,
        "\xC3\xA9"s,              // e with acute
        "\xE2\x82\xAC"s,          // euro sign
        "\xF0\x9F\x98\x80"s,      // a pair
        "\x80"s,                  // stray
        "\x80\xBF"s,              // two of them
        "\xC3"s,                  // two bytes cut to one
        "\xE2"s,                  // three bytes cut to one and two
        "\xE2\x82"s,              //
        "\xF0"s,                  // four bytes cut to one, two and three
        "\xF0\x9F"s,              //
        "\xF0\x9F\x98"s,          //
        "\xC0\x80"s,              // overlong: U+0000 within the text
        "\xC1\xBF"s,              // overlong
        "\xE0\x81\x81"s,          // overlong
        "\xF0\x80\x81\x81"s,      // overlong, wraps
        "\xED\xA0\x80"s,          // high surrogate
        "\xED\xB0\x80"s,          // low surrogate
        "\xF4\x90\x80\x80"s,      // above U+10FFFF
        "\xF7\xBF\xBF\xBF"s,      //
        "\xF8\x88\x80\x80\x80"s,  // a lead of five is one of four
        "\xFF\xBF\xBF\xBF"s,      //
        "\xEF\xBF\xBF"s,          // U+FFFF
    };
}

/** What UTF-16 can hold for UTF-8: the bounds of each length, pairs, and surrogates without their partners. */
inline std::vector<std::u16string> utf16Fragments()
{
    using Units = std::u16string;
    return {
        Units{u'A'},           Units{0x7F},           Units{0x80},   Units{0x7FF},  Units{0x800},
        Units{0x20AC},         Units{0xD7FF},         Units{0xE000}, Units{0xFFFF}, Units{0xD800, 0xDC00},
        Units{0xD83D, 0xDE00}, Units{0xDBFF, 0xDFFF}, Units{0xD800}, Units{0xDBFF}, Units{0xD800, 0xDBFF},
        Units{0xDC00},         Units{0xDFFF},
    };
}

/** Fragments one after another, a few of them long runs of letters; the same seed gives the same text. */
template <class Text>
Text randomText(std::mt19937& random, std::vector<Text> const& fragments, size_t length)
{
    Text text;
    while (text.size() < length) {
        if (random() % 8 == 0)
            text.append(random() % 300, static_cast<typename Text::value_type>('a' + random() % 26));
        text += fragments[random() % fragments.size()];
    }
    return text;
}

}  // namespace kx7test

#endif
