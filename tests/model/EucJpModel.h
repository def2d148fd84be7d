// kx7text tests - model of EUC-JP.
#ifndef KX7_TESTS_MODEL_EUCJPMODEL_H
#define KX7_TESTS_MODEL_EUCJPMODEL_H

#include "tests/model/CodeMap.h"
#include "tests/model/Model.h"

namespace kx7test {

class EucJpModel : public Model {
public:
    /** @param jis0208, jis0212 row and cell, and the unit; @param jis0201 byte and unit */
    EucJpModel(CodePairs jis0208, CodePairs const& jis0201, CodePairs const& jis0212)
        : m_main(joined(std::move(jis0208), jis0201)), m_jis0212(jis0212)
    {
    }

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int const b = source[at];
            unsigned int step = 1;
            if (b == 0x8E) {
                if (remaining < 2)
                    break;
                if (isKatakana(source[at + 1]))
                    step = 2;
            }
            else if (b == 0x8F) {
                if (remaining < 3)
                    break;
                if (unitAfterShift3(source, at) != 0)
                    step = 3;
            }
            else if (b > 0x7E) {
                if (remaining < 2)
                    break;
                if (unitOfPair(b, source[at + 1]) != 0)
                    step = 2;
            }
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
        if (call.capacity == 0)
            return result;
        size_t at = 0;  // as many bytes are consumed
        while (source[at] != 0) {
            unsigned int const b = source[at];
            unsigned int unit = 0;
            unsigned int length = 1;
            if (b <= 0x7E) {
                unit = b;
            }
            else if (b == 0x8E) {
                if (isKatakana(source[at + 1]))
                    unit = m_main.codePointOf(source[at + 1]);
                length = 2;
            }
            else if (b == 0x8F) {
                unit = unitAfterShift3(source, at);
                length = 3;
            }
            else {
                unit = unitOfPair(b, source[at + 1]);
                length = 2;
            }
            if (unit == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                unit = 0xFFFD;
                length = 1;
            }
            result.units += static_cast<char16_t>(unit);
            at += length;
            if (call.limit > 0 && at >= static_cast<size_t>(call.limit))
                break;
            if (result.units.size() == call.capacity)
                break;
        }
        return result;
    }

    unsigned int getNumBytes(std::u16string const& units, unsigned int unitCount) const override
    {
        Reader<char16_t> const source(units);
        unsigned int bytes = 0;
        for (unsigned int at = 0; at != unitCount && source[at] != 0; ++at) {
            unsigned int const u = source[at];
            bytes += u <= 0x7E ? 1 : m_main.codeOf(u) != 0 ? 2 : m_jis0212.codeOf(u) != 0 ? 3 : 1;
        }
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        auto const capacity = [&] { return call.capacity - result.bytes.size(); };
        auto const put = [&](unsigned int byte) { result.bytes += static_cast<char>(byte); };
        for (size_t at = 0; capacity() != 0 && source[at] != 0; ++at) {
            unsigned int const u = source[at];
            if (u <= 0x7E) {
                put(u);
                continue;
            }
            unsigned int const v = m_main.codeOf(u);
            if (v != 0) {
                if (capacity() < 2)
                    break;
                if (isKatakana(v)) {
                    put(0x8E);
                    put(v);
                }
                else {
                    put((v + 0x8080) / 256 % 256);
                    put((v + 0x8080) % 256);
                }
                continue;
            }
            unsigned int const w = m_jis0212.codeOf(u);
            if (w != 0) {
                if (capacity() < 3)
                    break;
                put(0x8F);
                put((w + 0x8080) / 256 % 256);
                put((w + 0x8080) % 256);
                continue;
            }
            result.flag = Flag::SET;
            if (call.op == ILLCHAR_STOP)
                break;
            if (call.op == ILLCHAR_ESCAPE) {
                if (capacity() < 6)
                    break;
                result.bytes += escapeOf(u);
            }
            else {
                put('?');
            }
        }
        return result;
    }

private:
    /** The later of two pairs with the same unit wins, so JIS X 0201 comes last. */
    static CodePairs joined(CodePairs first, CodePairs const& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    static bool isKatakana(unsigned int code) { return code >= 0xA1 && code <= 0xDF; }

    unsigned int unitOfPair(unsigned int first, unsigned int second) const
    {
        return second == 0 ? 0 : m_main.codePointOf((first & 0x7F) * 256 + (second & 0x7F));
    }

    unsigned int unitAfterShift3(Reader<char> const& source, size_t at) const
    {
        if (source[at + 1] == 0 || source[at + 2] == 0)
            return 0;
        return m_jis0212.codePointOf((source[at + 1] & 0x7F) * 256 + (source[at + 2] & 0x7F));
    }

    CodeMap m_main;
    CodeMap m_jis0212;
};

}  // namespace kx7test

#endif
