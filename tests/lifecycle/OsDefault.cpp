// kx7text tests - the character set that the environment stands for is the one given as a number.
#include <cstdio>
#include <cstdlib>

#include "kx7/charset/CharSetConverterManager.h"

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    auto const expected = static_cast<KX7CharSet>(atoi(argv[1]));
    bool const right = KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT) == g_oCnvtMgr.getConverter(expected) &&
                       g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT) == g_oCnvtMgr.getConverter(expected);
    char const* const language = getenv("LANG");
    printf("LANG %s: %s %s\n", language ? language : "unset", right ? "is" : "should be", argv[1]);
    return right ? 0 : 1;
}
