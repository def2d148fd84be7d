// kx7text tests - model of the double-byte converters of one unit a character: code pages, Big5, Shift_JIS.
#ifndef KX7_TESTS_MODEL_DOUBLEBYTEMODEL_H
#define KX7_TESTS_MODEL_DOUBLEBYTEMODEL_H

#include "tests/model/CodeMap.h"
#include "tests/model/Model.h"

namespace kx7test {

/** First and last byte of each run of bytes. */
using ByteRuns = std::vector<std::pair<unsigned int, unsigned int>>;

/** Which bytes lead and which trail. */
struct DoubleBytes {
    ByteRuns leads;
    ByteRuns trails;

    bool isLead(unsigned int byte) const { return isIn(leads, byte); }
    bool isTrail(unsigned int byte) const { return isIn(trails, byte); }

private:
    static bool isIn(ByteRuns const& runs, unsigned int byte)
    {
        for (auto const& [first, last] : runs)
            if (byte >= first && byte <= last)
                return true;
        return false;
    }
};

inline DoubleBytes const SHIFT_JIS_BYTES{{{0x81, 0x9F}, {0xE0, 0xFC}}, {{0x40, 0x7E}, {0x80, 0xFC}}};
inline DoubleBytes const CP936_BYTES{{{0x81, 0xFE}}, {{0x40, 0x7F}, {0xA1, 0xFE}}};
inline DoubleBytes const CP949_BYTES{{{0x81, 0xFE}}, {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}}};
inline DoubleBytes const CP950_BYTES{{{0x81, 0xFE}}, {{0x40, 0x7F}, {0xA1, 0xFE}}};
inline DoubleBytes const BIG5_BYTES{{{0x81, 0xFE}}, {{0x40, 0x7E}, {0xA1, 0xFE}}};

class DoubleByteModel : public Model {
public:
    DoubleByteModel(DoubleBytes const& bytes, CodePairs const& pairs) : m_bytes(bytes), m_map(pairs) {}

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int step = 1;
            if (m_bytes.isLead(source[at]) && remaining >= 2 && m_bytes.isTrail(source[at + 1]))
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
            unsigned int const lead = source[at];
            unsigned int code = lead;
            at += 1;
            if (m_bytes.isLead(lead)) {
                unsigned int const trail = source[at];
                if (!m_bytes.isTrail(trail)) {
                    result.flag = Flag::SET;
                    if (call.op == ILLCHAR_STOP)
                        break;
                    result.units += char16_t{0xFFFD};
                    if (result.units.size() == call.capacity)
                        break;
                    continue;  // without a look at the limit
                }
                at += 1;
                code = lead * 256 + trail;
            }
            unsigned int unit = m_map.codePointOf(code);
            if (unit == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                unit = 0xFFFD;
            }
            result.units += static_cast<char16_t>(unit);
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
        for (unsigned int at = 0; at != unitCount && source[at] != 0; ++at)
            bytes += m_map.codeOf(source[at]) >= 256 ? 2 : 1;
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        unsigned int capacity = call.capacity;
        for (size_t at = 0; capacity != 0 && source[at] != 0; ++at) {
            unsigned int const code = m_map.codeOf(source[at]);
            if (code >= 256) {
                if (capacity < 2)
                    break;
                result.bytes += static_cast<char>(code / 256);
                result.bytes += static_cast<char>(code % 256);
                capacity -= 2;
            }
            else if (code != 0) {
                result.bytes += static_cast<char>(code);
                capacity -= 1;
            }
            else {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                if (call.op == ILLCHAR_ESCAPE) {
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
        }
        return result;
    }

private:
    DoubleBytes m_bytes;
    CodeMap m_map;
};

}  // namespace kx7test

#endif
