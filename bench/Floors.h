// kx7text benchmarks - what the library must reach, and whether it did.
#ifndef KX7_BENCH_FLOORS_H
#define KX7_BENCH_FLOORS_H

#include <ostream>
#include <vector>

#include "bench/Report.h"

namespace kx7bench {

/** What one floor is, and the worst of the cases that it covers; texts are empty where there is no such case. */
struct FloorResult {
    std::string title;
    KernelSet kernels;
    double bound;         ///< 0: none for these kernels
    std::string worst;    ///< a ratio, GB/s or microseconds
    std::string where;    ///< the case
    std::string missing;  ///< cases that could not be measured
    std::string below;    ///< the worst at 4 KiB
    bool isMet;
};

std::vector<FloorResult> judged(std::vector<Result> const& results, std::vector<KernelSet> const& sets);

/** A table a kernel set, as Markdown. */
void writeFloors(std::ostream& out, std::vector<FloorResult> const& floors);

/** All of them as comma-separated values. */
void writeFloorFile(std::ostream& out, std::vector<FloorResult> const& floors);

}  // namespace kx7bench

#endif
