// kx7text tests - bytes and code units as text for messages.
#ifndef KX7_TESTS_SUPPORT_HEX_H
#define KX7_TESTS_SUPPORT_HEX_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace kx7test {

/** One value in as many digits as its type has. */
template <class Char>
std::string hexDigits(Char value)
{
    auto const bits = static_cast<unsigned long long>(value);
    std::string text;
    for (size_t shift = sizeof(Char) * 8; shift != 0;) {
        shift -= 4;
        text += "0123456789ABCDEF"[(bits >> shift) & 0xF];
    }
    return text;
}

/** A text in hexadecimal; of a long one only what lies around `at`. */
template <class Char>
std::string hex(std::basic_string<Char> const& text, size_t at = 0)
{
    size_t const around = 24;
    size_t const begin = text.size() <= 3 * around || at < around ? 0 : std::min(at, text.size()) - around;
    size_t const end = text.size() <= 3 * around ? text.size() : std::min(text.size(), begin + 2 * around);
    std::string line = begin == 0 ? "[" : "[... from " + std::to_string(begin) + ": ";
    for (size_t i = begin; i < end; ++i)
        line += (i == begin ? "" : " ") + hexDigits(text[i]);
    if (end != text.size())
        line += " ...";
    return line + "] (" + std::to_string(text.size()) + ")";
}

/** Where two texts part. */
template <class Char>
size_t firstDifference(std::basic_string<Char> const& a, std::basic_string<Char> const& b)
{
    size_t const common = std::min(a.size(), b.size());
    return static_cast<size_t>(std::mismatch(a.begin(), a.begin() + static_cast<ptrdiff_t>(common), b.begin()).first -
                               a.begin());
}

/** Whether two texts are the same; the message shows where they part. */
template <class Char>
testing::AssertionResult sameText(std::basic_string<Char> const& got, std::basic_string<Char> const& expected)
{
    if (got == expected)
        return testing::AssertionSuccess();
    size_t const at = firstDifference(got, expected);
    return testing::AssertionFailure() << "got " << hex(got, at) << "\n  expected " << hex(expected, at) << "\n  from "
                                       << at;
}

}  // namespace kx7test

#endif
