// kx7text tests - capacities, counts and source limits from 2^31 - 1 on, with source and destination at both ends of
// the address space: where a pointer and a size are added, the sum must not wrap. The result is that of a capacity that
// fits.
#include <gtest/gtest.h>

#include <climits>
#include <iostream>

#include "kx7/charset/KX7CharSet.h"
#include "kx7/converters/Engine.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/AllSets.h"
#include "tests/support/CharSets.h"
#include "tests/support/Hex.h"
#include "tests/support/KernelSets.h"

using namespace kx7test;

namespace {

constexpr ILLCHAR_OPTYPE MODES[] = {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE};

/** Letters before the texts: none, fewer and more than a block, more than a piece. */
constexpr size_t LETTERS[] = {0, 5, 70, PIECE_UNITS + 30};

/** Memory for the longest of these texts as escapes. */
constexpr size_t MOST_BYTES = size_t{1} << 15;

std::vector<kx7::InstructionSet> allKernels()
{
    std::vector<kx7::InstructionSet> found = sets();
    found.insert(found.begin(), kx7::InstructionSet::PLAIN);
    return found;
}

std::string bytesOf(MultibyteSet const& set, size_t letters)
{
    std::string bytes;
    std::string const letter(set.isWide ? "x" + std::string(set.converter.getMinUnitSize() - 1, '\0') : "x");
    for (size_t i = 0; i != letters; ++i)
        bytes += letter;
    for (std::string const& fragment : set.byteFragments)
        bytes += fragment;
    return bytes;
}

std::u16string unitsOf(MultibyteSet const& set, size_t letters)
{
    std::u16string units(letters, u'x');
    for (std::u16string const& fragment : set.unitFragments)
        units += fragment;
    // What the audit's text had: escapes, each of which drops a unit, and more text after them.
    return units + u"W\u0050\xDB3F\xDAA9\xDE41G\x001C";
}

/** The operations on texts at two places, each result held against what a small capacity gives. */
class EdgeSweep {
public:
    EdgeSweep(Place source, Place dest) : m_source(source, MOST_BYTES), m_dest(dest, MOST_BYTES)
    {
        m_places = std::string(nameOf(source)) + " to " + nameOf(dest);
    }

    static size_t calls() { return s_calls; }
    bool failed() const { return m_failures > 5; }

    void decode(MultibyteSet const& set, std::string const& bytes, ILLCHAR_OPTYPE op, unsigned int capacity, int limit)
    {
        // Every limit here is after the end of the text or none.
        int const plainLimit = limit > 0 ? 1 << 20 : limit;
        std::u16string const expected = set.model->toUTF16({bytes, MOST_BYTES / 2 - 1, op, plainLimit}).units;
        void const* const source = m_source.hold(bytes, set.converter.getNullCharSize());
        auto* const dest = static_cast<unsigned short*>(m_dest.arm(2 * expected.size() + 2));
        unsigned int const n = set.converter.toUTF16(dest, source, capacity, op, nullptr, limit);
        check(n == expected.size() && memcmp(dest, expected.data(), 2 * expected.size()) == 0 &&
                  dest[expected.size()] == 0,
              set, "toUTF16", capacity, limit, op, n, expected.size());
    }

    void encode(MultibyteSet const& set, std::u16string const& units, ILLCHAR_OPTYPE op, unsigned int capacity)
    {
        std::string const expected = set.model->fromUTF16({units, MOST_BYTES - 8, op}).bytes;
        size_t const zeros = set.converter.getNullCharSize();
        auto const* const source = static_cast<unsigned short const*>(m_source.hold(units, 1));
        auto* const dest = static_cast<char*>(m_dest.arm(expected.size() + zeros));
        unsigned int const n = set.converter.fromUTF16(dest, source, capacity, op, nullptr);
        check(n == expected.size() && memcmp(dest, expected.data(), expected.size()) == 0 && dest[expected.size()] == 0,
              set, "fromUTF16", capacity, 0, op, n, expected.size());
    }

    void count(MultibyteSet const& set, std::string const& bytes, std::u16string const& units, unsigned int most)
    {
        // Zeros up to the count, as many as a character could still take.
        constexpr size_t PADDING = 8;
        auto const terminated = static_cast<unsigned int>(bytes.size() + PADDING);
        unsigned int const counted = most == UNTIL_TERMINATOR ? most : terminated;
        unsigned int const expectedUnits = set.model->getNumUnits(bytes + std::string(PADDING, '\0'), counted);
        void const* const source = m_source.hold(bytes, set.converter.getNullCharSize());
        unsigned int const n = set.converter.getNumUnits(source, most);
        check(n == expectedUnits, set, "getNumUnits", most, 0, ILLCHAR_REPLACE, n, expectedUnits);

        unsigned int const expectedBytes = set.model->getNumBytes(units, UNTIL_TERMINATOR);
        unsigned int const m =
            set.converter.getNumBytes(static_cast<unsigned short const*>(m_source.hold(units, 1)), most);
        check(m == expectedBytes, set, "getNumBytes", most, 0, ILLCHAR_REPLACE, m, expectedBytes);
    }

    void decodeCounted(MultibyteSet const& set, std::string const& bytes, unsigned int count)
    {
        std::u16string const expected = set.model->toUTF16({bytes, MOST_BYTES / 2 - 1, ILLCHAR_REPLACE, -1}).units;
        auto const* const source = static_cast<char const*>(m_source.hold(bytes, set.converter.getNullCharSize()));
        auto* const dest = static_cast<unsigned short*>(m_dest.arm(2 * expected.size() + 2));
        unsigned int const n = kx7::decodeCounted(set.converter, dest, source, count, MOST_BYTES / 2 - 1, -1);
        check(n == expected.size() && memcmp(dest, expected.data(), 2 * expected.size()) == 0, set, "decodeCounted",
              count, -1, ILLCHAR_REPLACE, n, expected.size());
    }

    /** `convert` (dest, source, capacity) in units or bytes of `Char`, terminators included. */
    template <class Char, class Text, class Convert>
    void enter(char const* what, char const* charSet, Text const& text, size_t zeros, unsigned int capacity,
               Convert convert)
    {
        void const* const source = m_source.hold(text, zeros);
        std::basic_string<Char> expected(MOST_BYTES / sizeof(Char), Char{});
        auto const small = static_cast<unsigned int>(expected.size());
        expected.resize(convert(reinterpret_cast<void*>(&expected[0]), source, small));
        size_t const bytes = expected.size() * sizeof(Char);
        void* const dest = m_dest.arm(bytes + 4);
        unsigned int const n = convert(dest, source, capacity);
        ++s_calls;
        if ((n != expected.size() || memcmp(dest, expected.data(), bytes) != 0) && ++m_failures <= 5)
            ADD_FAILURE() << what << ' ' << charSet << ' ' << m_places << " capacity " << capacity << " got " << n
                          << ", expected " << expected.size();
    }

    PlacedMemory& source() { return m_source; }
    PlacedMemory& dest() { return m_dest; }

    void check(bool right, MultibyteSet const& set, char const* what, unsigned int capacity, int limit,
               ILLCHAR_OPTYPE op, size_t got, size_t expected)
    {
        ++s_calls;
        if (!right && ++m_failures <= 5)
            ADD_FAILURE() << set.name << ' ' << what << ' ' << m_places << " capacity " << capacity << " limit "
                          << limit << " operation " << op << ": got " << got << ", expected " << expected;
    }

private:
    PlacedMemory m_source;
    PlacedMemory m_dest;
    std::string m_places;
    int m_failures = 0;
    static size_t s_calls;
};
size_t EdgeSweep::s_calls = 0;

/** `run` (sweep) at all pairs of places, with each set of kernels. */
template <class Run>
void everywhere(Run run)
{
    size_t const before = EdgeSweep::calls();
    for (Place const source : PLACES)
        for (Place const dest : PLACES) {
            EdgeSweep sweep(source, dest);
            for (kx7::InstructionSet const kernels : allKernels()) {
                SCOPED_TRACE(nameOf(kernels));
                Using const use(kernels);
                run(sweep);
            }
        }
    std::cout << EdgeSweep::calls() - before << " calls" << std::endl;
}

}  // namespace

TEST(AddressEdges, DecodingIsAsWithASmallCapacity)
{
    everywhere([](EdgeSweep& sweep) {
        for (MultibyteSet const& set : allSets())
            for (size_t const letters : LETTERS) {
                std::string const bytes = bytesOf(set, letters);
                for (ILLCHAR_OPTYPE const mode : MODES)
                    for (unsigned int const capacity : EDGES) {
                        sweep.decode(set, bytes, mode, capacity, -1);
                        sweep.decode(set, bytes, mode, capacity, static_cast<int>(capacity));
                    }
                for (unsigned int const limit : EDGES)
                    sweep.decode(set, bytes, ILLCHAR_REPLACE, 10000, static_cast<int>(limit));
                if (sweep.failed())
                    return;
            }
    });
}

TEST(AddressEdges, EncodingIsAsWithASmallCapacity)
{
    everywhere([](EdgeSweep& sweep) {
        for (MultibyteSet const& set : allSets())
            for (size_t const letters : LETTERS) {
                std::u16string const units = unitsOf(set, letters);
                for (ILLCHAR_OPTYPE const mode : MODES)
                    for (unsigned int const capacity : EDGES)
                        sweep.encode(set, units, mode, capacity);
                if (sweep.failed())
                    return;
            }
    });
}

TEST(AddressEdges, CountingIsAsWithASmallCount)
{
    everywhere([](EdgeSweep& sweep) {
        for (MultibyteSet const& set : allSets())
            for (size_t const letters : LETTERS)
                for (unsigned int const count : EDGES) {
                    sweep.count(set, bytesOf(set, letters), unitsOf(set, letters), count);
                    if (sweep.failed())
                        return;
                }
    });
}

TEST(AddressEdges, CountedTextIsDecodedAsWithASmallCount)
{
    everywhere([](EdgeSweep& sweep) {
        for (MultibyteSet const& set : allSets())
            for (size_t const letters : LETTERS)
                for (unsigned int const count : EDGES) {
                    if (count != UNTIL_TERMINATOR)
                        sweep.decodeCounted(set, bytesOf(set, letters), count);
                    if (sweep.failed())
                        return;
                }
    });
}

TEST(AddressEdges, DirectConversionsOfUTF32AreAsWithASmallCapacity)
{
    everywhere([](EdgeSweep& sweep) {
        for (size_t const letters : LETTERS) {
            std::string const utf8 = std::string(letters, 'x') + "\xE2\x82\xAC\xF0\x9F\x98\x80\xC3!\xFF\x80z";
            std::u32string const utf32 =
                std::u32string(letters, U'x') + U"\u20AC\U0001F600\x7FFFFFFF" + char32_t{0xD800};
            for (unsigned int const capacity : EDGES) {
                sweep.enter<char32_t>(
                    "fromUTF8", "UTF-32", utf8, 1, capacity, [](void* dest, void const* source, unsigned int most) {
                        return g_oConverterUTF32.fromUTF8(dest, static_cast<unsigned char const*>(source), most - 1,
                                                          ILLCHAR_REPLACE, nullptr);
                    });
                sweep.enter<char>("toUTF8", "UTF-32", utf32, 1, capacity,
                                  [](void* dest, void const* source, unsigned int most) {
                                      return g_oConverterUTF32.toUTF8(static_cast<unsigned char*>(dest), source,
                                                                      most - 1, ILLCHAR_REPLACE, nullptr);
                                  });
            }
        }
    });
}

TEST(AddressEdges, EntryPointsAreAsWithASmallCapacity)
{
    everywhere([](EdgeSweep& sweep) {
        for (CharSetRow const& row : charSetRows()) {
            auto const& set = *std::find_if(allSets().begin(), allSets().end(), [&row](MultibyteSet const& each) {
                return &each.converter == row.converter;
            });
            KX7CharSet const cs = row.charSet;
            for (size_t const letters : LETTERS) {
                std::string const local = bytesOf(set, letters);
                std::u16string const units = unitsOf(set, letters);
                std::string const utf8 = Utf8Model().fromUTF16({units, MOST_BYTES, ILLCHAR_REPLACE}).bytes;
                for (unsigned int const capacity : EDGES) {
                    sweep.enter<char>("LocalToUTF8", row.name, local, 4, capacity,
                                      [cs](void* dest, void const* source, unsigned int most) {
                                          return LocalToUTF8(static_cast<unsigned char*>(dest),
                                                             static_cast<char const*>(source), static_cast<int>(most),
                                                             cs);
                                      });
                    sweep.enter<char>("UTF8ToLocal", row.name, utf8, 1, capacity,
                                      [cs](void* dest, void const* source, unsigned int most) {
                                          return UTF8ToLocal(static_cast<char*>(dest),
                                                             static_cast<unsigned char const*>(source),
                                                             static_cast<int>(most), cs);
                                      });
                    sweep.enter<char>("UTF16ToLocal", row.name, units, 1, capacity,
                                      [cs](void* dest, void const* source, unsigned int most) {
                                          return UTF16ToLocal(static_cast<char*>(dest),
                                                              static_cast<unsigned short const*>(source),
                                                              static_cast<int>(most), cs);
                                      });
                    if (static_cast<int>(capacity) > 0)  // a negative capacity of units is none
                        sweep.enter<char16_t>("LocalToUTF16", row.name, local, 4, capacity,
                                              [cs](void* dest, void const* source, unsigned int most) {
                                                  return LocalToUTF16(static_cast<unsigned short*>(dest),
                                                                      static_cast<char const*>(source),
                                                                      static_cast<int>(most), cs);
                                              });
                }
                if (sweep.failed())
                    return;
            }
        }
    });
}

TEST(AddressEdges, EscapesDoNotEndTextWhereTheCapacityReachesBeyondTheAddresses)
{
    // What follows an escape was dropped where the end of the capacity wrapped, here with the destination on the stack.
    unsigned short const units[] = {0x57, 0x50, 0xDB3F, 0xDAA9, 0xDE41, 0x47, 0x1C, 0};
    for (unsigned int const capacity : EDGES) {
        char dest[32];
        EXPECT_EQ(g_oConverterUTF8.fromUTF16(dest, units, capacity, ILLCHAR_ESCAPE, nullptr), 13u) << capacity;
        EXPECT_STREQ(dest, "WPU+DB3F\xED\xB9\x81G\x1C") << capacity;
    }
}
