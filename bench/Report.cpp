// kx7text benchmarks - medians of rounds, and the tables of all cases.
#include "bench/Report.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <set>

namespace kx7bench {

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

bool isPeer(std::string const& contender)
{
    return contender.compare(0, 4, "kx7-") != 0 && contender != "memcpy";
}

std::string const NOT_MEASURED = "missing";

/** The cells of all kernel sets in one; empty where all are. */
template <class Cell>
std::string joined(std::vector<KernelSet> const& sets, Cell cell)
{
    std::string text;
    for (KernelSet const& set : sets)
        text += (text.empty() ? "" : " / ") + cell(set);
    return text;
}

struct Title {
    char const* operation;
    char const* text;
};

Title const TITLES[] = {
    {"decode", "To UTF-16"},
    {"encode", "From UTF-16"},
    {"to-utf8", "To UTF-8"},
    {"from-utf8", "From UTF-8"},
    {"num-units", "getNumUnits beside ICU's preflight"},
    {"num-bytes", "getNumBytes beside ICU's preflight"},
    {"lookup", "Finding a converter beside opening one"},
    {"load", "Building the tables of a multibyte converter"},
    {"load-first", "The same in a new process"},
    {"text", "Operations on UTF-16 text"},
};

void writeSpeeds(std::ostream& out, std::vector<Result const*> const& results, std::vector<KernelSet> const& sets)
{
    std::vector<std::string> sizes;
    for (Size const& size : SIZES)
        if (std::any_of(results.begin(), results.end(), [&](Result const* r) { return r->name.size == size.name; }))
            sizes.push_back(size.name);
    out << "| case | GB/s, " << sizes.back() << " | peer | memcpy |";
    for (std::string const& size : sizes)
        out << ' ' << size << " |";
    out << "\n|---|---|---|---|";
    for (size_t n = sizes.size(); n != 0; --n)
        out << "---|";
    out << '\n';
    std::map<std::string, std::map<std::string, Result const*>> rows;
    for (Result const* result : results)
        rows[result->name.row()][result->name.size] = result;
    for (auto const& row : rows) {
        out << "| " << row.first.substr(row.first.find('/') + 1) << " | ";
        auto const last = row.second.find(sizes.back());
        if (last == row.second.end()) {
            out << "| | |";
        }
        else {
            Result const& result = *last->second;
            double peer = 0;
            for (auto const& contender : result.seconds)
                if (isPeer(contender.first))
                    peer = std::max(peer, result.speed(contender.first));
            out << joined(sets,
                          [&](KernelSet const& set) {
                              return result.has(set.contender()) ? formatted("%.2f", result.speed(set.contender()))
                                                                 : NOT_MEASURED;
                          })
                << " | " << (peer > 0 ? formatted("%.2f", peer) : "") << " | "
                << (result.has("memcpy") ? formatted("%.1f", result.speed("memcpy")) : "") << " |";
        }
        for (std::string const& size : sizes) {
            auto const cell = row.second.find(size);
            out << ' ';
            if (cell != row.second.end())
                out << joined(sets, [&](KernelSet const& set) {
                    double const ratio = cell->second->ratio(set.contender());
                    return !cell->second->has(set.contender()) ? NOT_MEASURED
                           : ratio > 0                         ? formatted("%.2f", ratio)
                                                               : "";
                });
            out << " |";
        }
        out << '\n';
    }
}

void writeTimes(std::ostream& out, std::vector<Result const*> const& results, std::vector<KernelSet> const& sets)
{
    bool const faults =
        std::any_of(results.begin(), results.end(), [](Result const* result) { return result->pageFaults != 0; });
    bool const peers = std::any_of(results.begin(), results.end(), [&](Result const* result) {
        return std::any_of(sets.begin(), sets.end(),
                           [&](KernelSet const& set) { return result->ratio(set.contender()) != 0; });
    });
    out << "| case | microseconds |" << (peers ? " fastest peer | ratio |" : "") << (faults ? " page faults |" : "")
        << "\n|---|---|" << (peers ? "---|---|" : "") << (faults ? "---|" : "") << '\n';
    for (Result const* result : results) {
        std::string best;
        for (auto const& contender : result->seconds)
            if (isPeer(contender.first) && (best.empty() || contender.second < result->seconds.at(best)))
                best = contender.first;
        out << "| " << result->name.set << " | " << joined(sets, [&](KernelSet const& set) {
            return result->has(set.contender()) ? formatted("%.4g", result->seconds.at(set.contender()) * 1e6)
                                                : NOT_MEASURED;
        }) << " |";
        if (peers) {
            out << ' ' << (best.empty() ? "" : best + formatted(" %.4g", result->seconds.at(best) * 1e6)) << " | "
                << (best.empty() ? ""
                                 : joined(sets,
                                          [&](KernelSet const& set) {
                                              return result->has(set.contender())
                                                         ? formatted("%.1f", result->ratio(set.contender()))
                                                         : NOT_MEASURED;
                                          }))
                << " |";
        }
        if (faults)
            out << formatted(" %.0f |", result->pageFaults);
        out << '\n';
    }
}

}  // namespace

std::string formatted(char const* format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    return text;
}

double Result::speed(std::string const& contender) const
{
    return static_cast<double>(bytes) / seconds.at(contender) / 1e9;
}

double Result::ratio(std::string const& contender) const
{
    if (!has(contender))
        return 0;
    double best = 0;
    for (auto const& entry : seconds)
        if (isPeer(entry.first) && (best == 0 || entry.second < best))
            best = entry.second;
    return best / seconds.at(contender);
}

void Report::begin(Case const& c)
{
    beginRounds();
    m_results.push_back({c.name, c.bytes, {}, 0});
}

void Report::beginRounds()
{
    m_rounds.clear();
    m_shortestRound = std::numeric_limits<double>::max();
}

void Report::ReportRuns(std::vector<Run> const& runs)
{
    for (Run const& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred)
            continue;
        std::string const& name = run.run_name.function_name;
        // Processor time, so that other processes do not count; what a contender timed itself stands in the other.
        bool const manual = run.run_name.time_type == "manual_time";
        double const seconds = manual ? run.real_accumulated_time : run.cpu_accumulated_time;
        m_rounds[name.substr(name.rfind('/') + 1)].push_back(seconds / static_cast<double>(run.iterations));
        m_shortestRound = std::min(m_shortestRound, seconds);
        auto const faults = run.counters.find(PAGE_FAULTS);
        if (faults != run.counters.end())
            m_results.back().pageFaults = faults->second;
    }
}

bool Report::end()
{
    // The first round finds out how many iterations it takes. Where the machine held it up, that were too few for all.
    constexpr double SHORTEST = 0.0005;
    if (m_shortestRound < SHORTEST) {
        beginRounds();
        return false;
    }
    for (auto const& rounds : m_rounds)
        m_results.back().seconds[rounds.first] = median(rounds.second);
    return true;
}

void Report::writeDetails(std::ostream& out, std::vector<KernelSet> const& sets) const
{
    for (Title const& title : TITLES) {
        std::vector<Result const*> results;
        for (Result const& result : m_results)
            if (result.name.operation == title.operation)
                results.push_back(&result);
        if (results.empty())
            continue;
        out << "\n### " << title.text << "\n\n";
        if (results.front()->bytes != 0)
            writeSpeeds(out, results, sets);
        else
            writeTimes(out, results, sets);
    }
}

void Report::writeFile(std::ostream& out) const
{
    std::set<std::string> contenders;
    for (Result const& result : m_results)
        for (auto const& entry : result.seconds)
            contenders.insert(entry.first);
    out << "operation,set,script,form,size,bytes,page faults";
    for (std::string const& contender : contenders)
        out << ',' << contender;
    out << '\n';
    for (Result const& result : m_results) {
        CaseName const& name = result.name;
        for (std::string const& part : {name.operation, name.set, name.script, name.form, name.size})
            out << part << ',';
        out << result.bytes << ',' << (result.pageFaults != 0 ? formatted("%.0f", result.pageFaults) : "");
        for (std::string const& contender : contenders)
            out << ',' << (result.has(contender) ? formatted("%.4g", result.seconds.at(contender) * 1e9) : "");
        out << '\n';
    }
}

}  // namespace kx7bench
