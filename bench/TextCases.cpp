// kx7text benchmarks - the cases about UTF-16 text itself, beside ICU and the standard library.
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "bench/Cases.h"
#include "bench/Texts.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"

namespace kx7bench {

namespace {

unsigned short const* unitsOf(std::u16string const& text)
{
    return reinterpret_cast<unsigned short const*>(text.c_str());
}

/** A contender whose result is one number. */
template <class Call>
Contender counting(char const* name, Call call)
{
    return contender(name, [call] {
        auto const result = static_cast<int64_t>(call());
        memcpy(destination(), &result, sizeof result);
        return sizeof result;
    });
}

int sign(int order)
{
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

/** What the cases need of one text; units that occur once stand at its end. */
struct Subject {
    explicit Subject(std::u16string const& text)
        : one(text + u"\u2603\u2604"), other(u" " + one), size(static_cast<int32_t>(one.size())),
          own(unitsOf(one), unitsOf(one) + size), ownOther(own), ownNeedle(unitsOf(needle)), ownUpper(own)
    {
        ownUpper.toUpper();
        upper.assign(reinterpret_cast<char16_t const*>(ownUpper.data()), one.size());
    }

    /** The same text at another alignment. */
    char16_t const* copy() const { return other.c_str() + 1; }

    std::u16string one;
    std::u16string other;
    int32_t size;
    std::u16string needle = u"\u2603\u2604";
    std::u16string upper;
    KX7UString own;
    KX7UString ownOther;
    KX7UString ownNeedle;
    KX7UString ownUpper;
};

constexpr char16_t LAST = u'\u2604';

/** Maps the case of a text in place, as this library does it, or into the destination, as ICU does it. */
template <class Map>
Contender mapping(KX7UString const& text, Map map)
{
    auto const copy = std::make_shared<KX7UString>(text);
    Contender own = contender("kx7", [copy, map] {
        map(*copy);
        return size_t{copy->length()};
    });
    // The result is fetched where it is compared, not where time is taken.
    own.run = [copy, map] {
        map(*copy);
        return copy->copy(reinterpret_cast<unsigned short*>(destination()), copy->length()) * sizeof(char16_t);
    };
    return own;
}

template <class Map>
Contender icuMapping(Subject const& s, Map map)
{
    return contender("icu", [&s, map] {
        UErrorCode error = U_ZERO_ERROR;
        return sizeof(char16_t) * static_cast<size_t>(map(reinterpret_cast<char16_t*>(destination()), s.size + 1,
                                                          s.one.c_str(), s.size, "", &error));
    });
}

std::vector<Contender> contendersOf(std::string const& operation, Subject const& s)
{
    if (operation == "length")
        return {counting("kx7", [&] { return KX7CharSetWStrlen(unitsOf(s.one)); }),
                counting("icu", [&] { return u_strlen(s.one.c_str()); }),
                counting("std", [&] { return std::char_traits<char16_t>::length(s.one.c_str()); })};
    if (operation == "equal")
        return {counting("kx7",
                         [&] {
                             return KX7CharSetWStrEqual(unitsOf(s.one),
                                                        reinterpret_cast<unsigned short const*>(s.copy()));
                         }),
                counting("icu", [&] { return u_strcmp(s.one.c_str(), s.copy()) == 0; }),
                counting("std", [&] { return s.one.compare(0, s.one.size(), s.copy(), s.one.size()) == 0; })};
    if (operation == "compare")
        return {counting("kx7", [&] { return s.own.compare(s.ownOther); }),
                counting("icu", [&] { return sign(u_strCompare(s.one.c_str(), s.size, s.copy(), s.size, false)); }),
                counting("std", [&] { return sign(s.one.compare(0, s.one.size(), s.copy(), s.one.size())); })};
    if (operation == "compare-no-case")
        return {counting("kx7", [&] { return s.own.compareNoCase(s.ownUpper); }), counting("icu", [&] {
                    return sign(u_memcasecmp(s.one.c_str(), s.upper.c_str(), s.size, U_FOLD_CASE_DEFAULT));
                })};
    if (operation == "find-unit")
        return {counting("kx7", [&] { return s.own.find(LAST); }),
                counting("icu", [&] { return u_memchr(s.one.c_str(), LAST, s.size) - s.one.c_str(); }),
                counting("std", [&] { return s.one.find(LAST); })};
    if (operation == "find-text")
        return {
            counting("kx7", [&] { return s.own.find(s.ownNeedle); }),
            counting("icu", [&] { return u_strFindFirst(s.one.c_str(), s.size, s.needle.c_str(), 2) - s.one.c_str(); }),
            counting("std", [&] { return s.one.find(s.needle); })};
    if (operation == "lower")
        return {mapping(s.ownUpper, [](KX7UString& text) { text.toLower(); }), icuMapping(s, u_strToLower)};
    if (operation == "upper")
        return {mapping(s.own, [](KX7UString& text) { text.toUpper(); }), icuMapping(s, u_strToUpper)};
    return {mapping(s.own, [](KX7UString& text) { text.toUpper(true); })};
}

}  // namespace

void forEachTextCase(Wanted const& wanted, Visit const& visit)
{
    for (char const* operation :
         {"length", "equal", "compare", "compare-no-case", "find-unit", "find-text", "lower", "upper", "upper-ascii"}) {
        for (char const* script : {"ascii", "cyrillic"}) {
            for (Size const& size : SIZES) {
                CaseName const name{"text", operation, script, "dense", size.name};
                if (size.name == std::string("64KiB") || !wanted(name.full()))
                    continue;
                Subject const subject(denseText(scriptOf(script), size.bytes / sizeof(char16_t), 1));
                visit({name, size.bytes, contendersOf(operation, subject), true});
            }
        }
    }
}

}  // namespace kx7bench
