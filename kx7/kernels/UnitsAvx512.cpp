// kx7text - searches in UTF-16 text with AVX-512.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/vector/Avx512.h"

#define KX7_TARGET KX7_AVX512
#include "kx7/kernels/UnitLoops.h"

namespace kx7 {

KX7_AVX512 KX7_READS_BEYOND size_t unitLengthAvx512(unsigned short const* text, size_t most)
{
    return unitLengthBy<UnitsAvx512>(text, most);
}

KX7_AVX512 size_t unitFindAvx512(unsigned short const* text, size_t count, unsigned short unit)
{
    return unitFindBy<UnitsAvx512>(text, count, unit, unitFindBaseline);
}

KX7_AVX512 KX7_READS_BEYOND size_t unitMatchAvx512(unsigned short const* a, unsigned short const* b, size_t most)
{
    return unitMatchBy<UnitsAvx512>(a, b, most, unitMatchBaseline);
}

}  // namespace kx7

#endif
