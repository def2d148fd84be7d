// kx7text - kx7conv: conversion of one input after another to standard output.
#include "Transcoder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "kx7/converters/KX7CharSetConverter.h"
#include "kx7/converters/Utf16.h"

namespace kx7 {

namespace {

std::string hex(uint64_t value, int digits)
{
    char text[17];
    snprintf(text, sizeof text, "%0*llX", digits, static_cast<unsigned long long>(value));
    return text;
}

uint64_t countLineFeeds(unsigned short const* units, unsigned short const* unitsEnd)
{
    return static_cast<uint64_t>(std::count(units, unitsEnd, '\n'));
}

bool isPair(unsigned short const* units, unsigned short const* unitsEnd)
{
    return unitsEnd - units >= 2 && isHighSurrogate(units[0]) && isLowSurrogate(units[1]);
}

}  // namespace

Transcoder::Codec::Codec(CharSetName const& charSet)
    : name(charSet.name), converter(*KX7CharSetConverter::getConverter(charSet.charSet)), engine(*engineOf(converter))
{
}

Transcoder::Transcoder(CharSetName const& from, CharSetName const& to, OnError onError)
    : m_from(from), m_to(to), m_onError(onError), m_blockOffset(0), m_lineFeeds(0), m_outputSize(0)
{
}

void Transcoder::convert(Input& input)
{
    m_blockOffset = 0;
    m_lineFeeds = 0;
    size_t heldBytes = 0;  // at the front of m_bytes: a character that the end of the block cut
    bool isLast = false;
    while (!isLast) {
        size_t const got = input.read(m_bytes.data() + heldBytes, m_bytes.size() - heldBytes);
        isLast = got == 0;
        size_t const byteCount = heldBytes + got;
        size_t const used = convertBlock(byteCount, isLast);
        flush();
        heldBytes = byteCount - used;
        memmove(m_bytes.data(), m_bytes.data() + used, heldBytes);
        m_blockOffset += used;
    }
}

/** Converts the bytes in m_bytes. Returns how many are used: all, but for a character that may go on in the next. */
size_t Transcoder::convertBlock(size_t byteCount, bool isLast)
{
    unsigned char const* in = m_bytes.data();
    unsigned char const* const end = in + byteCount;
    for (;;) {
        Progress const decoded = m_from.engine.decodeStrict(m_from.converter, in, end, m_units.data(),
                                                            m_units.data() + m_units.size(), isLast);
        bool const isIllegal = decoded.stop == Stop::ILLEGAL;
        Piece const piece = {in, in + decoded.consumed, decoded.written};
        encodePiece(piece);
        in = piece.end;
        if (isIllegal) {
            onIllegal(in, decoded.length);
            in += decoded.length;
        }
        else if (decoded.stop != Stop::DESTINATION_FULL) {
            return static_cast<size_t>(in - m_bytes.data());
        }
    }
}

/** Encodes the units in m_units. */
void Transcoder::encodePiece(Piece const& piece)
{
    unsigned short const* unit = m_units.data();
    unsigned short const* const end = unit + piece.unitCount;
    while ((unit = encode(unit, end)) != end) {
        unsigned short const* const next = unit + (isPair(unit, end) ? 2 : 1);
        if (m_onError == OnError::STOP)
            onUnrepresentable(piece, unit, next);
        substitute(unit, next);
        unit = next;
    }
    m_lineFeeds += countLineFeeds(m_units.data(), end);
}

/** Encodes units that end between characters into m_output. Returns where the first unrepresentable one is. */
unsigned short const* Transcoder::encode(unsigned short const* units, unsigned short const* unitsEnd)
{
    for (;;) {
        Progress const encoded = m_to.engine.encode(m_to.converter, units, unitsEnd, m_output.data() + m_outputSize,
                                                    m_output.data() + m_output.size(), true);
        units += encoded.consumed;
        m_outputSize += encoded.written;
        if (encoded.stop != Stop::DESTINATION_FULL)
            return units;
        flush();
    }
}

/** Writes what stands for an unrepresentable character, through the encoder since the target may be wide. */
void Transcoder::substitute(unsigned short const* units, unsigned short const* unitsEnd)
{
    if (m_onError == OnError::REPLACE) {
        unsigned short const questionMark = '?';
        encode(&questionMark, &questionMark + 1);
        return;
    }
    for (; units != unitsEnd; ++units) {
        unsigned char ascii[ESCAPE_LENGTH];
        writeEscape(ascii, *units);
        unsigned short escape[ESCAPE_LENGTH];
        std::copy(std::begin(ascii), std::end(ascii), escape);
        encode(escape, escape + ESCAPE_LENGTH);
    }
}

void Transcoder::onIllegal(unsigned char const* bytes, size_t byteCount)
{
    if (m_onError == OnError::STOP) {
        std::string sequence;
        for (size_t i = 0; i < byteCount; ++i)
            sequence += " " + hex(bytes[i], 2);
        fail(offsetOf(bytes), m_lineFeeds, std::string("invalid ") + m_from.name + " sequence" + sequence);
    }
    unsigned short const replacement = REPLACEMENT_CHAR;
    if (encode(&replacement, &replacement + 1) == &replacement) {
        unsigned short const questionMark = '?';
        encode(&questionMark, &questionMark + 1);
    }
}

void Transcoder::onUnrepresentable(Piece const& piece, unsigned short const* units, unsigned short const* unitsEnd)
{
    unsigned int const codePoint = isPair(units, unitsEnd) ? codePointOf(units[0], units[1]) : units[0];
    uint64_t const lineFeeds = m_lineFeeds + countLineFeeds(m_units.data(), units);
    fail(offsetOf(piece, units), lineFeeds, "U+" + hex(codePoint, 4) + " not in " + m_to.name);
}

void Transcoder::fail(uint64_t offset, uint64_t lineFeeds, std::string const& reason)
{
    flush();
    throw DataError(std::to_string(lineFeeds + 1) + ": byte " + std::to_string(offset) + " (0x" + hex(offset, 1) +
                    "): " + reason);
}

/** Where a byte of m_bytes is in the input. */
uint64_t Transcoder::offsetOf(unsigned char const* byte) const
{
    return m_blockOffset + static_cast<uint64_t>(byte - m_bytes.data());
}

/** Where the character that begins at a unit of m_units is in the input. */
uint64_t Transcoder::offsetOf(Piece const& piece, unsigned short const* unit)
{
    // Into the same place, which gets the same units once more.
    unsigned short* const decodedEnd = m_units.data() + (unit - m_units.data());
    Progress const decoded =
        m_from.engine.decodeStrict(m_from.converter, piece.begin, piece.end, m_units.data(), decodedEnd, true);
    return offsetOf(piece.begin + decoded.consumed);
}

void Transcoder::flush()
{
    // Emptied first: what could not be written must not come again.
    size_t const size = m_outputSize;
    m_outputSize = 0;
    writeOutput(m_output.data(), size);
}

}  // namespace kx7
