// kx7text - kx7conv: names and other foreign text in messages and records.
#include "Quoting.h"

#include <algorithm>

#include "kx7/convert.h"

namespace kx7conv {

namespace {

/** The bytes of the character that well-formed text begins with if it must be escaped, else 0. */
size_t controlLength(std::string_view text)
{
    auto const byte = [&text](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    if (byte(0) < 0x20 || byte(0) == 0x7F)
        return 1;
    bool const isC1 = byte(0) == 0xC2 && byte(1) < 0xA0;
    bool const isArabicLetterMark = byte(0) == 0xD8 && byte(1) == 0x9C;
    if (isC1 || isArabicLetterMark)
        return 2;
    if (byte(0) != 0xE2)
        return 0;
    bool const isMark = byte(1) == 0x80 && (byte(2) == 0x8E || byte(2) == 0x8F);                // U+200E, U+200F
    bool const isSeparatorOrEmbedding = byte(1) == 0x80 && byte(2) >= 0xA8 && byte(2) <= 0xAE;  // U+2028 to U+202E
    bool const isIsolate = byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9;               // U+2066 to U+2069
    return isMark || isSeparatorOrEmbedding || isIsolate ? 3 : 0;
}

/** Calls `plain` or `escape` with each byte of the text, in order. */
template <class Plain, class Escape>
void forEachByte(std::string_view text, Plain plain, Escape escape)
{
    while (!text.empty()) {
        kx7::Validity const valid = kx7::validateUtf8(text);
        for (size_t i = 0; i < valid.offset;) {
            size_t const length = controlLength(text.substr(i, valid.offset - i));
            if (length == 0)
                plain(text[i++]);
            for (size_t const end = i + length; i < end; ++i)
                escape(text[i]);
        }
        for (size_t i = valid.offset; i < valid.offset + valid.length; ++i)
            escape(text[i]);
        text.remove_prefix(valid.offset + valid.length);
    }
}

std::string octal(char c)
{
    auto const byte = static_cast<unsigned char>(c);
    auto const digit = [byte](unsigned int shift) { return static_cast<char>('0' + (byte >> shift & 7)); };
    return {'\\', digit(6), digit(3), digit(0)};
}

/** One byte inside $'...'. */
std::string escapeOf(char c)
{
    constexpr std::string_view CONTROLS = "\a\b\t\n\v\f\r";
    constexpr std::string_view LETTERS = "abtnvfr";
    size_t const at = CONTROLS.find(c);
    return at == std::string_view::npos ? octal(c) : std::string{'\\', LETTERS[at]};
}

/** Whether a shell would take a character at this place of a name for another than itself. */
bool isSpecial(std::string_view name, size_t at)
{
    char const c = name[at];
    if (c == '#' || c == '~')
        return at == 0;
    if (c == '{' || c == '}')
        return name.size() == 1;
    return std::string_view(" !\"$&'()*;<=>?[\\^`|").find(c) != std::string_view::npos;
}

/** Whether a character at this place of a name may stand between double quotes: more would, but ls is what we follow.
 */
bool fitsDoubleQuotes(std::string_view name, size_t at)
{
    char const c = name[at];
    if (c == '#' || c == '~')
        return at == 0;
    return c == ' ' || c == '\'' || (c != '{' && c != '}' && !isSpecial(name, at));
}

/** Whether it is a letter, digit or punctuation mark that is never special: most names have no others. */
bool isOrdinary(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '+' && c <= '9') || c == '_';
}

enum class Quotes { NONE, DOUBLE, SINGLE };

Quotes quotesFor(std::string_view name)
{
    if (!name.empty() && std::all_of(name.begin(), name.end(), isOrdinary))
        return Quotes::NONE;
    bool isPlain = !name.empty();
    bool hasApostrophe = false;
    bool fitsDouble = true;
    for (size_t i = 0; i < name.size(); ++i) {
        isPlain = isPlain && !isSpecial(name, i);
        hasApostrophe = hasApostrophe || name[i] == '\'';
        fitsDouble = fitsDouble && fitsDoubleQuotes(name, i);
    }
    forEachByte(
        name, [](char) {}, [&](char) { isPlain = fitsDouble = false; });
    return isPlain ? Quotes::NONE : hasApostrophe && fitsDouble ? Quotes::DOUBLE : Quotes::SINGLE;
}

std::string singleQuoted(std::string_view name)
{
    std::string text = "'";
    bool isEscaping = false;
    auto const plain = [&](char c) {
        if (c == '\'')
            text += "'\\''";
        else
            text += std::string(isEscaping ? "''" : "") + c;
        isEscaping = false;
    };
    auto const escape = [&](char c) {
        text += (isEscaping ? "" : "'$'") + escapeOf(c);
        isEscaping = true;
    };
    forEachByte(name, plain, escape);
    return text + "'";
}

}  // namespace

std::string quoted(std::string_view name)
{
    return quotesFor(name) == Quotes::NONE ? std::string(name) : alwaysQuoted(name);
}

std::string alwaysQuoted(std::string_view text)
{
    return quotesFor(text) == Quotes::DOUBLE ? '"' + std::string(text) + '"' : singleQuoted(text);
}

std::string escaped(std::string_view text)
{
    std::string result;
    forEachByte(
        text, [&](char c) { result += c; }, [&](char c) { result += octal(c); });
    return result;
}

}  // namespace kx7conv
