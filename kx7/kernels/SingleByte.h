// kx7text - the tables of a single-byte set, laid out for kernels and steps alike (internal).
#ifndef KX7_KERNELS_SINGLEBYTE_H
#define KX7_KERNELS_SINGLEBYTE_H

#include "kx7/base/LookupTable.h"
#include "kx7/kernels/Identity.h"
#include "kx7/kernels/KernelTables.h"

namespace kx7 {

/** The bytes of 128 units that begin at a multiple of 128; 0 where there is none. */
struct UnitWindow {
    static constexpr unsigned int SIZE = 128;
    unsigned short first;
    unsigned char bytes[SIZE];
    // Letters mostly stand in the same order on both sides: a row of 16 units becomes one of 16 bytes, each in its
    // place.
    unsigned char rows[16];     ///< for each row of units the first byte of most
    unsigned char regular[16];  ///< for each place a bit for each row in which the unit has its place in that row
};

/** The same from bytes to units. */
struct RegularCodes {
    unsigned char lowRows[16];  ///< of the first unit
    unsigned char highRows[16];
    unsigned char regular[2][16];  ///< of the rows of the lower and the upper half
};

/** The table is that from units to bytes. */
struct SingleByteTables : KernelTables, LookupTable<unsigned char> {
    /** Tables in which nothing is mapped. */
    SingleByteTables() = default;

    /** @param pairs byte and unit, ended by (0, 0) */
    explicit SingleByteTables(unsigned short const* pairs);

    unsigned short toUnicode[256] = {};  ///< 0: unmapped
    unsigned char lowBytes[256] = {};    ///< of the units in `toUnicode`
    unsigned char highBytes[256] = {};

    /**
     * The first window of all, and of the others the two with most units: nearly all that a text of the set's own
     * scripts holds.
     */
    static constexpr int WINDOWS = 3;
    UnitWindow windows[WINDOWS] = {};

    RegularCodes regularCodes = {};
    bool mostlyRegular = false;  ///< three of four bytes from 0xA0 on, where letters are, at least

    bool decodesPrintableASCII = false;      ///< the bytes from 0x20 to 0x7E stand for themselves
    bool encodesPrintableASCII = false;      ///< and so do the units
    bool isLatin1 = false;                   ///< all bytes do, both ways
    Identity byteIdentity = Identity::NONE;  ///< which of the bytes below 0x80 do
    Identity unitIdentity = Identity::NONE;  ///< and which of the units
};

}  // namespace kx7

#endif
