// kx7text tests - strings from and to what tests write them as, and the errors of the text classes.
#ifndef KX7_TESTS_TEXT_STRINGTEXTS_H
#define KX7_TESTS_TEXT_STRINGTEXTS_H

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#ifdef KX7_MSAN
#include <sanitizer/msan_interface.h>
#endif

#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "tests/support/Hex.h"
#include "tests/text/StringState.h"

namespace kx7test {

using Texts = std::vector<std::u16string>;

/** A zero-terminated text as the library takes it. */
inline unsigned short const* raw(std::u16string const& text)
{
    return reinterpret_cast<unsigned short const*>(text.c_str());
}

/** The string of a text, zeros within included. */
inline KX7UString stringOf(std::u16string const& text)
{
    return KX7UString(raw(text), raw(text) + text.size());
}

inline std::u16string textOf(KX7UString const& s)
{
    return std::u16string(s.data(), s.data() + s.length());
}

inline Texts textsOf(KX7UStringList const& list)
{
    Texts texts;
    for (KX7UString const& s : list)
        texts.push_back(textOf(s));
    return texts;
}

/** Checks the text, and what holds for every string. */
inline void expectText(KX7UString const& s, std::u16string const& text, std::string const& what = "")
{
    EXPECT_TRUE(sameText(textOf(s), text)) << what;
    expectString(s, Units(text.begin(), text.end()), what);
}

/** What the error says, which code wrote that MemorySanitizer does not see. */
inline std::string whatOf(std::exception const& e)
{
#ifdef KX7_MSAN
    __msan_unpoison_string(e.what());
#endif
    return e.what();
}

/** The kind and the text of the error that `call` ends with. */
template <class Call>
std::string errorOf(Call const& call)
{
    try {
        call();
    }
    catch (std::out_of_range const& e) {
        return std::string("out_of_range: ") + whatOf(e);
    }
    catch (std::length_error const& e) {
        return std::string("length_error: ") + whatOf(e);
    }
    return "none";
}

constexpr char const* INVALID_STRING_INDEX = "out_of_range: invalid string index given";
constexpr char const* STRING_TOO_LONG = "length_error: exceed maximum string length";
constexpr char const* INVALID_LIST_INDEX = "out_of_range: invalid string list index given";
constexpr char const* LIST_TOO_LONG = "length_error: exceed maximum string list length";

constexpr unsigned short unitOf(char letter)
{
    return static_cast<unsigned short>(letter);
}

}  // namespace kx7test

#endif
