// kx7text - compressing 16-bit lanes with AVX2, which has no instruction for it (internal).
#ifndef KX7_KERNELS_KEEPLANES_H
#define KX7_KERNELS_KEEPLANES_H

#include "kx7/kernels/vector/Avx2.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

/** For each mask the shuffle that moves the 16-bit lanes in it to the front. */
struct KeepLanes {
    alignas(16) unsigned char shuffles[256][16];
    constexpr KeepLanes() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int lane = 0; lane < 8; ++lane)
                if (mask >> lane & 1) {
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane);
                    shuffles[mask][at++] = static_cast<unsigned char>(2 * lane + 1);
                }
            while (at < 16)
                shuffles[mask][at++] = 0x80;
        }
    }
};

inline constexpr KeepLanes KEEP_LANES;

/** Stores the lanes in `kept`, and up to eight values in all; returns where those end that count. */
KX7_AVX2 inline unsigned short* storeKept(unsigned short* out, __m128i lanes, uint32_t kept)
{
    store128(out, shuffled(lanes, KEEP_LANES.shuffles[kept]));
    return out + __builtin_popcount(kept);
}

}  // namespace kx7

#endif

#endif
