// kx7text benchmarks - the converters that are compared, with one interface.
#ifndef KX7_BENCH_PEERS_H
#define KX7_BENCH_PEERS_H

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"

namespace kx7bench {

/** A character set under the names of all peers; null where a peer lacks it. */
struct CharSet {
    KX7CharSet charSet;
    char const* name;
    char const* icu;
    char const* iconv;
};

/** One who does the work of a case. */
struct Contender {
    std::string name;
    std::function<size_t()> run;  ///< once; returns the bytes of the result, which stands at destination()
    std::function<void(benchmark::State&)> measure;
    bool manualTime;
};

/** Where every contender writes: one buffer, so that none meets fresh pages or another alignment. */
char* destination();
constexpr size_t DESTINATION_SIZE = size_t{8} << 20;

template <class Call>
Contender contender(std::string name, Call call)
{
    return {std::move(name), call,
            [call](benchmark::State& state) {
                for (auto step : state) {
                    (void)step;
                    benchmark::DoNotOptimize(call());
                    benchmark::ClobberMemory();
                }
            },
            false};
}

enum class Operation { DECODE, ENCODE, TO_UTF8, FROM_UTF8, NUM_UNITS, NUM_BYTES };

/** A text in all the forms that the cases need. */
struct Sample {
    std::u16string units;
    size_t pairs;       ///< surrogate pairs in `units`
    std::string bytes;  ///< in the character set, and four zero bytes after them
    size_t byteCount;   ///< without these
    std::string utf8;

    /** Bytes of source that an operation reads, and where they begin. */
    size_t sourceSize(Operation operation) const;
    void const* source(Operation operation) const;
};

/** An open converter. */
class Peer {
public:
    virtual ~Peer() = default;

    /** Converts a whole text to destination(). The sample and the peer must outlive the contender. */
    virtual Contender contender(Operation operation, Sample const& sample) = 0;

    /** Finds, and if need be opens and closes, the converter of this set. */
    virtual Contender lookUp() = 0;

    // One text at a time, for making samples.
    virtual std::string encode(std::u16string const& text) = 0;
    virtual std::u16string decode(std::string const& bytes) = 0;
};

/** The three peers by name: "kx7", "icu", "iconv"; null where the peer lacks the character set. */
std::unique_ptr<Peer> openPeer(char const* peer, CharSet const& charSet);

}  // namespace kx7bench

#endif
