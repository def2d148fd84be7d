// kx7text benchmarks - ratios of medians.
#include "bench/Report.h"

#include <algorithm>
#include <cstdio>

namespace kx7bench {

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

std::string format(char const* format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

void Report::ReportRuns(std::vector<Run> const& runs)
{
    for (Run const& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred)
            continue;
        std::string const name = run.run_name.function_name;
        size_t const peerAt = name.rfind('/');
        size_t const sizeAt = name.rfind('/', peerAt - 1);
        std::string const key = name.substr(0, sizeAt);
        auto const bytes = run.counters.find("bytes_per_second");
        m_rows[key].speeds[name.substr(sizeAt + 1, peerAt - sizeAt - 1)][name.substr(peerAt + 1)].push_back(
            bytes->second.value);
    }
}

void Report::write(std::ostream& out) const
{
    static char const* const sizes[] = {"16B", "64B", "4KiB", "1MiB"};
    std::string group;
    for (auto const& entry : m_rows) {
        std::string const& key = entry.first;
        std::string const operation = key.substr(0, key.find('/'));
        if (operation != group) {
            group = operation;
            out << "\n## " << group
                << "\n\n| case | GB/s at 1 MiB | 16 B | 64 B | 4 KiB | 1 MiB |\n|---|---|---|---|---|---|\n";
        }
        Row const& row = entry.second;
        std::string ratios;
        double large = 0;
        for (char const* size : sizes) {
            auto const found = row.speeds.find(size);
            ratios += " | ";
            if (found == row.speeds.end())
                continue;
            double own = 0;
            double best = 0;
            for (auto const& peer : found->second) {
                if (peer.first == "kx7")
                    own = median(peer.second);
                else
                    best = std::max(best, median(peer.second));
            }
            large = own;
            ratios += best > 0 ? format("%.2f", own / best) : "";
        }
        out << "| " << key.substr(operation.size() + 1) << " | " << format("%.2f", large / 1e9) << ratios << " |\n";
    }
}

}  // namespace kx7bench
