// kx7text benchmarks - collects the rounds of every case and prints ratios of medians.
#ifndef KX7_BENCH_REPORT_H
#define KX7_BENCH_REPORT_H

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace kx7bench {

/** Takes the runs of Google Benchmark. Names are operation/set/script/form/size/peer. */
class Report : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override;

    /** A table a group of operations, as Markdown: this library's GB/s and its speed divided by the faster peer's. */
    void write(std::ostream& out) const;

private:
    struct Row {
        std::map<std::string, std::map<std::string, std::vector<double>>> speeds;  ///< by size, by peer
    };
    std::map<std::string, Row> m_rows;
};

}  // namespace kx7bench

#endif
