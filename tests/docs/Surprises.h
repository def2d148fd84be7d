// kx7text tests - the words that the examples of docs/surprises.md are written in.
#ifndef KX7_TESTS_DOCS_SURPRISES_H
#define KX7_TESTS_DOCS_SURPRISES_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "kx7/text/KX7UStringStd.h"
#include "tests/support/Heap.h"

namespace {

unsigned char bytes8[16];
unsigned short units16[16];
char localBytes[16];

[[maybe_unused]] KX7CharSetConverter& converter(KX7CharSet set)
{
    return *KX7CharSetConverter::getConverter(set);
}

[[maybe_unused]] unsigned short const* units(char16_t const* text)
{
    return reinterpret_cast<unsigned short const*>(text);
}

[[maybe_unused]] std::u16string decode(KX7CharSet set, char const* bytes, ILLCHAR_OPTYPE op = ILLCHAR_REPLACE,
                                       unsigned int capacity = 1000, int limit = -1, bool* illegal = nullptr)
{
    std::vector<unsigned short> text(capacity + 1);
    unsigned int const length = converter(set).toUTF16(text.data(), bytes, capacity, op, illegal, limit);
    return {text.begin(), text.begin() + length};
}

[[maybe_unused]] bool flagged(KX7CharSet set, char const* bytes, ILLCHAR_OPTYPE op = ILLCHAR_REPLACE)
{
    bool illegal = false;
    decode(set, bytes, op, 1000, -1, &illegal);
    return illegal;
}

[[maybe_unused]] std::string encode(KX7CharSet set, std::u16string const& text, ILLCHAR_OPTYPE op = ILLCHAR_REPLACE,
                                    unsigned int capacity = 1000, bool* illegal = nullptr)
{
    std::vector<char> bytes(capacity + 1000);
    unsigned int const length = converter(set).fromUTF16(bytes.data(), units(text.c_str()), capacity, op, illegal);
    return {bytes.data(), length};
}

[[maybe_unused]] bool flaggedFrom(bool before, KX7CharSet set, std::u16string const& text)
{
    bool illegal = before;
    encode(set, text, ILLCHAR_REPLACE, 1000, &illegal);
    return illegal;
}

[[maybe_unused]] bool flagAfterNullSource(bool before)
{
    bool illegal = before;
    converter(KX7CS_UTF8).toUTF16(units16, nullptr, 9, ILLCHAR_REPLACE, &illegal, -1);
    return illegal;
}

[[maybe_unused]] KX7UString zeroInside()
{
    static unsigned short const text[] = {'a', 0, 'b'};
    return KX7UString(text, text + 3);
}

[[maybe_unused]] KX7UString string(std::u16string const& text)
{
    return KX7UString(units(text.c_str()), units(text.c_str()) + text.size());
}

[[maybe_unused]] KX7UString readLine(std::string const& bytes, char delimiter)
{
    std::istringstream in(bytes);
    KX7UString s;
    getline(in, s, delimiter);
    return s;
}

enum class Missing { TABLE, PAGES };

/** What a converter writes that has memory again, but had none for its tables, or for what is after them. */
[[maybe_unused]] std::string encodedAfterAFailure(Missing missing, std::u16string const& text)
{
    static unsigned short const PAIRS[] = {'a', 'a', 0x80, 0x20AC, 0, 0};
    KX7CharSetConverterSBCS converter(PAIRS, KX7CS_WCP1252);
    {
        kx7test::HeapWatch watch;
        watch.failAt(missing == Missing::TABLE ? 1 : 2, true);
        converter.load();
    }
    std::string bytes(text.size() + 1, 0);
    bytes.resize(converter.fromUTF16(&bytes[0], units(text.c_str()), static_cast<unsigned int>(text.size()),
                                     ILLCHAR_REPLACE, nullptr));
    return bytes;
}

}  // namespace

#endif
