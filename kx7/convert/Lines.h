// kx7text - counting of line feeds: what a pump of bytes does about them, at no cost where it is nothing (internal).
#ifndef KX7_CONVERT_LINES_H
#define KX7_CONVERT_LINES_H

#include <algorithm>
#include <cstddef>

namespace kx7 {

/** Line feeds among bytes or code units. Counted in as many bits as an element has, which fills vectors. */
template <class T>
size_t countLineFeeds(T const* text, T const* end)
{
    constexpr ptrdiff_t BLOCK = sizeof(T) == 1 ? 240 : 2048;  // a T holds their sum
    size_t total = 0;
    while (text != end) {
        T const* const blockEnd = text + std::min(end - text, BLOCK);
        T count = 0;
        for (; text != blockEnd; ++text)
            count = static_cast<T>(count + (*text == '\n' ? 1 : 0));
        total += count;
    }
    return total;
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

}  // namespace kx7

#endif
