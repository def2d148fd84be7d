// kx7text fuzzing - fromUTF16 and getNumBytes of every converter against the models, in memory that ends at a page.
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Subjects.h"

using namespace kx7test;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    Probe& probe = *probes()[input.below(probes().size())];
    ILLCHAR_OPTYPE const op = OPERATIONS[input.below(4)];
    unsigned int const capacity = input.capacity();
    auto const units = input.rest<char16_t>();
    probe.compareEncode({units, capacity, op}, FLAG_ARGUMENTS[units.size() % 3]);
    probe.compareNumBytes(units, UNTIL_TERMINATOR);
    probe.compareNumBytes(units, static_cast<unsigned int>(units.size()));
    require();
    return 0;
}
