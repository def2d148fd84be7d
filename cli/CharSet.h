// kx7text - kx7conv: a character set that has a converter, and what messages say of it.
#ifndef KX7_CLI_CHARSET_H
#define KX7_CLI_CHARSET_H

#include <string>
#include <string_view>

#include "kx7/convert.h"

namespace kx7conv {

struct CharSet {
    /** `charSet` has a converter. */
    explicit CharSet(KX7CharSet charSet)
        : name(kx7::charSetInfo(charSet)->name), number(kx7::charSetInfo(charSet)->charSet)
    {
    }

    /** The bytes of a text that the set can represent; empty where it cannot. */
    std::string encoded(std::u16string_view text) const
    {
        kx7::Bytes bytes = kx7::encode(text, number);
        return bytes.isLossless() ? std::move(bytes.text) : std::string();
    }

    char const* name;
    KX7CharSet number;  ///< never KX7CS_OS_DEFAULT
};

/** The reasons of faults: " invalid NAME sequence 82 20", "U+20AC not in NAME". */
std::string invalidSequence(CharSet const& charSet, std::string_view bytes);
std::string notIn(CharSet const& charSet, unsigned int codePoint);

}  // namespace kx7conv

#endif
