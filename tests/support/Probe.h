// kx7text tests - runs a converter's operations in watched memory and holds the results against what is expected.
#ifndef KX7_TESTS_SUPPORT_PROBE_H
#define KX7_TESTS_SUPPORT_PROBE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/model/Model.h"
#include "tests/support/Calls.h"
#include "tests/support/Hex.h"
#include "tests/support/Memory.h"

namespace kx7test {

/** Whether the terminator of a source is there to be read. */
enum class Terminator { PRESENT, ABSENT };

/**
 * A converter and the model of it. Every source is a copy that ends at an unreadable page, every destination is as
 * large as the call may fill it and lies between canaries. Failures say what went in and what came out, in hexadecimal;
 * after a number of them the rest is not shown.
 */
class Probe {
public:
    Probe(KX7CharSetConverter& converter, Model const& model) : m_converter(converter), m_model(model) {}

    KX7CharSetConverter& converter() { return m_converter; }
    Model const& model() const { return m_model; }

    /** So many failures that a loop had better end. */
    bool gaveUp() const { return m_failures > MOST_FAILURES; }

    /** Runs toUTF16. */
    void decode(DecodeCall const& call, Decoded const& expected, FlagArgument argument, char const* what = "",
                Terminator terminator = Terminator::PRESENT)
    {
        size_t const zeros = terminator == Terminator::PRESENT ? m_converter.getNullCharSize() : 0;
        unsigned char const* const source = m_bytes.hold(call.bytes, zeros);
        size_t const extent = extentOf(call.capacity, expected.units.size());
        unsigned short* const dest = m_unitsOut.arm(extent + 1);
        bool flag = argument == FlagArgument::TRUE_BEFORE;

        unsigned int const result =
            m_converter.toUTF16(dest, source, call.capacity, call.op, pointerTo(flag, argument), call.limit);

        size_t const length = expected.units.size();
        bool const right = result == length && memcmp(dest, expected.units.data(), length * 2) == 0;
        if (right && dest[length] == 0 && m_unitsOut.intact() && flag == flagAfter(argument, expected.flag))
            return;
        std::u16string const units(dest, dest + std::min<size_t>(result, extent));
        fail(std::string(what) + ": toUTF16 of " + hex(call.bytes) + " limit " + std::to_string(call.limit),
             call.capacity, call.op, argument, expected.units, expected.flag, result, units, flag,
             !right || dest[length] == 0, m_unitsOut.intact());
    }

    /** Runs fromUTF16. Where more is expected than the capacity holds, exactly so much may be written. */
    void encode(EncodeCall const& call, Encoded const& expected, FlagArgument argument, char const* what = "",
                Terminator terminator = Terminator::PRESENT)
    {
        unsigned short const* const source = m_units.hold(call.units, terminator == Terminator::PRESENT ? 1 : 0);
        size_t const extent = extentOf(call.capacity, expected.bytes.size());
        size_t const nullSize = m_converter.getNullCharSize();
        unsigned char* const dest = m_bytesOut.arm(extent + nullSize);
        bool flag = argument == FlagArgument::TRUE_BEFORE;

        unsigned int const result =
            m_converter.fromUTF16(dest, source, call.capacity, call.op, pointerTo(flag, argument));

        size_t const length = expected.bytes.size();
        bool const right = result == length && memcmp(dest, expected.bytes.data(), length) == 0;
        bool const closed =
            right && std::all_of(dest + length, dest + length + nullSize, [](unsigned char byte) { return byte == 0; });
        if (closed && m_bytesOut.intact() && flag == flagAfter(argument, expected.flag))
            return;
        std::string const bytes(reinterpret_cast<char const*>(dest), std::min<size_t>(result, extent));
        fail(std::string(what) + ": fromUTF16 of " + hex(call.units), call.capacity, call.op, argument, expected.bytes,
             expected.flag, result, bytes, flag, !right || closed, m_bytesOut.intact());
    }

    /** toUTF16 as the model has it, with one kind of flag argument. */
    void compareDecode(DecodeCall const& call, FlagArgument argument)
    {
        decode(call, m_model.toUTF16(call), argument, "against the model");
    }

    /** fromUTF16 as the model has it, with one kind of flag argument. */
    void compareEncode(EncodeCall const& call, FlagArgument argument)
    {
        encode(call, m_model.fromUTF16(call), argument, "against the model");
    }

    /** toUTF16 as the model has it, with every kind of flag argument. */
    void compareDecode(DecodeCall const& call)
    {
        Decoded const expected = m_model.toUTF16(call);
        for (FlagArgument const argument : FLAG_ARGUMENTS)
            decode(call, expected, argument, "against the model");
    }

    /** fromUTF16 as the model has it, with every kind of flag argument. */
    void compareEncode(EncodeCall const& call)
    {
        Encoded const expected = m_model.fromUTF16(call);
        for (FlagArgument const argument : FLAG_ARGUMENTS)
            encode(call, expected, argument, "against the model");
    }

    /** getNumUnits as the model has it, of a text or of so many bytes, zeros where the text is shorter. */
    void compareNumUnits(std::string const& text, unsigned int byteCount)
    {
        std::string const bytes = counted(text, byteCount);
        size_t const zeros = byteCount == UNTIL_TERMINATOR ? m_converter.getNullCharSize() : 0;
        check("getNumUnits", m_converter.getNumUnits(m_bytes.hold(bytes, zeros), byteCount),
              m_model.getNumUnits(bytes, byteCount), bytes, byteCount);
    }

    /** getNumBytes as the model has it, of a text or of so many units, zeros where the text is shorter. */
    void compareNumBytes(std::u16string const& text, unsigned int unitCount)
    {
        std::u16string const units = counted(text, unitCount);
        size_t const zeros = unitCount == UNTIL_TERMINATOR ? 1 : 0;
        check("getNumBytes", m_converter.getNumBytes(m_units.hold(units, zeros), unitCount),
              m_model.getNumBytes(units, unitCount), units, unitCount);
    }

private:
    static constexpr unsigned int MOST_FAILURES = 12;

    /** Values that a call may fill; for capacities without end as many as it should, and some more. */
    static size_t extentOf(unsigned int capacity, size_t expected)
    {
        return std::max(std::min<size_t>(capacity, expected + 4096), expected);
    }

    static bool* pointerTo(bool& flag, FlagArgument argument)
    {
        return argument == FlagArgument::NONE ? nullptr : &flag;
    }

    static bool flagAfter(FlagArgument argument, Flag flag)
    {
        if (argument == FlagArgument::NONE)
            return false;
        return flag == Flag::LEFT ? argument == FlagArgument::TRUE_BEFORE : flag == Flag::SET;
    }

    /** Exactly `count` values, which nothing may be read after. */
    template <class Char>
    static std::basic_string<Char> counted(std::basic_string<Char> text, unsigned int count)
    {
        if (count != UNTIL_TERMINATOR)
            text.resize(count);
        return text;
    }

    template <class Char>
    void check(char const* operation, unsigned int result, unsigned int expected, std::basic_string<Char> const& source,
               unsigned int count)
    {
        if (result == expected || ++m_failures > MOST_FAILURES)
            return;
        ADD_FAILURE() << operation << " of " << hex(source) << " count " << static_cast<int>(count) << ": " << result
                      << ", expected " << expected;
    }

    template <class Char>
    void fail(std::string const& call, unsigned int capacity, ILLCHAR_OPTYPE op, FlagArgument argument,
              std::basic_string<Char> const& expected, Flag expectedFlag, unsigned int result,
              std::basic_string<Char> const& got, bool flag, bool closed, bool intact)
    {
        if (++m_failures > MOST_FAILURES)
            return;
        size_t const at = firstDifference(expected, got);
        std::string flags;
        if (argument != FlagArgument::NONE && flag != flagAfter(argument, expectedFlag))
            flags = flag ? ", flag set" : ", flag not set";
        ADD_FAILURE() << call << " capacity " << capacity << " operation " << op << "\n  expected " << hex(expected, at)
                      << "\n  got      " << hex(got, at) << " result " << result << flags
                      << (closed ? "" : ", no terminator") << (intact ? "" : ", WROTE OUTSIDE ITS CAPACITY");
    }

    KX7CharSetConverter& m_converter;
    Model const& m_model;
    PageEnd<unsigned char> m_bytes;
    PageEnd<unsigned short> m_units;
    Fenced<unsigned short> m_unitsOut;
    Fenced<unsigned char> m_bytesOut;
    unsigned int m_failures = 0;
};

}  // namespace kx7test

#endif
