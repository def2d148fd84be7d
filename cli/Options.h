// kx7text - kx7conv: the options, their rules and their help.
#ifndef KX7_CLI_OPTIONS_H
#define KX7_CLI_OPTIONS_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "kx7/convert.h"

namespace kx7conv {

/** What is done with bytes that are illegal and with characters that the target cannot represent. */
enum class OnError {
    STOP,     ///< the input ends there
    REPLACE,  ///< U+FFFD (or "?" where the target lacks it) and "?", or the substitute asked for
    SKIP,     ///< nothing is written for them
    ESCAPE    ///< U+FFFD (or "?") and the code units as "U+20AC"
};

/** What is done with a byte order mark. */
enum class ByteOrderMark {
    KEEP,   ///< a character like any other
    STRIP,  ///< one at the front of an input is left out
    ADD     ///< left out at the front of every input, and written at the front of every output
};

enum class Format { NONE, TEXT, JSON };

/** What the program is to do. */
enum class Action { CONVERT, LIST, GUESS, ANSWER };

struct Options {
    Action action = Action::CONVERT;
    std::string answer;  ///< to --help or --version
    std::string from;
    std::string to = "UTF8";
    kx7::Labels labels = kx7::Labels::IANA_FIRST;  ///< what decides in these two, and in the list

    bool errorsGiven = false;
    OnError onError = OnError::STOP;
    unsigned int substitute = 0;  ///< a code point; 0: none asked for
    bool failOnLoss = false;
    bool literal = false;
    bool check = false;
    uint64_t maxErrors = 10;

    std::string output;  ///< empty: standard output
    bool inPlace = false;
    std::string backupSuffix;
    std::string outputFolder;

    unsigned int jobs = 1;
    bool recursive = false;
    std::string namesFrom;
    bool zeroSeparated = false;

    ByteOrderMark byteOrderMark = ByteOrderMark::KEEP;
    bool lineBuffered = false;
    bool progress = false;
    Format stats = Format::NONE;
    Format list = Format::TEXT;

    std::vector<char const*> files;  ///< the arguments themselves: there may be very many
};

/** Options that make no sense; what() is the message. */
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

/** Reads the arguments, which the result refers to. Throws UsageError. */
Options parseOptions(int argc, char const* const* argv);

}  // namespace kx7conv

#endif
