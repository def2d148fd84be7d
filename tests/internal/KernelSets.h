// kx7text tests - the sets of kernels that this machine has.
#ifndef KX7_TESTS_INTERNAL_KERNELSETS_H
#define KX7_TESTS_INTERNAL_KERNELSETS_H

#include <gtest/gtest.h>

#include <vector>

#include "kx7/kernels/Kernels.h"

namespace kx7test {

inline char const* nameOf(kx7::InstructionSet set)
{
    switch (set) {
        case kx7::InstructionSet::PLAIN: return "plain";
        case kx7::InstructionSet::BASELINE: return "baseline";
        case kx7::InstructionSet::AVX2: return "AVX2";
        case kx7::InstructionSet::AVX512: return "AVX-512";
    }
    return "?";
}

/** The sets of this machine that have kernels. */
inline std::vector<kx7::InstructionSet> sets()
{
    std::vector<kx7::InstructionSet> found;
    for (kx7::InstructionSet const set :
         {kx7::InstructionSet::BASELINE, kx7::InstructionSet::AVX2, kx7::InstructionSet::AVX512})
        if (set <= kx7::detectInstructionSet())
            found.push_back(set);
    return found;
}

/** Uses one set while it lives. */
class Using {
public:
    explicit Using(kx7::InstructionSet set) { EXPECT_TRUE(kx7::useInstructionSet(set)); }
    ~Using() { kx7::useInstructionSet(kx7::detectInstructionSet()); }
};

}  // namespace kx7test

#endif
