// kx7text tests - model of the UTF-32 converter.
#ifndef KX7_TESTS_MODEL_UTF32MODEL_H
#define KX7_TESTS_MODEL_UTF32MODEL_H

#include "tests/model/Model.h"
#include "tests/model/WideReader.h"

namespace kx7test {

class Utf32Model : public Model {
public:
    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        return WideReader<char32_t>(bytes).lengthWithin(byteCount);
    }

    Decoded toUTF16(DecodeCall const& call) const override
    {
        WideReader<char32_t> const source(call.bytes);
        Decoded result{{}, Flag::CLEARED};
        unsigned int capacity = call.capacity;
        int limit = call.limit;
        for (size_t at = 0; capacity != 0 && limit != 0; ++at) {
            unsigned int const c = source[at];
            if (c == 0)
                break;
            if (c <= 0xFFFF) {
                result.units += static_cast<char16_t>(c);
                capacity -= 1;
            }
            else {
                if (capacity < 2)
                    break;
                result.units += static_cast<char16_t>(((c >> 10) + 0xD7C0) & 0xFFFF);
                result.units += static_cast<char16_t>((c & 0x3FF) + 0xDC00);
                capacity -= 2;
            }
            if (limit > 0)
                limit -= 1;
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
            if (isHigh(source[at])) {
                if (remaining == 1 || source[at + 1] == 0)
                    break;
                if (isLow(source[at + 1])) {
                    at += 1;
                    remaining -= 1;
                }
            }
            bytes += 4;
            at += 1;
            remaining -= 1;
        }
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Flag flag = Flag::CLEARED;
        std::u32string codes;
        unsigned int capacity = call.capacity / 4;
        size_t at = 0;
        while (capacity != 0) {
            unsigned int const u = source[at];
            if (u == 0)
                break;
            at += 1;
            if (!isHigh(u)) {
                codes += static_cast<char32_t>(u);
                capacity -= 1;
                continue;
            }
            unsigned int const v = source[at];
            if (isLow(v)) {
                codes += static_cast<char32_t>((u << 10) + v - 0x35FDC00);
                capacity -= 1;
                at += 1;
                continue;
            }
            flag = Flag::SET;
            if (call.op == ILLCHAR_STOP)
                break;
            if (call.op == ILLCHAR_ESCAPE) {
                if (capacity < 6)
                    break;
                for (char const c : escapeOf(u))
                    codes += static_cast<char32_t>(c);
                capacity -= 6;
            }
            else {
                codes += U'?';
                capacity -= 1;
            }
        }
        return {bytesOfValues(codes), flag};
    }

    struct Sequence {
        unsigned int codePoint;
        unsigned int length;
    };

    /** The UTF-8 sequence at a place, and how far to go on after it. */
    static Sequence sequenceAt(Reader<char> const& source, size_t at)
    {
        unsigned int const b = source[at];
        if (b <= 0x7F)
            return {b, 1};
        if (b <= 0xBF || b >= 0xFE)
            return {0xFFFD, 1};
        unsigned int const n = b <= 0xDF ? 2 : b <= 0xEF ? 3 : b <= 0xF7 ? 4 : b <= 0xFB ? 5 : 6;
        unsigned int const smallest[] = {0, 0, 0x80, 0x800, 0x10000, 0x200000, 0x4000000, 0};
        unsigned int value = b & ((1U << (7 - n)) - 1);
        for (unsigned int i = 1; i < n; ++i) {
            unsigned int const next = source[at + i];
            if ((next & 0xC0) != 0x80)
                return {0xFFFD, 1};
            value = (value << 6) | (next & 0x3F);
        }
        if (value < smallest[n] || (value >= 0xD800 && value <= 0xDFFF) || value == 0xFFFE || value == 0xFFFF)
            value = 0xFFFD;
        return {value, n};
    }

    /** What fromUTF8 stores, the closing 0 included; it returns one less. */
    static std::u32string fromUTF8(std::string const& bytes, unsigned int capacity)
    {
        Reader<char> const source(bytes);
        std::u32string codes;
        size_t at = 0;
        while (codes.size() < capacity) {
            Sequence const s = sequenceAt(source, at);
            codes += static_cast<char32_t>(s.codePoint);
            if (s.codePoint == 0)
                return codes;
            at += s.length;
        }
        codes += char32_t{0};
        return codes;
    }

    struct Utf8 {
        std::string bytes;
        bool terminated;
        Flag flag;
    };

    /** What toUTF8 writes; the whole of a character that runs past the capacity, and then no terminator. */
    static Utf8 toUTF8(std::u32string const& codes, unsigned int capacity)
    {
        Utf8 result{{}, true, Flag::CLEARED};
        for (size_t at = 0; result.bytes.size() < capacity && at != codes.size() && codes[at] != 0; ++at) {
            unsigned int c = codes[at];
            if ((c >= 0xD800 && c <= 0xDFFF) || c >= 0x80000000) {
                result.flag = Flag::SET;
                c = 0xFFFD;
            }
            auto const put = [&](unsigned int byte) { result.bytes += static_cast<char>(byte); };
            auto const putRest = [&](unsigned int count) {
                for (; count != 0; --count)
                    put(0x80 | ((c >> (6 * (count - 1))) & 0x3F));
            };
            if (c < 0x80) {
                put(c);
            }
            else if (c < 0x800) {
                put(0xC0 | (c >> 6));
                putRest(1);
            }
            else if (c < 0x10000) {
                put(0xE0 | (c >> 12));
                putRest(2);
            }
            else if (c < 0x200000) {
                put(0xF0 | (c >> 18));
                putRest(3);
            }
            else if (c < 0x4000000) {
                put(0xF8 | (c >> 24));
                putRest(4);
            }
            else {
                put(0xFC | (c >> 30));
                putRest(5);
            }
        }
        result.terminated = result.bytes.size() <= capacity;
        return result;
    }
};

}  // namespace kx7test

#endif
