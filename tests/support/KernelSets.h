// kx7text tests - the sets of kernels that this machine has.
#ifndef KX7_TESTS_SUPPORT_KERNELSETS_H
#define KX7_TESTS_SUPPORT_KERNELSETS_H

#include <gtest/gtest.h>

#include <iostream>
#include <string>
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

inline std::string namesOf(std::vector<kx7::InstructionSet> const& some)
{
    std::string names;
    for (kx7::InstructionSet const set : some)
        names += (names.empty() ? "" : ", ") + std::string(nameOf(set));
    return names.empty() ? "none" : names;
}

/** Tests of kernels: each suite says which sets it has, and is skipped where there is nothing to compare. */
class KernelTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        RecordProperty("kernels", namesOf(sets()));
        std::cout << "Kernels of this machine: " << namesOf(sets()) << std::endl;
    }
    void SetUp() override
    {
        if (sets().empty())
            GTEST_SKIP() << "this machine has no kernels";
    }
};

/** Uses one set while it lives. */
class Using {
public:
    explicit Using(kx7::InstructionSet set) { EXPECT_TRUE(kx7::useInstructionSet(set)); }
    ~Using() { kx7::useInstructionSet(kx7::detectInstructionSet()); }
};

}  // namespace kx7test

#endif
