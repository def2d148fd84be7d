// kx7text benchmarks - collects the rounds of every case, and prints them as tables.
#ifndef KX7_BENCH_REPORT_H
#define KX7_BENCH_REPORT_H

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "bench/Cases.h"

namespace kx7bench {

/** The library with one set of kernels. */
struct KernelSet {
    std::string name;   ///< "avx512"
    std::string title;  ///< "AVX-512"

    /** What the library is called among the contenders. */
    std::string contender() const { return "kx7-" + name; }
};

/** Where a contender leaves, among its counters, how many pages it met for the first time. */
constexpr char const* PAGE_FAULTS = "page faults";

/** The medians of one case. */
struct Result {
    CaseName name;
    size_t bytes;
    std::map<std::string, double> seconds;  ///< by contender; none where the case could not be measured
    double pageFaults;                      ///< of one iteration, where they are counted

    bool has(std::string const& contender) const { return seconds.count(contender) != 0; }

    /** GB of source a second. */
    double speed(std::string const& contender) const;

    /** Speed divided by that of the fastest peer; 0 where there is none, or the contender was not measured. */
    double ratio(std::string const& contender) const;
};

/** Takes the runs of Google Benchmark, case by case. */
class Report : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override;

    /** Whose runs come next: at least one round of each contender. */
    void begin(Case const& c);
    /** All rounds of that case have come. False: some are too short to be worth anything, and all must come anew. */
    bool end();

    std::vector<Result> const& results() const { return m_results; }

    /** A table an operation, as Markdown. */
    void writeDetails(std::ostream& out, std::vector<KernelSet> const& sets) const;

    /** All cases as comma-separated values: the parts of the name, bytes of source, nanoseconds of each contender. */
    void writeFile(std::ostream& out) const;

private:
    void beginRounds();

    std::vector<Result> m_results;
    std::map<std::string, std::vector<double>> m_rounds;
    double m_shortestRound = 0;
};

/** printf of one number. */
std::string formatted(char const* format, double value);

}  // namespace kx7bench

#endif
