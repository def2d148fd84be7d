// kx7text fuzzing - operations on strings, chosen by the input, against a model after each.
#include "tests/fuzz/Fuzz.h"
#include "tests/text/StringPlayer.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    kx7test::Input input(data, size);
    kx7test::StringPlayer player([&](size_t below) { return input.below(below); });
    // One at a time: an operation takes from the input what it needs.
    while (input.left() != 0) {
        player.play(1);
        kx7test::require();
    }
    return 0;
}
