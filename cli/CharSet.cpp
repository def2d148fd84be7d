// kx7text - kx7conv: a character set that has a converter, and what messages say of it.
#include "CharSet.h"

#include <cstdio>

namespace kx7conv {

namespace {

std::string hex(unsigned int value, int digits)
{
    char text[9];
    snprintf(text, sizeof text, "%0*X", digits, value);
    return text;
}

}  // namespace

std::string invalidSequence(CharSet const& charSet, std::string_view bytes)
{
    std::string text = std::string("invalid ") + charSet.name + " sequence";
    for (char const byte : bytes)
        text += " " + hex(static_cast<unsigned char>(byte), 2);
    return text;
}

std::string notIn(CharSet const& charSet, unsigned int codePoint)
{
    return "U+" + hex(codePoint, 4) + " not in " + charSet.name;
}

}  // namespace kx7conv
