// kx7text tests - model of the UTF-8 converter.
#ifndef KX7_TESTS_MODEL_UTF8MODEL_H
#define KX7_TESTS_MODEL_UTF8MODEL_H

#include "tests/model/Model.h"

namespace kx7test {

class Utf8Model : public Model {
public:
    /** @param escapeCost what an escape of six bytes takes from the capacity: five as published, six to stay within it
     */
    explicit Utf8Model(unsigned int escapeCost = 5) : m_escapeCost(escapeCost) {}

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int const length = sequenceLength(source[at]);
            if (length == 0 || length > remaining)
                break;
            count += 1;
            // A zero byte within the sequence ends the text: nothing after it is looked at.
            for (size_t const end = at + length; at != end && source[at] != 0;)
                at += 1;
            remaining -= length;
        }
        return count;
    }

    Decoded toUTF16(DecodeCall const& call) const override
    {
        Reader<char> const source(call.bytes);
        Decoded result{{}, Flag::CLEARED};
        unsigned int capacity = call.capacity;
        size_t at = 0;  // as many bytes are consumed
        auto const put = [&](unsigned int unit) {
            result.units += static_cast<char16_t>(unit & 0xFFFF);
            capacity -= 1;
        };
        while (capacity != 0) {
            unsigned int const lead = source[at];
            if (lead == 0)
                break;
            at += 1;
            switch (sequenceLength(lead)) {
                case 1: put(lead); break;
                case 2:
                    if (isContinuation(source[at])) {
                        put(((lead & 0x1F) << 6) | (source[at] & 0x3F));
                        at += 1;
                    }
                    else {
                        put(0xFFFD);
                    }
                    break;
                case 3:
                    if (isContinuation(source[at]) && isContinuation(source[at + 1])) {
                        put((lead << 12) | ((source[at] & 0x3F) << 6) | (source[at + 1] & 0x3F));
                        at += 2;
                    }
                    else {
                        put(0xFFFD);
                    }
                    break;
                case 4:
                    if (capacity >= 2 && isContinuation(source[at]) && isContinuation(source[at + 1]) &&
                        isContinuation(source[at + 2])) {
                        unsigned int const c = ((lead & 0x0F) << 18) | ((source[at] & 0x3F) << 12) |
                                               ((source[at + 1] & 0x3F) << 6) | (source[at + 2] & 0x3F);
                        put((c >> 10) + 0xD7C0);
                        put((c & 0x3FF) + 0xDC00);
                        at += 3;
                    }
                    else {
                        put(0xFFFD);
                    }
                    break;
                default: break;  // a stray continuation byte: nothing
            }
            if (call.limit > 0 && at >= static_cast<size_t>(call.limit))
                break;
        }
        return result;
    }

    unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const override
    {
        Reader<char16_t> const source(units);
        unsigned int remaining = unitCount == UNTIL_TERMINATOR ? source.length() : unitCount;
        unsigned int bytes = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int const u = source[at];
            at += 1;
            remaining -= 1;
            if (u < 0x80) {
                bytes += 1;
            }
            else if (u < 0x800) {
                bytes += 2;
            }
            else if (!isHigh(u)) {
                bytes += 3;
            }
            else {
                if (remaining == 0 || source[at] == 0)
                    break;
                if (isLow(source[at])) {
                    bytes += 4;
                    at += 1;
                    remaining -= 1;
                }
                else {
                    bytes += 1;
                }
            }
        }
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        unsigned int capacity = call.capacity;
        size_t at = 0;
        auto const put = [&](unsigned int byte) { result.bytes += static_cast<char>(byte); };
        while (capacity != 0) {
            unsigned int const u = source[at];
            if (u == 0)
                break;
            at += 1;
            if (u < 0x80) {
                put(u);
                capacity -= 1;
            }
            else if (u < 0x800) {
                if (capacity < 2)
                    break;
                put(0xC0 + ((u >> 6) & 0x1F));
                put(0x80 + (u & 0x3F));
                capacity -= 2;
            }
            else if (!isHigh(u)) {
                if (capacity < 3)
                    break;
                put(0xE0 + (u >> 12));
                put(0x80 + ((u >> 6) & 0x3F));
                put(0x80 + (u & 0x3F));
                capacity -= 3;
            }
            else if (isLow(source[at])) {
                unsigned int const v = source[at];
                if (capacity < 4)
                    break;
                at += 1;
                unsigned int const c = 0x10000 + ((u - 0xD800) << 10) + (v - 0xDC00);
                put(0xF0 + ((c >> 18) & 0x07));
                put(0x80 + ((c >> 12) & 0x3F));
                put(0x80 + ((c >> 6) & 0x3F));
                put(0x80 + (c & 0x3F));
                capacity -= 4;
            }
            else {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                if (call.op == ILLCHAR_ESCAPE) {
                    if (capacity < 6)
                        break;
                    result.bytes += escapeOf(u);
                    capacity -= m_escapeCost;
                    if (source[at] == 0)
                        break;
                    at += 1;  // whatever it is, it is dropped
                }
                else {
                    put('?');
                    capacity -= 1;
                }
            }
        }
        return result;
    }

private:
    static unsigned int sequenceLength(unsigned int byte)
    {
        if (byte < 0x80)
            return 1;
        if (byte < 0xC0)
            return 0;
        if (byte < 0xE0)
            return 2;
        return byte < 0xF0 ? 3 : 4;
    }

    static bool isContinuation(unsigned int byte) { return byte >= 0x80 && byte <= 0xBF; }

    unsigned int m_escapeCost;
};

}  // namespace kx7test

#endif
