// kx7text fuzzing - names of files between UTF-8 and the default character set, which LANG chooses, at every capacity.
#include "tests/environment/PathNames.h"
#include "tests/fuzz/Fuzz.h"

using namespace kx7test;

namespace {

/** Names of ordinary length, and some that take the functions several pieces. */
std::string nameOf(Input& input)
{
    size_t const repeat = 1 + input.below(4) * input.below(64);
    std::string const piece = input.rest<char>();
    std::string name;
    for (size_t i = 0; i < repeat; ++i)
        name += piece;
    return name.substr(0, std::min(name.find('\0'), size_t{8000}));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    bool const toUTF8 = input.below(2) != 0;
    unsigned int const share = input.byte();
    std::string const name = nameOf(input);
    // Most names need about their own length.
    size_t const capacity = share < 128 ? share : name.size() * (share - 128) / 32;
    if (toUTF8)
        require(localPathToUTF8(name, capacity) == referenceToUTF8(name, capacity), "LocalPathToUTF8");
    else
        require(utf8ToLocalPath(name, capacity) == referenceToLocal(name, capacity), "UTF8ToLocalPath");
    require();
    return 0;
}
