// kx7text tests - prints the character set that was detected, and that of the converter which serves it.
//
// With the argument "later" the environment and the locale change before the question; with "registered" a converter is
// registered for the default itself.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kx7/charset/CharSetConverterManager.h"
#include "tests/charset/ForeignConverter.h"
#include "tests/support/CharSets.h"

int main(int argc, char** argv)
{
    int const detected = g_oCnvtMgr.getDefaultCharSet();
    if (argc > 1 && strcmp(argv[1], "later") == 0) {
        setenv("LANG", "ja_JP.SJIS", 1);
        setlocale(LC_ALL, "C.UTF-8");
    }
    static kx7test::ForeignConverter own(KX7CS_OS_DEFAULT);
    if (argc > 1 && strcmp(argv[1], "registered") == 0)
        g_oCnvtMgr.insert(KX7CS_OS_DEFAULT, &own, true);
    KX7CharSetConverter const* const converter = KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT);
    if (converter != g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT))
        return 1;
    printf("%d %d\n", detected, static_cast<int>(kx7test::charSetOf(*converter)));
    return 0;
}
