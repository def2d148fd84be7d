// kx7text - moving the 16-bit lanes of a set to the front, where there is no instruction for it (internal).
#ifndef KX7_KERNELS_KEEPLANES_H
#define KX7_KERNELS_KEEPLANES_H

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

}  // namespace kx7

#endif
