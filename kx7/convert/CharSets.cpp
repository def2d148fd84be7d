// kx7text - character sets by number, name and label.
#include <algorithm>
#include <iterator>

#include "kx7/convert/CharSetLabels.h"
#include "kx7/convert/WebSets.h"

namespace kx7 {

namespace {

// The labels are ASCII, and what names a character set must not depend on the locale.
constexpr char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/** -1, 0 or 1, ASCII letters in either case being the same. */
constexpr int compare(std::string_view a, std::string_view b)
{
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        char const x = lowerCase(a[i]);
        char const y = lowerCase(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

constexpr bool isSorted()
{
    for (size_t i = 1; i < std::size(CHAR_SET_LABELS); ++i)
        if (compare(CHAR_SET_LABELS[i - 1].label, CHAR_SET_LABELS[i].label) >= 0)
            return false;
    return true;
}
static_assert(isSorted(), "labels are found by halving");

constexpr std::string_view PREFIX = "KX7CS_";
constexpr std::string_view CODE_PAGE = "cp";

bool beginsWith(std::string_view text, std::string_view beginning)
{
    return compare(text.substr(0, beginning.size()), beginning) == 0;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/** The value of decimal digits as a number is written; -1 for any other text and for more than a code page has. */
int numberOf(std::string_view text)
{
    if (text.empty() || text.size() > 6 || text.front() == '0')
        return -1;
    int number = 0;
    for (char const c : text) {
        if (c < '0' || c > '9')
            return -1;
        number = number * 10 + (c - '0');
    }
    return number;
}

CharSetInfo const* infoOf(KX7CharSet charSet)
{
    auto const* const found = std::find_if(std::begin(CHAR_SET_INFOS), std::end(CHAR_SET_INFOS),
                                           [charSet](CharSetInfo const& info) { return info.charSet == charSet; });
    return found == std::end(CHAR_SET_INFOS) ? nullptr : found;
}

std::optional<KX7CharSet> findNamed(std::string_view name)
{
    for (std::string_view const ofDefault : {"KX7CS_OS_DEFAULT", "OS_DEFAULT", "-2"})
        if (compare(name, ofDefault) == 0)
            return KX7CS_OS_DEFAULT;
    for (CharSetInfo const& info : CHAR_SET_INFOS) {
        std::string_view const full = info.name;
        bool const isPublished = beginsWith(full, PREFIX);
        if (compare(name, full) == 0 || (isPublished && compare(name, full.substr(PREFIX.size())) == 0))
            return info.charSet;
    }
    return std::nullopt;
}

std::optional<KX7CharSet> findLabelled(std::string_view label, Labels labels)
{
    auto const* const found = std::lower_bound(
        std::begin(CHAR_SET_LABELS), std::end(CHAR_SET_LABELS), label,
        [](CharSetLabel const& entry, std::string_view text) { return compare(entry.label, text) < 0; });
    if (found == std::end(CHAR_SET_LABELS) || compare(found->label, label) != 0)
        return std::nullopt;
    KX7CharSet const first = labels == Labels::IANA_FIRST ? found->iana : found->whatwg;
    KX7CharSet const second = labels == Labels::IANA_FIRST ? found->whatwg : found->iana;
    return first == KX7CS_OS_DEFAULT ? second : first;
}

}  // namespace

Span<CharSetInfo const> charSets() noexcept
{
    return {CHAR_SET_INFOS, std::size(CHAR_SET_INFOS)};
}

Span<CharSetLabel const> charSetLabels() noexcept
{
    return {CHAR_SET_LABELS, std::size(CHAR_SET_LABELS)};
}

CharSetInfo const* charSetInfo(KX7CharSet charSet) noexcept
{
    if (charSet != KX7CS_OS_DEFAULT)
        return infoOf(charSet);
    // The registry keeps what it detected to itself, but for the converter.
    KX7CharSetConverter const* const converter = &converterOf(KX7CS_OS_DEFAULT);
    auto const* const found =
        std::find_if(std::begin(CHAR_SET_INFOS), std::end(CHAR_SET_INFOS), [converter](CharSetInfo const& info) {
            Served const served = servedInLayer(info.charSet);
            return served.engine && served.converter == converter;
        });
    return found == std::end(CHAR_SET_INFOS) ? nullptr : found;
}

std::optional<KX7CharSet> findCharSet(std::string_view label, Labels labels) noexcept
{
    std::string_view const text = trimmed(label);
    int const number = numberOf(beginsWith(text, CODE_PAGE) ? text.substr(CODE_PAGE.size()) : text);
    bool const isNumbered = number >= 0 && infoOf(static_cast<KX7CharSet>(number));
    // "cp1253" is the number of a code page, and a label of WHATWG's for another set.
    if (isNumbered && labels == Labels::IANA_FIRST)
        return static_cast<KX7CharSet>(number);
    // A label before a name: "Big5" and "GB18030" are both, and WHATWG has its own mind about some.
    if (std::optional<KX7CharSet> const labelled = findLabelled(text, labels))
        return labelled;
    if (isNumbered)
        return static_cast<KX7CharSet>(number);
    return findNamed(text);
}

bool hasConverter(KX7CharSet charSet) noexcept
{
    return servedInLayer(charSet).engine != nullptr;
}

}  // namespace kx7
