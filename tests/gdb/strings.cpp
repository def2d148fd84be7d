// kx7text tests - strings for gdb to print.
#include "kx7/text/KX7UStringStd.h"

namespace {

void here(KX7UString const& text, KX7UString const* const pointer)
{
    asm volatile("" : : "r"(&text), "r"(pointer) : "memory");
}

}  // namespace

int main()
{
    KX7UString const plain = kx7::toKX7UString(u"Stra\xDF"
                                               u"e \"\\\n",
                                               10);
    KX7UString const empty;
    KX7UString const wide = kx7::toKX7UString(u"\x4E2D\xD83D\xDE00\xD800\0z", 6);
    KX7UString const longText(static_cast<unsigned short>('x'), 1000);
    here(plain, &wide);
    here(empty, &longText);
    return 0;
}
