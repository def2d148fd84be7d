// kx7text tests - random texts through random operations of all converters, held against the models. Capacities, counts
// and limits are as often at the edges of 32 bits as near the text's own; memory lies at both ends of the address
// space.
#include <gtest/gtest.h>

#include "kx7/converters/Engine.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/AllSets.h"
#include "tests/support/Hex.h"
#include "tests/support/KernelSets.h"
#include "tests/support/Rounds.h"

using namespace kx7test;

namespace {

/** Units of the longest text, and bytes of the longest result: its escapes. */
constexpr size_t MOST_UNITS = 3 * PIECE_UNITS;
constexpr size_t MOST_BYTES = size_t{1} << 17;

/** A capacity without end to a model, which counts in 32 bits as the library does. */
constexpr unsigned int UNBOUNDED = MOST_BYTES;

class Player {
public:
    explicit Player(Rounds& rounds) : m_rounds(rounds) {}

    /** One text through one operation. False: it went wrong. */
    bool play()
    {
        m_what.clear();
        MultibyteSet const& set = allSets()[m_rounds.below(allSets().size())];
        std::vector<kx7::InstructionSet> kernels = sets();
        kernels.push_back(kx7::InstructionSet::PLAIN);
        kx7::InstructionSet const used = kernels[m_rounds.below(kernels.size())];
        Using const use(used);
        ILLCHAR_OPTYPE const op = OPERATIONS[m_rounds.below(4)];
        m_source = &m_memory[m_rounds.below(3)];
        m_dest = &m_others[m_rounds.below(3)];
        switch (m_rounds.below(5)) {
            case 0: decode(set, op); break;
            case 1: encode(set, op); break;
            case 2: count(set); break;
            case 3: decodeCounted(set); break;
            default: convertToUTF8AndBack(set, op); break;
        }
        if (m_what.empty())
            return true;
        ADD_FAILURE() << set.name << ' ' << m_what << " operation " << op << " with " << nameOf(used);
        return false;
    }

private:
    size_t length() { return m_rounds.below(8) == 0 ? m_rounds.below(MOST_UNITS) : m_rounds.below(200); }

    std::string bytesOf(MultibyteSet const& set)
    {
        size_t const width = set.isWide ? set.converter.getMinUnitSize() : 1;
        std::string bytes;
        if (m_rounds.below(4) != 0) {
            std::vector<std::string> fragments = set.byteFragments;
            if (set.isWide)
                fragments.push_back("x" + std::string(width - 1, '\0'));
            bool const isLong = m_rounds.below(8) == 0;
            size_t const wanted = width * length();
            while (bytes.size() < wanted) {
                std::string const& fragment = fragments[m_rounds.below(fragments.size())];
                for (unsigned int times = isLong && m_rounds.below(8) == 0 ? m_rounds.below(200) : 1; times != 0;
                     --times)
                    bytes += fragment;
            }
        }
        else {
            for (size_t left = length(); left != 0; --left)
                bytes += static_cast<char>(m_rounds.below(0x100));
        }
        bytes.resize(bytes.size() / width * width);
        return bytes;
    }

    std::u16string unitsOf(MultibyteSet const& set)
    {
        if (m_rounds.below(4) != 0)
            return randomText(m_rounds.random(), set.unitFragments, length());
        std::u16string units(length(), u'\0');
        for (char16_t& unit : units)
            unit = static_cast<char16_t>(m_rounds.below(m_rounds.below(2) == 0 ? 0x10000 : 0x100));
        return units;
    }

    /** A capacity near `needed`, or an edge; the model's is never more than its result can take. */
    unsigned int capacityNear(size_t needed) { return edgeOr(m_rounds.random(), m_rounds.below(needed + 8)); }

    static unsigned int toModel(unsigned int capacity) { return std::min(capacity, UNBOUNDED); }

    int limitNear(size_t needed) { return m_rounds.below(2) == 0 ? -1 : static_cast<int>(capacityNear(needed)); }

    void decode(MultibyteSet const& set, ILLCHAR_OPTYPE op)
    {
        std::string const bytes = bytesOf(set);
        unsigned int const capacity = capacityNear(bytes.size());
        int const limit = limitNear(bytes.size());
        std::u16string const expected =
            set.model->toUTF16({bytes, toModel(capacity), op, std::min(limit, static_cast<int>(UNBOUNDED))}).units;
        void const* const source = m_source->hold(bytes, set.converter.getNullCharSize());
        auto* const dest = static_cast<unsigned short*>(m_dest->arm(2 * expected.size() + 2));
        unsigned int const n = set.converter.toUTF16(dest, source, capacity, op, nullptr, limit);
        expect(n, dest, expected, "toUTF16 of " + hex(bytes) + " limit " + std::to_string(limit), capacity);
    }

    void encode(MultibyteSet const& set, ILLCHAR_OPTYPE op)
    {
        std::u16string const units = unitsOf(set);
        unsigned int const capacity = capacityNear(3 * units.size());
        std::string const expected = set.model->fromUTF16({units, toModel(capacity), op}).bytes;
        auto const* const source = static_cast<unsigned short const*>(m_source->hold(units, 1));
        auto* const dest = static_cast<char*>(m_dest->arm(expected.size() + set.converter.getNullCharSize()));
        unsigned int const n = set.converter.fromUTF16(dest, source, capacity, op, nullptr);
        expect(n, dest, expected, "fromUTF16 of " + hex(units), capacity);
    }

    void count(MultibyteSet const& set)
    {
        constexpr size_t PADDING = 8;
        std::string const bytes = bytesOf(set);
        unsigned int const most = capacityNear(bytes.size());
        unsigned int const inModel =
            most == UNTIL_TERMINATOR ? most : std::min(most, static_cast<unsigned int>(bytes.size() + PADDING));
        unsigned int const expected = set.model->getNumUnits(bytes + std::string(PADDING, '\0'), inModel);
        unsigned int const n = set.converter.getNumUnits(m_source->hold(bytes, set.converter.getNullCharSize()), most);
        if (n != expected)
            m_what = "getNumUnits of " + hex(bytes) + " count " + std::to_string(most) + " got " + std::to_string(n);

        std::u16string const units = unitsOf(set);
        unsigned int const mostUnits = capacityNear(units.size());
        unsigned int const expectedBytes =
            set.model->getNumBytes(units, mostUnits <= units.size() ? mostUnits : UNTIL_TERMINATOR);
        unsigned int const m = set.converter.getNumBytes(
            static_cast<unsigned short const*>(m_source->hold(units, mostUnits < units.size() ? 0 : 1)), mostUnits);
        if (m != expectedBytes)
            m_what =
                "getNumBytes of " + hex(units) + " count " + std::to_string(mostUnits) + " got " + std::to_string(m);
    }

    void decodeCounted(MultibyteSet const& set)
    {
        std::string const bytes = bytesOf(set);
        size_t const shown = m_rounds.below(bytes.size() + 1);
        bool const isCounted = m_rounds.below(2) == 0;
        std::string const text = isCounted ? bytes.substr(0, shown) : bytes;
        unsigned int const count = isCounted ? static_cast<unsigned int>(text.size()) : capacityNear(0) | 0x40000000;
        unsigned int const capacity = capacityNear(text.size());
        int const limit = limitNear(text.size());
        std::u16string const expected =
            set.model->toUTF16({text, toModel(capacity), ILLCHAR_REPLACE, std::min(limit, static_cast<int>(UNBOUNDED))})
                .units;
        auto const* const source =
            static_cast<char const*>(m_source->hold(text, isCounted ? 0 : set.converter.getNullCharSize()));
        auto* const dest = static_cast<unsigned short*>(m_dest->arm(2 * expected.size() + 2));
        unsigned int const n = kx7::decodeCounted(set.converter, dest, source, count, capacity, limit);
        expect(n, dest, expected, "decodeCounted of " + hex(text) + " limit " + std::to_string(limit), capacity);
    }

    /** The two steps through UTF-16, as one pass of each model. */
    void convertToUTF8AndBack(MultibyteSet const& set, ILLCHAR_OPTYPE op)
    {
        static Utf8Model const utf8(6);
        bool const isBack = m_rounds.below(2) == 0;
        MultibyteSet const& from = isBack ? allSets().front() : set;
        KX7CharSetConverter& to = isBack ? set.converter : allSets().front().converter;
        bool const toUTF8 = &to == &allSets().front().converter;
        std::string bytes = bytesOf(from);
        // Wide text has as many units as it has bytes before its first zero byte.
        size_t const mostUnits = from.converter.getNullCharSize() == 1   ? size_t{UNBOUNDED}
                                 : bytes.find('\0') == std::string::npos ? bytes.size()
                                                                         : bytes.find('\0');
        std::u16string const units =
            from.model->toUTF16({bytes, static_cast<unsigned int>(mostUnits), ILLCHAR_REPLACE, -1}).units;
        unsigned int const capacity = capacityNear(3 * units.size());
        std::string const expected = units.empty() ? std::string()
                                                   : (toUTF8 ? static_cast<Model const&>(utf8) : *set.model)
                                                         .fromUTF16({units, toModel(capacity), op})
                                                         .bytes;
        auto const* const source = static_cast<char const*>(m_source->hold(bytes, from.converter.getNullCharSize()));
        auto* const dest = static_cast<char*>(m_dest->arm(expected.size() + to.getNullCharSize()));
        unsigned int const n = kx7::convertThroughUTF16(from.converter, source, to, dest, capacity, {false, op});
        expect(n, dest, expected, "through UTF-16 " + std::string(isBack ? "from" : "to") + " UTF-8 of " + hex(bytes),
               capacity);
    }

    template <class Value, class Text>
    void expect(unsigned int n, Value const* dest, Text const& expected, std::string const& what, unsigned int capacity)
    {
        if (n != expected.size() || memcmp(dest, expected.data(), expected.size() * sizeof(Value)) != 0)
            m_what = what + " capacity " + std::to_string(capacity) + " got " + std::to_string(n) + ", expected " +
                     hex(expected);
    }

    Rounds& m_rounds;
    PlacedMemory m_memory[3] = {{Place::ANYWHERE, MOST_BYTES}, {Place::LOW, MOST_BYTES}, {Place::HIGH, MOST_BYTES}};
    PlacedMemory m_others[3] = {{Place::ANYWHERE, MOST_BYTES}, {Place::LOW, MOST_BYTES}, {Place::HIGH, MOST_BYTES}};
    PlacedMemory* m_source = nullptr;
    PlacedMemory* m_dest = nullptr;
    std::string m_what;
};

}  // namespace

TEST(RandomModels, AgreeWithEveryOperationOfEverySet)
{
    Rounds rounds(100000, 41);
    Player player(rounds);
    int failures = 0;
    while (rounds.next() && failures < 5)
        failures += player.play() ? 0 : 1;
}
