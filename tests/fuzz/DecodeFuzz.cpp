// kx7text fuzzing - toUTF16 and getNumUnits of every converter against the models, in memory that ends at a page.
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Subjects.h"

using namespace kx7test;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    Probe& probe = *probes()[input.below(probes().size())];
    ILLCHAR_OPTYPE const op = OPERATIONS[input.below(4)];
    unsigned int const capacity = input.capacity();
    int const limit = input.byte() % 4 == 0 ? static_cast<int>(input.byte()) - 2 : -1;
    auto bytes = input.rest<char>();
    // The terminator of a wide text is looked for at whole units.
    bytes.resize(bytes.size() / probe.converter().getNullCharSize() * probe.converter().getNullCharSize());
    probe.compareDecode({bytes, capacity, op, limit}, FLAG_ARGUMENTS[bytes.size() % 3]);
    probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
    probe.compareNumUnits(bytes, static_cast<unsigned int>(bytes.size()));
    require();
    return 0;
}
