// kx7text - the searches in UTF-16 text, for any instruction set (internal).
//
// `V` is a block of units (kx7/kernels/vector/). Where the length is known, the last block is loaded in part, or else
// overlaps the one before it. A 0 unit is looked for in aligned blocks, four at a time. Where two texts that may end
// anywhere are compared, blocks stay within the pages that the texts are known to reach.
//
// A source file includes this after it has defined KX7_TARGET, the attribute of what it is compiled for.
#ifndef KX7_KERNELS_UNITLOOPS_H
#define KX7_KERNELS_UNITLOOPS_H

#ifndef KX7_TARGET
#error "KX7_TARGET is not defined"
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kx7/kernels/Page.h"
#include "kx7/kernels/Plain.h"
#include "kx7/kernels/vector/Target.h"

namespace kx7 {

/** The first unit in a mask that is not empty. */
template <class V>
KX7_TARGET inline size_t firstUnit(uint32_t mask)
{
    return static_cast<size_t>(__builtin_ctz(mask)) / V::BITS;
}

/** Goes on at `block`, which is aligned and `n` units after the text's begin. A function of its own: most texts end
 * before. */
template <class V>
KX7_TARGET KX7_READS_BEYOND __attribute__((noinline)) size_t longUnitLength(unsigned short const* block, size_t n,
                                                                            size_t most)
{
    constexpr size_t BLOCK = V::COUNT;
    while (n < most) {
        // Four blocks at once where they are as well aligned, so in one page; the one with the 0 is then looked for.
        if (reinterpret_cast<uintptr_t>(block) % (4 * BLOCK * sizeof *block) == 0 &&
            !V::haveZeros(V::loadNear(block), V::loadNear(block + BLOCK), V::loadNear(block + 2 * BLOCK),
                          V::loadNear(block + 3 * BLOCK))) {
            block += 4 * BLOCK;
            n += 4 * BLOCK;
            continue;
        }
        if (uint32_t const zeros = V::zeros(V::loadNear(block)))
            return std::min(most, n + firstUnit<V>(zeros));
        block += BLOCK;
        n += BLOCK;
    }
    return most;
}

/** As Kernels::unitLength. */
template <class V>
KX7_TARGET KX7_READS_BEYOND inline size_t unitLengthBy(unsigned short const* text, size_t most)
{
    constexpr size_t BLOCK = V::COUNT;
    size_t const misaligned = reinterpret_cast<uintptr_t>(text) % (BLOCK * sizeof *text);
    if (misaligned % sizeof *text != 0)
        return unitLengthPlain(text, most);
    if (most == 0)
        return 0;
    size_t const skipped = misaligned / sizeof *text;
    unsigned short const* block = text - skipped;
    if (uint32_t const zeros = V::zeros(V::loadNear(block)) >> V::BITS * skipped)
        return std::min(most, firstUnit<V>(zeros));
    size_t n = BLOCK - skipped;
    for (int i = 1; i != V::FIRST_BLOCKS; ++i) {
        if (n >= most)
            return most;
        block += BLOCK;
        if (uint32_t const zeros = V::zeros(V::loadNear(block)))
            return std::min(most, n + firstUnit<V>(zeros));
        n += BLOCK;
    }
    return longUnitLength<V>(block + BLOCK, n, most);
}

/** As Kernels::unitFind. `shorter` does the same for less than a block. */
template <class V>
KX7_TARGET inline size_t unitFindBy(unsigned short const* text, size_t count, unsigned short unit,
                                    size_t (*shorter)(unsigned short const*, size_t, unsigned short))
{
    constexpr size_t BLOCK = V::COUNT;
    typename V::Vector const wanted = V::all(unit);
    size_t n = 0;
    for (; count - n >= BLOCK; n += BLOCK)
        if (uint32_t const found = V::equal(V::load(text + n), wanted))
            return n + firstUnit<V>(found);
    if (n == count)
        return count;
    if constexpr (V::LOADS_PARTS) {
        uint32_t const found = V::equal(V::loadPart(text + n, count - n), wanted);
        return found != 0 ? std::min(count, n + firstUnit<V>(found)) : count;
    }
    else {
        if (count < BLOCK)
            return shorter(text, count, unit);
        uint32_t const found = V::equal(V::load(text + count - BLOCK), wanted);
        return found != 0 ? count - BLOCK + firstUnit<V>(found) : count;
    }
}

/**
 * Units, `most` at most and 1 at least, that can be read at both places once the first at each can: up to the end of
 * the smallest page that there is.
 */
inline size_t unitsInPage(unsigned short const* a, unsigned short const* b, size_t most)
{
    auto const bytes = static_cast<size_t>(PAGE - std::max(inPage(a), inPage(b)));
    return std::min(most, std::max(bytes / sizeof *a, size_t{1}));
}

/** As Kernels::unitMatch. `shorter` does the same for less than a block. */
template <class V>
KX7_TARGET KX7_READS_BEYOND inline size_t unitMatchBy(unsigned short const* a, unsigned short const* b, size_t most,
                                                      size_t (*shorter)(unsigned short const*, unsigned short const*,
                                                                        size_t))
{
    constexpr size_t BLOCK = V::COUNT;
    size_t n = 0;
    while (n != most) {
        size_t const end = n + unitsInPage(a + n, b + n, most - n);
        // Where the texts differ, and where both have a 0, stands a 0 then.
        for (; end - n >= BLOCK; n += BLOCK)
            if (uint32_t const found = V::zeros(V::whereEqual(V::loadNear(a + n), V::loadNear(b + n))))
                return n + firstUnit<V>(found);
        if (n == end)
            continue;
        if constexpr (V::LOADS_PARTS) {
            // The lanes after the part are 0 in both.
            auto const x = V::loadPartNear(a + n, end - n);
            auto const y = V::loadPartNear(b + n, end - n);
            n += firstUnit<V>(V::zeros(V::whereEqual(x, y)));
        }
        else {
            n += shorter(a + n, b + n, end - n);
        }
        if (n != end)
            return n;
    }
    return most;
}

}  // namespace kx7

#endif
