// kx7text - kx7conv: conversion of one input after another, block by block.
#ifndef KX7_CLI_TRANSCODER_H
#define KX7_CLI_TRANSCODER_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Options.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/converters/Engine.h"

namespace kx7conv {

/** A character set and how it is converted. */
struct Codec {
    /** `charSet` has a converter. */
    explicit Codec(KX7CharSet charSet);

    /** The bytes of a text that the set can represent; empty where it cannot. */
    std::string encoded(std::u16string const& text) const;

    char const* name;
    KX7CharSet number;  ///< never KX7CS_OS_DEFAULT
    KX7CharSetConverter& converter;
    kx7::Engine const& engine;
};

/** The offset of a fault whose place is not known. */
constexpr uint64_t NO_OFFSET = UINT64_MAX;

/** Bytes that are illegal, or a character that the target cannot represent. */
struct Fault {
    uint64_t offset;     ///< of the first byte, in the block
    uint64_t lineFeeds;  ///< ahead of it in the block
    std::string reason;
};

/** How a Transcoder treats its input. */
struct Rules {
    OnError onError;
    std::u16string substitute;  ///< for whatever cannot be converted; empty: U+FFFD or "?"
    uint64_t faultsWanted;      ///< faults of a block that are described; the others are counted
    bool countsLines;
    bool dropsByteOrderMark;
    bool lineBuffered;
    bool writesNothing;
};

/** What convert() made of a block, beside output and faults. */
struct BlockResult {
    size_t used;         ///< bytes; all, but for a character that may go on behind the block
    uint64_t lineFeeds;  ///< in what is used
    bool stopped;        ///< with OnError::STOP, at the first fault; or at the end of the text
};

/** Converts the blocks of an input one after another, or any one of them if it begins and ends between characters. */
class BlockConverter {
public:
    /** Called when output or list of faults are full; takes both. */
    using Drain = std::function<void()>;

    BlockConverter(size_t outputSize) : m_output(outputSize) {}
    virtual ~BlockConverter() = default;

    /** Throws what `drain` throws. */
    virtual BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                                Drain const& drain) = 0;

    unsigned char const* output() const { return m_output.data(); }
    size_t outputSize() const { return m_outputSize; }
    std::vector<Fault> const& faults() const { return m_faults; }
    uint64_t faultCount() const { return m_faultCount; }

    /** Forgets output and faults. */
    void clear()
    {
        m_outputSize = 0;
        m_faults.clear();
        m_faultCount = 0;
    }

protected:
    std::vector<unsigned char> m_output;
    size_t m_outputSize = 0;
    std::vector<Fault> m_faults;
    uint64_t m_faultCount = 0;
};

/**
 * Strict conversion, in fixed memory.
 *
 * Bytes are decoded in pieces into a buffer of code units, which is encoded into a buffer of output. The pieces are
 * those of the decoder, so an unrepresentable unit is found in the input by decoding its piece once more, up to it.
 */
class Transcoder : public BlockConverter {
public:
    Transcoder(Codec const& from, Codec const& to, Rules const& rules, size_t outputSize);

    BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                        Drain const& drain) override;

private:
    /** A run of input bytes and the code units that it became, in m_units. No decoder tears a surrogate pair. */
    struct Piece {
        unsigned char const* begin;
        unsigned char const* end;
        size_t unitCount;
    };

    bool encodePiece(Piece const& piece);
    unsigned short const* encode(unsigned short const* units, unsigned short const* unitsEnd);
    void encodeSubstitute();
    void substitute(unsigned short const* units, unsigned short const* unitsEnd);
    bool onIllegal(unsigned char const* bytes, unsigned char const* blockEnd, size_t byteCount);
    void onUnrepresentable(Piece const& piece, unsigned short const* units, unsigned short const* unitsEnd);
    bool describes();
    void drain();
    uint64_t lineFeedsBefore(Piece const& piece, unsigned short const* unit);
    uint64_t offsetOf(Piece const& piece, unsigned short const* unit);

    Codec const m_from;
    Codec const m_to;
    Rules const m_rules;
    std::string const m_byteOrderMark;  ///< in the input's character set; empty if it is not looked for

    bool const m_lineFeedsAreBytes;  ///< the byte 0x0A is U+000A and nothing else is

    unsigned char const* m_block;  ///< the block that is converted
    uint64_t m_lineFeeds;          ///< of the block that were decoded, m_units excluded
    uint64_t m_described;          ///< faults of the block
    Drain const* m_drain;

    std::array<unsigned short, 8 * 1024> m_units;
};

/** The published conversion: toUTF16 of the text up to its terminator, and fromUTF16 of that. One input at a time. */
class LiteralTranscoder : public BlockConverter {
public:
    LiteralTranscoder(Codec const& from, Codec const& to, OnError onError, size_t outputSize);

    BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                        Drain const& drain) override;

private:
    bool encode(bool isLast, Drain const& drain);
    bool isUnrepresentable(unsigned short const* unit, unsigned short const* end) const;
    void describe(std::string const& reason);

    Codec const m_from;
    Codec const m_to;
    ILLCHAR_OPTYPE const m_op;
    size_t const m_codeSize;  ///< of the input, and so of its terminator

    size_t m_held = 0;  ///< units at the front of m_units that must be seen together with what follows
    std::array<unsigned short, 8 * 1024> m_units;
};

}  // namespace kx7conv

#endif
