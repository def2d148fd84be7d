// kx7text example - splits a text, edits the parts, and joins them again.
#include <cstdio>
#include <stdexcept>

#include <kx7/kx7.h>

int main()
{
    KX7UString const line(" apples ;\xC3\xA4pfel;; Pommes;", KX7CS_UTF8);

    // Empty parts count, but for one after the last separator: this list has four.
    KX7UStringList parts = line.split(static_cast<unsigned short>(';'));
    printf("%u parts\n", parts.size());

    for (KX7UString& part : parts)
        part.trim().toUpper();
    parts.insert(1, KX7UString("pears", KX7CS_UTF8));
    parts.erase(3);  // the empty one

    KX7UString joined = parts.combine(KX7UString(", ", KX7CS_UTF8));
    printf("%s\n", joined.c_str(KX7CS_UTF8));

    if (joined.find(KX7UString("pears", KX7CS_UTF8)) != KX7UString::npos)
        printf("with pears\n");
    try {
        parts.at(99);
    }
    catch (std::out_of_range const& e) {
        printf("%s\n", e.what());
    }
    return 0;
}
