// kx7text tests - texts of every character set for the modern layer: clean ones, and bytes without sense.
#ifndef KX7_TESTS_CONVERT_SAMPLES_H
#define KX7_TESTS_CONVERT_SAMPLES_H

#include <random>
#include <string>
#include <vector>

#include "kx7/convert.h"
#include "tests/support/CharSets.h"

namespace kx7test {

/** Characters of many scripts, zeros and control characters, pairs, and what looks like an escape. */
inline std::u16string manyCharacters()
{
    return std::u16string(u"\xFEFF"
                          u"a\0b\n",
                          5) +
           u"\xE9\x20AC\x416\x3B1\x5D0\x627\xE01\x3042\xFF71\x4E00\xAC00\xD840\xDC0B"
           u"x\xD83D\xDE00\xFEFF\xFFFD"
           u"U+00E9\n"
           u"U+D8\x100";
}

/** The same in `charSet`, without what that lacks. */
inline std::string manyCharactersIn(KX7CharSet charSet)
{
    return kx7::encode(manyCharacters(), charSet, {kx7::ErrorPolicy::SKIP}).text;
}

/** Bytes in which malformed sequences of every set turn up: text, noise, beginnings of sequences, a cut at the end. */
inline std::string brokenBytes(KX7CharSet charSet)
{
    std::string const text = manyCharactersIn(charSet);
    std::string result = text;
    for (char const* const bad :
         {"\x80", "\xC3(", "\xE2\x82", "\xF0\x9F\x98", "\xED\xA0\x80", "\xC0\x80", "\xFF\xFE", "\x81\x30\x81",
          "\x8E\xFF", "\x8F\xA1", "\x81", "U+D800x", "U+D83DU+DE", "U+0041", "\xA0\xD5"})
        result += bad;
    std::mt19937 random(static_cast<unsigned int>(charSet));  // NOLINT: the same noise in every run
    for (int i = 0; i < 40; ++i)
        result += static_cast<char>(random() & 0xFF);
    return result + text + text.substr(0, text.size() / 2) + "\x81";
}

/** Units in which surrogates stand alone in every way. */
inline std::u16string brokenUnits()
{
    std::u16string const text = manyCharacters();
    return text + u"\xDC00" + text.substr(0, 6) + u"\xD800" + u"b\xD800\xD800\xDC00\xDC00" + text + u"\xDBFF";
}

inline std::vector<kx7::Options> const& everyPolicy()
{
    using kx7::Bom;
    using kx7::ErrorPolicy;
    static std::vector<kx7::Options> const options = {
        {ErrorPolicy::STRICT, 0, Bom::KEEP},        {ErrorPolicy::REPLACE, 0, Bom::KEEP},
        {ErrorPolicy::REPLACE, U'_', Bom::STRIP},   {ErrorPolicy::REPLACE, U'\x1F600', Bom::ADD},
        {ErrorPolicy::REPLACE, U'\xE9', Bom::KEEP}, {ErrorPolicy::SKIP, 0, Bom::ADD},
        {ErrorPolicy::ESCAPE, 0, Bom::KEEP},        {ErrorPolicy::STRICT, 0, Bom::REQUIRE},
        {ErrorPolicy::ESCAPE, 0, Bom::REQUIRE}};
    return options;
}

/** What a stream made of a text: its output, and every error that a strict one stopped at. */
template <class Text>
struct Streamed {
    Text text;
    std::vector<kx7::Error> errors;
    unsigned long long count;
    kx7::Error first;
    kx7::Status status;
};

inline bool operator==(kx7::Error const& a, kx7::Error const& b)
{
    return a.byteOffset == b.byteOffset && a.unitOffset == b.unitOffset && a.lineFeeds == b.lineFeeds &&
           a.status == b.status && a.length == b.length &&
           std::equal(std::begin(a.bytes), std::end(a.bytes), b.bytes) && a.codePoint == b.codePoint;
}

template <class Text>
bool operator==(Streamed<Text> const& a, Streamed<Text> const& b)
{
    return a.text == b.text && a.count == b.count && a.first == b.first && a.status == b.status &&
           std::equal(a.errors.begin(), a.errors.end(), b.errors.begin(), b.errors.end(),
                      [](kx7::Error const& x, kx7::Error const& y) { return x == y; });
}

/** Goes on after errors. `pieces` are the lengths of the pieces but the last; `capacity` elements are given to a call.
 */
template <class Text, class Stream, class Source>
Streamed<Text> runStream(Stream stream, Source source, std::vector<size_t> const& pieces, size_t capacity)
{
    using Element = typename Text::value_type;
    Streamed<Text> result = {};
    std::vector<Element> dest;
    size_t at = 0;
    for (size_t piece = 0; piece <= pieces.size(); ++piece) {
        bool const last = piece == pieces.size();
        size_t end = last ? source.size() : std::min(source.size(), at + pieces[piece]);
        size_t given = capacity;
        for (;;) {
            // Blocks of the exact size, so that sanitizers see what is written after them.
            if (dest.size() != given)
                dest = std::vector<Element>(given);
            kx7::StreamResult const step =
                stream.convert({source.data() + at, end - at}, {dest.data(), dest.size()}, last);
            result.text.append(dest.data(), step.written);
            at += step.consumed;
            result.status = step.status;
            if (step.status == kx7::Status::INVALID || step.status == kx7::Status::UNREPRESENTABLE)
                result.errors.push_back(stream.lastError());
            else if (step.status != kx7::Status::OUTPUT_FULL)
                break;
            bool const stuck = step.status == kx7::Status::OUTPUT_FULL && step.written == 0 && step.consumed == 0;
            if (stuck && given >= Stream::MINIMUM_CAPACITY) {
                result.text.clear();  // the promise of MINIMUM_CAPACITY is broken
                return result;
            }
            given = stuck ? Stream::MINIMUM_CAPACITY : capacity;
        }
        if (result.status == kx7::Status::DONE && at != end)
            result.count += 1000;  // DONE means that all of it is taken
    }
    result.count += stream.errorCount();
    result.first = stream.firstError();
    return result;
}

}  // namespace kx7test

#endif
