// kx7text benchmarks - generated texts.
#include "bench/Texts.h"

#include <algorithm>
#include <random>

namespace kx7bench {

namespace {

std::u32string range(char32_t first, char32_t last)
{
    std::u32string letters;
    for (char32_t c = first; c <= last; ++c)
        letters += c;
    return letters;
}

void append(std::u16string& text, char32_t c)
{
    if (c > 0xFFFF) {
        text += static_cast<char16_t>((c >> 10) + 0xD7C0);
        text += static_cast<char16_t>((c & 0x3FF) + 0xDC00);
    }
    else {
        text += static_cast<char16_t>(c);
    }
}

class Writer {
public:
    Writer(Script const& script, unsigned int seed) : m_script(script), m_random(seed) {}

    void word(std::u16string& text)
    {
        std::u32string const& letters = m_script.alphabets[below(m_script.alphabets.size())];
        unsigned int const average = m_script.wordLength != 0 ? m_script.wordLength : 6;
        for (size_t n = 1 + below(2 * average - 1); n != 0; --n)
            append(text, letters[below(letters.size())]);
    }

    void separator(std::u16string& text)
    {
        if (m_script.wordLength == 0)
            return;
        text += below(12) == 0 ? u", " : below(15) == 0 ? u".\n" : u" ";
    }

    void tag(std::u16string& text)
    {
        static char16_t const* const names[] = {u"p", u"div", u"span", u"td", u"li", u"h2", u"a", u"em"};
        text += u"<";
        text += names[below(8)];
        text += u" class=\"";
        for (size_t n = 3 + below(9); n != 0; --n)
            text += static_cast<char16_t>('a' + below(26));
        text += u"\" id=\"";
        for (size_t n = 2 + below(4); n != 0; --n)
            text += static_cast<char16_t>('0' + below(10));
        text += u"\">";
    }

    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(m_random); }

private:
    Script const& m_script;
    std::mt19937 m_random;
};

void cut(std::u16string& text, size_t units)
{
    text.resize(units);
    if (units != 0 && (text.back() & 0xFC00) == 0xD800)
        text.pop_back();
}

}  // namespace

std::vector<Script> const& scripts()
{
    std::u32string const latin = range('a', 'z');
    // Letters as often as they come in such texts: mostly ASCII, some with marks.
    static std::vector<Script> const all = {
        {"ascii", {latin}, 5},
        {"english", {latin, latin, latin, latin, latin, latin, latin, latin + U"’é"}, 5},
        {"french", {latin, latin, latin + U"éèàêâçùîôû"}, 5},
        {"german", {latin, latin, latin + U"äöüßÄÖÜ"}, 6},
        {"greek", {range(0x3B1, 0x3C9), range(0x3B1, 0x3C9) + U"άέήίόύώ"}, 6},
        {"cyrillic", {range(0x430, 0x44F), range(0x430, 0x44F) + range(0x410, 0x42F)}, 6},
        {"hebrew", {range(0x5D0, 0x5EA)}, 5},
        {"arabic", {range(0x627, 0x63A), range(0x641, 0x64A)}, 5},
        {"thai", {range(0xE01, 0xE2E) + range(0xE30, 0xE3A) + range(0xE40, 0xE45)}, 0},
        {"korean", {range(0xAC00, 0xD7A3)}, 3},
        {"japanese", {range(0x3041, 0x3093), range(0x30A1, 0x30F6), range(0x4E00, 0x5200)}, 0},
        {"chinese", {range(0x4E00, 0x7FFF)}, 0},
        {"emoji", {range(0x1F300, 0x1F5FF), range(0x1F600, 0x1F64F)}, 0},
    };
    return all;
}

Script const& scriptOf(std::string const& name)
{
    return *std::find_if(scripts().begin(), scripts().end(), [&](Script const& script) { return script.name == name; });
}

std::u16string denseText(Script const& script, size_t units, unsigned int seed)
{
    Writer writer(script, seed);
    std::u16string text;
    while (text.size() < units) {
        writer.word(text);
        writer.separator(text);
    }
    cut(text, units);
    return text;
}

std::u16string markupText(Script const& script, size_t units, unsigned int seed)
{
    Writer writer(script, seed);
    std::u16string text;
    while (text.size() < units) {
        writer.tag(text);
        for (size_t n = 1 + writer.below(4); n != 0; --n) {
            writer.word(text);
            writer.separator(text);
        }
    }
    cut(text, units);
    return text;
}

}  // namespace kx7bench
