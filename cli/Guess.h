// kx7text - kx7conv: in which character sets an input is clean, and which of them is likeliest.
#ifndef KX7_CLI_GUESS_H
#define KX7_CLI_GUESS_H

#include <vector>

#include "Io.h"
#include "kx7/convert.h"

namespace kx7conv {

/** Every character set with a converter in which all of the input is clean, likeliest first. Throws InputError. */
std::vector<kx7::CharSetInfo const*> guess(Input& input);

}  // namespace kx7conv

#endif
