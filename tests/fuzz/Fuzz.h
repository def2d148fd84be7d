// kx7text fuzzing - what the targets share: numbers and texts out of the input, and the end of the process on a
// failure.
//
// A target is built with libFuzzer or with AFL++, whose driver has the same entry point. Expectations are those of the
// tests: a failure that a helper of the tests notes ends the process, so that the fuzzer keeps the input.
#ifndef KX7_TESTS_FUZZ_FUZZ_H
#define KX7_TESTS_FUZZ_FUZZ_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kx7test {

/** The input, taken from the front; zeros after its end. */
class Input {
public:
    Input(uint8_t const* data, size_t size) : m_data(data), m_left(size) {}

    size_t left() const { return m_left; }

    unsigned int byte()
    {
        if (m_left == 0)
            return 0;
        --m_left;
        return *m_data++;
    }

    /** Below `count`, which is not 0. */
    size_t below(size_t count) { return (byte() | (count > 256 ? byte() << 8 : 0U)) % count; }

    /** Mostly small, now and then at one of the ends of its type. */
    unsigned int capacity()
    {
        unsigned int const kind = byte();
        return kind < 240 ? kind : kind < 250 ? kind * 40 : 0xFFFFFFFF - (kind - 250);
    }

    template <class Char>
    std::basic_string<Char> text(size_t most)
    {
        std::basic_string<Char> result(std::min(most, m_left / sizeof(Char)), Char{});
        if (!result.empty())
            memcpy(&result[0], m_data, result.size() * sizeof(Char));
        m_data += result.size() * sizeof(Char);
        m_left -= result.size() * sizeof(Char);
        return result;
    }

    /** All that is left. */
    template <class Char>
    std::basic_string<Char> rest()
    {
        return text<Char>(m_left);
    }

private:
    uint8_t const* m_data;
    size_t m_left;
};

/** Ends the process where a helper of the tests noted a failure, or `holds` is false. */
inline void require(bool holds = true, char const* what = "")
{
    if (holds && !testing::Test::HasFailure())
        return;
    fprintf(stderr, "failure: %s\n", what);
    abort();
}

}  // namespace kx7test

#endif
