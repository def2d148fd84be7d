// kx7text tests - every converter with source and destination between unreadable pages: every capacity, every
// alignment, every set of kernels.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/converters/Engine.h"
#include "tests/support/AllSets.h"
#include "tests/support/Calls.h"
#include "tests/support/Hex.h"
#include "tests/support/KernelSets.h"
#include "tests/support/Memory.h"
#include "tests/support/OneIn.h"

using namespace kx7test;

namespace {

constexpr ILLCHAR_OPTYPE MODES[] = {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE};

/** The plain steps too. */
std::vector<kx7::InstructionSet> allKernels()
{
    std::vector<kx7::InstructionSet> found = sets();
    found.insert(found.begin(), kx7::InstructionSet::PLAIN);
    return found;
}

/** A text before `letters` ASCII letters: lengths, and so alignments, of every kind. */
struct Subject {
    std::string bytes;
    std::u16string units;
};

Subject subjectOf(MultibyteSet const& set, unsigned int letters)
{
    Subject subject;
    for (std::string const& fragment : set.byteFragments)
        subject.bytes += fragment;
    for (std::u16string const& fragment : set.unitFragments)
        subject.units += fragment;
    std::u16string const front(letters, u'x');
    subject.bytes =
        (set.isWide ? bytesOfValues(front) + std::string(letters % 2 * 2, 'x') : std::string(letters, 'x')) +
        subject.bytes;
    if (set.isWide)
        subject.bytes.resize(subject.bytes.size() / set.converter.getMinUnitSize() * set.converter.getMinUnitSize());
    subject.units = front + subject.units;
    return subject;
}

/** Where the source lies; the destination ends at its page and so begins at every alignment as capacities go by. */
class Guards {
public:
    explicit Guards(MultibyteSet const& set) : m_set(set), m_kernels(allKernels()) {}

    bool failed() const { return m_failures > 5; }

    void decode(DecodeCall const& call)
    {
        Decoded const expected = m_set.model->toUTF16(call);
        for (kx7::InstructionSet const kernels : m_kernels) {
            Using const use(kernels);
            unsigned char const* const source = m_bytes.hold(call.bytes, m_set.converter.getNullCharSize());
            size_t const extent = std::min<size_t>(call.capacity, expected.units.size()) + 1;
            // The destination is as large as the text that has to be there, whatever larger capacity the call is told
            // of.
            unsigned short* const dest = m_unitsOut.arm(extent);
            unsigned int const n = m_set.converter.toUTF16(dest, source, call.capacity, call.op, nullptr, call.limit);
            check(n == expected.units.size() && memcmp(dest, expected.units.data(), 2 * n) == 0 && dest[n] == 0,
                  "toUTF16 of " + hex(call.bytes), call.capacity, call.op, kernels);
        }
    }

    void encode(EncodeCall const& call)
    {
        Encoded const expected = m_set.model->fromUTF16(call);
        for (kx7::InstructionSet const kernels : m_kernels) {
            Using const use(kernels);
            unsigned short const* const source = m_units.hold(call.units, 1);
            size_t const zeros = m_set.converter.getNullCharSize();
            unsigned char* const dest = m_bytesOut.arm(expected.bytes.size() + zeros);
            unsigned int const n = m_set.converter.fromUTF16(dest, source, call.capacity, call.op, nullptr);
            check(n == expected.bytes.size() && memcmp(dest, expected.bytes.data(), n) == 0 && dest[n] == 0,
                  "fromUTF16 of " + hex(call.units), call.capacity, call.op, kernels);
        }
    }

private:
    void check(bool right, std::string const& what, unsigned int capacity, ILLCHAR_OPTYPE op,
               kx7::InstructionSet kernels)
    {
        if (!right && ++m_failures <= 5)
            ADD_FAILURE() << what << " capacity " << capacity << " operation " << op << " with "
                          << kx7test::nameOf(kernels);
    }

    MultibyteSet const& m_set;
    std::vector<kx7::InstructionSet> m_kernels;
    PageEnd<unsigned char> m_bytes;
    PageEnd<unsigned short> m_units;
    PageEnd<unsigned short> m_unitsOut;
    PageEnd<unsigned char> m_bytesOut;
    int m_failures = 0;
};

void everyCapacity(MultibyteSet const& set, unsigned int firstLetters, unsigned int lastLetters, OneIn& isTaken)
{
    SCOPED_TRACE(set.name);
    Guards guards(set);
    for (unsigned int letters = firstLetters; letters <= lastLetters && !guards.failed(); ++letters) {
        if (!isTaken())
            continue;
        Subject const subject = subjectOf(set, letters);
        auto const units = static_cast<unsigned int>(
            set.model->toUTF16({subject.bytes, INT_MAX, ILLCHAR_REPLACE, INT_MAX}).units.size());
        for (ILLCHAR_OPTYPE const mode : MODES) {
            auto const bytes =
                static_cast<unsigned int>(set.model->fromUTF16({subject.units, INT_MAX, mode}).bytes.size());
            for (unsigned int capacity = 0; capacity <= units + 2; ++capacity)
                guards.decode({subject.bytes, capacity, mode, INT_MAX});
            for (unsigned int capacity = 0; capacity <= bytes + 2; ++capacity)
                guards.encode({subject.units, capacity, mode});
        }
    }
}

}  // namespace

TEST(GuardPages, EveryCapacityOfEverySetAtAlignmentsZeroToThree)
{
    EXPECT_EQ(allSets().size(), 41u);
    OneIn all(1);
    for (MultibyteSet const& set : allSets())
        everyCapacity(set, 0, 3, all);
}

TEST(GuardPages, EveryCapacityAtEveryOtherAlignment)
{
    OneIn isTaken(7);
    for (MultibyteSet const& set : allSets())
        everyCapacity(set, 4, 63, isTaken);
}

TEST(GuardPages, CountsAndCountedTextReadNothingAfterTheTerminator)
{
    // Every beginning of a character of each set right before the terminator, and counts that reach beyond that.
    PageEnd<unsigned char> memory;
    for (MultibyteSet const& set : allSets()) {
        SCOPED_TRACE(set.name);
        size_t const zeros = set.converter.getNullCharSize();
        std::vector<std::string> texts{""};
        for (std::string const& fragment : set.byteFragments)
            for (size_t length = zeros; length <= fragment.size(); length += zeros)
                texts.push_back(fragment.substr(0, length));
        for (unsigned int byte = 0x80; byte <= 0xFF && !set.isWide; ++byte)
            texts.push_back(std::string(1, static_cast<char>(byte)));
        for (kx7::InstructionSet const kernels : allKernels()) {
            Using const use(kernels);
            for (std::string const& text : texts)
                for (unsigned int more = 1; more <= 70; more += more < 8 ? 1 : 31) {
                    auto const count = static_cast<unsigned int>(text.size()) + more;
                    std::string const padded = text + std::string(more, '\0');
                    unsigned int const expected = set.model->getNumUnits(padded + std::string(8, '\0'), count);
                    EXPECT_EQ(set.converter.getNumUnits(memory.hold(text, zeros), count), expected)
                        << hex(text) << " count " << count;

                    std::u16string const units = set.model->toUTF16({text, 100, ILLCHAR_REPLACE, -1}).units;
                    unsigned short dest[101];
                    auto const* const source = reinterpret_cast<char const*>(memory.hold(text, zeros));
                    unsigned int const n = kx7::decodeCounted(set.converter, dest, source, count, 100, -1);
                    EXPECT_TRUE(sameText(std::u16string(dest, dest + n), units)) << hex(text) << " count " << count;
                }
        }
    }
}
