// kx7text tests - model of GB 18030.
#ifndef KX7_TESTS_MODEL_GB18030MODEL_H
#define KX7_TESTS_MODEL_GB18030MODEL_H

#include "tests/model/CodeMap.h"
#include "tests/model/Model.h"

namespace kx7test {

/** First and last key of a run, and what the first is mapped to. */
struct CodeRun {
    unsigned int first;
    unsigned int last;
    unsigned int value;
};
using CodeRuns = std::vector<CodeRun>;

class Gb18030Model : public Model {
public:
    /** @param toUnits runs by GB code; @param toCodes runs by unit */
    Gb18030Model(CodePairs const& gbk, CodeRuns const& toUnits, CodeRuns const& toCodes)
        : m_gbk(gbk), m_units(0x20000), m_codes(0x10000)
    {
        enter(m_units, toUnits);
        enter(m_codes, toCodes);
    }

    unsigned int getNumUnits(std::string const& bytes, unsigned int byteCount) const override
    {
        Reader<char> const source(bytes);
        unsigned int remaining = byteCount == UNTIL_TERMINATOR ? source.length() : byteCount;
        unsigned int count = 0;
        size_t at = 0;
        while (remaining != 0 && source[at] != 0) {
            Sequence const s = remaining < 2 ? Sequence{1, source[at]} : sequenceAt(source, at, remaining >= 4);
            count += s.length == 4 && isSupplementary(s.code) ? 2 : 1;
            at += s.length;
            remaining -= s.length;
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
            Sequence const s = sequenceAt(source, at, true);
            unsigned int const codePoint = codePointOf(s);
            bool limited = call.limit > 0;
            if (codePoint == 0) {
                result.flag = Flag::SET;
                if (call.op == ILLCHAR_STOP)
                    break;
                result.units += char16_t{0xFFFD};
                // After a sequence of a lead byte, whatever was wrong with it, the limit is not looked at.
                if (b >= 0x81 && b <= 0xFE)
                    limited = false;
            }
            else if (codePoint > 0xFFFF) {
                if (call.capacity - result.units.size() < 2)
                    break;
                result.units += static_cast<char16_t>((codePoint >> 10) + 0xD7C0);
                result.units += static_cast<char16_t>((codePoint & 0x3FF) + 0xDC00);
            }
            else {
                result.units += static_cast<char16_t>(codePoint);
            }
            at += s.length;
            if (limited && at >= static_cast<size_t>(call.limit))
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
            unsigned int const u = source[at];
            if (isHigh(u)) {
                if (remaining < 2 || !isLow(source[at + 1]))
                    break;
                bytes += 4;
                at += 2;
                remaining -= 2;
            }
            else {
                unsigned int const code = codeOfUnit(u);
                bytes += code < 0x100 ? 1 : code < 0x10000 ? 2 : 4;
                at += 1;
                remaining -= 1;
            }
        }
        return bytes;
    }

    Encoded fromUTF16(EncodeCall const& call) const override
    {
        Reader<char16_t> const source(call.units);
        Encoded result{{}, Flag::CLEARED};
        auto const capacity = [&] { return call.capacity - result.bytes.size(); };
        auto const put = [&](unsigned int byte) { result.bytes += static_cast<char>(byte); };
        size_t at = 0;
        while (capacity() != 0 && source[at] != 0) {
            unsigned int const u = source[at];
            unsigned int code = 0;
            unsigned int used = 1;
            if (isHigh(u)) {
                if (!isLow(source[at + 1]))
                    break;  // and not a word about it
                code = 0x10000 + ((u - 0xD800) << 10) + (source[at + 1] - 0xDC00) + 189000;
                used = 2;
            }
            else {
                code = codeOfUnit(u);
            }
            if (code == 0) {
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
            else if (code < 0x100) {
                put(code);
            }
            else if (code < 0x10000) {
                if (capacity() < 2)
                    break;
                put(code / 256);
                put(code % 256);
            }
            else {
                if (capacity() < 4)
                    break;
                unsigned int const index = code - 0x10000;
                put(index / 12600 + 0x81);
                put(index / 1260 % 10 + 0x30);
                put(index % 1260 / 10 + 0x81);
                put(index % 10 + 0x30);
            }
            at += used;
        }
        return result;
    }

private:
    /** Bytes and GB code of a sequence; code 0 where it is no sequence. */
    struct Sequence {
        unsigned int length;
        unsigned int code;
    };

    static void enter(std::vector<unsigned int>& values, CodeRuns const& runs)
    {
        for (CodeRun const& run : runs)
            for (unsigned int key = run.first; key <= run.last; ++key)
                values.at(key) = key - run.first + run.value;
    }

    /** @param four whether there are bytes enough for a sequence of four */
    static Sequence sequenceAt(Reader<char> const& source, size_t at, bool four)
    {
        unsigned int const b1 = source[at];
        if (b1 < 0x81)
            return {1, b1};
        if (b1 == 0xFF)
            return {1, 0};
        unsigned int const b2 = source[at + 1];
        if ((b2 >= 0x40 && b2 <= 0x7E) || (b2 >= 0x80 && b2 <= 0xFE))
            return {2, b1 * 256 + b2};
        if (!four || b2 < 0x30 || b2 > 0x39)
            return {1, 0};
        unsigned int const b3 = source[at + 2];
        if (b3 < 0x81 || b3 > 0xFE)
            return {1, 0};
        unsigned int const b4 = source[at + 3];
        if (b4 < 0x30 || b4 > 0x39)
            return {1, 0};
        return {4, 0x10000 + (((b1 - 0x81) * 10 + (b2 - 0x30)) * 126 + (b3 - 0x81)) * 10 + (b4 - 0x30)};
    }

    static bool isSupplementary(unsigned int code) { return code >= 254536 && code - 189000 <= 0x10FFFF; }

    unsigned int codePointOf(Sequence const& s) const
    {
        if (s.code >= 254536)
            return isSupplementary(s.code) ? s.code - 189000 : 0;
        if (s.code >= m_units.size())
            return 0;
        // The records of the ranges go before GBK, which maps each of their two-byte codes as well.
        if (m_units[s.code] != 0)
            return m_units[s.code];
        return s.code < 0x10000 ? m_gbk.codePointOf(s.code) : 0;
    }

    unsigned int codeOfUnit(unsigned int unit) const
    {
        unsigned int const code = m_gbk.codeOf(unit);
        return code != 0 ? code : m_codes.at(unit);
    }

    CodeMap m_gbk;
    std::vector<unsigned int> m_units;  // by GB code, from the runs
    std::vector<unsigned int> m_codes;  // by unit, from the runs
};

}  // namespace kx7test

#endif
