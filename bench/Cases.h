// kx7text benchmarks - what is compared: every case with its contenders.
#ifndef KX7_BENCH_CASES_H
#define KX7_BENCH_CASES_H

#include <functional>
#include <string>
#include <vector>

#include "bench/Peers.h"

namespace kx7bench {

/** Names of sizes, in ascending order. */
struct Size {
    char const* name;
    size_t bytes;
};
extern std::vector<Size> const SIZES;

/** What a case is called; the parts that it lacks are empty. */
struct CaseName {
    std::string
        operation;  ///< "decode", "encode", "to-utf8", "from-utf8", "num-units", "num-bytes", "lookup", "load", …
    std::string set;
    std::string script;
    std::string form;  ///< "dense" or "markup"
    std::string size;

    /** All parts but the size, separated by strokes. */
    std::string row() const;
    std::string full() const;
};

struct Case {
    CaseName name;
    size_t bytes;  ///< bytes of source; 0 where only time is of interest
    std::vector<Contender> contenders;
    bool comparesResults;
};

/** Whether the case of a full name is asked for; what takes a case, which is valid within that call only. */
using Wanted = std::function<bool(std::string const&)>;
using Visit = std::function<void(Case const&)>;

/** Calls `visit` for every case that is wanted. Before each text `progress` gets what the cases to come are about. */
void forEachCase(Wanted const& wanted, std::function<void(std::string const&)> const& progress, Visit const& visit);

/** Those about UTF-16 text itself. */
void forEachTextCase(Wanted const& wanted, Visit const& visit);

}  // namespace kx7bench

#endif
