// kx7text - the choice of kernels.
#include "kx7/kernels/Kernels.h"

#include <algorithm>

namespace kx7 {

namespace {

size_t plainUnitLength(unsigned short const* text, size_t most)
{
    size_t n = 0;
    while (n < most && text[n] != 0)
        ++n;
    return n;
}

size_t plainUnitFind(unsigned short const* text, size_t count, unsigned short unit)
{
    return static_cast<size_t>(std::find(text, text + count, unit) - text);
}

size_t plainUnitMatch(unsigned short const* a, unsigned short const* b, size_t most)
{
    size_t n = 0;
    while (n < most && a[n] == b[n] && a[n] != 0)
        ++n;
    return n;
}

}  // namespace

constexpr Kernels PLAIN_KERNELS = {
    plainUnitLength,
    plainUnitFind,
    plainUnitMatch,
    [](unsigned char const*&, unsigned char const*, unsigned short*&, unsigned short*) {},
    [](unsigned short const*&, unsigned short const*, unsigned char*&, unsigned char*) {},
    noWellFormedUTF8,
    noCountUTF8,
    noCountAsUTF8,
    [](SingleByteTables const&, unsigned char const*&, unsigned char const*, unsigned short*&, unsigned short*) {},
    [](SingleByteTables const&, unsigned short const*&, unsigned short const*, unsigned char*&, unsigned char*) {},
    noSingleByteFromUTF8,
    [](PairUnits const&, unsigned char const*&, unsigned char const*, unsigned short*&, unsigned short*) {},
    noFourBytes,
    noCountPairs,
    noCountMappedPairs,
    noCountUnitsOfGB18030,
    [](unsigned short const*, unsigned short const*&, unsigned short const*, unsigned char*&, unsigned char*) {},
    [](unsigned short const*, unsigned short const*&, unsigned short const*) { return size_t{0}; },
    [](GB18030Codes const&, unsigned short const*&, unsigned short const*, unsigned char*&, unsigned char*) {},
    [](GB18030Codes const&, unsigned short const*&, unsigned short const*) { return size_t{0}; },
    ALL_STRAIGHT,
    ALL_STRAIGHT,
};

InstructionSet detectInstructionSet()
{
#ifdef KX7_X86_KERNELS
    // All that the functions of a set are compiled for: a virtual machine may hide any part of it.
    __builtin_cpu_init();
    bool const hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
    if (hasAvx2 && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
        __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vbmi2"))
        return InstructionSet::AVX512;
    if (hasAvx2)
        return InstructionSet::AVX2;
    if (!__builtin_cpu_supports("sse2"))
        return InstructionSet::PLAIN;
#endif
    return InstructionSet::BASELINE;
}

Kernels const& kernelsOf(InstructionSet set)
{
#ifdef KX7_X86_KERNELS
    if (set == InstructionSet::AVX512)
        return AVX512_KERNELS;
    if (set == InstructionSet::AVX2)
        return AVX2_KERNELS;
#endif
    return set == InstructionSet::PLAIN ? PLAIN_KERNELS : BASELINE_KERNELS;
}

std::atomic<Kernels const*> kernelsInUse{&PLAIN_KERNELS};

bool useInstructionSet(InstructionSet set)
{
    if (set > detectInstructionSet())
        return false;
    kernelsInUse.store(&kernelsOf(set), std::memory_order_relaxed);
    return true;
}

namespace {

// Early, so that conversions in static constructors have them too; before that the steps serve.
__attribute__((constructor(101))) void chooseKernels()
{
    useInstructionSet(detectInstructionSet());
}

}  // namespace

}  // namespace kx7
