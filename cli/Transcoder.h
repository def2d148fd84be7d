// kx7text - kx7conv: strict conversion of one input after another, block by block.
#ifndef KX7_CLI_TRANSCODER_H
#define KX7_CLI_TRANSCODER_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "BlockConverter.h"
#include "CharSet.h"
#include "Options.h"
#include "kx7/convert.h"

namespace kx7conv {

/** How a Transcoder treats its input. */
struct Rules {
    OnError onError;
    char32_t substitute;    ///< for whatever cannot be converted; 0: U+FFFD or "?"
    uint64_t faultsWanted;  ///< faults of a block that are described; the others are counted
    bool countsLines;
    bool dropsByteOrderMark;
    bool lineBuffered;
    bool writesNothing;
};

/**
 * Strict conversion, in fixed memory: a stream of the library, which begins anew with each block.
 *
 * Where several faults are to be described, the stream stops at each, and goes on without stopping after the last of
 * them.
 */
class Transcoder : public BlockConverter {
public:
    Transcoder(CharSet const& from, CharSet const& to, Rules const& rules, size_t outputSize);

    BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                        Drain const& drain) override;

private:
    kx7::StreamResult convertPiece(std::string_view piece, bool isLast);
    std::string_view firstLine(std::string_view text) const;
    bool isLine(std::string_view piece) const;
    void takeFaults(Drain const& drain);
    std::string reasonOf(kx7::Error const& error) const;
    size_t bytesSeen(std::string_view bytes) const;
    void drain(Drain const& drain);

    CharSet const m_from;
    CharSet const m_to;
    Rules const m_rules;
    std::string const m_byteOrderMark;  ///< in the input's character set; empty if it is not looked for
    std::string const m_lineFeed;       ///< in the input's character set; empty if lines do not matter
    bool const m_stopsAtFaults;         ///< the stream does, to have each described
    bool const m_showsLookahead;        ///< messages show the bytes too that it took to see a fault

    kx7::Transcoder m_stream;
    std::string_view m_text;  ///< the block, without a mark
    size_t m_textOffset;      ///< in the block
    uint64_t m_described;     ///< faults of the block
    uint64_t m_counted;       ///< errors of the stream

    kx7::TranscoderCall m_call;
    alignas(64) std::array<char16_t, 8 * 1024> m_units;  // to vectors
};

}  // namespace kx7conv

#endif
