// kx7text example - reads a file in a legacy character set line by line and prints it as UTF-8.
//
//     read_legacy_file samples/russian.1251.txt KX7CS_WCP1251
#include <cstdio>
#include <fstream>
#include <string>

#include <kx7/kx7.h>

int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: read_legacy_file FILE CHARSET\n");
        return 2;
    }
    KX7CharSet const charSet = KX7CharSetFromString(argv[2]);
    if (charSet == KX7CS_OS_DEFAULT) {  // also what any unknown name gives
        fprintf(stderr, "unknown character set: %s\n", argv[2]);
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    if (!file) {
        fprintf(stderr, "cannot open %s\n", argv[1]);
        return 1;
    }

    // std::getline splits at the byte 0x0A, which is safe in every set here but the UTF-16 and UTF-32 ones. The
    // getline of KX7UString would decode in the set of the environment, and takes an empty line for a failure.
    std::string bytes;
    for (int number = 1; std::getline(file, bytes); ++number) {
        KX7UString line(bytes.data(), static_cast<unsigned int>(bytes.size()), charSet);
        line.trim(KX7UString::TRIM_END);  // a carriage return, if the file has them
        printf("%2d: %s\n", number, line.c_str(KX7CS_UTF8));
    }
    return 0;
}
