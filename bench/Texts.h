// kx7text benchmarks - generated texts: twelve scripts and plain ASCII, dense and as markup, none of them a short text
// repeated.
#ifndef KX7_BENCH_TEXTS_H
#define KX7_BENCH_TEXTS_H

#include <cstddef>
#include <string>
#include <vector>

namespace kx7bench {

struct Script {
    char const* name;
    std::vector<std::u32string> alphabets;  ///< words are drawn from one of these at a time
    unsigned int wordLength;                ///< letters a word on average; 0: no blanks between words
};

std::vector<Script> const& scripts();
Script const& scriptOf(std::string const& name);

/** A text of about `units` code units: words in random order and length, with blanks and punctuation. */
std::u16string denseText(Script const& script, size_t units, unsigned int seed);

/** The same words inside tags, of which two thirds are ASCII. */
std::u16string markupText(Script const& script, size_t units, unsigned int seed);

}  // namespace kx7bench

#endif
