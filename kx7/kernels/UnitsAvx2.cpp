// kx7text - searches in UTF-16 text with AVX2.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/vector/Avx2.h"

#define KX7_TARGET KX7_AVX2
#include "kx7/kernels/UnitLoops.h"

namespace kx7 {

KX7_AVX2 KX7_READS_BEYOND size_t unitLengthAvx2(unsigned short const* text, size_t most)
{
    return unitLengthBy<UnitsAvx2>(text, most);
}

KX7_AVX2 size_t unitFindAvx2(unsigned short const* text, size_t count, unsigned short unit)
{
    return unitFindBy<UnitsAvx2>(text, count, unit, unitFindBaseline);
}

KX7_AVX2 KX7_READS_BEYOND size_t unitMatchAvx2(unsigned short const* a, unsigned short const* b, size_t most)
{
    return unitMatchBy<UnitsAvx2>(a, b, most, unitMatchBaseline);
}

}  // namespace kx7

#endif
