// kx7text benchmarks - UTF-8 to UTF-16 and back beside iconv, without Google Benchmark and ICU: for 32-bit code.
#include <iconv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "bench/Texts.h"
#include "kx7/charset/Converters.h"
#include "kx7/kernels/Kernels.h"

namespace {

constexpr int ROUNDS = 51;
constexpr double FLOOR = 4;  ///< of the speed to UTF-16, divided by iconv's

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

size_t convert(iconv_t converter, char const* in, size_t size, char* out, size_t capacity)
{
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* source = const_cast<char*>(in);
    char* dest = out;
    if (iconv(converter, &source, &size, &dest, &capacity) == static_cast<size_t>(-1)) {
        perror("iconv");
        exit(3);
    }
    return static_cast<size_t>(dest - out);
}

[[noreturn]] void failOnDifference(char const* script, char const* direction)
{
    fprintf(stderr, "kx7_bench_plain: %s: the results %s differ\n", script, direction);
    exit(3);
}

/** Prints the row of a text. Returns the speed to UTF-16 divided by iconv's. */
double row(kx7bench::Script const& script, bool markup, size_t size, iconv_t toUTF16, iconv_t toUTF8)
{
    std::u16string const units = (markup ? kx7bench::markupText : kx7bench::denseText)(script, size, 1);
    auto const* const text = reinterpret_cast<unsigned short const*>(units.c_str());
    std::vector<char> bytes(units.size() * 3 + 4);
    auto const capacity = static_cast<unsigned int>(bytes.size() - 4);
    unsigned int const byteCount = g_oConverterUTF8.fromUTF16(bytes.data(), text, capacity, ILLCHAR_REPLACE, nullptr);
    std::vector<char> back(bytes.size());
    std::vector<unsigned short> decoded(units.size() + 64);
    auto* const decodedBytes = reinterpret_cast<char*>(decoded.data());
    size_t const unitBytes = units.size() * sizeof(char16_t);

    auto const decodeOwn = [&] {
        return size_t{g_oConverterUTF8.toUTF16(decoded.data(), bytes.data(),
                                               static_cast<unsigned int>(units.size() + 8), ILLCHAR_REPLACE, nullptr,
                                               -1)} *
               sizeof(char16_t);
    };
    auto const decodePeer = [&] {
        return convert(toUTF16, bytes.data(), byteCount, decodedBytes, decoded.size() * sizeof(char16_t));
    };
    auto const encodeOwn = [&] {
        return size_t{g_oConverterUTF8.fromUTF16(back.data(), text, capacity, ILLCHAR_REPLACE, nullptr)};
    };
    auto const encodePeer = [&] {
        return convert(toUTF8, reinterpret_cast<char const*>(text), unitBytes, back.data(), back.size());
    };
    // Each into memory that holds nothing of the other's.
    for (bool const own : {true, false}) {
        std::fill(decoded.begin(), decoded.end(), static_cast<unsigned short>(0xA5A5));
        if ((own ? decodeOwn() : decodePeer()) != unitBytes || memcmp(decoded.data(), text, unitBytes) != 0)
            failOnDifference(script.name, "to UTF-16");
        std::fill(back.begin(), back.end(), '\x01');
        if ((own ? encodeOwn() : encodePeer()) != byteCount || memcmp(back.data(), bytes.data(), byteCount) != 0)
            failOnDifference(script.name, "from UTF-16");
    }
    auto const decode = measure(decodeOwn, decodePeer);
    auto const encode = measure(encodeOwn, encodePeer);
    printf("| %s/%s | %.2f | %.2f | %.1f | %.2f | %.2f | %.1f |\n", script.name, markup ? "markup" : "dense",
           byteCount / decode.first * 1e-9, byteCount / decode.second * 1e-9, decode.second / decode.first,
           static_cast<double>(unitBytes) / encode.first * 1e-9, static_cast<double>(unitBytes) / encode.second * 1e-9,
           encode.second / encode.first);
    return decode.second / decode.first;
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
        double worst = std::numeric_limits<double>::max();
        printf("| text | to UTF-16 | iconv | ratio | from UTF-16 | iconv | ratio |\n|---|---|---|---|---|---|---|\n");
        for (kx7bench::Script const& script : kx7bench::scripts())
            for (bool const markup : {false, true})
                worst = std::min(worst, row(script, markup, size_t{1} << 18, toUTF16, toUTF8));
        printf("\nTo UTF-16 the worst is %.1f; the floor is %.0f", worst, FLOOR);
        // The other instruction sets are what a machine has that is asked for speed.
        if (set.second == kx7::InstructionSet::BASELINE)
            printf(", for the sets above.\n");
        else
            printf(": %s.\n", worst >= FLOOR ? "met" : "not met");
    }
    iconv_close(toUTF16);
    iconv_close(toUTF8);
    return 0;
}
