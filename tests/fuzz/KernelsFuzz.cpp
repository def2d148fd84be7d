// kx7text fuzzing - every set of kernels that the machine has against the plain steps: ranges both ways, and text from
// and to UTF-8, every set.
#include <tuple>

#include "kx7/converters/Engine.h"
#include "kx7/kernels/Kernels.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/CharSets.h"
#include "tests/support/Memory.h"

using namespace kx7test;
using kx7::Engine;
using kx7::InstructionSet;
using kx7::Progress;

namespace {

using Result = std::tuple<size_t, size_t, kx7::Stop, unsigned int, std::string>;

template <class Convert, class Source, class Dest>
Result run(Convert convert, KX7CharSetConverter& converter, Source const* source, size_t size, Fenced<Dest>& memory,
           size_t capacity, bool last)
{
    Dest* const dest = memory.arm(capacity);
    Progress const p = convert(converter, source, source + size, dest, dest + capacity, last);
    require(memory.intact(), "wrote outside its capacity");
    return {p.consumed, p.written, p.stop, p.length,
            std::string(reinterpret_cast<char const*>(dest), p.written * sizeof(Dest))};
}

template <class Convert, class Source, class Dest>
void compare(Convert convert, KX7CharSetConverter& converter, Source const* source, size_t size, Fenced<Dest>& memory,
             size_t capacity, bool last)
{
    kx7::useInstructionSet(InstructionSet::PLAIN);
    Result const expected = run(convert, converter, source, size, memory, capacity, last);
    for (InstructionSet const set : {InstructionSet::BASELINE, InstructionSet::AVX2, InstructionSet::AVX512})
        if (kx7::useInstructionSet(set))
            require(run(convert, converter, source, size, memory, capacity, last) == expected, "kernels differ");
}

/** Zero-terminated text from one converter to another. */
std::string runThrough(KX7CharSetConverter& from, std::string const& text, KX7CharSetConverter& to,
                       unsigned int capacity, ILLCHAR_OPTYPE op)
{
    static PageEnd<unsigned char> source;
    static Fenced<unsigned char> dest;
    size_t const terminator = to.getNullCharSize();
    unsigned char* const bytes = dest.arm(capacity + terminator);
    auto const* const in = reinterpret_cast<char const*>(source.hold(text, from.getNullCharSize()));
    unsigned int const n = kx7::convertThroughUTF16(from, in, to, bytes, capacity, {false, op});
    require(dest.intact(), "wrote outside its capacity");
    return {bytes, bytes + n};
}

void compareThrough(KX7CharSetConverter& from, std::string const& text, KX7CharSetConverter& to, unsigned int capacity,
                    ILLCHAR_OPTYPE op)
{
    kx7::useInstructionSet(InstructionSet::PLAIN);
    std::string const expected = runThrough(from, text, to, capacity, op);
    for (InstructionSet const set : {InstructionSet::BASELINE, InstructionSet::AVX2, InstructionSet::AVX512})
        if (kx7::useInstructionSet(set))
            require(runThrough(from, text, to, capacity, op) == expected, "kernels differ");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static PageEnd<unsigned char> bytesIn;
    static PageEnd<unsigned short> unitsIn;
    static Fenced<unsigned char> bytesOut;
    static Fenced<unsigned short> unitsOut;
    Input input(data, size);
    KX7CharSetConverter& converter = *charSetRows()[input.below(charSetRows().size())].converter;
    Engine const& engine = *kx7::engineOf(converter);
    unsigned int const how = input.byte();
    bool const last = how & 1;
    size_t capacity = input.byte();
    // Repeated, so that short inputs fill the blocks of the kernels.
    size_t const repeat = 1 + input.byte() % 16;
    if ((how & 6) == 6 && converter.getNullCharSize() == 1) {
        auto const piece = input.rest<char>();
        std::string text;
        for (size_t i = 0; i < repeat; ++i)
            text += piece;
        auto const most = static_cast<unsigned int>(how & 8 ? capacity * 4 : text.size() * 6 + 8);
        auto const op = static_cast<ILLCHAR_OPTYPE>((how >> 4) % 3);
        if (how & 128)
            compareThrough(g_oConverterUTF8, text, converter, most, op);
        else
            compareThrough(converter, text, g_oConverterUTF8, most, op);
        return 0;
    }
    if ((how & 6) == 0) {
        auto const piece = input.rest<char16_t>();
        std::u16string text;
        for (size_t i = 0; i < repeat; ++i)
            text += piece;
        capacity = how & 8 ? capacity * 4 : text.size() * 6 + 8;
        compare(engine.encode, converter, unitsIn.hold(text, 0), text.size(), bytesOut, capacity, last);
    }
    else {
        auto const piece = input.rest<char>();
        std::string text;
        for (size_t i = 0; i < repeat; ++i)
            text += piece;
        capacity = how & 8 ? capacity : text.size() * 2 + 8;
        compare(how & 16 ? engine.decodeStrict : engine.decode, converter, bytesIn.hold(text, 0), text.size(), unitsOut,
                capacity, last);
    }
    return 0;
}
