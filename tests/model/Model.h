// kx7text tests - what a model of a converter is: the published rules written out plainly, slow and on their own.
//
// A model shares no code with the library. One file a family, each following the text of its rules line by line, with
// counters where the library has pointers, so that a reader can hold the two beside each other.
#ifndef KX7_TESTS_MODEL_MODEL_H
#define KX7_TESTS_MODEL_MODEL_H

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/Calls.h"

namespace kx7test {

/** The published operations of one converter; null arguments are no matter of the model. */
class Model {
public:
    virtual ~Model() = default;

    virtual unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const = 0;
    virtual Decoded toUTF16(DecodeCall const& call) const = 0;
    virtual unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const = 0;
    virtual Encoded fromUTF16(EncodeCall const& call) const = 0;
};

/** Terminated text: the closing 0 can be read, a step further ends the test program. */
template <class Char>
class Reader {
public:
    explicit Reader(std::basic_string<Char> const& text) : m_text(text) {}

    unsigned int operator[](size_t i) const
    {
        if (i > m_text.size())
            abort();
        return i == m_text.size() ? 0 : static_cast<unsigned int>(m_text[i]) & (sizeof(Char) == 1 ? 0xFFU : 0xFFFFU);
    }

    /** Values before the first 0. */
    unsigned int length() const
    {
        size_t n = 0;
        while ((*this)[n] != 0)
            ++n;
        return static_cast<unsigned int>(n);
    }

private:
    std::basic_string<Char> const& m_text;
};

inline bool isHigh(unsigned int unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

inline bool isLow(unsigned int unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/** "U+20AC" for 0x20AC. */
inline std::string escapeOf(unsigned int unit)
{
    char text[16];
    snprintf(text, sizeof text, "U+%04X", unit);
    return text;
}

}  // namespace kx7test

#endif
