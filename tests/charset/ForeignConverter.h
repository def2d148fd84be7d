// kx7text tests - a converter of a caller's own, which writes down what it is called with.
#ifndef KX7_TESTS_CHARSET_FOREIGNCONVERTER_H
#define KX7_TESTS_CHARSET_FOREIGNCONVERTER_H

#include <string>
#include <vector>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7test {

/**
 * Adds 0x100 to every byte: "a" is U+0161. Text ends at a zero byte; the terminator written has as many bytes as the
 * object is made with. Units outside U+0101 to U+01FF are replaced; the operation and the flag play no part.
 */
class ForeignConverter : public KX7CharSetConverter {
public:
    /** A call of toUTF16. */
    struct ToCall {
        std::string text;  ///< what was read of the source
        unsigned int capacity;
        ILLCHAR_OPTYPE op;
        bool const* illegal;
        int sourceLimit;
    };
    /** A call of fromUTF16. */
    struct FromCall {
        std::vector<unsigned short> text;  ///< what was read of the source
        unsigned int capacity;
        ILLCHAR_OPTYPE op;
        bool const* illegal;
    };

    explicit ForeignConverter(KX7CharSet charSet, unsigned int nullCharSize = 1)
        : KX7CharSetConverter(charSet), m_nullCharSize(nullCharSize)
    {
    }
    ~ForeignConverter() override
    {
        if (destroyed)
            ++*destroyed;
    }

    unsigned int getNumUnits(void const* source, unsigned int byteCount) override
    {
        auto const* const text = static_cast<unsigned char const*>(source);
        unsigned int n = 0;
        while (n != byteCount && text[n] != 0)
            ++n;
        return n + unitsTooMany;
    }

    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override
    {
        auto const* const text = static_cast<unsigned char const*>(source);
        unsigned int n = 0;
        for (; n != capacity && text[n] != 0; ++n)
            dest[n] = static_cast<unsigned short>(0x100 + text[n]);
        dest[n] = 0;
        if (records)
            toCalls.push_back({std::string(text, text + n), capacity, op, illegal, sourceLimit});
        return n;
    }

    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override
    {
        unsigned int n = 0;
        while (n != unitCount && source[n] != 0)
            ++n;
        return n;
    }

    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override
    {
        auto* const out = static_cast<unsigned char*>(dest);
        unsigned int n = 0;
        for (; n != capacity && source[n] != 0; ++n)
            out[n] = static_cast<unsigned char>((source[n] & 0xFF00) == 0x100 ? source[n] & 0xFF : '?');
        for (unsigned int i = 0; i != m_nullCharSize; ++i)
            out[n + i] = 0;
        if (records)
            fromCalls.push_back({std::vector<unsigned short>(source, source + n), capacity, op, illegal});
        return n;
    }

    unsigned int getMinUnitSize() const override { return 1; }
    unsigned int getMaxUnitSize() const override { return 5; }
    unsigned int getNullCharSize() const override { return m_nullCharSize; }

    std::vector<ToCall> toCalls;
    std::vector<FromCall> fromCalls;
    unsigned int unitsTooMany = 0;  ///< what getNumUnits adds to the truth
    bool records = true;            ///< false: the calls are not written down, and nothing is allocated
    int* destroyed = nullptr;       ///< counts destructions

private:
    unsigned int m_nullCharSize;
};

}  // namespace kx7test

#endif
