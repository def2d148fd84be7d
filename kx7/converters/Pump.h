// kx7text - the pump: the loop of every conversion that decodes a text a piece at a time (internal).
#ifndef KX7_CONVERTERS_PUMP_H
#define KX7_CONVERTERS_PUMP_H

#include "kx7/converters/Engine.h"

namespace kx7 {

/**
 * Moves a text from a source to a sink, a piece at a time. What is done at an error, at a full destination and at the
 * end of what the source was given is theirs to decide; each of these returns false where the conversion ends.
 *
 *     source.read(sink)              decodes the next piece, where the sink wants it; false also where there is none
 *     source.stop()                  what ended the piece
 *     sink.write(source)             takes the piece: encodes it, looks at it, or finds it where it should be
 *     source.passError(sink)         the piece ends before an error: writes what stands for it
 *     sink.goesOnWhenFull(source)    the piece ends where the place for it does
 *     source.carry()                 the piece ends with what the source was given: keeps an incomplete character
 *
 * Inline, since many texts are short and one piece: then source and sink are values in registers.
 */
template <class Source, class Sink>
[[gnu::always_inline]] inline void pump(Source& source, Sink& sink)
{
    bool goesOn = true;
    while (goesOn && source.read(sink) && sink.write(source))
        switch (source.stop()) {
            case Stop::ILLEGAL:
            case Stop::UNMAPPABLE: goesOn = source.passError(sink); break;
            case Stop::DESTINATION_FULL: goesOn = sink.goesOnWhenFull(source); break;
            case Stop::SOURCE_USED:
            case Stop::SOURCE_TRUNCATED: goesOn = source.carry(); break;
        }
}

/** A sink that forgets what it is given: for what only looks where errors and the end are. */
template <size_t SIZE = 2048>
struct NoSink {
    unsigned short units[SIZE];

    template <class Source>
    static bool write(Source const& /*source*/)
    {
        return true;
    }
    template <class Source>
    static bool goesOnWhenFull(Source const& /*source*/)
    {
        return true;
    }
};

}  // namespace kx7

#endif
