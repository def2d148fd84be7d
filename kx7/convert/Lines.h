// kx7text - counting of line feeds: what a pump of bytes does about them, at no cost where it is nothing (internal).
#ifndef KX7_CONVERT_LINES_H
#define KX7_CONVERT_LINES_H

#include <algorithm>
#include <cstddef>

namespace kx7 {

/** Line feeds among bytes or code units. Sums as narrow as what is counted, in blocks of one length, fill vectors. */
template <class T>
size_t countLineFeeds(T const* text, T const* end)
{
    constexpr ptrdiff_t BLOCK = 240;  // a byte holds their sum
    size_t total = 0;
    for (; end - text >= BLOCK; text += BLOCK) {
        T count = 0;
        for (ptrdiff_t i = 0; i < BLOCK; ++i)
            count = static_cast<T>(count + (text[i] == '\n' ? 1 : 0));
        total += count;
    }
    return total + static_cast<size_t>(std::count(text, end, '\n'));
}

/** Bytes and the code units that they became. */
struct Converted {
    unsigned char const* bytes;
    unsigned char const* bytesEnd;
    unsigned short const* units;
    unsigned short const* unitsEnd;
};

/** No line is counted. */
struct NoLines {
    static void add(Converted const& /*text*/) {}
    static unsigned long long before(Converted const& /*text*/) { return 0; }
};

/** Lines are counted in the code units. */
struct LinesOfUnits {
    unsigned long long& total;

    void add(Converted const& text) { total += countLineFeeds(text.units, text.unitsEnd); }

    /** Line feeds before a place, where `text` is what is converted but not yet counted. */
    unsigned long long before(Converted const& text) const { return total + countLineFeeds(text.units, text.unitsEnd); }
};

/** Lines are counted in the bytes. */
struct LinesOfBytes {
    unsigned long long& total;

    void add(Converted const& text) { total += countLineFeeds(text.bytes, text.bytesEnd); }
    unsigned long long before(Converted const& text) const { return total + countLineFeeds(text.bytes, text.bytesEnd); }
};

}  // namespace kx7

#endif
