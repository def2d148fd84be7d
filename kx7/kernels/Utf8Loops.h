// kx7text - counting and checking UTF-8, for any instruction set (internal).
//
// `V` is a block of bytes or units (kx7/kernels/vector/). Where it loads parts, all of the text is looked at; else
// whole blocks are, and the rest is left.
//
// A source file includes this after it has defined KX7_TARGET, the attribute of what it is compiled for.
#ifndef KX7_KERNELS_UTF8LOOPS_H
#define KX7_KERNELS_UTF8LOOPS_H

#ifndef KX7_TARGET
#error "KX7_TARGET is not defined"
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kx7/kernels/Bits.h"
#include "kx7/kernels/Utf8Structure.h"

namespace kx7 {

/** A block at `in`, where there are `left` values; zeros after them. */
template <class V>
KX7_TARGET inline typename V::Vector loadBlock(unsigned char const* in, std::ptrdiff_t left)
{
    if constexpr (V::LOADS_PARTS)
        if (left < V::COUNT)
            return V::load(in, V::lowLanes(left));
    return V::load(in);
}

/** Whether there is a block to look at, of `left` values. */
template <class V>
constexpr bool hasBlock(std::ptrdiff_t left)
{
    return V::LOADS_PARTS ? left > 0 : left >= V::COUNT;
}

/** As Kernels::wellFormedUTF8: RFC 3629. */
template <class V>
KX7_TARGET inline size_t wellFormedUTF8By(unsigned char const* const begin, unsigned char const* end)
{
    using Mask = typename V::Mask;
    unsigned char const* in = begin;
    Leads<Mask> before = {0, 0, 0};
    StrictBytes<Mask> bytesBefore = {};
    while (hasBlock<V>(end - in)) {
        typename V::Vector const bytes = loadBlock<V>(in, end - in);
        Mask const notASCII = V::notASCII(bytes);
        Mask const carried = before.wantedAfter();
        Leads<Mask> leads = {0, 0, 0};
        if ((notASCII | carried) != 0) {
            leads = V::leads(bytes, notASCII);
            StrictBytes<Mask> const strict = {V::atLeast(bytes, 0xC2), V::atLeast(bytes, 0xF5), V::atLeast(bytes, 0x90),
                                              V::atLeast(bytes, 0xA0), V::equal(bytes, 0xE0),   V::equal(bytes, 0xED),
                                              V::equal(bytes, 0xF0),   V::equal(bytes, 0xF4)};
            // Where the end truncates a character, zeros stand for what is missing and are wrong.
            if (((notASCII & ~leads.two) ^ (leads.wanted() | carried)) != 0 || strict.wrong(leads, bytesBefore) != 0)
                break;
            bytesBefore = strict;
        }
        before = leads;
        in += std::min(end - in, V::COUNT);
    }
    return static_cast<size_t>(in - begin) - static_cast<size_t>(before.truncated());
}

/** As Kernels::countUTF8. */
template <class V>
KX7_TARGET inline size_t countUTF8By(unsigned char const*& inOut, unsigned char const* end)
{
    using Mask = typename V::Mask;
    unsigned char const* in = inOut;
    Leads<Mask> before = {0, 0, 0};
    std::ptrdiff_t count = 0;
    while (hasBlock<V>(end - in)) {
        std::ptrdiff_t const available = std::min(end - in, V::COUNT);
        Mask const lanes = lowBits<Mask>(available);
        typename V::Vector const bytes = loadBlock<V>(in, available);
        Mask const notASCII = V::notASCII(bytes);
        Leads<Mask> const leads = V::leads(bytes, notASCII);
        Mask const continuations = notASCII & ~leads.two;
        if (continuations != (leads.wanted() | before.wantedAfter()) || (V::equal(bytes, 0) & lanes) != 0)
            break;
        count += V::count(~continuations & lanes);
        in += available;
        before = leads;
    }
    int const truncated = before.truncated();
    inOut = in - truncated;
    return static_cast<size_t>(count - (truncated != 0 ? 1 : 0));
}

/** As Kernels::countAsUTF8. */
template <class V>
KX7_TARGET inline size_t countAsUTF8By(unsigned short const*& inOut, unsigned short const* end)
{
    using Vector = typename V::Vector;
    constexpr std::ptrdiff_t HALF = V::COUNT;
    constexpr std::ptrdiff_t BLOCK = 2 * HALF;
    constexpr std::ptrdiff_t FEWEST = V::LOADS_PARTS ? 1 : BLOCK;
    constexpr std::ptrdiff_t MOST_BLOCKS = 0x1000;  // else lanes overflow
    constexpr std::ptrdiff_t BITS = V::BITS;
    unsigned short const* in = inOut;
    // Only at the beginning: in mixed text it would cost more than it saves.
    while (end - in >= BLOCK && V::areWithin(V::load(in), V::load(in + HALF), 0x7F))
        in += BLOCK;
    std::ptrdiff_t count = 0;
    uint64_t carried = 0;  // the bits of a high surrogate at the end of the block before
    while (end - in >= FEWEST) {
        std::ptrdiff_t blocks = std::min((end - in + BLOCK - FEWEST) / BLOCK, MOST_BLOCKS);
        Vector beyond = V::all(0);  // bytes of the units beyond the first, lane by lane
        for (; blocks != 0; --blocks) {
            std::ptrdiff_t available = BLOCK;
            Vector front = V::all(0);
            Vector back = V::all(0);
            if constexpr (V::LOADS_PARTS)
                available = std::min(end - in, BLOCK);
            if (available == BLOCK) {
                front = V::load(in);
                back = V::load(in + HALF);
            }
            else if constexpr (V::LOADS_PARTS) {
                front = V::loadPart(in, static_cast<size_t>(std::min(available, HALF)));
                back = V::loadPart(in + HALF, static_cast<size_t>(std::max(available - HALF, std::ptrdiff_t{0})));
            }
            Vector more = V::template countWithBits<7>(front, back);
            if (!V::ASKS_FOR_THIRDS || carried != 0 || !V::areWithin(front, back, 0x7FF)) {
                if (carried != 0 || V::haveSurrogates(front, back)) {
                    auto const masksOf = [&](unsigned short kind) KX7_TARGET {
                        uint32_t low = V::surrogates(front, kind);
                        uint32_t high = V::surrogates(back, kind);
                        __asm__("" : "+r"(low), "+r"(high));  // else g++ 12 for 32 bits keeps what is above a mask
                        return low | static_cast<uint64_t>(high) << BITS * HALF;
                    };
                    uint64_t const highs = masksOf(0xD800);
                    uint64_t const unpaired =
                        (highs << BITS | carried) & ~masksOf(0xDC00) & lowBits<uint64_t>(BITS * available);
                    if (unpaired != 0) {
                        end = V::LOADS_PARTS ? in + __builtin_ctzll(unpaired) / BITS - 1 : in;
                        break;
                    }
                    // Three bytes for either half of a pair are two too many.
                    count -= 2 * __builtin_popcountll(highs) / BITS;
                    carried = highs >> BITS * (available - 1);
                }
                more = V::sum(more, V::template countWithBits<11>(front, back));
            }
            beyond = V::sum(beyond, more);
            in += available;
        }
        count += V::total(beyond);
    }
    count += in - inOut;
    // A high surrogate whose partner does not follow here has been counted with one byte.
    std::ptrdiff_t const truncated = carried != 0 ? 1 : 0;
    inOut = in - truncated;
    return static_cast<size_t>(count - truncated);
}

}  // namespace kx7

#endif
