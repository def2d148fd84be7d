// kx7text - stores of a few bytes with AVX2 that write nothing behind them (internal).
#ifndef KX7_KERNELS_STOREAVX2_H
#define KX7_KERNELS_STOREAVX2_H

#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kx7 {

/** The bytes at the front of a vector that count; those behind do not. */
struct Counted {
    __m128i bytes;
    std::ptrdiff_t count;
};

/** The bytes of `vector` from `from` on, zeros behind them. */
KX7_AVX2 inline __m128i bytesFrom(__m128i vector, std::ptrdiff_t from)
{
    static constexpr unsigned char SLIDE[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                                11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                                0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    return _mm_shuffle_epi8(vector, _mm_loadu_si128(reinterpret_cast<__m128i const*>(SLIDE + from)));
}

/** Stores the bytes that count and no others, in two parts that may overlap. */
KX7_AVX2 inline unsigned char* storeExactly(unsigned char* out, Counted const& e)
{
    if (e.count >= 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), e.bytes);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + e.count - 8), bytesFrom(e.bytes, e.count - 8));
        return out + e.count;
    }
    auto const word = static_cast<uint32_t>(_mm_cvtsi128_si32(e.bytes));
    if (e.count >= 4) {
        auto const last = static_cast<uint32_t>(_mm_cvtsi128_si32(bytesFrom(e.bytes, e.count - 4)));
        memcpy(out, &word, sizeof word);
        memcpy(out + e.count - 4, &last, sizeof last);
        return out + e.count;
    }
    if (e.count > 0) {
        out[0] = static_cast<unsigned char>(word);
        out[e.count / 2] = static_cast<unsigned char>(word >> (e.count / 2 * 8));
        out[e.count - 1] = static_cast<unsigned char>(word >> ((e.count - 1) * 8));
    }
    return out + e.count;
}

}  // namespace kx7

#endif

#endif
