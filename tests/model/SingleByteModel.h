// kx7text tests - model of a single-byte converter.
#ifndef KX7_TESTS_MODEL_SINGLEBYTEMODEL_H
#define KX7_TESTS_MODEL_SINGLEBYTEMODEL_H

#include <utility>
#include <vector>

#include "tests/model/Model.h"

namespace kx7test {

/** A mapping as pairs of byte and code unit. */
using BytePairs = std::vector<std::pair<unsigned char, char16_t>>;

class SingleByteModel : public Model {
public:
    explicit SingleByteModel(BytePairs const& pairs) : m_units(256), m_bytes(0x10000)
    {
        for (auto const& [byte, unit] : pairs) {
            m_units[byte] = unit;
            m_bytes[unit] = byte;
        }
    }

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        return lengthWithin(Reader<char>(bytes), byteCount);
    }

    Decoded toUTF16(DecodeCall const& call) const override
    {
        Reader<char> const source(call.bytes);
        Decoded result{{}, Flag::CLEARED};
        unsigned int capacity = call.capacity;
        int limit = call.limit;
        if (capacity == 0 || limit == 0)
            return result;
        for (size_t at = 0; source[at] != 0; ++at) {
            char16_t const unit = m_units[source[at]];
            if (unit == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                result.units += char16_t{0xFFFD};
            }
            else {
                result.units += unit;
            }
            capacity -= 1;
            if (limit > 0) {
                limit -= 1;
                if (limit == 0)
                    break;
            }
            if (capacity == 0)
                break;
        }
        return result;
    }

    unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const override
    {
        return lengthWithin(Reader<char16_t>(units), unitCount);
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::LEFT};
        unsigned int capacity = call.capacity;
        for (size_t at = 0; capacity != 0 && source[at] != 0; ++at) {
            unsigned char const byte = m_bytes[source[at]];
            if (byte != 0) {
                result.bytes += static_cast<char>(byte);
                capacity -= 1;
            }
            else if (call.op == ILLCHAR_STOP) {
                break;
            }
            else if (call.op == ILLCHAR_ESCAPE) {
                if (capacity < 6)
                    break;
                result.bytes += escapeOf(source[at]);
                capacity -= 6;
            }
            else {
                result.bytes += '?';
                capacity -= 1;
            }
        }
        return result;
    }

private:
    template <class Char>
    static unsigned int lengthWithin(Reader<Char> const& source, unsigned int most)
    {
        unsigned int n = 0;
        while (n != most && source[n] != 0)
            ++n;
        return n;
    }

    std::vector<char16_t> m_units;       // by byte; 0: not mapped
    std::vector<unsigned char> m_bytes;  // by unit; 0: not mapped
};

}  // namespace kx7test

#endif
