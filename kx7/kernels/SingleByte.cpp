// kx7text - how the tables of a single-byte set are built.
#include "kx7/kernels/SingleByte.h"

#include <algorithm>
#include <iterator>

namespace kx7 {

namespace {

/** Whether a code has the place in its row that its key has. */
bool keepsPlace(unsigned int code, unsigned int place)
{
    return code != 0 && code % 16 == place;
}

/** The row in which most of 16 codes have their place, as its first code. */
template <class T>
unsigned int rowOfMost(T const* codes)
{
    unsigned int best = 0;
    int most = 0;
    for (unsigned int candidate = 0; candidate < 16; ++candidate) {
        unsigned int const row = codes[candidate] & ~15U;
        int count = 0;
        for (unsigned int place = 0; place < 16; ++place)
            count += keepsPlace(codes[place], place) && (codes[place] & ~15U) == row;
        if (count > most) {
            most = count;
            best = row;
        }
    }
    return best;
}

}  // namespace

SingleByteTables::SingleByteTables(unsigned short const* pairs)
{
    constexpr unsigned int SIZE = UnitWindow::SIZE;
    constexpr int TAKEN = -1;  // no window twice: kernels look a unit up in each that has it
    int counts[0x10000 / SIZE] = {};
    for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2) {
        auto const byte = static_cast<unsigned char>(pairs[0]);
        unsigned short const unit = pairs[1];
        toUnicode[byte] = unit;
        lowBytes[byte] = static_cast<unsigned char>(unit);
        highBytes[byte] = static_cast<unsigned char>(unit >> 8);
        put(unit, byte);
        ++counts[unit / SIZE];
    }
    for (UnitWindow& window : windows) {
        auto* const most = &window == windows ? counts : std::max_element(counts + 1, std::end(counts));
        *most = TAKEN;
        window.first = static_cast<unsigned short>(static_cast<unsigned int>(most - counts) * SIZE);
        for (unsigned int i = 0; i < SIZE; ++i)
            window.bytes[i] = get(static_cast<unsigned short>(window.first + i));
        for (unsigned int row = 0; row < SIZE / 16; ++row) {
            unsigned char const* const bytes = window.bytes + 16 * row;
            window.rows[row] = static_cast<unsigned char>(rowOfMost(bytes));
            for (unsigned int place = 0; place < 16; ++place)
                if (keepsPlace(bytes[place], place) && bytes[place] - place == window.rows[row])
                    window.regular[place] = static_cast<unsigned char>(window.regular[place] | 1U << row);
        }
    }
    int letters = 0;
    int regularLetters = 0;
    for (unsigned int row = 0; row < 16; ++row) {
        unsigned short const* const units = toUnicode + 16 * row;
        unsigned int const first = rowOfMost(units);
        regularCodes.lowRows[row] = static_cast<unsigned char>(first);
        regularCodes.highRows[row] = static_cast<unsigned char>(first >> 8);
        for (unsigned int place = 0; place < 16; ++place) {
            unsigned char& rows = regularCodes.regular[row / 8][place];
            bool const isRegular = keepsPlace(units[place], place) && units[place] - place == first;
            if (isRegular)
                rows = static_cast<unsigned char>(rows | 1U << row % 8);
            letters += row >= 0xA && units[place] != 0;
            regularLetters += row >= 0xA && isRegular;
        }
    }
    mostlyRegular = 4 * regularLetters >= 3 * letters;
    // What a page without memory leaves unmapped counts as unmapped here, too.
    auto const same = [this](unsigned int unit) { return get(static_cast<unsigned short>(unit)) == unit; };
    decodesPrintableASCII = encodesPrintableASCII = isLatin1 = true;
    for (unsigned int code = 0; code < 0x100; ++code) {
        bool const isGraphic = code >= 0x20 && code < 0x7F;
        decodesPrintableASCII = decodesPrintableASCII && (!isGraphic || toUnicode[code] == code);
        encodesPrintableASCII = encodesPrintableASCII && (!isGraphic || same(code));
        isLatin1 = isLatin1 && toUnicode[code] == code && same(code);
    }
    byteIdentity = identityOf([this](unsigned int byte) { return unsigned{toUnicode[byte]}; });
    unitIdentity = identityOf([this](unsigned int unit) { return unsigned{get(static_cast<unsigned short>(unit))}; });
}

}  // namespace kx7
