// kx7text - tables of what each UTF-16 unit is written as, for the kernels of the multibyte sets (internal).
//
// One value for each of the 65,536 units: a look-up is one load, which is what the speed of encoding hangs on. The
// value is the code as it is written, one byte or (above 0xFF) two, and 0 where the encoder's step has to be asked.
// Where codes are written as they are listed, the memory of the table from units to codes is such a table.
#ifndef KX7_CONVERTERS_UNITCODES_H
#define KX7_CONVERTERS_UNITCODES_H

#include <cstdlib>
#include <memory>

namespace kx7 {

struct FreeMemory {
    void operator()(void* memory) const { free(memory); }
};

using UnitCodes = std::unique_ptr<unsigned short[], FreeMemory>;

/** Zeros for all units; null without memory. From calloc, so that pages of units that are not mapped cost nothing. */
inline UnitCodes makeUnitCodes()
{
    return UnitCodes(static_cast<unsigned short*>(calloc(0x10000, sizeof(unsigned short))));
}

/** A table must not be used as it is where it has a code for one half of a character. */
inline bool mapsHighSurrogates(unsigned short const* codes)
{
    unsigned int mapped = 0;
    for (unsigned int unit = 0xD800; unit <= 0xDBFF; ++unit)
        mapped |= codes[unit];
    return mapped != 0;
}

/** Enters what `written` (unit, listed code) says for ASCII and for the units of a list of pairs, ended by (0, 0). */
template <class Written>
void fillUnitCodes(unsigned short* codes, unsigned short const* listed, unsigned short const* pairs, Written written)
{
    for (unsigned int unit = 0; unit < 0x80; ++unit)
        codes[unit] = static_cast<unsigned short>(written(unit, listed[unit]));
    for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2)
        codes[pairs[1]] = static_cast<unsigned short>(written(pairs[1], listed[pairs[1]]));
}

}  // namespace kx7

#endif
