// kx7text tests - what programs check that are compiled in every language standard, without GoogleTest.
#ifndef KX7_TESTS_TEXT_TEXTOF_H
#define KX7_TESTS_TEXT_TEXTOF_H

#include <cstdio>
#include <string>

#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"

namespace kx7test {

inline std::string textOf(KX7UString const& s)
{
    return std::string(s.data(), s.data() + s.length());
}

inline std::string textOf(KX7UStringList const& list)
{
    std::string text;
    for (unsigned int i = 0; i != list.size(); ++i)
        text += textOf(list.at(i)) + "|";
    return text;
}

inline std::string textOf(bool b)
{
    return b ? "true" : "false";
}

inline std::string textOf(unsigned int n)
{
    return std::to_string(n);
}

/** A text that an overload of the program itself gives. */
inline std::string textOf(char const* text)
{
    return text;
}

/** What did not give what it should, of how many. */
struct Checks {
    int made = 0;
    int failed = 0;

    void expect(char const* what, std::string const& got, std::string const& expected)
    {
        ++made;
        if (got == expected)
            return;
        ++failed;
        printf("%s gives \"%s\", not \"%s\"\n", what, got.c_str(), expected.c_str());
    }

    int result() const
    {
        printf("C++ %ld: %d checks, %d failed\n", static_cast<long>(__cplusplus), made, failed);
        return failed == 0 && made != 0 ? 0 : 1;
    }
};

}  // namespace kx7test

/** Checks what an expression gives; both arguments may hold commas. */
#define EXPECT_TEXT(expected, ...) checks.expect(#__VA_ARGS__, kx7test::textOf(__VA_ARGS__), expected)

#endif
