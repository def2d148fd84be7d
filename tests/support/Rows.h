// kx7text tests - tables of conversions and what they give.
#ifndef KX7_TESTS_SUPPORT_ROWS_H
#define KX7_TESTS_SUPPORT_ROWS_H

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/support/Probe.h"

namespace kx7test {

struct DecodeRow {
    char const* what;
    std::string bytes;
    unsigned int capacity;
    ILLCHAR_OPTYPE op;
    int limit;
    std::u16string units;
    Flag flag;
};

struct EncodeRow {
    char const* what;
    std::u16string units;
    unsigned int capacity;
    ILLCHAR_OPTYPE op;
    std::string bytes;
    Flag flag;
};

/** `length` letters, which every character set but the wide ones holds as they are. */
inline std::string asciiLetters(size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; ++i)
        text += static_cast<char>('a' + i % 26);
    return text;
}

/** The longest text that rows are repeated after. */
inline unsigned int longestPrefix(KX7CharSetConverter const& converter)
{
    return converter.getNullCharSize() == 1 ? 31 : 0;
}

/** The row holds, of the converter and of the model, with every flag argument and after 0 to 31 letters. */
inline void expectDecoded(Probe& probe, DecodeRow const& row)
{
    // Where a limit of 0 converts nothing, it converts no letters either.
    unsigned int const most = row.limit == 0 ? 0 : longestPrefix(probe.converter());
    for (unsigned int n = 0; n <= most; ++n) {
        std::string const letters = asciiLetters(n);
        bool const hasLimit = row.limit > 0 && row.limit != INT_MAX;
        int const limit = hasLimit ? row.limit + static_cast<int>(n) : row.limit;
        DecodeCall const call{letters + row.bytes, row.capacity + n, row.op, limit};
        Decoded const expected{std::u16string(letters.begin(), letters.end()) + row.units, row.flag};
        for (FlagArgument const argument : FLAG_ARGUMENTS)
            probe.decode(call, expected, argument, row.what);
        Decoded const modelled = probe.model().toUTF16(call);
        EXPECT_TRUE(modelled.units == expected.units && modelled.flag == expected.flag)
            << "the model of " << row.what << ": " << hex(call.bytes) << " gives " << hex(modelled.units);
    }
}

/** The row holds, of the converter and of the model, with every flag argument and after 0 to 31 letters. */
inline void expectEncoded(Probe& probe, EncodeRow const& row)
{
    for (unsigned int n = 0; n <= longestPrefix(probe.converter()); ++n) {
        std::string const letters = asciiLetters(n);
        EncodeCall const call{std::u16string(letters.begin(), letters.end()) + row.units, row.capacity + n, row.op};
        Encoded const expected{letters + row.bytes, row.flag};
        for (FlagArgument const argument : FLAG_ARGUMENTS)
            probe.encode(call, expected, argument, row.what);
        Encoded const modelled = probe.model().fromUTF16(call);
        EXPECT_TRUE(modelled.bytes == expected.bytes && modelled.flag == expected.flag)
            << "the model of " << row.what << ": " << hex(call.units) << " gives " << hex(modelled.bytes);
    }
}

}  // namespace kx7test

#endif
