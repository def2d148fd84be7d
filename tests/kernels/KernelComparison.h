// kx7text tests - runs one conversion with the kernels of every instruction set and compares them with the plain code.
#ifndef KX7_TESTS_KERNELS_KERNELCOMPARISON_H
#define KX7_TESTS_KERNELS_KERNELCOMPARISON_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "kx7/charset/Converters.h"
#include "kx7/converters/Engine.h"
#include "kx7/kernels/Kernels.h"
#include "tests/support/Guarded.h"
#include "tests/support/KernelSets.h"

namespace kx7test {

using kx7::InstructionSet;

constexpr unsigned char CANARY = 0xA5;

struct Outcome {
    size_t consumed;
    size_t written;
    kx7::Stop stop;
    unsigned int length;
    std::string text;

    bool operator==(Outcome const& o) const
    {
        return consumed == o.consumed && written == o.written && stop == o.stop && length == o.length && text == o.text;
    }
};

inline std::string show(Outcome const& o)
{
    return std::to_string(o.consumed) + " used, " + std::to_string(o.written) + " written, stop " +
           std::to_string(static_cast<int>(o.stop)) + ", length " + std::to_string(o.length);
}

/**
 * The operations of one converter, its source and destination in memory that ends at unreadable pages. The source ends
 * there (AT_END), or begins `shift` of its units into the memory; the destination always ends there.
 */
class GuardedCalls {
public:
    explicit GuardedCalls(KX7CharSetConverter& converter)
        : m_converter(converter), m_engine(*kx7::engineOf(converter)), m_source(CAPACITY), m_dest(CAPACITY)
    {
    }

    Outcome decode(std::string const& bytes, size_t capacity, size_t shift)
    {
        unsigned char* const source = place(m_source, bytes.size(), shift);
        memcpy(source, bytes.data(), bytes.size());
        auto* const dest = reinterpret_cast<unsigned short*>(m_dest.data() + CAPACITY) - capacity;
        memset(dest, CANARY, capacity * 2);
        kx7::Progress const p =
            m_engine.decode(m_converter, source, source + bytes.size(), dest, dest + capacity, false);
        return {p.consumed, p.written, p.stop, p.length, {reinterpret_cast<char const*>(dest), p.written * 2}};
    }

    Outcome decodeStrict(std::string const& bytes, size_t capacity, size_t shift)
    {
        unsigned char* const source = place(m_source, bytes.size(), shift);
        memcpy(source, bytes.data(), bytes.size());
        auto* const dest = reinterpret_cast<unsigned short*>(m_dest.data() + CAPACITY) - capacity;
        memset(dest, CANARY, capacity * 2);
        kx7::Progress const p =
            m_engine.decodeStrict(m_converter, source, source + bytes.size(), dest, dest + capacity, false);
        return {p.consumed, p.written, p.stop, p.length, {reinterpret_cast<char const*>(dest), p.written * 2}};
    }

    /** getNumUnits of bytes: by their count, and by a zero byte before a larger count. */
    Outcome countUnits(std::string const& bytes, size_t shift = AT_END)
    {
        unsigned char* source = place(m_source, bytes.size(), shift);
        memcpy(source, bytes.data(), bytes.size());
        auto const size = static_cast<unsigned int>(bytes.size());
        unsigned int const counted = m_converter.getNumUnits(source, size);
        // Without what would lead over the zero byte.
        std::string const text = std::string(bytes.c_str()) + "abcd";
        source = place(m_source, text.size() + 1, shift);
        memcpy(source, text.c_str(), text.size() + 1);
        unsigned int const terminated = m_converter.getNumUnits(source, 0xFFFFFFFF);
        return {counted, terminated, {}, m_converter.getNumUnits(source, 0x7FFFFFFF), {}};
    }

    /** getNumBytes of units: by their count, and by a 0 unit. */
    Outcome countBytes(std::u16string const& units, size_t shift = AT_END)
    {
        size_t const bytesOfShift = shift == AT_END ? AT_END : shift * 2;
        unsigned char* source = place(m_source, units.size() * 2, bytesOfShift);
        memcpy(source, units.data(), units.size() * 2);
        unsigned int const counted = m_converter.getNumBytes(reinterpret_cast<unsigned short const*>(source),
                                                             static_cast<unsigned int>(units.size()));
        source = place(m_source, units.size() * 2 + 2, bytesOfShift);
        memcpy(source, units.c_str(), units.size() * 2 + 2);
        unsigned int const terminated =
            m_converter.getNumBytes(reinterpret_cast<unsigned short const*>(source), 0xFFFFFFFF);
        return {counted, terminated, {}, 0, {}};
    }

    Outcome encode(std::u16string const& units, size_t capacity, size_t shift)
    {
        unsigned char* const source = place(m_source, units.size() * 2, shift == AT_END ? AT_END : shift * 2);
        memcpy(source, units.data(), units.size() * 2);
        auto const* const begin = reinterpret_cast<unsigned short const*>(source);
        unsigned char* const dest = m_dest.data() + CAPACITY - capacity;
        memset(dest, CANARY, capacity);
        kx7::Progress const p = m_engine.encode(m_converter, begin, begin + units.size(), dest, dest + capacity, false);
        expectUntouched(dest + p.written, dest + capacity);
        return {p.consumed, p.written, p.stop, p.length, {reinterpret_cast<char const*>(dest), p.written}};
    }

    /** getNumUnits of zero-terminated bytes, which may end within a character; `limit` may be more than there are. */
    Outcome countTerminated(std::string const& bytes, unsigned int limit)
    {
        unsigned char* const source = place(m_source, bytes.size() + 1, AT_END);
        memcpy(source, bytes.c_str(), bytes.size() + 1);
        return {0, m_converter.getNumUnits(source, limit), {}, 0, {}};
    }

    /** Zero-terminated text against the page; the terminator is the last thing that can be read. */
    Outcome encodeText(std::u16string const& units, unsigned int capacity, ILLCHAR_OPTYPE op, size_t shift = AT_END)
    {
        size_t const size = units.size() * 2 + 2;
        unsigned char* const source = place(m_source, size, shift == AT_END ? AT_END : shift * 2);
        memcpy(source, units.c_str(), size);
        unsigned char* const dest = m_dest.data() + CAPACITY - capacity - 1 - units.size();
        memset(dest, CANARY, capacity + 1 + units.size());
        bool flag = false;
        unsigned int const n =
            m_converter.fromUTF16(dest, reinterpret_cast<unsigned short const*>(source), capacity, op, &flag);
        return {flag, n, {}, 0, {reinterpret_cast<char const*>(dest), n + 1}};
    }

    Outcome decodeText(std::string const& bytes, unsigned int capacity, ILLCHAR_OPTYPE op, size_t shift = AT_END)
    {
        unsigned char* const source = place(m_source, bytes.size() + 1, shift);
        memcpy(source, bytes.c_str(), bytes.size() + 1);
        auto* const dest = reinterpret_cast<unsigned short*>(m_dest.data() + CAPACITY) - capacity - 1;
        memset(dest, CANARY, (capacity + 1) * 2);
        bool flag = false;
        unsigned int const n = m_converter.toUTF16(dest, source, capacity, op, &flag, -1);
        return {flag, n, {}, 0, {reinterpret_cast<char const*>(dest), (n + 1) * 2}};
    }

    /** Zero-terminated text from UTF-8 to the converter's set, or back, in the two steps or at once. */
    Outcome fromUTF8(std::string const& bytes, unsigned int capacity, size_t shift = AT_END,
                     kx7::Transit transit = {false, ILLCHAR_REPLACE})
    {
        return through(g_oConverterUTF8, m_converter, bytes, capacity, shift, transit);
    }
    Outcome toUTF8(std::string const& bytes, unsigned int capacity, size_t shift = AT_END,
                   kx7::Transit transit = {false, ILLCHAR_REPLACE})
    {
        return through(m_converter, g_oConverterUTF8, bytes, capacity, shift, transit);
    }

    static constexpr size_t AT_END = SIZE_MAX;  ///< a shift: the source ends at the page

private:
    Outcome through(KX7CharSetConverter& from, KX7CharSetConverter& to, std::string const& bytes, unsigned int capacity,
                    size_t shift, kx7::Transit transit)
    {
        unsigned char* const source = place(m_source, bytes.size() + 1, shift);
        memcpy(source, bytes.c_str(), bytes.size() + 1);
        unsigned char* const end = m_dest.data() + CAPACITY;
        unsigned char* const dest = end - capacity - 1;
        memset(dest, CANARY, capacity + size_t{1});
        unsigned int const n =
            kx7::convertThroughUTF16(from, reinterpret_cast<char const*>(source), to, dest, capacity, transit);
        // Nothing at all is written for a text that decodes to nothing.
        expectUntouched(dest + n + (dest[0] == CANARY && n == 0 ? 0 : 1), end);
        return {0, n, {}, 0, {reinterpret_cast<char const*>(dest), n + size_t{1}}};
    }

    /** Kernels write what the text has and nothing after it. */
    static void expectUntouched(unsigned char const* begin, unsigned char const* end)
    {
        EXPECT_EQ(std::find_if(begin, end, [](unsigned char c) { return c != CANARY; }), end);
    }

    static constexpr size_t CAPACITY = 1 << 16;

    static unsigned char* place(Guarded<unsigned char>& memory, size_t size, size_t shift)
    {
        return shift == AT_END ? memory.data() + CAPACITY - size : memory.data() + shift;
    }

    KX7CharSetConverter& m_converter;
    kx7::Engine const& m_engine;
    Guarded<unsigned char> m_source;
    Guarded<unsigned char> m_dest;
};

/** A text between the same characters again and again, that begin anew after it. */
template <class Text>
class Among {
public:
    explicit Among(Text const& filler) : m_size(filler.size())
    {
        while (m_fillers.size() < LONGEST)
            m_fillers += filler;
    }

    /** `pattern` at `position`, and about `after` of the filler after it. */
    Text operator()(size_t position, Text const& pattern, size_t after) const
    {
        Text text(m_fillers, 0, position - position % m_size);
        text.append(position % m_size, 'x');
        text += pattern;
        text.append(m_fillers, 0, after - after % m_size);
        return text;
    }

private:
    static constexpr size_t LONGEST = 400;
    size_t m_size;
    Text m_fillers;
};

/**
 * Runs `call` with every instruction set and compares with the plain code.
 * @param what a text, or a function that makes it where it is needed
 */
template <class What, class Call>
void expectAlike(What const& what, Call call)
{
    Outcome expected;
    {
        Using const plain(InstructionSet::PLAIN);
        expected = call();
    }
    for (InstructionSet const set : sets()) {
        Using const use(set);
        Outcome const got = call();
        if (got == expected)
            continue;
        std::string described;
        if constexpr (std::is_invocable_v<What>)
            described = what();
        else
            described = what;
        FAIL() << nameOf(set) << ", " << described << "\n  plain " << show(expected) << "\n  kernel " << show(got);
    }
}

}  // namespace kx7test

#endif
