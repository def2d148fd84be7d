// kx7text - kx7conv: the published conversion of an input, block by block.
#ifndef KX7_CLI_LITERALTRANSCODER_H
#define KX7_CLI_LITERALTRANSCODER_H

#include <array>
#include <string>

#include "BlockConverter.h"
#include "CharSet.h"
#include "Options.h"
#include "kx7/converters/Engine.h"

namespace kx7conv {

/** The published conversion: toUTF16 of the text up to its terminator, and fromUTF16 of that. One input at a time. */
class LiteralTranscoder : public BlockConverter {
public:
    LiteralTranscoder(CharSet const& from, CharSet const& to, OnError onError, size_t outputSize);

    BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                        Drain const& drain) override;

private:
    bool encode(bool isLast, Drain const& drain);
    bool isUnrepresentable(unsigned short const* unit, unsigned short const* end) const;
    void describe(std::string const& reason);

    /** A character set, its converter and the engine of that. */
    struct Codec : CharSet {
        explicit Codec(CharSet const& charSet)
            : CharSet(charSet), converter(kx7::converterOf(number)), engine(*kx7::engineOf(converter))
        {
        }

        KX7CharSetConverter& converter;
        kx7::Engine const& engine;
    };

    Codec const m_from;
    Codec const m_to;
    ILLCHAR_OPTYPE const m_op;
    size_t const m_codeSize;  ///< of the input, and so of its terminator

    size_t m_held = 0;  ///< units at the front of m_units that must be seen together with what follows
    std::array<unsigned short, 8 * 1024> m_units;
};

}  // namespace kx7conv

#endif
