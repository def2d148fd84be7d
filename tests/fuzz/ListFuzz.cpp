// kx7text fuzzing - operations on string lists, chosen by the input, against vectors.
#include <algorithm>

#include "tests/fuzz/Fuzz.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

/** The parts of a text: an empty one after the last separator does not count; an empty separator separates nothing. */
Texts partsOf(std::u16string const& text, std::u16string const& separator)
{
    if (separator.empty())
        return {text};
    Texts parts;
    for (size_t begin = 0; begin != text.size();) {
        size_t const end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end == text.size() ? end : end + separator.size();
    }
    return parts;
}

/** A list and what it has to be. */
struct Pair {
    KX7UStringList list;
    Texts texts;
};

/** Both together are small enough to become one. */
bool areSmall(Pair const& a, Pair const& b)
{
    size_t size = 0;
    for (Pair const* const pair : {&a, &b})
        for (std::u16string const& text : pair->texts)
            size += 20 + text.size();
    return size < 20000;
}

void requireSameList(Pair const& pair, char const* what)
{
    require(textsOf(pair.list) == pair.texts && pair.list.size() == pair.texts.size(), what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    Pair pairs[2];
    while (input.left() != 0) {
        unsigned int const operation = input.byte();
        Pair& mine = pairs[operation & 1];
        Pair& other = pairs[1 - (operation & 1)];
        auto const index = static_cast<unsigned int>(input.below(mine.texts.size() + 2));
        bool const exists = index < mine.texts.size();
        auto text = input.text<char16_t>(input.below(12));
        // Few different units, so that separators are found.
        for (char16_t& unit : text)
            unit = static_cast<char16_t>(unit % 3 + u'a');
        std::u16string const separator = text.substr(0, 1 + input.below(2));
        switch (operation / 2 % 10) {
            case 0:
                mine.list.append(stringOf(text));
                mine.texts.push_back(text);
                break;
            case 1:
                if (!areSmall(mine, other))
                    break;
                mine.list.append(other.list);
                mine.texts.insert(mine.texts.end(), other.texts.begin(), other.texts.end());
                break;
            case 2: {
                std::string const error = errorOf([&] { mine.list.insert(index, stringOf(text)); });
                require((error == "none") == (index <= mine.texts.size()), "insert");
                if (error == "none")
                    mine.texts.insert(mine.texts.begin() + index, text);
                break;
            }
            case 3: {
                if (!areSmall(mine, other))
                    break;
                std::string const error = errorOf([&] { mine.list.insert(index, other.list); });
                if (index <= mine.texts.size())
                    mine.texts.insert(mine.texts.begin() + index, other.texts.begin(), other.texts.end());
                require((error == "none") == (index <= mine.texts.size() || other.texts.empty()), "insert of a list");
                break;
            }
            case 4: {
                std::string const error = errorOf([&] { mine.list.erase(index); });
                require((error == "none") == exists, "erase");
                if (exists)
                    mine.texts.erase(mine.texts.begin() + index);
                break;
            }
            case 5:
                mine.list = other.list;
                mine.texts = other.texts;
                break;
            case 6:
                if (exists) {
                    mine.list = mine.list[index];
                    mine.texts = {Texts{mine.texts[index]}};
                }
                break;
            case 7: {
                std::u16string joined;
                for (size_t i = 0; i < mine.texts.size(); ++i)
                    joined += (i == 0 ? std::u16string() : separator) + mine.texts[i];
                require(textOf(mine.list.combine(stringOf(separator))) == joined, "combine");
                if (joined.size() > 4000)
                    break;
                other.list = KX7UStringList(stringOf(joined), stringOf(separator));
                other.texts = partsOf(joined, separator);
                break;
            }
            case 8:
                if (!separator.empty()) {
                    mine.list = KX7UStringList(stringOf(text), static_cast<unsigned short>(separator[0]));
                    mine.texts = partsOf(text, separator.substr(0, 1));
                }
                break;
            default: {
                std::string const error = errorOf([&] {
                    std::u16string const found = textOf(mine.list.at(index));
                    require(exists && found == mine.texts[index], "what is found");
                });
                require((error == "none") == exists, "at");
                if (operation > 250) {
                    mine.list.clear();
                    mine.texts.clear();
                }
            }
        }
        requireSameList(mine, "list");
        requireSameList(other, "other list");
    }
    return 0;
}
