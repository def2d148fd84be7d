// kx7text benchmarks - what the library must reach, and whether it did.
#ifndef KX7_BENCH_FLOORS_H
#define KX7_BENCH_FLOORS_H

#include <ostream>
#include <vector>

#include "bench/Report.h"

namespace kx7bench {

/** A table a kernel set, as Markdown: for every floor the worst of the cases that it covers. */
void writeFloors(std::ostream& out, std::vector<Result> const& results, std::vector<KernelSet> const& sets);

}  // namespace kx7bench

#endif
