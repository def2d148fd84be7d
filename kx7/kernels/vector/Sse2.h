// kx7text - vectors of SSE2 for the loops that all instruction sets share (internal).
//
// 32-bit code is compiled for machines without SSE2, which are found out when the library is loaded.
#ifndef KX7_KERNELS_VECTOR_SSE2_H
#define KX7_KERNELS_VECTOR_SSE2_H

#include "kx7/kernels/vector/Target.h"

#ifdef KX7_X86_KERNELS

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace kx7 {

/** 8 UTF-16 units, as UnitLoops.h takes them. */
struct UnitsSse2 {
    using Vector = __m128i;
    static constexpr size_t COUNT = 8;
    static constexpr unsigned int BITS = 2;  ///< of a mask for each unit
    static constexpr bool LOADS_PARTS = false;
    static constexpr int FIRST_BLOCKS = 9;  ///< looked at inline for a 0 unit: most texts end there

    KX7_SSE2 static Vector load(unsigned short const* p)
    {
        return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
    }
    /** Of which a part may lie beside the text. */
    KX7_SSE2 KX7_READS_BEYOND static Vector loadNear(unsigned short const* p)
    {
        return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
    }
    KX7_SSE2 static Vector all(unsigned short unit) { return _mm_set1_epi16(static_cast<short>(unit)); }
    KX7_SSE2 static uint32_t equal(Vector a, Vector b)
    {
        return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi16(a, b)));
    }
    KX7_SSE2 static uint32_t zeros(Vector units) { return equal(units, _mm_setzero_si128()); }
    KX7_SSE2 static bool haveZeros(Vector a, Vector b, Vector c, Vector d)
    {
        __m128i const zero = _mm_setzero_si128();
        return _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(a, zero), _mm_cmpeq_epi16(b, zero)),
                                              _mm_or_si128(_mm_cmpeq_epi16(c, zero), _mm_cmpeq_epi16(d, zero)))) != 0;
    }
    /** The units of `a` where `b` has the same, 0 elsewhere. */
    KX7_SSE2 static Vector whereEqual(Vector a, Vector b) { return _mm_and_si128(_mm_cmpeq_epi16(a, b), a); }
};

}  // namespace kx7

#endif

#endif
