// kx7text example - converts a buffer of bytes to UTF-8 and back.
#include <cstdio>
#include <cstring>
#include <vector>

#include <kx7/kx7.h>

int main()
{
    // Bytes of Windows code page 1252, as a database or an old file may hold them.
    char const legacy[] = "caf\xE9 \x80 5";

    // No character of these sets takes more than three bytes of UTF-8; the size includes the closing zero.
    std::vector<unsigned char> utf8(3 * strlen(legacy) + 1);
    unsigned int const length = LocalToUTF8(utf8.data(), legacy, static_cast<int>(utf8.size()), KX7CS_WCP1252);
    printf("%u bytes of UTF-8: %s\n", length, reinterpret_cast<char const*>(utf8.data()));

    // And back, into a set that has no euro sign: it becomes a question mark.
    std::vector<char> latin1(length + 1);
    UTF8ToLocal(latin1.data(), utf8.data(), static_cast<int>(latin1.size()), KX7CS_ISO_8859_1);
    printf("Latin-1 in hexadecimal:");
    for (char const* p = latin1.data(); *p != 0; ++p)
        printf(" %02X", static_cast<unsigned int>(static_cast<unsigned char>(*p)));
    printf("\n");

    // The functions above replace what they cannot convert. To notice it, have the converter stop and compare.
    unsigned short const text[] = {'5', ' ', 0x20AC, 0};
    char dest[16];
    unsigned int const capacity = sizeof dest - g_oConverterISO_8859_1.getNullCharSize();
    unsigned int const done = g_oConverterISO_8859_1.fromUTF16(dest, text, capacity, ILLCHAR_STOP, nullptr);
    printf("stopped after %u of 3 units: \"%s\"\n", done, dest);
    return 0;
}
