// kx7text - the internal interface to a converter: bounded ranges in, bounded ranges out (internal).
//
// What a converter knows of its encoding is how one character is decoded and how one is encoded. The loops of
// DecodeLoop.h and EncodeLoop.h do so with ranges, and this header hands those loops out by converter, so that a caller
// which has counts instead of terminators, wants offsets, or works in pieces uses the same rules as the published
// operations.
#ifndef KX7_CONVERTERS_ENGINE_H
#define KX7_CONVERTERS_ENGINE_H

#include <cstddef>
#include <cstdint>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7 {

/** Why a conversion of a range ended. */
enum class Stop : unsigned char {
    SOURCE_USED,       ///< all of the source is converted
    SOURCE_TRUNCATED,  ///< the source ends inside a character
    DESTINATION_FULL,  ///< the next character does not fit whole
    ILLEGAL,           ///< decoding: the bytes that follow are malformed or not mapped
    UNMAPPABLE         ///< encoding: the units that follow cannot be represented
};

/** How far a conversion of a range came. Always between characters. */
struct Progress {
    size_t consumed;  ///< bytes (decoding) or code units (encoding) of the source
    size_t written;   ///< code units or bytes of the destination
    Stop stop;
    unsigned int length;  ///< ILLEGAL, UNMAPPABLE: bytes or units of the character that stopped it; else 0
};

/** Errors one after another at the front of a range. */
struct ErrorRun {
    size_t length;  ///< bytes or units of all of them
    size_t count;
};

/** Bytes up to a zero terminator or, where `end` is not null, up to `end` if that comes first. */
struct ByteText {
    unsigned char const* begin;
    unsigned char const* end;
};

/** Code units up to a 0 unit or, where `end` is not null, up to `end` if that comes first. */
struct UnitText {
    unsigned short const* begin;
    unsigned short const* end;
};

/** How far a conversion with substitutes came. */
struct TextProgress {
    size_t consumed;
    size_t written;
    bool full;  ///< it ended because the next character does not fit, or the capacity is used up
    bool
        truncated;  ///< encoding what is not the last of the source: it ended before a character that the end truncates
};

/** Where a text in an encoding can be cut, so that what follows is decoded as it would be in the whole text. */
enum class Boundary : unsigned char {
    ANYWHERE,           ///< every byte is a character
    AFTER_CODE,         ///< after a multiple of the size of a code, but not within a surrogate pair
    BEFORE_LEAD_BYTE,   ///< before a byte that is no continuation byte of UTF-8
    AFTER_CONTROL_BYTE  ///< after a byte up to 0x20, which no character of several bytes contains
};

/** What an encoding is like, for callers that look at its bytes. */
struct Encoding {
    Boundary boundary;
    bool lineFeedIsByte;  ///< strict decoding of the library's sets makes U+000A of the byte 0x0A, and of that alone
};

/** What Engine::toUTF8 and fromUTF8 return for a text that they do not take. */
constexpr size_t NOT_DIRECT = SIZE_MAX;

using DirectConversion = size_t(KX7CharSetConverter& converter, unsigned char const* source, unsigned char* dest,
                                size_t capacity);

using RunFromUTF8 = void(KX7CharSetConverter& converter, unsigned char const*& in, unsigned char*& out,
                         unsigned char* outEnd);

/** The operations of one converter class. The converter loads its tables if need be; nothing here throws. */
struct Engine {
    Encoding encoding;

    /** The most bytes that a code unit of a text becomes. */
    unsigned int (*maxBytesPerUnit)(KX7CharSetConverter const& converter);

    /**
     * Decodes a range; a zero byte is a character like any other. Stops at what is illegal and consumes none of it.
     * `last`: no more source follows, so that a character which the range truncates is illegal, not SOURCE_TRUNCATED.
     */
    Progress (*decode)(KX7CharSetConverter& converter, unsigned char const* source, unsigned char const* sourceEnd,
                       unsigned short* dest, unsigned short* destEnd, bool last);

    /** The same, refusing also what the published decoder is lenient about. */
    Progress (*decodeStrict)(KX7CharSetConverter& converter, unsigned char const* source,
                             unsigned char const* sourceEnd, unsigned short* dest, unsigned short* destEnd, bool last);

    /** The sequences that decodeStrict refuses at the front of a range, at most `most`. */
    ErrorRun (*illegalRun)(KX7CharSetConverter& converter, unsigned char const* source, unsigned char const* sourceEnd,
                           bool last, size_t most);

    /** Encodes a range; a 0 unit is a character like any other. `last` as above. */
    Progress (*encode)(KX7CharSetConverter& converter, unsigned short const* source, unsigned short const* sourceEnd,
                       unsigned char* dest, unsigned char* destEnd, bool last);

    /** The characters that encode refuses at the front of well-formed units, at most `most`. */
    ErrorRun (*unmappableRun)(KX7CharSetConverter& converter, unsigned short const* source,
                              unsigned short const* sourceEnd, size_t most);

    /**
     * Decodes with ILLCHAR_REPLACE and no source limit, as the published operation, without its terminator. A capacity
     * of a whole piece, or nearly, is a buffer that is filled again and again: an eighth of a piece may be left unused
     * there.
     */
    TextProgress (*decodeText)(KX7CharSetConverter& converter, ByteText const& source, unsigned short* dest,
                               unsigned int capacity);

    /**
     * Encodes as the published operation, without its terminator and without a byte after the capacity. `last`: no more
     * source follows.
     */
    TextProgress (*encodeText)(KX7CharSetConverter& converter, UnitText const& source, unsigned char* dest,
                               unsigned int capacity, ILLCHAR_OPTYPE op, bool last);

    /**
     * Converts zero-terminated UTF-8 to this encoding at once, moving `in` and `out`, as far as it is sure of what the
     * two steps through UTF-16 would do; it may do nothing. Null for a class without such a kernel.
     */
    RunFromUTF8* runFromUTF8;

    /** The published toUTF16, with a source that may have an end instead of a terminator. */
    unsigned int (*toUTF16)(KX7CharSetConverter& converter, unsigned short* dest, ByteText const& source,
                            unsigned int capacity, int sourceLimit);

    /**
     * Short zero-terminated text directly to UTF-8, without a terminator. Takes a text whole, or returns NOT_DIRECT:
     * that one is to be converted in two steps, over what this has written. Null for a class of other texts.
     */
    DirectConversion* toUTF8;

    /** The same from UTF-8. */
    DirectConversion* fromUTF8;
};

/** The engine of a converter of one of the library's own classes; null for a class that a caller derived. */
Engine const* engineOf(KX7CharSetConverter const& converter);

/** The converter that serves `charSet`. */
inline KX7CharSetConverter& converterOf(KX7CharSet charSet)
{
    return *KX7CharSetConverter::getConverter(charSet);
}

/** Engine functions of one converter class; instantiated beside the class (EngineOf.h). */
template <class Converter>
struct EngineOf {
    /** The decoder of decodeStrict: the lenient one, unless a class has a specialisation. */
    static auto strictDecoder(KX7CharSetConverter& converter);

    /** That of the encodings of one byte or several, unless a class has a specialisation. */
    static constexpr Encoding encoding();

    /** What getMaxUnitSize says, unless a class has a specialisation. */
    static unsigned int maxBytesPerUnit(KX7CharSetConverter const& converter);

    static Progress decode(KX7CharSetConverter& converter, unsigned char const* source, unsigned char const* sourceEnd,
                           unsigned short* dest, unsigned short* destEnd, bool last);
    static Progress decodeStrict(KX7CharSetConverter& converter, unsigned char const* source,
                                 unsigned char const* sourceEnd, unsigned short* dest, unsigned short* destEnd,
                                 bool last);
    static ErrorRun illegalRun(KX7CharSetConverter& converter, unsigned char const* source,
                               unsigned char const* sourceEnd, bool last, size_t most);
    static Progress encode(KX7CharSetConverter& converter, unsigned short const* source,
                           unsigned short const* sourceEnd, unsigned char* dest, unsigned char* destEnd, bool last);
    static ErrorRun unmappableRun(KX7CharSetConverter& converter, unsigned short const* source,
                                  unsigned short const* sourceEnd, size_t most);
    static TextProgress decodeText(KX7CharSetConverter& converter, ByteText const& source, unsigned short* dest,
                                   unsigned int capacity);
    static TextProgress encodeText(KX7CharSetConverter& converter, UnitText const& source, unsigned char* dest,
                                   unsigned int capacity, ILLCHAR_OPTYPE op, bool last);
    static constexpr RunFromUTF8* runFromUTF8();
    static unsigned int toUTF16(KX7CharSetConverter& converter, unsigned short* dest, ByteText const& source,
                                unsigned int capacity, int sourceLimit);
    static constexpr DirectConversion* toUTF8();
    static constexpr DirectConversion* fromUTF8();
    static Engine const ENGINE;
};

/** Bytes before the terminator of `source`, or `byteCount` where it is not within them; reads nothing after either. */
size_t countedLength(KX7CharSetConverter const& converter, char const* source, unsigned int byteCount);

/**
 * The published toUTF16 of any converter, with ILLCHAR_REPLACE and no flag, over bytes given with a count: nothing
 * after them or after a terminator within them is read, and a character that the count truncates meets a zero byte.
 * Throws std::bad_alloc, for a converter without an engine only.
 */
unsigned int decodeCounted(KX7CharSetConverter& converter, unsigned short* dest, char const* source,
                           unsigned int byteCount, unsigned int capacity, int sourceLimit);

/** How convertThroughUTF16 treats the text on its way. */
struct Transit {
    bool unescape;      ///< turn "U+" and four upper-case hexadecimal digits into the unit that they name
    ILLCHAR_OPTYPE op;  ///< for what the target cannot represent
};

/**
 * Zero-terminated text of one converter to another through UTF-16, as one call of toUTF16 with ILLCHAR_REPLACE and one
 * of fromUTF16 would do it, but in pieces through a fixed buffer, and never with a byte after the capacity. The text
 * may be written over, in whatever way the two lie: where one that is longer than a piece would be, a copy on the heap
 * is converted; without memory for it nothing is written and the result is 0.
 * @param capacity bytes that may be written, the terminator of `to` not counted
 * @return bytes written, the terminator not counted; 0 with nothing written when the source decodes to nothing
 */
unsigned int convertThroughUTF16(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                                 unsigned int capacity, Transit transit);

}  // namespace kx7

#endif
