// kx7text tests - model of the double-byte converter that reaches beyond the Basic Multilingual Plane.
#ifndef KX7_TESTS_MODEL_SHIFTJIS2004MODEL_H
#define KX7_TESTS_MODEL_SHIFTJIS2004MODEL_H

#include "tests/model/DoubleByteModel.h"

namespace kx7test {

class ShiftJis2004Model : public Model {
public:
    explicit ShiftJis2004Model(CodePairs const& pairs) : m_map(pairs) {}

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            if (SHIFT_JIS_BYTES.isLead(source[at]) && remaining >= 2 && SHIFT_JIS_BYTES.isTrail(source[at + 1])) {
                unsigned int const codePoint = m_map.codePointOf(source[at] * 256 + source[at + 1]);
                count += codePoint >= 0x10000 && codePoint <= 0x10FFFF ? 2 : 1;
                at += 2;
                remaining -= 2;
            }
            else {
                count += 1;
                at += 1;
                remaining -= 1;
            }
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
            if (SHIFT_JIS_BYTES.isLead(lead)) {
                unsigned int const trail = source[at];
                if (!SHIFT_JIS_BYTES.isTrail(trail)) {
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
            unsigned int const codePoint = m_map.codePointOf(code);
            if (codePoint == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                result.units += char16_t{0xFFFD};
            }
            else if (codePoint >= 0x10000 && codePoint <= 0x10FFFF) {
                if (call.capacity - result.units.size() < 2)
                    break;
                result.units += static_cast<char16_t>((codePoint >> 10) + 0xD7C0);
                result.units += static_cast<char16_t>((codePoint & 0x3FF) + 0xDC00);
            }
            else {
                result.units += static_cast<char16_t>(codePoint & 0xFFFF);
            }
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
        unsigned int remaining = unitCount == UNTIL_TERMINATOR ? source.length() : unitCount;
        unsigned int bytes = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            unsigned int codePoint = source[at];
            at += 1;
            remaining -= 1;
            if (isHigh(codePoint)) {
                if (remaining == 0 || source[at] == 0)
                    break;
                if (!isLow(source[at])) {
                    bytes += 1;
                    continue;
                }
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (source[at] - 0xDC00);
                at += 1;
                remaining -= 1;
            }
            bytes += m_map.codeOf(codePoint) >= 256 ? 2 : 1;
        }
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        auto const capacity = [&] { return call.capacity - result.bytes.size(); };
        size_t at = 0;
        while (capacity() != 0 && source[at] != 0) {
            unsigned int const u = source[at];
            unsigned int low = 0;
            unsigned int code = 0;
            if (isHigh(u)) {
                if (isLow(source[at + 1])) {
                    low = source[at + 1];
                    code = m_map.codeOf(0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
                }
            }
            else {
                code = m_map.codeOf(u);
            }
            if (code >= 256) {
                if (capacity() < 2)
                    break;
                result.bytes += static_cast<char>(code / 256);
                result.bytes += static_cast<char>(code % 256);
            }
            else if (code != 0) {
                result.bytes += static_cast<char>(code);
            }
            else {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                if (call.op == ILLCHAR_ESCAPE && low != 0) {
                    if (capacity() < 12)
                        break;
                    result.bytes += escapeOf(u) + "U+04X";
                    result.bytes += '\0';
                }
                else if (call.op == ILLCHAR_ESCAPE) {
                    if (capacity() < 6)
                        break;
                    result.bytes += escapeOf(u);
                }
                else {
                    result.bytes += '?';
                }
            }
            at += low != 0 ? 2 : 1;
        }
        return result;
    }

private:
    CodeMap m_map;
};

}  // namespace kx7test

#endif
