// kx7text tests - model of EUC-KR and EUC-CN.
#ifndef KX7_TESTS_MODEL_EUCKRCNMODEL_H
#define KX7_TESTS_MODEL_EUCKRCNMODEL_H

#include "tests/model/CodeMap.h"
#include "tests/model/Model.h"

namespace kx7test {

class EucKrCnModel : public Model {
public:
    /** @param pairs row and cell as two bytes from 0x21 to 0x7E, and the unit */
    explicit EucKrCnModel(CodePairs const& pairs) : m_map(pairs) {}

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int step = 1;
            if (isPairByte(source[at]) && remaining >= 2 && isPairByte(source[at + 1]))
                step = 2;
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
            bool badTrail = false;
            at += 1;
            if (b < 0x7F) {
                unit = b;
            }
            else if (isPairByte(b)) {
                unsigned int const t = source[at];
                if (isPairByte(t)) {
                    unit = m_map.codePointOf((b & 0x7F) * 256 + (t & 0x7F));
                    at += 1;
                }
                else {
                    badTrail = true;
                }
            }
            if (unit == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                unit = 0xFFFD;
            }
            result.units += static_cast<char16_t>(unit);
            if (!badTrail && call.limit > 0 && at >= static_cast<size_t>(call.limit))
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
        for (unsigned int at = 0; at != unitCount && source[at] != 0; ++at)
            bytes += source[at] > 0x7E && m_map.codeOf(source[at]) != 0 ? 2 : 1;
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        auto const capacity = [&] { return call.capacity - result.bytes.size(); };
        for (size_t at = 0; capacity() != 0 && source[at] != 0; ++at) {
            unsigned int const u = source[at];
            if (u <= 0x7E) {
                result.bytes += static_cast<char>(u);
                continue;
            }
            unsigned int const v = m_map.codeOf(u);
            if (v != 0) {
                if (capacity() < 2)
                    break;
                unsigned int const pair = (v + 0x8080) % 0x10000;
                result.bytes += static_cast<char>(pair / 256);
                result.bytes += static_cast<char>(pair % 256);
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
                result.bytes += '?';
            }
        }
        return result;
    }

private:
    static bool isPairByte(unsigned int byte) { return byte >= 0xA1 && byte <= 0xFE; }

    CodeMap m_map;
};

}  // namespace kx7test

#endif
