// kx7text - declares the range tables of GB 18030: what it maps beyond GBK (internal).
#ifndef KX7_TABLES_GB18030RANGES_H
#define KX7_TABLES_GB18030RANGES_H

namespace kx7 {

/**
 * A run of consecutive keys that map to consecutive values. A GB code is a two-byte code as lead byte * 256 +
 * trail byte, or a four-byte code as 0x10000 + its place in the sequence that starts with 81 30 81 30.
 */
struct GB18030Range {
    unsigned int first;
    unsigned int last;   ///< inclusive
    unsigned int value;  ///< what `first` maps to
};

static_assert(sizeof(GB18030Range) == 12, "a record is 12 bytes without padding");

}  // namespace kx7

/*
 * Both tables ascend by `first`, have no overlapping runs and end with a record of zeros. They hold the same
 * pairs: the two-byte codes that GBK maps otherwise and the four-byte codes of the Basic Multilingual Plane;
 * the planes above it are computed. Runs, because the four-byte codes are what the two-byte codes leave over,
 * in Unicode order: 39,420 of them are 206 runs.
 */
extern kx7::GB18030Range const oGB2UniRange[];  // GB code to UTF-16 unit
extern kx7::GB18030Range const oUni2GBRange[];  // UTF-16 unit to GB code

#endif
