// kx7text - searches in UTF-16 text with SSE2.
#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/vector/Sse2.h"

#ifdef KX7_X86_KERNELS

#define KX7_TARGET KX7_SSE2
#include "kx7/kernels/UnitLoops.h"

namespace kx7 {

KX7_SSE2 KX7_READS_BEYOND size_t unitLengthBaseline(unsigned short const* text, size_t most)
{
    return unitLengthBy<UnitsSse2>(text, most);
}

KX7_SSE2 size_t unitFindBaseline(unsigned short const* text, size_t count, unsigned short unit)
{
    return unitFindBy<UnitsSse2>(text, count, unit, unitFindPlain);
}

KX7_SSE2 KX7_READS_BEYOND size_t unitMatchBaseline(unsigned short const* a, unsigned short const* b, size_t most)
{
    return unitMatchBy<UnitsSse2>(a, b, most, unitMatchPlain);
}

}  // namespace kx7

#endif
