// kx7text - kx7conv: conversion of one input after another, block by block.
#include "Transcoder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "kx7/base/Utf16.h"
#include "kx7/convert.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7conv {

using namespace kx7;

namespace {

/** Faults that are kept before they are handed over. */
constexpr size_t MOST_FAULTS = 256;

/** Longer than any character, and than the two escapes of a pair. */
constexpr size_t LONGEST_CHARACTER = 16;

std::string hex(uint64_t value, int digits)
{
    char text[17];
    snprintf(text, sizeof text, "%0*llX", digits, static_cast<unsigned long long>(value));
    return text;
}

/** In units; and in bytes, where that byte is a line feed and nothing else. Sums as narrow as what is counted fill
 * vectors. */
template <class Unit>
uint64_t countLineFeeds(Unit const* text, Unit const* end)
{
    constexpr size_t RUN = 240;  // a byte holds their sum
    uint64_t total = 0;
    for (; static_cast<size_t>(end - text) >= RUN; text += RUN) {
        Unit count = 0;
        for (size_t i = 0; i < RUN; ++i)
            count = static_cast<Unit>(count + (text[i] == '\n' ? 1 : 0));
        total += count;
    }
    return total + static_cast<uint64_t>(std::count(text, end, '\n'));
}

/** Behind the first line feed, or the end. */
unsigned short const* endOfLine(unsigned short const* units, unsigned short const* unitsEnd)
{
    unsigned short const* const lineFeed = std::find(units, unitsEnd, '\n');
    return lineFeed == unitsEnd ? unitsEnd : lineFeed + 1;
}

std::string hexBytes(unsigned char const* bytes, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += " " + hex(bytes[i], 2);
    return text;
}

std::string unrepresentable(unsigned short const* units, unsigned short const* unitsEnd, Codec const& target)
{
    unsigned int const codePoint = isPair(units, unitsEnd) ? codePointOf(units[0], units[1]) : units[0];
    return "U+" + hex(codePoint, 4) + " not in " + target.name;
}

}  // namespace

Codec::Codec(KX7CharSet charSet)
    : name(charSetInfo(charSet)->name), number(charSetInfo(charSet)->charSet), converter(converterOf(number)),
      engine(*engineOf(converter))
{
}

std::string Codec::encoded(std::u16string const& text) const
{
    std::vector<unsigned short> const units(text.begin(), text.end());
    unsigned char bytes[64];
    Progress const progress =
        engine.encode(converter, units.data(), units.data() + units.size(), bytes, bytes + sizeof bytes, true);
    return std::string(reinterpret_cast<char const*>(bytes), progress.stop == Stop::SOURCE_USED ? progress.written : 0);
}

Transcoder::Transcoder(Codec const& from, Codec const& to, Rules const& rules, size_t outputSize)
    : BlockConverter(outputSize), m_from(from), m_to(to), m_rules(rules),
      m_byteOrderMark(rules.dropsByteOrderMark ? from.encoded(u"\uFEFF") : std::string()),
      m_lineFeedsAreBytes(lineFeedsAreBytes(from.number)), m_block(nullptr), m_lineFeeds(0), m_described(0),
      m_drain(nullptr)
{
}

BlockResult Transcoder::convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast, Drain const& drain)
{
    m_block = bytes;
    m_lineFeeds = 0;
    m_described = 0;
    m_drain = &drain;
    unsigned char const* in = bytes;
    unsigned char const* const end = in + size;
    size_t const mark = m_byteOrderMark.size();
    if (isFirst && mark != 0 && size >= mark && memcmp(in, m_byteOrderMark.data(), mark) == 0)
        in += mark;
    auto const result = [&](bool stopped) {
        return BlockResult{static_cast<size_t>(in - bytes), m_lineFeeds, stopped};
    };
    for (;;) {
        Progress const decoded = m_from.engine.decodeStrict(m_from.converter, in, end, m_units.data(),
                                                            m_units.data() + m_units.size(), isLast);
        bool const isIllegal = decoded.stop == Stop::ILLEGAL;
        Piece const piece = {in, in + decoded.consumed, decoded.written};
        if (!encodePiece(piece))
            return result(true);
        in = piece.end;
        if (isIllegal) {
            if (!onIllegal(in, end, decoded.length))
                return result(true);
            in += decoded.length;
        }
        else if (decoded.stop != Stop::DESTINATION_FULL) {
            return result(false);
        }
    }
}

/** Encodes the units in m_units. False: it ended before one that cannot be represented. */
bool Transcoder::encodePiece(Piece const& piece)
{
    unsigned short const* unit = m_units.data();
    unsigned short const* const end = unit + piece.unitCount;
    while (unit != end) {
        unsigned short const* const runEnd = m_rules.lineBuffered ? endOfLine(unit, end) : end;
        unit = encode(unit, runEnd);
        if (unit != runEnd) {
            unsigned short const* const next = unit + (isPair(unit, end) ? 2 : 1);
            onUnrepresentable(piece, unit, next);
            if (m_rules.onError == OnError::STOP)
                return false;
            substitute(unit, next);
            unit = next;
        }
        else if (m_rules.lineBuffered && unit[-1] == '\n') {
            drain();
        }
    }
    if (m_rules.countsLines)
        m_lineFeeds += lineFeedsBefore(piece, end);
    return true;
}

/** Encodes units that end between characters into m_output. Returns where the first unrepresentable one is. */
unsigned short const* Transcoder::encode(unsigned short const* units, unsigned short const* unitsEnd)
{
    for (;;) {
        Progress const encoded = m_to.engine.encode(m_to.converter, units, unitsEnd, m_output.data() + m_outputSize,
                                                    m_output.data() + m_output.size(), true);
        units += encoded.consumed;
        if (!m_rules.writesNothing)
            m_outputSize += encoded.written;
        if (encoded.stop != Stop::DESTINATION_FULL)
            return units;
        if (!m_rules.writesNothing)
            drain();
    }
}

/** Writes what stands for an illegal byte or an unrepresentable character. The target may be wide or lack U+FFFD. */
void Transcoder::encodeSubstitute()
{
    std::u16string const& text = m_rules.substitute;
    std::vector<unsigned short> const units(text.begin(), text.end());
    encode(units.data(), units.data() + units.size());
}

/** Writes what stands for an unrepresentable character, through the encoder since the target may be wide. */
void Transcoder::substitute(unsigned short const* units, unsigned short const* unitsEnd)
{
    if (m_rules.onError == OnError::REPLACE) {
        unsigned short const questionMark = '?';
        if (m_rules.substitute.empty())
            encode(&questionMark, &questionMark + 1);
        else
            encodeSubstitute();
    }
    if (m_rules.onError != OnError::ESCAPE)
        return;
    for (; units != unitsEnd; ++units) {
        unsigned char ascii[ESCAPE_LENGTH];
        writeEscape(ascii, *units);
        unsigned short escape[ESCAPE_LENGTH];
        std::copy(std::begin(ascii), std::end(ascii), escape);
        encode(escape, escape + ESCAPE_LENGTH);
    }
}

/** Writes what stands for illegal bytes. False: the conversion ends before them. */
bool Transcoder::onIllegal(unsigned char const* bytes, unsigned char const* blockEnd, size_t byteCount)
{
    if (describes()) {
        // As many bytes as it took to see it: in a double-byte set the byte that is no trail byte is one of them.
        size_t shown = byteCount;
        if (m_from.converter.getMaxUnitSize() > 1 && m_from.converter.getNullCharSize() == 1 &&
            m_from.number != KX7CS_UTF8 && m_from.number != KX7CS_UTF16ESC) {
            auto const known = std::min(static_cast<size_t>(blockEnd - bytes), LONGEST_CHARACTER);
            unsigned short units[LONGEST_CHARACTER];
            for (shown = 1; shown < known; ++shown)
                if (m_from.engine.decodeStrict(m_from.converter, bytes, bytes + shown, units, std::end(units), false)
                        .stop != Stop::SOURCE_CUT)
                    break;
        }
        m_faults.push_back({static_cast<uint64_t>(bytes - m_block), m_lineFeeds,
                            std::string("invalid ") + m_from.name + " sequence" + hexBytes(bytes, shown)});
    }
    switch (m_rules.onError) {
        case OnError::STOP: return false;
        case OnError::SKIP: return true;
        default: break;
    }
    if (!m_rules.substitute.empty()) {
        encodeSubstitute();
        return true;
    }
    unsigned short const replacement = REPLACEMENT_CHAR;
    if (encode(&replacement, &replacement + 1) == &replacement) {
        unsigned short const questionMark = '?';
        encode(&questionMark, &questionMark + 1);
    }
    return true;
}

void Transcoder::onUnrepresentable(Piece const& piece, unsigned short const* units, unsigned short const* unitsEnd)
{
    if (!describes())
        return;
    std::string const reason = unrepresentable(units, unitsEnd, m_to);
    uint64_t const offset = offsetOf(piece, units);
    m_faults.push_back({offset, m_lineFeeds + lineFeedsBefore(piece, units), reason});
}

/** Counts a fault. Whether it is to be described. */
bool Transcoder::describes()
{
    ++m_faultCount;
    if (m_described == m_rules.faultsWanted)
        return false;
    ++m_described;
    if (m_faults.size() >= MOST_FAULTS) {
        // The fault at hand is counted with the next ones.
        --m_faultCount;
        drain();
        ++m_faultCount;
    }
    return true;
}

void Transcoder::drain()
{
    (*m_drain)();
    clear();
}

/** Line feeds in a piece ahead of a unit of m_units. */
uint64_t Transcoder::lineFeedsBefore(Piece const& piece, unsigned short const* unit)
{
    if (!m_lineFeedsAreBytes)
        return countLineFeeds<unsigned short>(m_units.data(), unit);
    bool const isWhole = unit == m_units.data() + piece.unitCount;
    return countLineFeeds(piece.begin, isWhole ? piece.end : m_block + offsetOf(piece, unit));
}

/** Where the character that begins at a unit of m_units is in the block. */
uint64_t Transcoder::offsetOf(Piece const& piece, unsigned short const* unit)
{
    // Into the same place, which gets the same units once more.
    unsigned short* const decodedEnd = m_units.data() + (unit - m_units.data());
    Progress const decoded =
        m_from.engine.decodeStrict(m_from.converter, piece.begin, piece.end, m_units.data(), decodedEnd, true);
    return static_cast<uint64_t>(piece.begin + decoded.consumed - m_block);
}

LiteralTranscoder::LiteralTranscoder(Codec const& from, Codec const& to, OnError onError, size_t outputSize)
    : BlockConverter(outputSize), m_from(from), m_to(to), m_op(onError == OnError::STOP     ? ILLCHAR_STOP
                                                               : onError == OnError::ESCAPE ? ILLCHAR_ESCAPE
                                                                                            : ILLCHAR_REPLACE),
      m_codeSize(from.converter.getNullCharSize())
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
    // A code that the end of a wide text cuts off is no part of it.
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
                    describe(std::string("invalid ") + m_from.name + " sequence" + hexBytes(in, decoded.length));
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
        if (encoded.cut)
            break;
        goesOn = unit == end || encoded.full;
        if (encoded.full) {
            drain();
            clear();
        }
    }
    if (!goesOn && m_op == ILLCHAR_STOP && isUnrepresentable(unit, end))
        describe(unrepresentable(unit, end, m_to));
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
