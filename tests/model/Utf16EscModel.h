// kx7text tests - model of the UTF-16 escape converter.
#ifndef KX7_TESTS_MODEL_UTF16ESCMODEL_H
#define KX7_TESTS_MODEL_UTF16ESCMODEL_H

#include "tests/model/Model.h"

namespace kx7test {

class Utf16EscModel : public Model {
public:
    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int const step = remaining >= 6 && isEscape(source, at) ? 6 : 1;
            at += step;
            remaining -= step;
            count += 1;
        }
        return count;
    }

    Decoded toUTF16(DecodeCall const& call) const override
    {
        Reader<char> const source(call.bytes);
        Decoded result{{}, Flag::CLEARED};
        size_t at = 0;  // as many bytes are consumed
        while (result.units.size() != call.capacity && source[at] != 0) {
            if (isEscape(source, at)) {
                unsigned int unit = 0;
                for (size_t i = 2; i < 6; ++i)
                    unit = unit * 16 + valueOf(source[at + i]);
                result.units += static_cast<char16_t>(unit);
                at += 6;
            }
            else {
                unsigned int const b = source[at];
                result.units += static_cast<char16_t>(b >= 0x80 ? b + 0xFF00 : b);
                at += 1;
            }
            if (call.limit > 0 && at >= static_cast<size_t>(call.limit))
                break;
        }
        return result;
    }

    unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const override
    {
        Reader<char16_t> const source(units);
        unsigned int bytes = 0;
        for (unsigned int at = 0; at != unitCount && source[at] != 0; ++at)
            bytes += source[at] < 0x80 ? 1 : 6;
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        for (size_t at = 0; source[at] != 0; ++at) {
            size_t const capacity = call.capacity - result.bytes.size();
            if (source[at] < 0x80) {
                if (capacity == 0)
                    break;
                result.bytes += static_cast<char>(source[at]);
            }
            else {
                if (capacity < 6)
                    break;
                result.bytes += escapeOf(source[at]);
            }
            // Nothing after the capacity is looked at.
            if (result.bytes.size() == call.capacity)
                break;
        }
        return result;
    }

private:
    static bool isDigit(unsigned int c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }
    static unsigned int valueOf(unsigned int c) { return c <= '9' ? c - '0' : c - 'A' + 10; }

    static bool isEscape(Reader<char> const& source, size_t at)
    {
        if (source[at] != 'U' || source[at + 1] != '+')
            return false;
        for (size_t i = 2; i < 6; ++i)
            if (!isDigit(source[at + i]))
                return false;
        return true;
    }
};

}  // namespace kx7test

#endif
