// kx7text - the kernels of each instruction set, and the choice among them.
#include "kx7/kernels/Kernels.h"

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/DoubleByteEncode.h"
#ifdef KX7_X86_KERNELS
#include "kx7/kernels/Avx2.h"
#include "kx7/kernels/Avx512.h"
#endif

namespace kx7 {

namespace {

constexpr Kernels PLAIN_KERNELS;

constexpr Kernels BASELINE_KERNELS = [] {
    Kernels k = PLAIN_KERNELS;
    k.areAny = true;
#ifdef KX7_X86_KERNELS
    k.unitLength = unitLengthBaseline;
    k.unitFind = unitFindBaseline;
    k.unitMatch = unitMatchBaseline;
#endif
    k.decodeUTF8 = decodeUTF8Baseline;
    k.encodeUTF8 = encodeUTF8Baseline;
    k.decodeSingleByte = decodeSingleByteBaseline;
    k.encodeSingleByte = encodeSingleByteBaseline;
    k.decodePairs = decodePairsBaseline;
    k.encodeDoubleByte = encodeDoubleByteOneByOne;
    k.countDoubleByte = countDoubleByteOneByOne;
    k.encodeGB18030 = encodeGB18030OneByOne;
    k.countGB18030 = countGB18030OneByOne;
    return k;
}();

#ifdef KX7_X86_KERNELS

constexpr Kernels AVX2_KERNELS = [] {
    Kernels k = BASELINE_KERNELS;
    k.unitLength = unitLengthAvx2;
    k.unitFind = unitFindAvx2;
    k.unitMatch = unitMatchAvx2;
    k.decodeUTF8 = decodeUTF8Avx2;
    k.encodeUTF8 = encodeUTF8Avx2;
    k.wellFormedUTF8 = wellFormedUTF8Avx2;
    k.countUTF8 = countUTF8Avx2;
    k.countAsUTF8 = countAsUTF8Avx2;
    k.decodeSingleByte = decodeSingleByteAvx2;
    k.encodeSingleByte = encodeSingleByteAvx2;
    k.singleByteFromUTF8 = singleByteFromUTF8Avx2;
    k.decodePairs = decodePairsAvx2;
    k.decodeFourBytes = decodeFourBytesAvx2;
    k.countPairs = countPairsAvx2;
    k.countMappedPairs = countMappedPairsAvx2;
    k.countUnitsOfGB18030 = countUnitsOfGB18030Avx2;
    k.encodeDoubleByte = encodeDoubleByteAvx2;
    k.countDoubleByte = countDoubleByteAvx2;
    k.encodeGB18030 = encodeGB18030Avx2;
    k.countGB18030 = countGB18030Avx2;
    k.mostDirectToSingleByte = DIRECT_TO_SINGLE_BYTE_AVX2;
    k.mostDirectToDoubleByte = DIRECT_TO_DOUBLE_BYTE_AVX2;
    return k;
}();

constexpr Kernels AVX512_KERNELS = [] {
    Kernels k = AVX2_KERNELS;
    k.unitLength = unitLengthAvx512;
    k.unitFind = unitFindAvx512;
    k.unitMatch = unitMatchAvx512;
    k.decodeUTF8 = decodeUTF8Avx512;
    k.encodeUTF8 = encodeUTF8Avx512;
    k.wellFormedUTF8 = wellFormedUTF8Avx512;
    k.countUTF8 = countUTF8Avx512;
    k.countAsUTF8 = countAsUTF8Avx512;
    k.decodeSingleByte = decodeSingleByteAvx512;
    k.encodeSingleByte = encodeSingleByteAvx512;
    k.singleByteFromUTF8 = singleByteFromUTF8Avx512;
    k.decodePairs = decodePairsAvx512;
    k.decodeFourBytes = decodeFourBytesAvx512;
    k.countPairs = countPairsAvx512;
    k.countMappedPairs = countMappedPairsAvx512;
    k.encodeDoubleByte = encodeDoubleByteAvx512;
    k.countDoubleByte = countDoubleByteAvx512;
    k.encodeGB18030 = encodeGB18030Avx512;
    k.countGB18030 = countGB18030Avx512;
    // Bit masks come sooner out of the registers of AVX2, and counting GB 18030 waits for them: countUnitsOfGB18030.
    k.mostDirectToSingleByte = DIRECT_TO_SINGLE_BYTE_AVX512;
    k.mostDirectToDoubleByte = DIRECT_TO_DOUBLE_BYTE_AVX512;
    return k;
}();

#endif

}  // namespace

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

// Early, so that conversions in static constructors have them too; before that the converters serve.
__attribute__((constructor(101))) void chooseKernels()
{
    useInstructionSet(detectInstructionSet());
}

}  // namespace

}  // namespace kx7
