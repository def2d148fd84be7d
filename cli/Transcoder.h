// kx7text - kx7conv: conversion of one input after another to standard output.
#ifndef KX7_CLI_TRANSCODER_H
#define KX7_CLI_TRANSCODER_H

#include <array>
#include <cstdint>
#include <stdexcept>

#include "Io.h"
#include "kx7/charset/CharSetNames.h"
#include "kx7/converters/Engine.h"

namespace kx7 {

/** What is done with bytes that are illegal and with characters that the target cannot represent. */
enum class OnError {
    STOP,     ///< the input ends there, with a DataError
    REPLACE,  ///< U+FFFD (or "?" where the target lacks it) and "?"
    ESCAPE    ///< U+FFFD (or "?") and the code units as "U+20AC"
};

/** Data that stops a conversion; what() is "line: byte offset: reason". */
struct DataError : std::runtime_error {
    using runtime_error::runtime_error;
};

/**
 * Converts inputs of any size in fixed memory. What one read delivers is converted and written before the next read,
 * but for a character that is not complete yet.
 *
 * Bytes are decoded in pieces into a buffer of code units, which is encoded into a buffer of output. The pieces are
 * those of the decoder, so an unrepresentable unit is found in the input by decoding its piece once more, up to it.
 */
class Transcoder {
public:
    /** Both character sets have a converter. */
    Transcoder(CharSetName const& from, CharSetName const& to, OnError onError);

    /** Converts `input` to its end. Throws InputError, OutputError and, with OnError::STOP, DataError. */
    void convert(Input& input);

private:
    /** A character set and how it is converted. */
    struct Codec {
        explicit Codec(CharSetName const& charSet);
        char const* name;
        KX7CharSetConverter& converter;
        Engine const& engine;
    };

    /** A run of input bytes and the code units that it became, in m_units. No decoder tears a surrogate pair. */
    struct Piece {
        unsigned char const* begin;
        unsigned char const* end;
        size_t unitCount;
    };

    size_t convertBlock(size_t byteCount, bool isLast);
    void encodePiece(Piece const& piece);
    unsigned short const* encode(unsigned short const* units, unsigned short const* unitsEnd);
    void substitute(unsigned short const* units, unsigned short const* unitsEnd);
    void onIllegal(unsigned char const* bytes, size_t byteCount);
    [[noreturn]] void onUnrepresentable(Piece const& piece, unsigned short const* units,
                                        unsigned short const* unitsEnd);
    [[noreturn]] void fail(uint64_t offset, uint64_t lineFeeds, std::string const& reason);
    uint64_t offsetOf(unsigned char const* byte) const;
    uint64_t offsetOf(Piece const& piece, unsigned short const* unit);
    void flush();

    Codec m_from;
    Codec m_to;
    OnError m_onError;

    uint64_t m_blockOffset;  ///< of m_bytes[0] in the input
    uint64_t m_lineFeeds;    ///< that were decoded, m_units excluded
    size_t m_outputSize;

    std::array<unsigned char, 64 * 1024> m_bytes;
    std::array<unsigned short, 4 * 1024> m_units;
    std::array<unsigned char, 64 * 1024> m_output;
};

}  // namespace kx7

#endif
