// kx7text tests - model of the UTF-16 converter.
#ifndef KX7_TESTS_MODEL_UTF16MODEL_H
#define KX7_TESTS_MODEL_UTF16MODEL_H

#include "tests/model/Model.h"
#include "tests/model/WideReader.h"

namespace kx7test {

class Utf16Model : public Model {
public:
    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        return WideReader<char16_t>(bytes).lengthWithin(byteCount);
    }

    Decoded toUTF16(DecodeCall const& call) const override
    {
        WideReader<char16_t> const source(call.bytes);
        Decoded result{{}, Flag::CLEARED};
        if (call.limit <= 0)
            return result;
        size_t const limit = static_cast<size_t>(call.limit);
        for (size_t at = 0; at != call.capacity && at != limit && source[at] != 0; ++at)
            result.units += source[at];
        return result;
    }

    unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const override
    {
        Reader<char16_t> const source(units);
        unsigned int n = 0;
        while (n != unitCount && source[n] != 0)
            ++n;
        return 2 * n;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        std::u16string copied;
        for (size_t at = 0; call.capacity - 2 * at >= 2 && source[at] != 0; ++at)
            copied += static_cast<char16_t>(source[at]);
        return {bytesOfValues(copied), Flag::CLEARED};
    }
};

}  // namespace kx7test

#endif
