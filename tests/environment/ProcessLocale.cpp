// kx7text tests - without LANG the library asks the process for its LC_CTYPE locale when it is loaded.
#include <dlfcn.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "kx7/charset/KX7CharSet.h"

/** Loads the library named, in the locale named, and says how many units the UTF-8 form of U+00E9 becomes. */
static unsigned int unitsOfTwoBytes(char const* library, char const* locale)
{
    if (!setlocale(LC_ALL, locale)) {
        fprintf(stderr, "no locale %s\n", locale);
        exit(2);
    }
    void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    auto const convert = reinterpret_cast<decltype(&LocalToUTF16)>(dlsym(handle, "LocalToUTF16"));
    unsigned short units[8];
    unsigned int const count = convert(units, "\xC3\xA9", 8, KX7CS_OS_DEFAULT);
    dlclose(handle);
    return count;
}

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    unsetenv("LANG");
    unsigned int const inUTF8 = unitsOfTwoBytes(argv[1], "C.UTF-8");
    unsigned int const inC = unitsOfTwoBytes(argv[1], "C");
    setenv("LANG", "de_DE.ISO-8859-1", 1);
    unsigned int const withLang = unitsOfTwoBytes(argv[1], "C.UTF-8");
    if (inUTF8 == 1 && inC == 2 && withLang == 2)
        return 0;
    fprintf(stderr, "%u, %u and %u units for 1, 2 and 2\n", inUTF8, inC, withLang);
    return 1;
}
