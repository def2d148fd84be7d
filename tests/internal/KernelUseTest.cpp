// kx7text tests - plain text goes through the kernels: results would be the same without them, and only slower.
#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <vector>

#include "kx7/kernels/ShortText.h"
#include "tests/internal/AllSets.h"
#include "tests/internal/KernelSets.h"

using namespace kx7test;

namespace {

class KernelUse : public kx7test::KernelTest {};

kx7::Kernels const* recorded;  ///< the kernels that those of a Recording call
size_t passed;                 ///< bytes of source that kernels have moved over

template <class T>
struct IsSource : std::false_type {
};
template <class T>
struct IsSource<T const*&> : std::true_type {
};

/** Where a source is that a kernel moves over: an argument by reference that it does not write through; else 0. */
template <class Declared, class Value>
uintptr_t placeOf([[maybe_unused]] Value const& argument)
{
    if constexpr (IsSource<Declared>::value)
        return reinterpret_cast<uintptr_t>(argument);
    return 0;
}

/** A kernel that writes down how far the one recorded gets. */
template <auto KERNEL, class Function = std::remove_cv_t<std::remove_reference_t<decltype(recorded->*KERNEL)>>>
struct Recording;
template <auto KERNEL, class Result, class... Arguments>
struct Recording<KERNEL, Result (*)(Arguments...)> {
    static Result call(Arguments... arguments)
    {
        uintptr_t const begin = (placeOf<Arguments>(arguments) + ...);
        if constexpr (std::is_void_v<Result>) {
            (recorded->*KERNEL)(arguments...);
            passed += (placeOf<Arguments>(arguments) + ...) - begin;
        }
        else {
            Result const result = (recorded->*KERNEL)(arguments...);
            passed += (placeOf<Arguments>(arguments) + ...) - begin;
            return result;
        }
    }
};

/** All conversions use the kernels of a set, and `passed` counts, while it lives. */
class Recorder {
public:
    explicit Recorder(kx7::InstructionSet set) : m_kernels(kx7::kernelsOf(set))
    {
        using kx7::Kernels;
        recorded = &kx7::kernelsOf(set);
        m_kernels.decodeUTF8 = Recording<&Kernels::decodeUTF8>::call;
        m_kernels.encodeUTF8 = Recording<&Kernels::encodeUTF8>::call;
        m_kernels.countUTF8 = Recording<&Kernels::countUTF8>::call;
        m_kernels.countAsUTF8 = Recording<&Kernels::countAsUTF8>::call;
        m_kernels.decodeSingleByte = Recording<&Kernels::decodeSingleByte>::call;
        m_kernels.encodeSingleByte = Recording<&Kernels::encodeSingleByte>::call;
        m_kernels.decodePairs = Recording<&Kernels::decodePairs>::call;
        m_kernels.decodeFourBytes = Recording<&Kernels::decodeFourBytes>::call;
        m_kernels.countPairs = Recording<&Kernels::countPairs>::call;
        m_kernels.countMappedPairs = Recording<&Kernels::countMappedPairs>::call;
        m_kernels.countUnitsOfGB18030 = Recording<&Kernels::countUnitsOfGB18030>::call;
        m_kernels.encodeDoubleByte = Recording<&Kernels::encodeDoubleByte>::call;
        m_kernels.countDoubleByte = Recording<&Kernels::countDoubleByte>::call;
        m_kernels.encodeGB18030 = Recording<&Kernels::encodeGB18030>::call;
        m_kernels.countGB18030 = Recording<&Kernels::countGB18030>::call;
        kx7::kernelsInUse = &m_kernels;
    }
    ~Recorder() { kx7::useInstructionSet(kx7::detectInstructionSet()); }

private:
    kx7::Kernels m_kernels;
};

/** All characters of one unit that a set has and gives back, from U+0020 on, and their bytes. */
struct Characters {
    std::u16string units;
    std::string bytes;
};

Characters charactersOf(KX7CharSetConverter& converter)
{
    Characters found;
    for (unsigned int unit = 0x20; unit < 0x10000; ++unit) {
        unsigned short const text[] = {static_cast<unsigned short>(unit), 0};
        unsigned short back[4] = {};
        char bytes[8] = {};
        bool illegal = false;
        unsigned int const count = converter.fromUTF16(bytes, text, 4, ILLCHAR_STOP, &illegal);
        if (illegal || count == 0 || converter.toUTF16(back, bytes, 3, ILLCHAR_STOP, &illegal, -1) != 1 || illegal ||
            back[0] != unit)
            continue;
        found.units.push_back(static_cast<char16_t>(unit));
        found.bytes.append(bytes, count);
    }
    return found;
}

/** Of what `convert` reads, `size` bytes, the part that kernels pass over. */
template <class Convert>
double partOf(size_t size, Convert const& convert)
{
    passed = 0;
    convert();
    return static_cast<double>(passed) / static_cast<double>(size);
}

}  // namespace

TEST_F(KernelUse, TheCharactersOfEverySetPassThroughKernels)
{
    constexpr double NEARLY_ALL = 0.95;
    // The baseline converts one by one what it has no vectors for, and leaves the most to the steps.
    std::vector<kx7::InstructionSet> checkedKernels = sets();
    checkedKernels.erase(std::remove(checkedKernels.begin(), checkedKernels.end(), kx7::InstructionSet::BASELINE),
                         checkedKernels.end());
    RecordProperty("checkedKernels", namesOf(checkedKernels));
    if (checkedKernels.empty())
        GTEST_SKIP() << "this machine has neither AVX2 nor AVX-512";
    size_t checked = 0;
    for (MultibyteSet const& set : allSets()) {
        KX7CharSetConverter& converter = set.converter;
        Characters const text = charactersOf(converter);
        // UTF-16 and UTF-32 are copied; with escapes UTF-16 has ASCII as it is, and nothing else.
        if (set.isWide || text.units.size() < 100)
            continue;
        ++checked;
        auto const* const source = reinterpret_cast<unsigned short const*>(text.units.c_str());
        auto const unitCount = static_cast<unsigned int>(text.units.size());
        auto const byteCount = static_cast<unsigned int>(text.bytes.size());
        std::vector<unsigned short> units(text.units.size() + 1);
        std::string bytes(text.bytes.size() + 1, 'x');
        // Single bytes have no need to be looked at one by one, and a pair of bytes can be two units in Shift_JIS-2004.
        bool const countsBytes = converter.getMaxUnitSize() != 1;
        bool const countsUnits = countsBytes && &converter != &g_oConverterSJIS2004;
        for (kx7::InstructionSet const kernels : checkedKernels) {
            Recorder const recorder(kernels);
            auto const what = std::string(set.name) + " with " + nameOf(kernels);
            EXPECT_GT(partOf(byteCount,
                             [&] {
                                 converter.toUTF16(units.data(), text.bytes.c_str(), unitCount, ILLCHAR_REPLACE,
                                                   nullptr, -1);
                             }),
                      NEARLY_ALL)
                << "decoding " << what;
            EXPECT_GT(partOf(2 * size_t{unitCount},
                             [&] { converter.fromUTF16(bytes.data(), source, byteCount, ILLCHAR_REPLACE, nullptr); }),
                      NEARLY_ALL)
                << "encoding " << what;
            if (countsUnits) {
                EXPECT_GT(partOf(byteCount, [&] { converter.getNumUnits(text.bytes.c_str(), byteCount); }), NEARLY_ALL)
                    << "counting the units of " << what;
            }
            if (countsBytes) {
                EXPECT_GT(partOf(2 * size_t{unitCount}, [&] { converter.getNumBytes(source, unitCount); }), NEARLY_ALL)
                    << "counting the bytes of " << what;
            }
        }
    }
    EXPECT_EQ(checked, 38u);
}

#ifdef KX7_SSE2_THROUGHOUT
TEST_F(KernelUse, ShortTextOfLettersIsCopiedWithoutThem)
{
    for (MultibyteSet const& set : allSets()) {
        KX7CharSetConverter& converter = set.converter;
        if (set.isWide)
            continue;
        Recorder const recorder(kx7::detectInstructionSet());
        for (unsigned int length = 4; length <= kx7::SHORT_TEXT; ++length) {
            std::string const bytes(length, 'k');
            std::u16string const units(length, u'k');
            std::string encoded(length + 1, 'x');
            std::u16string decoded(length + 1, u'x');
            passed = 0;
            converter.toUTF16(reinterpret_cast<unsigned short*>(decoded.data()), bytes.c_str(), length, ILLCHAR_REPLACE,
                              nullptr, -1);
            EXPECT_EQ(decoded.compare(0, length, units), 0);
            EXPECT_EQ(passed, 0u) << "decoding " << length << " letters of " << set.name;
            converter.fromUTF16(encoded.data(), reinterpret_cast<unsigned short const*>(units.c_str()), length,
                                ILLCHAR_REPLACE, nullptr);
            EXPECT_EQ(encoded.compare(0, length, bytes), 0);
            EXPECT_EQ(passed, 0u) << "encoding " << length << " letters of " << set.name;
        }
    }
}
#endif
