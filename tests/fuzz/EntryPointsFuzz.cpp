// kx7text fuzzing - the exported functions against one or two calls of a converter, and the names of file paths.
#include "kx7/charset/KX7CharSet.h"
#include "tests/charset/EntryPointReference.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/CharSets.h"
#include "tests/support/Memory.h"

using namespace kx7test;

namespace {

/** Runs a call in memory of exactly its capacity. */
template <class Call>
Outcome fenced(unsigned int capacity, Call const& call)
{
    static Fenced<unsigned short> memory;
    auto* const dest = reinterpret_cast<char*>(memory.arm((capacity + 1) / 2));
    memset(dest, FILL, capacity);
    unsigned int const result = call(dest);
    require(memory.intact(), "wrote outside its capacity");
    require(result <= capacity, "result beyond the capacity");
    return {result, std::string(dest, capacity)};
}

void requireSame(Outcome const& got, Outcome const& expected, char const* what)
{
    require(got.result == expected.result && got.dest == expected.dest, what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static PageEnd<unsigned short> memory;
    Input input(data, size);
    CharSetRow const& row = charSetRows()[input.below(charSetRows().size())];
    KX7CharSetConverter& converter = *row.converter;
    unsigned int const nullSize = converter.getNullCharSize();
    auto const which = input.below(6);
    auto const capacity = static_cast<unsigned int>(input.below(400));
    // Four zeros end the text in any encoding; whole units keep it aligned.
    auto text = input.rest<char>();
    text.resize(text.size() / 4 * 4);
    std::u16string units(text.size() / 2 + 2, u'\0');
    if (!text.empty())
        memcpy(&units[0], text.data(), text.size());
    unsigned short const* const source = memory.hold(units, 0);
    auto const* const bytes = reinterpret_cast<char const*>(source);
    auto const* const utf8 = reinterpret_cast<unsigned char const*>(source);
    int const destSize = static_cast<int>(capacity);
    switch (which) {
        case 0:
            if (capacity == 0 || row.charSet == KX7CS_UTF16)
                break;
            if (row.charSet != KX7CS_UTF8 && row.charSet != KX7CS_UTF32)
                requireSame(fenced(capacity,
                                   [&](char* dest) {
                                       return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), bytes, destSize,
                                                          row.charSet);
                                   }),
                            referenceThroughUTF16(converter, bytes, g_oConverterUTF8, capacity, 1), "LocalToUTF8");
            else
                fenced(capacity, [&](char* dest) {
                    return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), bytes, destSize, row.charSet);
                });
            break;
        case 1: {
            Outcome const got =
                fenced(capacity, [&](char* dest) { return UTF8ToLocal(dest, utf8, destSize, row.charSet); });
            if (capacity >= nullSize && row.charSet != KX7CS_UTF8)
                requireSame(got, referenceThroughUTF16(g_oConverterUTF8, bytes, converter, capacity, nullSize),
                            "UTF8ToLocal");
            break;
        }
        case 2:
            fenced(capacity * 2, [&](char* dest) {
                return LocalToUTF16(reinterpret_cast<unsigned short*>(dest), bytes, destSize, row.charSet);
            });
            break;
        case 3: fenced(capacity, [&](char* dest) { return UTF16ToLocal(dest, source, destSize, row.charSet); }); break;
        case 4:
            fenced(capacity, [&](char* dest) {
                return LocalPathToUTF8(reinterpret_cast<unsigned char*>(dest), bytes, destSize);
            });
            break;
        default: fenced(capacity, [&](char* dest) { return UTF8ToLocalPath(dest, utf8, destSize); });
    }
    (void)GetNumUnits(bytes, row.charSet);
    (void)GetNumBytes(source, row.charSet);
    std::string const name(bytes);
    KX7CharSet const named = KX7CharSetFromString(name.c_str());
    require(named == KX7CS_OS_DEFAULT || KX7CharSetToString(named) == name, "KX7CharSetFromString");
    return 0;
}
