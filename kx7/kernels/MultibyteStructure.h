// kx7text - which bytes of multibyte text begin a character and which continue one, by bit sets (internal).
//
// A bit stands for a byte, the lowest for the first. Lead and trail bytes overlap in value, so a byte's role follows
// from the parity of its distance from the start of its sequence of set bits.
#ifndef KX7_KERNELS_MULTIBYTESTRUCTURE_H
#define KX7_KERNELS_MULTIBYTESTRUCTURE_H

#include <cstddef>
#include <cstdint>

#include "kx7/kernels/Bits.h"

namespace kx7 {

constexpr std::ptrdiff_t STRUCTURE_BLOCK = 64;

/**
 * Of each maximal sequence of set bits the first, third, fifth bit, and so on. A subtraction carries through a
 * sequence, so the parity of each bit follows without a loop (as for escaped quotes in Langdale and Lemire, "Parsing
 * Gigabytes of JSON per Second", 2019).
 */
constexpr uint64_t everySecond(uint64_t bits)
{
    constexpr uint64_t ODD = UINT64_C(0xAAAAAAAAAAAAAAAA);
    return ((((bits << 1) | ODD) - bits) ^ ODD) & bits;
}

/**
 * Which bytes of a block of text in one byte or two begin characters, where each that may lead does unless it trails.
 */
struct PairBegins {
    uint64_t leads;
    uint64_t all;

    /** @param isCarried 1: the first byte trails */
    PairBegins(uint64_t mayLead, uint64_t isCarried)
        : leads(everySecond(mayLead & ~isCarried)), all(~(leads << 1 | isCarried))
    {
    }

    /** The same of the block after. */
    uint64_t carries() const { return leads >> 63; }
};

/**
 * The place of the first character of a block that has no unit; STRUCTURE_BLOCK if all have one.
 * @param same    bytes that are their own units
 * @param unsure  lead bytes of pairs that may have none, and are looked up
 */
inline int firstWithoutUnit(PairBegins const& begins, uint64_t same, uint64_t unsure, unsigned short const* units,
                            unsigned char const* in)
{
    uint64_t const strange = begins.all & ~(begins.leads | same);
    int const place = strange != 0 ? __builtin_ctzll(strange) : static_cast<int>(STRUCTURE_BLOCK);
    for (uint64_t rest = unsure & lowBits<uint64_t>(place); rest != 0; rest &= rest - 1) {
        unsigned char const* const pair = in + __builtin_ctzll(rest);
        if (units[pair[0] << 8 | pair[1]] == 0)
            return __builtin_ctzll(rest);
    }
    return place;
}

/**
 * The places where four bytes begin, of those where a lead byte, a digit, a lead byte and a digit stand: `candidates`,
 * of which two may overlap but no two are neighbours.
 */
inline uint64_t beginsOfFour(uint64_t candidates)
{
    constexpr uint64_t EVERY_FOURTH = UINT64_C(0x1111111111111111);
    uint64_t const runs = candidates | candidates << 1;
    uint64_t const firsts = runs & ~(runs << 1);
    uint64_t begins = 0;
    // Adding the first bit of a sequence clears the whole of it: one addition for each start modulo 4.
    for (int phase = 0; phase < 4; ++phase) {
        uint64_t const places = EVERY_FOURTH << phase;
        begins |= runs & ~(runs + (firsts & places)) & places;
    }
    return begins;
}

/** The bytes of GB 18030 by what they may be. */
struct GB18030Bytes {
    uint64_t leads;
    uint64_t digits;

    /** Where four bytes may begin that are all in the block. */
    uint64_t candidatesOfFour() const { return leads & digits >> 1 & leads >> 2 & digits >> 3; }
};

/** The characters of GB 18030 in a block, well-formed or not, mapped or not. */
struct GB18030Begins {
    uint64_t all;
    uint64_t ofFour;
    std::ptrdiff_t bytes;  ///< that they take; what follows is left to the next block
};

/** @param left bytes of the text, of which the sets have up to 64 */
inline GB18030Begins beginsOfGB18030(GB18030Bytes const& is, uint64_t trails, std::ptrdiff_t left)
{
    uint64_t const secondOfTwo = everySecond(trails & is.leads << 1);
    uint64_t const candidates = is.candidatesOfFour() & ~secondOfTwo;
    uint64_t const ofFour = candidates != 0 ? beginsOfFour(candidates) : 0;
    uint64_t const begins = ~(secondOfTwo | ofFour << 1 | ofFour << 2 | ofFour << 3);
    if (left <= STRUCTURE_BLOCK)
        return {begins & lowBits<uint64_t>(left), ofFour, left};
    // What begins in the last three places may reach beyond them.
    constexpr int LAST_PLACES = 61;
    uint64_t const rest = begins >> LAST_PLACES;
    int const bytes = rest != 0 ? LAST_PLACES + __builtin_ctzll(rest) : 64;
    return {begins & lowBits<uint64_t>(bytes), ofFour, bytes};
}

/** 0x90 to 0xE3 lead the planes above the first; the last of them only up to this sequence. */
constexpr unsigned char LAST_SUPPLEMENTARY[4] = {0xE3, 0x32, 0x9A, 0x35};

}  // namespace kx7

#endif
