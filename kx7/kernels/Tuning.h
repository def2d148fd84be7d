// kx7text - the lengths at which one way of converting takes over from another, and what was measured (internal).
//
// All results are the same whatever these are. Times are those of the machine of docs/performance.md; where none stands
// here, none was kept. `./dev bench --benchmark_filter=REGEX` measures again.
#ifndef KX7_KERNELS_TUNING_H
#define KX7_KERNELS_TUNING_H

#include <cstddef>

namespace kx7 {

// When a kernel is called at all.

/** Fewest bytes or units for which a kernel is worth its call. */
constexpr ptrdiff_t KERNEL_MINIMUM = 16;

/** The same for the kernels that take short texts well. */
constexpr ptrdiff_t SHORT_KERNEL_MINIMUM = 4;

/** Bytes below which UTF-8 is decoded by the baseline with AVX2: 5 to 8 characters are as soon converted one by one. */
constexpr ptrdiff_t UTF8_DECODE_MINIMUM_AVX2 = 32;

/** Units below which UTF-16 is encoded as UTF-8 by the baseline with AVX2: a block of the kernel. */
constexpr ptrdiff_t UTF8_ENCODE_MINIMUM_AVX2 = 8;

/**
 * Bytes of a double-byte set that are decoded one by one before a kernel is tried, and fewest bytes for which that is
 * worth it: broken text, whose blocks end early, is then no slower than without kernels.
 */
constexpr ptrdiff_t FIRST_PAIRS = 16;
constexpr ptrdiff_t PAIRS_MINIMUM = 5 * FIRST_PAIRS;

/** Fewest bytes of GB 18030 for which the kernel of four-byte characters is called: nearly a block of 64. */
constexpr ptrdiff_t FOUR_BYTES_MINIMUM = 48;

/** ASCII characters between four-byte ones that are copied one by one, before the loop for one and two bytes goes on.
 */
constexpr unsigned int SINGLES_AMONG_FOUR_BYTES = 8;

/**
 * Characters that are converted one by one after a kernel of the single-byte sets has ended, before it is called again:
 * kernels end at zero bytes, which bounded ranges may be full of.
 */
constexpr int BETWEEN_KERNELS = 16;

// Short texts.

/** Longest text that is copied inline, in bytes or units: for it the call of a kernel costs as much as the work. */
constexpr ptrdiff_t SHORT_TEXT = 80;

/**
 * Longest text that goes directly between UTF-8 and another set of bytes: 6 ns instead of 23 for 16 bytes of ASCII, and
 * about half the time elsewhere. Three times SHORT_TEXT, so that as much is taken of three-byte characters.
 */
constexpr size_t LONGEST_DIRECT = 3 * SHORT_TEXT;

/** Bytes of a set up to which characters are decoded one by one on the direct way; more go through the kernels. */
constexpr ptrdiff_t ONE_BY_ONE = 16;

/** Where nothing is faster than the loops over characters: more than LONGEST_DIRECT. */
constexpr ptrdiff_t ALL_DIRECT = 1000;

/**
 * Bytes of UTF-8 that are encoded sooner character by character than by kernels, into single-byte and into double-byte
 * sets: 64 bytes of Korean take 18 ns one by one, 1.4 ns each, and 22 ns with vectors. Text that is ASCII for the most
 * part, of which many characters are copied at once, may be twice as long.
 */
constexpr ptrdiff_t DIRECT_TO_SINGLE_BYTE_AVX2 = 48;
constexpr ptrdiff_t DIRECT_TO_DOUBLE_BYTE_AVX2 = 112;
constexpr ptrdiff_t DIRECT_TO_SINGLE_BYTE_AVX512 = 24;
constexpr ptrdiff_t DIRECT_TO_DOUBLE_BYTE_AVX512 = 64;

/** The same into GB 18030; near enough for every instruction set. */
constexpr ptrdiff_t DIRECT_TO_GB18030 = 48;

// Blocks.

/** Blocks of which it is asked at once whether they are ASCII: in mixed text the answer is then seldom guessed wrong.
 */
constexpr ptrdiff_t BLOCKS_AT_ONCE = 4;

/**
 * Blocks of a double-byte set whose codes AVX2 brings together before it looks them up: the end of each block's loop
 * was guessed wrong, which once a batch costs little.
 */
constexpr ptrdiff_t BATCH_BLOCKS = 4;

/** Units of GB 18030 whose bytes AVX2 collects in a buffer before they are copied. */
constexpr ptrdiff_t COLLECTED_UNITS = 128;

/**
 * Four blocks of UTF-8 each, for which AVX-512 looks the second window of a single-byte set up once one of its
 * characters was found: most text needs the first alone.
 */
constexpr int ROUNDS_WITH_BOTH_WINDOWS = 8;

/** Units that EUC-JP decodes at once to count what the counting kernel leaves: enough for the decoding kernel's speed.
 */
constexpr size_t COUNTED_AT_ONCE = 1024;

// Long texts.

/** Units looked at in one go: 4 KiB, which stay in the first-level cache between the search for the end and the loop.
 */
constexpr size_t PIECE = 2048;

/**
 * Units that may be left of a buffer of a whole piece. Where a character has several bytes, each look for the
 * terminator fills a part of what is left: the last and smallest parts are not worth it.
 */
constexpr size_t UNUSED_OF_PIECE = PIECE / 8;

}  // namespace kx7

#endif
