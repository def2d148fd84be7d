// kx7text benchmarks - the library beside ICU and glibc iconv, in one process and one run.
//
//     kx7_bench                      every case; prints the table of ratios
//     kx7_bench --write FILE         the same, and writes it to FILE with the machine
//     kx7_bench --check              compares the results of all peers, without timing
//     kx7_bench --kernels avx2       forces a set of kernels: plain, baseline, avx2, avx512
//     kx7_bench --benchmark_filter=… and the other options of Google Benchmark
#include <benchmark/benchmark.h>

#include <cstring>
#include <fstream>
#include <iostream>
#include <map>

#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/Texts.h"
#include "kx7/kernels/Kernels.h"

namespace {

using namespace kx7bench;

struct Subject {
    CharSet set;
    std::vector<char const*> scripts;
};

std::vector<Subject> subjects()
{
    std::vector<char const*> every;
    for (Script const& script : scripts())
        every.push_back(script.name);
    return {
        {{KX7CS_UTF8, "utf8", "UTF-8", "UTF-8"}, every},
        {{KX7CS_WCP1252, "1252", "ibm-5348_P100-1997", "CP1252"}, {"ascii", "french", "german"}},
        {{KX7CS_WCP1251, "1251", "ibm-5347_P100-1998", "CP1251"}, {"cyrillic"}},
        {{KX7CS_KOI8R, "koi8r", "ibm-878_P100-1996", "KOI8-R"}, {"cyrillic"}},
        {{KX7CS_WCP1253, "1253", "ibm-5349_P100-1998", "CP1253"}, {"greek"}},
        {{KX7CS_WCP1255, "1255", "ibm-9447_P100-2002", "CP1255"}, {"hebrew"}},
        {{KX7CS_WCP1256, "1256", "ibm-9448_X100-2005", "CP1256"}, {"arabic"}},
        {{KX7CS_WCP874, "874", "ibm-874_P100-1995", "CP874"}, {"thai"}},
        {{KX7CS_ISO_8859_1, "8859-1", "ISO-8859-1", "ISO-8859-1"}, {"french"}},
        {{KX7CS_WCP932, "932", "ibm-942_P12A-1999", "IBM943"}, {"japanese"}},
        {{KX7CS_SHIFTJIS, "sjis", "ibm-943_P15A-2003", "SJIS"}, {"japanese"}},
        {{KX7CS_SJIS0213, "sjis2004", nullptr, "SHIFT_JISX0213"}, {"japanese"}},
        {{KX7CS_EUC_JP, "eucjp", "EUC-JP", "EUC-JP"}, {"japanese"}},
        {{KX7CS_WCP936, "936", "windows-936-2000", "GBK"}, {"chinese"}},
        {{KX7CS_EUC_CN, "euccn", "EUC-CN", "GB2312"}, {"chinese"}},
        {{KX7CS_GB18030, "gb18030", "gb18030", "GB18030"}, {"chinese", "korean", "emoji"}},
        {{KX7CS_WCP950, "950", "ibm-950_P110-1999", "BIG5"}, {"chinese"}},
        {{KX7CS_BIG5, "big5", "windows-950-2000", "BIG5"}, {"chinese"}},
        {{KX7CS_WCP949, "949", "ibm-949_P110-1999", "UHC"}, {"korean"}},
        {{KX7CS_EUC_KR, "euckr", "EUC-KR", "EUC-KR"}, {"korean"}},
    };
}

char const* const PEERS[] = {"kx7", "icu", "iconv"};

struct Size {
    char const* name;
    size_t bytes;
};
Size const SIZES[] = {{"16B", 16}, {"64B", 64}, {"4KiB", 4096}, {"1MiB", 1 << 20}};

using Peers = std::map<std::string, std::unique_ptr<Peer>>;

/** The letters that every peer writes and reads alike. */
Script sharedLetters(Script const& script, Peers const& peers)
{
    Script shared = script;
    for (std::u32string& letters : shared.alphabets) {
        std::u32string kept;
        for (char32_t const c : letters) {
            std::u16string const text = c > 0xFFFF ? std::u16string{static_cast<char16_t>((c >> 10) + 0xD7C0),
                                                                    static_cast<char16_t>((c & 0x3FF) + 0xDC00)}
                                                   : std::u16string{static_cast<char16_t>(c)};
            std::string first;
            bool alike = true;
            for (auto const& peer : peers) {
                char bytes[32] = {};
                std::string const out(bytes, peer.second->encode(text.c_str(), text.size(), bytes, sizeof bytes));
                if (first.empty())
                    first = out;
                char16_t units[16] = {};
                std::u16string const back(units, peer.second->decode(out.c_str(), out.size(), units, 16));
                alike = alike && out == first && back == text;
            }
            if (alike)
                kept += c;
        }
        letters = kept;
    }
    shared.alphabets.erase(std::remove_if(shared.alphabets.begin(), shared.alphabets.end(),
                                          [](std::u32string const& letters) { return letters.empty(); }),
                           shared.alphabets.end());
    return shared;
}

/** A text in all the forms that the cases need. */
struct Sample {
    std::u16string units;
    std::string bytes;
    std::string utf8;
};

size_t run(Peer& peer, std::string const& operation, Sample const& sample, std::vector<char>& dest)
{
    auto* const units = reinterpret_cast<char16_t*>(dest.data());
    if (operation == "decode")
        return peer.decode(sample.bytes.c_str(), sample.bytes.size(), units, dest.size() / 2) * 2;
    if (operation == "encode")
        return peer.encode(sample.units.c_str(), sample.units.size(), dest.data(), dest.size());
    if (operation == "to-utf8")
        return peer.toUTF8(sample.bytes.c_str(), sample.bytes.size(), dest.data(), dest.size());
    return peer.fromUTF8(sample.utf8.c_str(), sample.utf8.size(), dest.data(), dest.size());
}

size_t sourceSize(std::string const& operation, Sample const& sample)
{
    return operation == "encode"      ? sample.units.size() * 2
           : operation == "from-utf8" ? sample.utf8.size()
                                      : sample.bytes.size();
}

/** Calls `visit` (operation, case name, size, sample, peers) for every case. */
template <class Visit>
void forEachCase(Visit visit)
{
    CharSet const utf8{KX7CS_UTF8, "utf8", "UTF-8", "UTF-8"};
    std::unique_ptr<Peer> const toUTF8 = openPeer("icu", utf8);
    for (Subject const& subject : subjects()) {
        auto peers = std::make_shared<Peers>();
        for (char const* name : PEERS)
            if (std::unique_ptr<Peer> peer = openPeer(name, subject.set))
                (*peers)[name] = std::move(peer);
        for (Script const& script : scripts()) {
            if (std::find_if(subject.scripts.begin(), subject.scripts.end(),
                             [&](char const* name) { return strcmp(name, script.name) == 0; }) == subject.scripts.end())
                continue;
            Script const shared = sharedLetters(script, *peers);
            if (shared.alphabets.empty()) {
                std::cerr << "kx7_bench: no letter of " << script.name << " is alike in " << subject.set.name << '\n';
                exit(3);
            }
            for (bool const markup : {false, true}) {
                for (Size const& size : SIZES) {
                    // As many units as give the size in bytes, or nearly so.
                    auto sample = std::make_shared<Sample>();
                    std::vector<char> room(4 * size.bytes + 64);
                    size_t units = size.bytes;
                    do {
                        sample->units = (markup ? markupText : denseText)(shared, units, 1);
                        sample->bytes.assign(room.data(),
                                             peers->at("kx7")->encode(sample->units.c_str(), sample->units.size(),
                                                                      room.data(), room.size()));
                        units = units * size.bytes / std::max<size_t>(sample->bytes.size(), 1);
                    } while (sample->bytes.size() > size.bytes + size.bytes / 8);
                    sample->utf8.assign(room.data(), toUTF8->encode(sample->units.c_str(), sample->units.size(),
                                                                    room.data(), room.size()));
                    for (char const* operation : {"decode", "encode", "to-utf8", "from-utf8"}) {
                        bool const throughUTF8 = strstr(operation, "utf8") != nullptr;
                        if (throughUTF8 && (subject.set.charSet == KX7CS_UTF8 || size.bytes < 4096))
                            continue;
                        visit(std::string(operation),
                              std::string(subject.set.name) + "/" + script.name + (markup ? "/markup" : "/dense"), size,
                              sample, peers);
                    }
                }
            }
        }
    }
}

int check()
{
    int failures = 0;
    int cases = 0;
    forEachCase([&](std::string const& operation, std::string const& name, Size const& size,
                    std::shared_ptr<Sample> const& sample, std::shared_ptr<Peers> const& peers) {
        std::vector<char> expected(8 * size.bytes + 64);
        expected.resize(run(*peers->at("kx7"), operation, *sample, expected));
        for (auto const& peer : *peers) {
            std::vector<char> result(8 * size.bytes + 64);
            result.resize(run(*peer.second, operation, *sample, result));
            ++cases;
            if (result != expected) {
                ++failures;
                std::cout << operation << '/' << name << '/' << size.name << ": " << peer.first << " differs\n";
            }
        }
    });
    std::cout << cases << " results compared, " << failures << " differ\n";
    return failures == 0 ? 0 : 1;
}

void registerCases()
{
    forEachCase([](std::string const& operation, std::string const& name, Size const& size,
                   std::shared_ptr<Sample> const& sample, std::shared_ptr<Peers> const& peers) {
        for (auto const& entry : *peers) {
            Peer* const peer = entry.second.get();
            std::string const full = operation + "/" + name + "/" + size.name + "/" + entry.first;
            benchmark::RegisterBenchmark(full.c_str(), [=](benchmark::State& state) {
                std::vector<char> dest(8 * size.bytes + 64);
                (void)peers;  // keeps the converters open
                for (auto step : state) {
                    (void)step;
                    benchmark::DoNotOptimize(run(*peer, operation, *sample, dest));
                    benchmark::ClobberMemory();
                }
                state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                                        static_cast<int64_t>(sourceSize(operation, *sample)));
            });
        }
    });
}

bool useKernels(std::string const& name)
{
    static std::pair<char const*, kx7::InstructionSet> const sets[] = {
        {"plain", kx7::InstructionSet::PLAIN},
        {"baseline", kx7::InstructionSet::BASELINE},
        {"avx2", kx7::InstructionSet::AVX2},
        {"avx512", kx7::InstructionSet::AVX512},
    };
    for (auto const& set : sets)
        if (name == set.first)
            return kx7::useInstructionSet(set.second);
    return false;
}

std::string machine()
{
    std::ifstream info("/proc/cpuinfo");
    std::string line;
    while (std::getline(info, line))
        if (line.compare(0, 10, "model name") == 0)
            return line.substr(line.find(": ") + 2);
    return "unknown";
}

}  // namespace

int main(int argc, char** argv)
{
    char const* file = nullptr;
    std::vector<char*> arguments = {argv[0]};
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    static char rounds[] = "--benchmark_repetitions=5";
    static char time[] = "--benchmark_min_time=0.01";
    for (char* option : {interleave, rounds, time})
        arguments.push_back(option);
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--check") == 0)
            return check();
        if (strcmp(argv[i], "--write") == 0 && i + 1 < argc)
            file = argv[++i];
        else if (strcmp(argv[i], "--kernels") == 0 && i + 1 < argc) {
            if (!useKernels(argv[++i])) {
                std::cerr << "kx7_bench: this machine has no kernels " << argv[i] << '\n';
                return 2;
            }
        }
        else
            arguments.push_back(argv[i]);
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    registerCases();
    kx7bench::Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    report.write(std::cout);
    if (file) {
        std::ofstream out(file);
        out << "# Performance\n\nThis library beside ICU and glibc iconv: GB of source a second, and this library's "
               "speed divided by the\n"
               "faster peer's, medians of interleaved rounds of one run on "
            << machine() << ".\n";
        report.write(out);
    }
    benchmark::Shutdown();
    return 0;
}
