// kx7text - kx7conv: strict conversion of one input after another, block by block.
#include "Transcoder.h"

#include <algorithm>

namespace kx7conv {

namespace {

/** Faults that are kept before they are handed over. */
constexpr size_t MOST_FAULTS = 256;

/** Longer than any character, and than the two escapes of a pair. */
constexpr size_t LONGEST_CHARACTER = 16;

kx7::ErrorPolicy policyOf(OnError onError)
{
    switch (onError) {
        case OnError::STOP: return kx7::ErrorPolicy::STRICT;
        case OnError::REPLACE: return kx7::ErrorPolicy::REPLACE;
        case OnError::SKIP: return kx7::ErrorPolicy::SKIP;
        case OnError::ESCAPE: break;
    }
    return kx7::ErrorPolicy::ESCAPE;
}

kx7::LineFeeds lineFeedsOf(CharSet const& from, Rules const& rules)
{
    if (!rules.countsLines)
        return kx7::LineFeeds::NONE;
    return kx7::lineFeedsAreBytes(from.number) ? kx7::LineFeeds::IN_BYTES : kx7::LineFeeds::IN_TEXT;
}

/** In a set with lead bytes the byte that is no trail byte is shown. */
bool hasLeadBytes(KX7CharSet charSet)
{
    return GetMaxUnitSize(charSet) > 1 && GetNullCharSize(charSet) == 1 && charSet != KX7CS_UTF8 &&
           charSet != KX7CS_UTF16ESC;
}

}  // namespace

Transcoder::Transcoder(CharSet const& from, CharSet const& to, Rules const& rules, size_t outputSize)
    : BlockConverter(outputSize), m_from(from), m_to(to), m_rules(rules),
      m_byteOrderMark(rules.dropsByteOrderMark ? from.encoded(u"\uFEFF") : std::string()),
      m_lineFeed(rules.lineBuffered ? from.encoded(u"\n") : std::string()),
      m_stopsAtFaults(rules.onError == OnError::STOP || rules.faultsWanted > 1),
      m_showsLookahead(hasLeadBytes(from.number)), m_stream(from.number, to.number), m_textOffset(0), m_described(0),
      m_counted(0)
{
    m_call.lineFeeds = lineFeedsOf(from, rules);
    m_call.buffer = m_units;
    m_stream.setSubstitutes(rules.substitute, rules.substitute != 0 ? rules.substitute : U'?');
}

BlockResult Transcoder::convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast, Drain const& drain)
{
    m_text = {reinterpret_cast<char const*>(bytes), size};
    m_textOffset = isFirst && m_text.substr(0, m_byteOrderMark.size()) == m_byteOrderMark ? m_byteOrderMark.size() : 0;
    m_text.remove_prefix(m_textOffset);
    m_described = 0;
    m_counted = 0;
    m_stream.reset();
    m_stream.setErrors(m_stopsAtFaults ? kx7::ErrorPolicy::STRICT : policyOf(m_rules.onError));

    for (std::string_view rest = m_text;;) {
        std::string_view const piece = m_lineFeed.empty() ? rest : firstLine(rest);
        kx7::StreamResult const result = convertPiece(piece, isLast && piece.size() == rest.size());
        rest.remove_prefix(result.consumed);
        takeFaults(drain);
        switch (result.status) {
            case kx7::Status::DONE:
                if (!m_lineFeed.empty() && isLine(piece))
                    this->drain(drain);
                if (rest.empty())
                    return {m_textOffset + static_cast<size_t>(m_stream.bytePosition()), m_stream.lineFeeds(), false};
                break;
            case kx7::Status::OUTPUT_FULL:
                if (!m_rules.writesNothing)
                    this->drain(drain);
                break;
            default: {
                kx7::Error const& error = m_stream.lastError();
                if (m_rules.onError == OnError::STOP)
                    return {m_textOffset + static_cast<size_t>(error.byteOffset), error.lineFeeds, true};
                if (m_described == m_rules.faultsWanted)
                    m_stream.setErrors(policyOf(m_rules.onError));
            }
        }
    }
}

kx7::StreamResult Transcoder::convertPiece(std::string_view piece, bool isLast)
{
    m_call.last = isLast;
    char* const out = reinterpret_cast<char*>(m_output.data());
    kx7::StreamResult const result =
        m_stream.convert(piece, {out + m_outputSize, m_output.size() - m_outputSize}, m_call);
    if (!m_rules.writesNothing)
        m_outputSize += result.written;
    return result;
}

/** A first line, rather than the text after the last line feed. */
bool Transcoder::isLine(std::string_view piece) const
{
    size_t const size = m_lineFeed.size();
    return piece.size() >= size && piece.substr(piece.size() - size) == m_lineFeed && piece.size() % size == 0;
}

/** The first line, its line feed included; all of the text where that has none. */
std::string_view Transcoder::firstLine(std::string_view text) const
{
    for (size_t at = 0; (at = text.find(m_lineFeed, at)) != std::string_view::npos; ++at)
        if (at % m_lineFeed.size() == 0)  // not the end of a code and the beginning of the next
            return text.substr(0, at + m_lineFeed.size());
    return text;
}

/** Counts what the last call of the stream could not convert, and describes it if that is wanted. */
void Transcoder::takeFaults(Drain const& drain)
{
    uint64_t const count = m_stream.errorCount();
    if (count == m_counted)
        return;
    if (m_described != m_rules.faultsWanted) {
        if (m_faults.size() >= MOST_FAULTS)
            this->drain(drain);
        kx7::Error const& error = m_stopsAtFaults ? m_stream.lastError() : m_stream.firstError();
        m_faults.push_back({m_textOffset + error.byteOffset, error.lineFeeds, reasonOf(error)});
        ++m_described;
    }
    m_faultCount += count - m_counted;
    m_counted = count;
}

std::string Transcoder::reasonOf(kx7::Error const& error) const
{
    if (error.status == kx7::Status::UNREPRESENTABLE)
        return notIn(m_to, error.codePoint);
    std::string_view const bytes = m_text.substr(static_cast<size_t>(error.byteOffset));
    return invalidSequence(m_from, bytes.substr(0, m_showsLookahead ? bytesSeen(bytes) : error.length));
}

/** How many of the bytes, which begin with a malformed sequence, it takes to see that it is one. */
size_t Transcoder::bytesSeen(std::string_view bytes) const
{
    kx7::Decoder decoder(m_from.number);
    size_t const known = std::min(bytes.size(), LONGEST_CHARACTER);
    for (size_t seen = 1; seen < known; ++seen) {
        char16_t units[kx7::Decoder::MINIMUM_CAPACITY];
        if (decoder.convert(bytes.substr(seen - 1, 1), {units, std::size(units)}, false).status == kx7::Status::INVALID)
            return seen;
    }
    return known;
}

void Transcoder::drain(Drain const& drain)
{
    drain();
    clear();
}

}  // namespace kx7conv
