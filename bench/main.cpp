// kx7text benchmarks - the library beside ICU and glibc iconv, in one process and one run.
//
//     kx7_bench                          every case; prints the tables
//     kx7_bench --write FOLDER           the same, and writes machine.txt, cases.csv and floors.csv, of which page.py
//                                        makes docs/performance.md
//     kx7_bench --check                  compares the results of all, with every kernel set, without timing; fails
//     where
//                                        two differ, or none was compared
//     kx7_bench --kernels avx2,baseline  with these sets of kernels: plain, baseline, avx2, avx512 (default: of the
//                                        last two those that the machine has)
//     kx7_bench --benchmark_filter=…     the cases whose name the expression is found in, such as decode/932/.*1MiB
// and the other options of Google Benchmark. Each case is measured with all its contenders in interleaved rounds.
#include <benchmark/benchmark.h>
#include <gnu/libc-version.h>
#include <sys/utsname.h>
#include <unicode/uversion.h>

#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

#include "bench/Cases.h"
#include "bench/Floors.h"
#include "bench/Report.h"
#include "kx7/kernels/Kernels.h"

namespace {

using namespace kx7bench;

struct Kernels : KernelSet {
    kx7::InstructionSet instructions;
};

Kernels const EVERY_KERNELS[] = {
    {{"avx512", "AVX-512"}, kx7::InstructionSet::AVX512},
    {{"avx2", "AVX2"}, kx7::InstructionSet::AVX2},
    {{"baseline", "baseline"}, kx7::InstructionSet::BASELINE},
    {{"plain", "plain steps"}, kx7::InstructionSet::PLAIN},
};

bool hasMachine(Kernels const& kernels)
{
    return kernels.instructions <= kx7::detectInstructionSet();
}

std::vector<Kernels> everyKernelSet()
{
    std::vector<Kernels> sets;
    for (Kernels const& kernels : EVERY_KERNELS)
        if (hasMachine(kernels))
            sets.push_back(kernels);
    return sets;
}

/** The sets of a list with commas; exits where the machine lacks one. */
std::vector<Kernels> kernelSets(std::string const& names)
{
    std::vector<Kernels> sets;
    std::istringstream list(names);
    for (std::string name; std::getline(list, name, ',');) {
        size_t const before = sets.size();
        for (Kernels const& kernels : EVERY_KERNELS)
            if (kernels.name == name && hasMachine(kernels))
                sets.push_back(kernels);
        if (sets.size() == before) {
            std::cerr << "kx7_bench: this machine has no kernels " << name << '\n';
            exit(2);
        }
    }
    return sets;
}

std::vector<Kernels> defaultKernelSets()
{
    std::vector<Kernels> sets = everyKernelSet();
    while (sets.size() > 1 && sets.back().instructions < kx7::InstructionSet::AVX2)
        sets.pop_back();
    return sets;
}

/** The contenders of a case, the library once a kernel set. `visit` (name, kernels, contender). */
template <class Visit>
void forEachContender(Case const& c, std::vector<Kernels> const& sets, Visit visit)
{
    for (Contender const& contender : c.contenders) {
        if (contender.name != "kx7")
            visit(contender.name, sets.front(), contender);
        else
            for (Kernels const& kernels : sets)
                visit(kernels.contender(), kernels, contender);
    }
}

int check()
{
    int failures = 0;
    int results = 0;
    forEachCase([](std::string const&) { return true; }, [](std::string const&) {},
                [&](Case const& c) {
                    if (!c.comparesResults)
                        return;
                    std::string expected;
                    std::string first;
                    size_t dirty = DESTINATION_SIZE;
                    forEachContender(c, everyKernelSet(),
                                     [&](std::string const& name, Kernels const& kernels, Contender const& contender) {
                                         if (name == "memcpy")
                                             return;
                                         kx7::useInstructionSet(kernels.instructions);
                                         // Nothing that another has written may stand for a result.
                                         memset(destination(), 0xA5, dirty);
                                         std::string const result(destination(), contender.run());
                                         if (first.empty()) {
                                             first = name;
                                             expected = result;
                                             dirty = expected.size() + 64;
                                             return;
                                         }
                                         ++results;
                                         if (result != expected) {
                                             ++failures;
                                             dirty = DESTINATION_SIZE;
                                             std::cout << c.name.full() << ": " << name << " differs from " << first
                                                       << '\n';
                                         }
                                     });
                });
    std::cout << results << " results compared, " << failures << " differ\n";
    return failures == 0 && results != 0 ? 0 : 1;
}

void measure(Report& report, std::vector<Kernels> const& sets)
{
    std::string const filter = benchmark::GetBenchmarkFilter();
    std::regex const expression(filter.empty() || filter == "all" ? "." : filter);
    forEachCase(
        [&](std::string const& name) { return std::regex_search(name, expression); },
        [](std::string const& what) { std::cerr << what << '\n'; },
        [&](Case const& c) {
            benchmark::ClearRegisteredBenchmarks();
            forEachContender(c, sets, [&](std::string const& name, Kernels const& kernels, Contender const& contender) {
                auto* const registered =
                    benchmark::RegisterBenchmark((c.name.full() + '/' + name).c_str(), [=](benchmark::State& state) {
                        kx7::useInstructionSet(kernels.instructions);
                        contender.measure(state);
                    });
                if (contender.manualTime)
                    registered->UseManualTime();
            });
            report.begin(c);
            bool measured = false;
            for (int attempt = 0; attempt != 3 && !measured; ++attempt) {
                benchmark::RunSpecifiedBenchmarks(&report, "all");
                measured = report.end();
            }
            if (!measured)
                std::cerr << c.name.full() << ": not measured\n";
        });
}

std::string lineOf(char const* file, std::string const& key)
{
    std::ifstream info(file);
    for (std::string line; std::getline(info, line);)
        if (line.compare(0, key.size(), key) == 0)
            return line.substr(line.find_first_not_of(" \t:", key.size()));
    return "unknown";
}

std::string machine()
{
    utsname system = {};
    uname(&system);
    return lineOf("/proc/cpuinfo", "model name") + ", family " + lineOf("/proc/cpuinfo", "cpu family") + " model " +
           lineOf("/proc/cpuinfo", "model\t") + ", cache " + lineOf("/proc/cpuinfo", "cache size") + "; " +
           system.sysname + ' ' + system.machine + "; g++ " + __VERSION__ + "; ICU " + U_ICU_VERSION + ", glibc " +
           gnu_get_libc_version() + "\n";
}

void write(std::ostream& out, Report const& report, std::vector<KernelSet> const& sets)
{
    out << "\n## Floors\n\n"
           "The speed of the library divided by that of the faster of ICU and iconv: of all the cases that a floor is "
           "for, the\nworst. Texts have 1 MiB where nothing else is said; the last column is the worst at 4 KiB. Where "
           "it is "
           "microseconds\nthat count, less is better, and the worst is the slowest.\n";
    writeFloors(out, judged(report.results(), sets));
    out << "\n## All cases\n\n"
           "GB of source a second, of the library, of the fastest peer and of memcpy with the same bytes; then the "
           "speed of the\nlibrary divided by that of the fastest peer, at each size.";
    for (KernelSet const& set : sets)
        out << (&set == &sets.front() ? " In each cell: " : " / ") << set.title;
    out << ".\n";
    report.writeDetails(out, sets);
}

template <class Write>
void writeFile(std::string const& file, Write const& write)
{
    std::ofstream out(file);
    write(out);
    if (!out) {
        std::cerr << "kx7_bench: cannot write " << file << '\n';
        exit(2);
    }
}

void writeFiles(std::string const& folder, Report const& report, std::vector<KernelSet> const& sets)
{
    writeFile(folder + "/machine.txt", [](std::ostream& out) { out << machine(); });
    writeFile(folder + "/cases.csv", [&](std::ostream& out) { report.writeFile(out); });
    writeFile(folder + "/floors.csv", [&](std::ostream& out) { writeFloorFile(out, judged(report.results(), sets)); });
}

}  // namespace

int main(int argc, char** argv)
{
    char const* folder = nullptr;
    std::vector<Kernels> sets = defaultKernelSets();
    std::vector<char*> arguments = {argv[0]};
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    static char rounds[] = "--benchmark_repetitions=5";
    static char time[] = "--benchmark_min_time=0.005";
    for (char* option : {interleave, rounds, time})
        arguments.push_back(option);
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--check") == 0)
            return check();
        if (strcmp(argv[i], "--write") == 0 && i + 1 < argc)
            folder = argv[++i];
        else if (strcmp(argv[i], "--kernels") == 0 && i + 1 < argc)
            sets = kernelSets(argv[++i]);
        else
            arguments.push_back(argv[i]);
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    Report report;
    measure(report, sets);
    std::vector<KernelSet> const named(sets.begin(), sets.end());
    write(std::cout, report, named);
    if (folder)
        writeFiles(folder, report, named);
    benchmark::Shutdown();
    return 0;
}
