// kx7text - how the tables of a single-byte set are built.
#include "kx7/kernels/SingleByte.h"

#include <algorithm>
#include <iterator>

namespace kx7 {

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
    }
    // What a page without memory leaves unmapped counts as unmapped here, too.
    auto const same = [this](unsigned int unit) { return get(static_cast<unsigned short>(unit)) == unit; };
    decodesPrintableASCII = encodesPrintableASCII = decodesASCII = encodesASCII = isLatin1 = true;
    for (unsigned int code = 0; code < 0x100; ++code) {
        bool const isPrintable = code >= 0x20 && code < 0x7F;
        decodesPrintableASCII = decodesPrintableASCII && (!isPrintable || toUnicode[code] == code);
        encodesPrintableASCII = encodesPrintableASCII && (!isPrintable || same(code));
        decodesASCII = decodesASCII && (code >= 0x80 || toUnicode[code] == code);
        encodesASCII = encodesASCII && (code >= 0x80 || same(code));
        isLatin1 = isLatin1 && toUnicode[code] == code && same(code);
    }
    sameBytes = sameOf([this](unsigned int byte) { return unsigned{toUnicode[byte]}; });
    sameUnits = sameOf([this](unsigned int unit) { return unsigned{get(static_cast<unsigned short>(unit))}; });
}

}  // namespace kx7
