// kx7text example - a Unicode file name in an environment whose character set does not hold it.
//
//     LANG=de_DE.ISO-8859-1 file_name_round_trip
#include <cstdio>
#include <cstring>

#include <kx7/kx7.h>

int main()
{
    unsigned char const name[] = "r\xC3\xA9sum\xC3\xA9-\xE4\xB8\xAD.txt";

    // What the environment cannot represent is written as "U+" and four digits. Six bytes for each byte of the name
    // are always enough.
    char local[6 * sizeof name];
    unsigned int const bytes = UTF8ToLocalPath(local, name, sizeof local);
    printf("%u bytes, escaped: %s\n", bytes, strstr(local, "U+4E2D") ? "yes" : "no");

    // The way back restores the name.
    unsigned char back[3 * sizeof local];
    LocalPathToUTF8(back, local, sizeof back);
    printf("%s\n", reinterpret_cast<char*>(back));
    return memcmp(back, name, sizeof name) == 0 ? 0 : 1;
}
