// kx7text tests - one call of a conversion, and its effects.
#ifndef KX7_TESTS_SUPPORT_CALLS_H
#define KX7_TESTS_SUPPORT_CALLS_H

#include <string>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7test {

/** What a conversion does with the caller's flag. */
enum class Flag { LEFT, CLEARED, SET };

/** What the caller passes for the flag. */
enum class FlagArgument { NONE, FALSE_BEFORE, TRUE_BEFORE };
constexpr FlagArgument FLAG_ARGUMENTS[] = {FlagArgument::NONE, FlagArgument::FALSE_BEFORE, FlagArgument::TRUE_BEFORE};

/** A call of toUTF16. The terminator of `bytes` is understood; a zero byte inside ends the text before. */
struct DecodeCall {
    std::string bytes;
    unsigned int capacity;
    ILLCHAR_OPTYPE op;
    int limit;
};

/** A call of fromUTF16. The closing 0 of `units` is understood; a 0 unit inside ends the text before. */
struct EncodeCall {
    std::u16string units;
    unsigned int capacity;
    ILLCHAR_OPTYPE op;
};

/** What toUTF16 leaves: as many units as it returns, the closing 0 not counted. */
struct Decoded {
    std::u16string units;
    Flag flag;
};

/** What fromUTF16 leaves: as many bytes as it returns, the terminator not counted. */
struct Encoded {
    std::string bytes;
    Flag flag;
};

/** A value without a name, which acts as ILLCHAR_REPLACE. */
constexpr ILLCHAR_OPTYPE UNNAMED_OPERATION = static_cast<ILLCHAR_OPTYPE>(7);
constexpr ILLCHAR_OPTYPE OPERATIONS[] = {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE, UNNAMED_OPERATION};

/** A count that stands for "up to the terminator". */
constexpr unsigned int UNTIL_TERMINATOR = 0xFFFFFFFF;

/** Units that the library looks at in one go (kx7::PIECE): texts longer than that cross a boundary. */
constexpr size_t PIECE_UNITS = 2048;

}  // namespace kx7test

#endif
