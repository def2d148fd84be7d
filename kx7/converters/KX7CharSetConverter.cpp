// kx7text - what all converters inherit.
#include "kx7/converters/KX7CharSetConverter.h"

KX7CharSetConverter::~KX7CharSetConverter() = default;

unsigned int KX7CharSetConverter::fromUTF8(void*, unsigned char const*, unsigned int, ILLCHAR_OPTYPE, bool*)
{
    return 0;
}

unsigned int KX7CharSetConverter::toUTF8(unsigned char*, void const*, unsigned int, ILLCHAR_OPTYPE, bool*)
{
    return 0;
}
