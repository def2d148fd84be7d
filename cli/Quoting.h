// kx7text - kx7conv: names and other foreign text in messages and records.
#ifndef KX7_CLI_QUOTING_H
#define KX7_CLI_QUOTING_H

#include <string>
#include <string_view>

namespace kx7conv {

/**
 * A name as a shell takes it, in the style shell-escape of GNU ls: as it is where nothing in it is special, else
 * between quotes, with what must not reach a terminal as in $'\n' and $'\233'. That is, in every locale: control
 * characters (C0, DEL, C1), line and paragraph separators, characters that reorder text (U+061C, U+200E and U+200F,
 * U+202A to U+202E, U+2066 to U+2069), and bytes that are not UTF-8. The result has no tab and no line feed.
 */
std::string quoted(std::string_view name);

/** The same, always between quotes: for the value of an option inside a sentence. */
std::string alwaysQuoted(std::string_view text);

/** Text for a message, not quoted: what quoted() escapes is a backslash and three octal digits a byte. */
std::string escaped(std::string_view text);

}  // namespace kx7conv

#endif
