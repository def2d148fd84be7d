// kx7text - which codes of a set are the units that they stand for (internal).
#ifndef KX7_KERNELS_IDENTITY_H
#define KX7_KERNELS_IDENTITY_H

namespace kx7 {

/** Which codes stand for themselves. */
enum class Identity : unsigned char {
    NONE,
    PRINTABLE,  ///< those of isPrintable: what all character sets have in common
    ASCII,      ///< those below 0x80, 0 included
    LATIN1      ///< those below 0x100, without 0: chosen by callers, never returned by identityOf
};

constexpr char PRINTABLE_FIRST = 0x20;
constexpr char PRINTABLE_LAST = 0x7D;

/** Without the backslash and the tilde, in whose places Japanese and Korean sets have others. */
constexpr bool isPrintable(unsigned int code)
{
    return code >= PRINTABLE_FIRST && code <= PRINTABLE_LAST && code != '\\';
}

/** How many of the first codes of a table are themselves. `table` (code) is 0 for what it lacks. */
template <class Table>
Identity identityOf(Table table)
{
    bool all = table(0U) == 0;
    bool printable = all;
    for (unsigned int code = 1; code < 0x80; ++code) {
        bool const isSame = table(code) == code;
        all = all && isSame;
        printable = printable && (isSame || !isPrintable(code));
    }
    return all ? Identity::ASCII : printable ? Identity::PRINTABLE : Identity::NONE;
}

}  // namespace kx7

#endif
