// kx7text benchmarks - UTF-8 to UTF-16 and back beside iconv, without Google Benchmark and ICU: for 32-bit code.
#include <iconv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "bench/Texts.h"
#include "kx7/charset/Converters.h"
#include "kx7/kernels/Kernels.h"

namespace {

constexpr int ROUNDS = 15;

/** Seconds of each of two calls, medians of interleaved rounds. */
template <class First, class Second>
std::pair<double, double> measure(First first, Second second)
{
    std::vector<double> times[2];
    auto const time = [](auto call) {
        auto const begin = std::chrono::steady_clock::now();
        call();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    for (int round = 0; round < ROUNDS; ++round) {
        times[0].push_back(time(first));
        times[1].push_back(time(second));
    }
    for (auto& list : times)
        std::nth_element(list.begin(), list.begin() + ROUNDS / 2, list.end());
    return {times[0][ROUNDS / 2], times[1][ROUNDS / 2]};
}

size_t convert(iconv_t converter, char const* in, size_t size, char* out, size_t room)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* source = const_cast<char*>(in);
    char* dest = out;
    if (iconv(converter, &source, &size, &dest, &room) == static_cast<size_t>(-1)) {
        perror("iconv");
        exit(3);
    }
    return static_cast<size_t>(dest - out);
}

void row(kx7bench::Script const& script, bool markup, size_t size, iconv_t toUTF16, iconv_t toUTF8)
{
    std::u16string const units = (markup ? kx7bench::markupText : kx7bench::denseText)(script, size, 1);
    auto const* const text = reinterpret_cast<unsigned short const*>(units.c_str());
    std::vector<char> bytes(units.size() * 3 + 4);
    auto const room = static_cast<unsigned int>(bytes.size() - 4);
    unsigned int const byteCount = g_oConverterUTF8.fromUTF16(bytes.data(), text, room, ILLCHAR_REPLACE, nullptr);
    std::vector<char> back(bytes.size());
    std::vector<unsigned short> decoded(units.size() + 64);
    auto* const decodedBytes = reinterpret_cast<char*>(decoded.data());

    unsigned int written = 0;
    size_t peer = 0;
    auto const decode = measure(
        [&] {
            written =
                g_oConverterUTF8.toUTF16(decoded.data(), bytes.data(), static_cast<unsigned int>(units.size() + 8),
                                         ILLCHAR_REPLACE, nullptr, -1);
        },
        [&] { peer = convert(toUTF16, bytes.data(), byteCount, decodedBytes, decoded.size() * 2); });
    if (written != units.size() || peer != units.size() * 2) {
        fprintf(stderr, "kx7_bench_plain: %s: %u and %zu units\n", script.name, written, peer / 2);
        exit(3);
    }
    auto const encode = measure(
        [&] { g_oConverterUTF8.fromUTF16(back.data(), text, room, ILLCHAR_REPLACE, nullptr); },
        [&] { convert(toUTF8, reinterpret_cast<char const*>(text), units.size() * 2, back.data(), back.size()); });
    double const unitBytes = 2.0 * static_cast<double>(units.size());
    printf("| %s/%s | %.2f | %.2f | %.1f | %.2f | %.2f | %.1f |\n", script.name, markup ? "markup" : "dense",
           byteCount / decode.first * 1e-9, byteCount / decode.second * 1e-9, decode.second / decode.first,
           unitBytes / encode.first * 1e-9, unitBytes / encode.second * 1e-9, encode.second / encode.first);
}

}  // namespace

int main()
{
    static std::pair<char const*, kx7::InstructionSet> const sets[] = {{"AVX-512", kx7::InstructionSet::AVX512},
                                                                       {"AVX2", kx7::InstructionSet::AVX2},
                                                                       {"baseline", kx7::InstructionSet::BASELINE}};
    iconv_t const toUTF16 = iconv_open("UTF-16LE", "UTF-8");
    iconv_t const toUTF8 = iconv_open("UTF-8", "UTF-16LE");
    for (auto const& set : sets) {
        if (!kx7::useInstructionSet(set.second))
            continue;
        printf("\n## %s, %zu-bit\n\nGB of source a second, 256 Ki units.\n\n", set.first, 8 * sizeof(void*));
        printf("| text | to UTF-16 | iconv | ratio | from UTF-16 | iconv | ratio |\n|---|---|---|---|---|---|---|\n");
        for (kx7bench::Script const& script : kx7bench::scripts())
            for (bool const markup : {false, true})
                row(script, markup, size_t{1} << 18, toUTF16, toUTF8);
    }
    iconv_close(toUTF16);
    iconv_close(toUTF8);
    return 0;
}
