// kx7text - kx7conv: the published conversion of an input, block by block.
//
// The one part of the program that calls what is not public: published operations take a text whole, the engines of the
// library in pieces.
#include "LiteralTranscoder.h"

#include <algorithm>

#include "kx7/base/Utf16.h"

namespace kx7conv {

using namespace kx7;

LiteralTranscoder::LiteralTranscoder(CharSet const& from, CharSet const& to, OnError onError, size_t outputSize)
    : BlockConverter(outputSize), m_from(from), m_to(to), m_op(onError == OnError::STOP     ? ILLCHAR_STOP
                                                               : onError == OnError::ESCAPE ? ILLCHAR_ESCAPE
                                                                                            : ILLCHAR_REPLACE),
      m_codeSize(m_from.converter.getNullCharSize())
{
}

BlockResult LiteralTranscoder::convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                                       Drain const& drain)
{
    if (isFirst)
        m_held = 0;
    unsigned char const* in = bytes;
    unsigned char const* end = bytes + size / m_codeSize * m_codeSize;
    unsigned char const* terminator = end;
    for (unsigned char const* code = bytes; code != end; code += m_codeSize)
        if (std::all_of(code, code + m_codeSize, [](unsigned char byte) { return byte == 0; })) {
            terminator = code;
            break;
        }
    // A code that the end of a wide text truncates is no part of it.
    bool const ends = isLast || terminator != end;
    end = terminator;
    bool more = true;
    while (more) {
        Progress const decoded = m_from.engine.decode(m_from.converter, in, end, m_units.data() + m_held,
                                                      m_units.data() + m_units.size() - 2, ends);
        in += decoded.consumed;
        m_held += decoded.written;
        more = decoded.stop == Stop::DESTINATION_FULL;
        if (decoded.stop == Stop::ILLEGAL) {
            if (m_op == ILLCHAR_STOP) {
                if (encode(true, drain))
                    describe(invalidSequence(m_from, {reinterpret_cast<char const*>(in), decoded.length}));
                return {static_cast<size_t>(in - bytes), 0, true};
            }
            // The decoder's own way with it: a substitute or, for a stray byte of UTF-8, nothing.
            TextProgress const substituted =
                m_from.engine.decodeText(m_from.converter, {in, in + decoded.length}, m_units.data() + m_held, 2);
            m_held += substituted.written;
            in += decoded.length;
            more = true;
        }
        if (!encode(ends && !more, drain))
            return {static_cast<size_t>(in - bytes), 0, true};
    }
    bool const ended = terminator != bytes + size / m_codeSize * m_codeSize;
    return {ended || isLast ? size : static_cast<size_t>(in - bytes), 0, ended};
}

/** Encodes the units in m_units, but for one that must be seen together with what follows. False: the text has ended.
 */
bool LiteralTranscoder::encode(bool isLast, Drain const& drain)
{
    unsigned short const* unit = m_units.data();
    unsigned short const* const end = unit + m_held;
    bool goesOn = true;
    while (unit != end && goesOn) {
        TextProgress const encoded =
            m_to.engine.encodeText(m_to.converter, {unit, end}, m_output.data() + m_outputSize,
                                   static_cast<unsigned int>(m_output.size() - m_outputSize), m_op, isLast);
        unit += encoded.consumed;
        m_outputSize += encoded.written;
        if (encoded.truncated)
            break;
        goesOn = unit == end || encoded.full;
        if (encoded.full) {
            drain();
            clear();
        }
    }
    if (!goesOn && m_op == ILLCHAR_STOP && isUnrepresentable(unit, end))
        describe(notIn(m_to, isPair(unit, end) ? codePointOf(unit[0], unit[1]) : unit[0]));
    m_held = static_cast<size_t>(end - unit);
    std::copy(unit, end, m_units.data());
    return goesOn;
}

/** Rather than a text that ends without a word: at a zero, or in GB 18030 at half a pair. */
bool LiteralTranscoder::isUnrepresentable(unsigned short const* unit, unsigned short const* end) const
{
    bool const isHalfPair = isHighSurrogate(*unit) && !isPair(unit, end);
    return *unit != 0 && !(isHalfPair && m_to.number == KX7CS_GB18030);
}

void LiteralTranscoder::describe(std::string const& reason)
{
    m_faults.push_back({NO_OFFSET, 0, reason});
    ++m_faultCount;
}

}  // namespace kx7conv
