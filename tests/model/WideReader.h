// kx7text tests - text of 16- or 32-bit values, as bytes.
#ifndef KX7_TESTS_MODEL_WIDEREADER_H
#define KX7_TESTS_MODEL_WIDEREADER_H

#include <cstdlib>
#include <cstring>
#include <string>

namespace kx7test {

/** Values of T in host byte order: the closing 0 can be read, a step further ends the test program. */
template <class T>
class WideReader {
public:
    explicit WideReader(std::string const& bytes) : m_bytes(bytes) {}

    T operator[](size_t i) const
    {
        if (i > m_bytes.size() / sizeof(T))
            abort();
        if (i == m_bytes.size() / sizeof(T))
            return 0;
        T value;
        memcpy(&value, m_bytes.data() + i * sizeof(T), sizeof value);
        return value;
    }

    /** Whole values before the first 0, at most as many as `byteCount` bytes hold. */
    unsigned int lengthWithin(unsigned int byteCount) const
    {
        unsigned int n = 0;
        while (n != byteCount / sizeof(T) && (*this)[n] != 0)
            ++n;
        return n;
    }

private:
    std::string const& m_bytes;
};

/** The bytes of values in host byte order. */
template <class T>
std::string bytesOfValues(std::basic_string<T> const& values)
{
    std::string bytes(values.size() * sizeof(T), '\0');
    if (!values.empty())
        memcpy(&bytes[0], values.data(), bytes.size());
    return bytes;
}

}  // namespace kx7test

#endif
