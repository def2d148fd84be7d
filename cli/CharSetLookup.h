// kx7text - kx7conv: character sets by what the user calls them.
#ifndef KX7_CLI_CHARSETLOOKUP_H
#define KX7_CLI_CHARSETLOOKUP_H

#include <string>

#include "kx7/charset/CharSetNames.h"

namespace kx7conv {

/**
 * The character set of a number, a name or a label, as kx7::findCharSet knows it. Null where there is none such.
 */
kx7::CharSetName const* findCharSet(std::string const& text);

/** `charSet` has a converter, rather than getting the UTF-8 converter for want of one. */
bool hasConverter(KX7CharSet charSet);

}  // namespace kx7conv

#endif
