// kx7text example - whole texts: strings in, strings out, and what was lost on the way.
#include <cstdio>

#include <kx7/kx7.h>

int main()
{
    // Strict unless told otherwise: the text ends before the first thing that cannot be converted.
    kx7::Units const units = kx7::decode("caf\xE9 \x80 5", KX7CS_WCP1252);
    std::printf("%zu units, %s\n", units.text.size(), units.isLossless() ? "all of it" : "not all");

    kx7::Bytes const latin = kx7::encode(units.text, KX7CS_ISO_8859_1, {kx7::ErrorPolicy::ESCAPE});
    std::printf("%s: %llu lost, the first U+%04X at unit %llu\n", latin.text.substr(5).c_str(), latin.errorCount,
                static_cast<unsigned int>(latin.first.codePoint), latin.first.unitOffset);

    kx7::Bytes const bad = kx7::transcode("ab\xE3\x81 cd", KX7CS_UTF8, *kx7::findCharSet("latin1"));
    std::printf("\"%s\" before %u bytes at byte %llu\n", bad.text.c_str(), bad.first.length, bad.first.byteOffset);
    std::printf("well-formed up to byte %zu\n", kx7::validateUtf8("ab\xE3\x81 cd").offset);
    return 0;
}
