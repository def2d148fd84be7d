// kx7text tests - names of files both ways in guarded memory, and what they have to become: the whole name in one pass
// of each converter.
#ifndef KX7_TESTS_ENVIRONMENT_PATHNAMES_H
#define KX7_TESTS_ENVIRONMENT_PATHNAMES_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"
#include "tests/support/Calls.h"
#include "tests/support/CharSets.h"
#include "tests/support/Hex.h"
#include "tests/support/Memory.h"

namespace kx7test {

inline KX7CharSetConverter& local()
{
    return *KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT);
}

inline KX7CharSet defaultCharSet()
{
    return charSetOf(local());
}

/** What a function returns, and all bytes that the capacity covers. */
struct Result {
    unsigned int count;
    std::string dest;
};

constexpr char FILL = '\xEE';

inline bool operator==(Result const& a, Result const& b)
{
    return a.count == b.count && a.dest == b.dest;
}

inline std::ostream& operator<<(std::ostream& out, Result const& r)
{
    return out << r.count << ' ' << hex(r.dest);
}

/** Source and destination that both end at an unreadable page; the bytes before the destination are watched. */
template <class Function>
inline Result run(Function const& function, std::string const& source, size_t capacity)
{
    size_t const most = 40000;
    static PageEnd<char> sources;
    static Guarded<char> memory(most);
    char const* const src = sources.hold(source, 1);
    size_t const before = std::min(most - capacity, size_t{64});
    char* const dst = &memory[0] + (most - capacity);
    memset(dst - before, FILL, before + capacity);
    unsigned int const count = function(dst, src, static_cast<int>(capacity));
    EXPECT_EQ(std::string(dst - before, before), std::string(before, FILL)) << "before the destination";
    return {count, std::string(dst, capacity)};
}

inline Result localPathToUTF8(std::string const& source, size_t capacity)
{
    return run([](char* dst, char const* src,
                  int dstBytes) { return LocalPathToUTF8(reinterpret_cast<unsigned char*>(dst), src, dstBytes); },
               source, capacity);
}

inline Result utf8ToLocalPath(std::string const& source, size_t capacity)
{
    return run([](char* dst, char const* src,
                  int dstBytes) { return UTF8ToLocalPath(dst, reinterpret_cast<unsigned char const*>(src), dstBytes); },
               source, capacity);
}

/** The whole text in one call, as many units as it has bytes at most. */
inline std::u16string decodedWhole(KX7CharSetConverter& from, std::string const& source)
{
    std::vector<unsigned short> units(source.size() + 1);
    unsigned int const n = from.toUTF16(units.data(), source.c_str(), static_cast<unsigned int>(source.size()),
                                        ILLCHAR_REPLACE, nullptr, -1);
    return std::u16string(units.begin(), units.begin() + n);
}

inline Result encodedWhole(KX7CharSetConverter& to, std::u16string const& text, size_t capacity, ILLCHAR_OPTYPE op)
{
    std::string dest(capacity + 100, FILL);
    unsigned int const n = to.fromUTF16(&dest[0], reinterpret_cast<unsigned short const*>(text.c_str()),
                                        static_cast<unsigned int>(capacity) - 1, op, nullptr);
    return {n, dest.substr(0, capacity)};
}

inline int digitOf(char16_t unit)
{
    return unit >= '0' && unit <= '9' ? unit - '0' : unit >= 'A' && unit <= 'F' ? unit - 'A' + 10 : -1;
}

/** Replaces escapes from the front, each result being passed over. */
inline std::u16string unescaped(std::u16string text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != 'U' || text.size() - i < 6 || text[i + 1] != '+')
            continue;
        int value = 0;
        bool isEscape = true;
        for (size_t k = 2; k < 6; ++k) {
            int const digit = digitOf(text[i + k]);
            isEscape = isEscape && digit >= 0;
            value = value * 16 + digit;
        }
        if (isEscape)
            text.replace(i, 6, 1, static_cast<char16_t>(value));
    }
    return text;
}

inline Result referenceToUTF8(std::string const& source, size_t capacity)
{
    Result const untouched = {0, std::string(capacity, FILL)};
    if (capacity == 0)
        return untouched;
    if (source.empty())
        return {0, '\0' + std::string(capacity - 1, FILL)};
    std::u16string const text = decodedWhole(local(), source);
    if (text.empty())
        return untouched;
    return encodedWhole(g_oConverterUTF8, unescaped(text), capacity, ILLCHAR_REPLACE);
}

inline std::string escapeOf(char16_t unit)
{
    return "U+" + hexDigits(static_cast<unsigned short>(unit));
}

/** UTF-8 with escapes and a capacity that is never left: ends before the first character that does not fit. */
inline std::string escapedUTF8(std::u16string const& text, size_t capacity)
{
    std::string bytes;
    for (size_t i = 0; i < text.size() && text[i] != 0; ++i) {
        unsigned int const unit = text[i];
        bool const isHigh = unit >= 0xD800 && unit <= 0xDBFF;
        bool const isPair = isHigh && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        std::string character;
        auto const put = [&character](unsigned int byte) { character += static_cast<char>(byte); };
        if (isPair) {
            unsigned int const c = ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00U) + 0x10000;
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        }
        else if (isHigh) {
            character = escapeOf(text[i]);
        }
        else if (unit < 0x80) {
            put(unit);
        }
        else if (unit < 0x800) {
            put(0xC0 | unit >> 6);
            put(0x80 | (unit & 0x3F));
        }
        else {
            put(0xE0 | unit >> 12);
            put(0x80 | (unit >> 6 & 0x3F));
            put(0x80 | (unit & 0x3F));
        }
        if (bytes.size() + character.size() > capacity)
            break;
        bytes += character;
        // The escape of a high surrogate drops the unit after it; a 0 unit ends the text all the same.
        if (isHigh && i + 1 < text.size() && text[i + 1] != 0)
            ++i;
    }
    return bytes;
}

inline Result referenceToLocal(std::string const& source, size_t capacity)
{
    Result const untouched = {0, std::string(capacity, FILL)};
    if (capacity == 0)
        return untouched;
    if (source.empty())
        return {0, '\0' + std::string(capacity - 1, FILL)};
    std::u16string const text = decodedWhole(g_oConverterUTF8, source);
    if (text.empty())
        return untouched;
    if (defaultCharSet() != KX7CS_UTF8)
        return encodedWhole(local(), text, capacity, ILLCHAR_ESCAPE);
    std::string const bytes = escapedUTF8(text, capacity - 1);
    return {static_cast<unsigned int>(bytes.size()), bytes + '\0' + std::string(capacity - 1 - bytes.size(), FILL)};
}

}  // namespace kx7test

#endif
