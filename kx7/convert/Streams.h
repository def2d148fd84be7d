// kx7text - what decoders, encoders and transcoders share, and the sources and sinks of their pump (internal).
#ifndef KX7_CONVERT_STREAMS_H
#define KX7_CONVERT_STREAMS_H

#include <algorithm>
#include <iterator>

#include "kx7/base/Utf16.h"
#include "kx7/convert.h"
#include "kx7/converters/Engine.h"

namespace kx7 {

constexpr unsigned short BYTE_ORDER_MARK = 0xFEFF;

/** A character in UTF-16. */
struct CharUnits {
    explicit CharUnits(char32_t c) : units(), count(c > 0xFFFF ? 2 : 1)
    {
        units[0] = count == 2 ? highSurrogateOf(c) : static_cast<unsigned short>(c);
        units[1] = count == 2 ? lowSurrogateOf(c) : static_cast<unsigned short>(0);
    }

    unsigned short units[2];
    size_t count;
};

inline CharUnits substituteOf(Options const& options)
{
    char32_t const c = options.substitute;
    return CharUnits(c == 0 || c > LAST_CODE_POINT || isSurrogate(c) ? char32_t{REPLACEMENT_CHAR} : c);
}

constexpr bool substitutes(ErrorPolicy errors)
{
    return errors == ErrorPolicy::REPLACE || errors == ErrorPolicy::ESCAPE;
}

/** Elements that stand for one error; of `size` 0 where nothing does. */
template <class T>
struct Substitute {
    T const* elements;
    size_t size;
};

/** A part of a buffer. */
template <class T>
struct Place {
    T* begin;
    T* end;
};

/** The members of the streams that no caller needs to know. */
struct Streams {
    template <class Lines>
    class ByteSource;  // both derive from SourceBase
    template <class T>
    class SourceBase;
    class UnitSource;
    class UnitSink;
    class ByteSink;

    static void forget(StreamErrors& stream)
    {
        stream.m_first = {};
        stream.m_last = {};
        stream.m_count = 0;
    }

    static void record(StreamErrors& stream, Error const& error)
    {
        if (stream.m_count++ == 0)
            stream.m_first = error;
        stream.m_last = error;
    }

    /** Counts an error. It is described where somebody can ask for it: the first one, and each that ends a call. */
    template <class Describe>
    static void record(StreamErrors& stream, ErrorPolicy errors, Describe const& describe)
    {
        if (errors == ErrorPolicy::STRICT || stream.m_count == 0)
            record(stream, describe());
        else
            ++stream.m_count;
    }

    /** MISSING_BOM, which is an error however often it is asked for. */
    static Status missing(StreamErrors& stream, Error error)
    {
        error.status = Status::MISSING_BOM;
        if (stream.m_count == 0)
            record(stream, error);
        return Status::MISSING_BOM;
    }

    /** Asks the target how it writes the substitute and the mark, unless it has said so. */
    static void assureAsked(Encoder& encoder)
    {
        if (encoder.m_substituteSize == 0)
            askTarget(encoder);
    }
    static void askTarget(Encoder& encoder);

    /** Bytes of the longest character: two escapes of UTF-16. */
    static constexpr size_t MOST_BYTES = 12;

    static unsigned char encodeChar(Encoder const& encoder, CharUnits const& c, unsigned char (&bytes)[MOST_BYTES]);

    /** Writes the substitute of `options` in the target of an encoder and returns its bytes; 0, and "?", without
     * memory. */
    static unsigned char encodeSubstitute(Encoder const& encoder, Options const& options,
                                          unsigned char (&bytes)[MOST_BYTES]);
    static bool hasMalformedByte(Decoder const& decoder);
    static size_t substituteSize(Encoder const& encoder) { return std::max<size_t>(encoder.m_substituteSize, 1); }

    /** What is done at the beginning of a text. */
    enum class Start { GO_ON, FULL, MISSING };

    /** @param isMarked whether the text that `reader` reads begins with a mark */
    template <class Reader, class Sink>
    static Start start(Reader& reader, bool isMarked, Sink& sink)
    {
        if (!isMarked && reader.m_options.bom == Bom::REQUIRE)
            return Start::MISSING;
        if (reader.m_options.bom == Bom::ADD && !sink.addMark())
            return Start::FULL;
        reader.m_atStart = false;
        return Start::GO_ON;
    }
};

}  // namespace kx7

#endif
