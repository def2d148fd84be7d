// kx7text - classes and case of UTF-16 code units.
#include "kx7/text/KX7UChar.h"

#include "kx7/base/Early.h"
#include "kx7/base/Utf16.h"
#include "kx7/tables/CharProperties.h"

unsigned int const KX7UChar::UTF16_MAX;
unsigned int const KX7UChar::UTF32_MAX;

// Initialised as constants: usable in any static initialiser. The priority concerns their end: they outlive ordinary
// static objects, also those of a program linked with the archive.
KX7_EARLY KX7UCharTable KX7UChar::m_gUpperCaseTable(toUpperTable, true);
KX7_EARLY KX7UCharTable KX7UChar::m_gLowerCaseTable(toLowerTable, true);
KX7_EARLY KX7UCharTable KX7UChar::m_gCharClassTable(classTable, false);

namespace {

constexpr unsigned short EAST_ASIAN_LETTER = 0x0404;
constexpr unsigned short SURROGATE = 0x1000;

struct Block {
    unsigned short first;
    unsigned short last;
};

// The large uniform blocks, which the class table leaves out: radicals, ideographs, Yi and Hangul syllables.
constexpr Block EAST_ASIAN_BLOCKS[] = {
    {0x2E80, 0x2E99}, {0x2E9B, 0x2EF3}, {0x2F00, 0x2FD5}, {0x3400, 0x4DB5},
    {0x4E00, 0x9FA5}, {0xA000, 0xA48C}, {0xAC00, 0xD7A3}, {0xF900, 0xFA2D},
};

}  // namespace

unsigned short KX7UChar::getCharClass(unsigned short c)
{
    for (Block const& block : EAST_ASIAN_BLOCKS)
        if (c >= block.first && c <= block.last)
            return EAST_ASIAN_LETTER;
    if (kx7::isSurrogate(c))
        return SURROGATE;
    return m_gCharClassTable.getValue(c);
}
