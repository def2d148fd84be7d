// kx7text tests - runs an engine's operations on ranges in watched memory.
#ifndef KX7_TESTS_CONVERTERS_RANGEPROBE_H
#define KX7_TESTS_CONVERTERS_RANGEPROBE_H

#include <gtest/gtest.h>

#include "kx7/converters/Engine.h"
#include "tests/support/Hex.h"
#include "tests/support/Memory.h"

namespace kx7test {

inline char const* nameOf(kx7::Stop stop)
{
    char const* const names[] = {"SOURCE_USED", "SOURCE_TRUNCATED", "DESTINATION_FULL", "ILLEGAL", "UNMAPPABLE"};
    return names[static_cast<unsigned int>(stop)];
}

/** What a conversion of a range gave. */
template <class Text>
struct Ranged {
    Text text;
    size_t consumed;
    kx7::Stop stop;
    unsigned int length;

    bool operator==(Ranged const& other) const
    {
        return text == other.text && consumed == other.consumed && stop == other.stop && length == other.length;
    }
    friend std::ostream& operator<<(std::ostream& out, Ranged const& result)
    {
        return out << hex(result.text) << " consumed " << result.consumed << " " << nameOf(result.stop) << " length "
                   << result.length;
    }
};
using DecodedRange = Ranged<std::u16string>;
using EncodedRange = Ranged<std::string>;

/** An engine whose ranges end at unreadable pages and whose destinations lie between canaries. */
class RangeProbe {
public:
    RangeProbe(KX7CharSetConverter& converter, bool strict = false)
        : m_converter(converter), m_engine(*kx7::engineOf(converter)), m_strict(strict)
    {
    }

    DecodedRange decode(std::string const& bytes, size_t capacity, bool last = false)
    {
        unsigned char const* const source = m_bytes.hold(bytes, 0);
        unsigned short* const dest = m_unitsOut.arm(capacity);
        auto* const decodeRange = m_strict ? m_engine.decodeStrict : m_engine.decode;
        kx7::Progress const progress =
            decodeRange(m_converter, source, source + bytes.size(), dest, dest + capacity, last);
        EXPECT_TRUE(m_unitsOut.intact()) << hex(bytes) << " capacity " << capacity;
        EXPECT_LE(progress.written, capacity);
        return {std::u16string(dest, dest + progress.written), progress.consumed, progress.stop, progress.length};
    }

    EncodedRange encode(std::u16string const& units, size_t capacity, bool last = false)
    {
        unsigned short const* const source = m_units.hold(units, 0);
        unsigned char* const dest = m_bytesOut.arm(capacity);
        kx7::Progress const progress =
            m_engine.encode(m_converter, source, source + units.size(), dest, dest + capacity, last);
        EXPECT_TRUE(m_bytesOut.intact()) << hex(units) << " capacity " << capacity;
        EXPECT_LE(progress.written, capacity);
        return {std::string(dest, dest + progress.written), progress.consumed, progress.stop, progress.length};
    }

private:
    KX7CharSetConverter& m_converter;
    kx7::Engine const& m_engine;
    bool m_strict;
    PageEnd<unsigned char> m_bytes;
    PageEnd<unsigned short> m_units;
    Fenced<unsigned short> m_unitsOut;
    Fenced<unsigned char> m_bytesOut;
};

/** Two ranges, one after the other, as one: the second begins where the first one came to. */
template <class Text, class Convert>
auto inTwoRanges(Text const& text, size_t split, Convert convert)
{
    auto first = convert(text.substr(0, split), false);
    if (first.stop != kx7::Stop::SOURCE_USED && first.stop != kx7::Stop::SOURCE_TRUNCATED)
        return first;
    EXPECT_EQ(first.stop == kx7::Stop::SOURCE_USED, first.consumed == split);
    auto second = convert(text.substr(first.consumed), true);
    second.text = first.text + second.text;
    second.consumed += first.consumed;
    return second;
}

}  // namespace kx7test

#endif
