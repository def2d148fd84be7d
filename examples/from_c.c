/* kx7text example - the entry points in C. */
#include <stdio.h>

#include <kx7/charset/KX7CharSet.h>

int main(void)
{
    unsigned char utf8[64];
    char local[64];
    unsigned int const length = LocalToUTF8(utf8, "caf\xE9", sizeof utf8, KX7CS_WCP1252);
    printf("%u bytes of UTF-8: %s\n", length, (char const*)utf8);
    UTF8ToLocal(local, utf8, sizeof local, KX7CharSetFromString("KX7CS_WCP1251"));
    printf("in code page 1251: %s\n", local);
    printf("%s\n", KX7CharSetToString(1251));
    return 0;
}
