// kx7text tests - without LANG, and with no answer from setlocale, the default character set is ISO 8859-1.
#include <cstdio>
#include <cstdlib>

#include "kx7/charset/KX7CharSet.h"

static int queries = 0;

/** In the place of the C library's, for the shared library that this program loads: knows no locale. */
extern "C" char* setlocale(int, char const* locale)
{
    if (!locale)
        ++queries;
    return nullptr;
}

int main()
{
    unsigned short units[8];
    unsigned int const count = LocalToUTF16(units, "\xC3\xA9", 8, KX7CS_OS_DEFAULT);
    if (!getenv("LANG") && queries == 1 && count == 2 && units[0] == 0xC3 && units[1] == 0xA9)
        return 0;
    fprintf(stderr, "%d queries for 1, %u units for 2\n", queries, count);
    return 1;
}
