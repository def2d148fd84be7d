// kx7text tests - plain text goes through the kernels: results would be the same without them, and only slower.
#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <vector>

#include "kx7/convert.h"
#include "kx7/converters/Engine.h"
#include "kx7/kernels/ShortText.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/AllSets.h"
#include "tests/support/KernelSets.h"

using namespace kx7test;

namespace {

class KernelUse : public kx7test::KernelTest {};

// Every kernel of the table, by the name of its member.
#define KX7_EVERY_KERNEL(X)                                                                                            \
    X(unitLength)                                                                                                      \
    X(unitFind)                                                                                                        \
    X(unitMatch)                                                                                                       \
    X(decodeUTF8)                                                                                                      \
    X(encodeUTF8)                                                                                                      \
    X(wellFormedUTF8)                                                                                                  \
    X(countUTF8)                                                                                                       \
    X(countAsUTF8)                                                                                                     \
    X(decodeSingleByte)                                                                                                \
    X(encodeSingleByte)                                                                                                \
    X(singleByteFromUTF8)                                                                                              \
    X(decodePairs)                                                                                                     \
    X(decodeFourBytes)                                                                                                 \
    X(countPairs)                                                                                                      \
    X(countMappedPairs)                                                                                                \
    X(countUnitsOfGB18030)                                                                                             \
    X(encodeDoubleByte)                                                                                                \
    X(countDoubleByte)                                                                                                 \
    X(encodeGB18030)                                                                                                   \
    X(countGB18030)

/** The members of Kernels that are no kernels, as it lays them out. */
struct Others {
    bool areAny;
    ptrdiff_t mostDirectToSingleByte;
    ptrdiff_t mostDirectToDoubleByte;
};
#define KX7_ONE(name) +1
static_assert(sizeof(kx7::Kernels) == sizeof(Others) + sizeof(void (*)()) * (KX7_EVERY_KERNEL(KX7_ONE)),
              "a kernel is missing in the list above");

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
    static inline size_t work = 0;  ///< bytes of source that it has moved over, or what it has counted

    static Result call(Arguments... arguments)
    {
        uintptr_t const begin = (placeOf<Arguments>(arguments) + ...);
        if constexpr (std::is_void_v<Result>) {
            (recorded->*KERNEL)(arguments...);
            moved((placeOf<Arguments>(arguments) + ...) - begin);
        }
        else {
            Result const result = (recorded->*KERNEL)(arguments...);
            moved((placeOf<Arguments>(arguments) + ...) - begin);
            work += result;
            return result;
        }
    }

private:
    static void moved(size_t bytes)
    {
        passed += bytes;
        work += bytes;
    }
};

/** All conversions use the kernels of a set, and `passed` counts, while it lives. */
class Recorder {
public:
    explicit Recorder(kx7::InstructionSet set) : m_kernels(kx7::kernelsOf(set))
    {
        recorded = &kx7::kernelsOf(set);
#define KX7_RECORD(name)                                                                                               \
    m_kernels.name = Recording<&kx7::Kernels::name>::call;                                                             \
    Recording<& kx7::Kernels::name>::work = 0;
        KX7_EVERY_KERNEL(KX7_RECORD)
        kx7::kernelsInUse = &m_kernels;
    }
    ~Recorder()
    {
        kx7::useInstructionSet(kx7::detectInstructionSet());
    }

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

namespace {

/** Calls each operation of a converter with all of its characters. */
void convertThroughout(MultibyteSet const& set)
{
    KX7CharSetConverter& converter = set.converter;
    Characters const text = charactersOf(converter);
    auto const unitCount = static_cast<unsigned int>(text.units.size());
    auto const byteCount = static_cast<unsigned int>(text.bytes.size());
    auto const* const source = reinterpret_cast<unsigned short const*>(text.units.c_str());
    std::vector<unsigned short> units(text.units.size() + 1);
    std::string bytes(text.bytes.size() + 1, 'x');
    converter.toUTF16(units.data(), text.bytes.c_str(), unitCount, ILLCHAR_REPLACE, nullptr, -1);
    converter.fromUTF16(bytes.data(), source, byteCount, ILLCHAR_REPLACE, nullptr);
    converter.getNumUnits(text.bytes.c_str(), byteCount);
    converter.getNumBytes(source, unitCount);
    std::string utf8(4 * text.units.size() + 1, '\0');
    utf8.resize(g_oConverterUTF8.fromUTF16(utf8.data(), source, static_cast<unsigned int>(utf8.size() - 1),
                                           ILLCHAR_REPLACE, nullptr));
    kx7::validateUtf8(utf8);
    kx7::Engine const* const engine = kx7::engineOf(converter);
    if (engine && engine->runFromUTF8) {
        auto const* in = reinterpret_cast<unsigned char const*>(utf8.c_str());
        auto* out = reinterpret_cast<unsigned char*>(bytes.data());
        engine->runFromUTF8(converter, in, out, out + byteCount);
    }
}

/** Two equal texts and one that differs at its end, found and compared. */
void searchThroughout()
{
    KX7UString const text(std::string(1000, 'x').c_str(), KX7CS_UTF8);
    KX7UString const other((std::string(1000, 'x') + "y").c_str(), KX7CS_UTF8);
    EXPECT_EQ(other.find(static_cast<unsigned short>('y')), 1000u);
    EXPECT_NE(text.compare(other.data()), 0);
}

}  // namespace

TEST_F(KernelUse, EveryKernelOfEveryInstructionSetHasWorkToDo)
{
    for (kx7::InstructionSet const set : sets()) {
        Recorder const recorder(set);
        for (MultibyteSet const& charSet : allSets())
            if (!charSet.isWide)
                convertThroughout(charSet);
        searchThroughout();
        kx7::Kernels const& plain = kx7::kernelsOf(kx7::InstructionSet::PLAIN);
#define KX7_EXPECT_WORK(name)                                                                                          \
    if (recorded->name != plain.name) {                                                                                \
        EXPECT_GT(Recording<&kx7::Kernels::name>::work, 0u) << #name " with " << nameOf(set);                          \
    }
        KX7_EVERY_KERNEL(KX7_EXPECT_WORK)
    }
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
