// kx7text - streams: text in pieces of any size, from bytes to UTF-16, back, and from bytes to bytes.
//
// The engines convert ranges and stop at whatever needs a decision; here stands what is decided. A character that the
// end of a piece cuts is kept in the stream, and converted from a small window together with what follows it.
#include <algorithm>
#include <cstring>
#include <limits>

#include "kx7/base/Utf16.h"
#include "kx7/convert.h"
#include "kx7/converters/Engine.h"

namespace kx7 {

namespace {

constexpr unsigned short BYTE_ORDER_MARK = 0xFEFF;

/** Units that a transcoder decodes in one go, and that an encoder checks: they stay in the first-level cache. */
constexpr size_t PIECE = 2048;

bool isPair(unsigned short const* units, unsigned short const* end)
{
    return end - units >= 2 && isHighSurrogate(units[0]) && isLowSurrogate(units[1]);
}

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

CharUnits substituteOf(Options const& options)
{
    char32_t const c = options.substitute;
    return CharUnits(c == 0 || c > LAST_CODE_POINT || isSurrogate(c) ? char32_t{REPLACEMENT_CHAR} : c);
}

bool substitutes(ErrorPolicy errors)
{
    return errors == ErrorPolicy::REPLACE || errors == ErrorPolicy::ESCAPE;
}

size_t countLineFeeds(unsigned short const* units, unsigned short const* end)
{
    size_t total = 0;
    while (units != end) {
        // Counted in as many bits as a unit has, which is what makes the loop fast.
        unsigned short const* const blockEnd = units + std::min(static_cast<size_t>(end - units), PIECE);
        unsigned short count = 0;
        for (; units != blockEnd; ++units)
            count = static_cast<unsigned short>(count + (*units == '\n' ? 1 : 0));
        total += count;
    }
    return total;
}

/** Units at the front of a range that are well-formed and whole. */
size_t wellFormedLength(unsigned short const* units, unsigned short const* end)
{
    constexpr ptrdiff_t BLOCK = 32;
    unsigned short const* unit = units;
    while (unit != end) {
        if (end - unit >= BLOCK) {
            unsigned short surrogates = 0;  // as wide as a unit, which is what makes the loop fast
            for (ptrdiff_t i = 0; i < BLOCK; ++i)
                surrogates = static_cast<unsigned short>(surrogates | ((unit[i] & 0xF800) == 0xD800));
            if (surrogates == 0) {
                unit += BLOCK;
                continue;
            }
        }
        if (!isSurrogate(*unit))
            unit += 1;
        else if (isPair(unit, end))
            unit += 2;
        else
            break;
    }
    return static_cast<size_t>(unit - units);
}

/** What a call has to convert: first what was kept, in a window that shows what follows it, then the piece given. */
template <class T>
class Feed {
public:
    /** What can be converted in one go. */
    struct Range {
        T const* begin;
        T const* end;
        bool last;        ///< the text ends with it
        bool reachesEnd;  ///< the piece ends with it
    };

    Feed(T const* source, size_t size, bool last, T* held, unsigned char& heldCount)
        : m_begin(source), m_in(source), m_end(source + size), m_last(last), m_held(held), m_heldCount(heldCount),
          m_window()
    {
    }

    Range range()
    {
        if (m_heldCount == 0)
            return {m_in, m_end, m_last, true};
        size_t const rest = static_cast<size_t>(m_end - m_in);
        size_t const seen = std::min(WINDOW - m_heldCount, rest);
        T* const behind = std::copy_n(m_held, m_heldCount, m_window);
        std::copy_n(m_in, seen, behind);
        return {m_window, behind + seen, m_last && seen == rest, seen == rest};
    }

    /** Passes over the first `count` elements of the range. */
    void advance(size_t count)
    {
        if (count >= m_heldCount) {
            m_in += count - m_heldCount;
            m_heldCount = 0;
        }
        else {
            std::copy(m_held + count, m_held + m_heldCount, m_held);
            m_heldCount = static_cast<unsigned char>(m_heldCount - count);
        }
    }

    /** Keeps all that is left, the beginning of one character. */
    void hold()
    {
        std::copy(m_in, m_end, m_held + m_heldCount);
        m_heldCount = static_cast<unsigned char>(m_heldCount + (m_end - m_in));
        m_in = m_end;
    }

    size_t consumed() const { return static_cast<size_t>(m_in - m_begin); }

private:
    /** More than any character takes, so that the window cuts none: two escapes of UTF-16 are twelve bytes. */
    static constexpr size_t WINDOW = 16;

    T const* m_begin;
    T const* m_in;
    T const* m_end;
    bool m_last;
    T* m_held;
    unsigned char& m_heldCount;
    T m_window[WINDOW];
};

/** Where a call writes. */
template <class T>
struct Room {
    /** An empty room may be null, which the engines are not given. */
    Room(void* dest, size_t size) : begin(dest ? static_cast<T*>(dest) : &nowhere), out(begin), end(begin + size) {}

    Room(Room const&) = delete;
    Room& operator=(Room const&) = delete;

    T nowhere = 0;
    T* begin;
    T* out;
    T* end;

    size_t left() const { return static_cast<size_t>(end - out); }
    size_t written() const { return static_cast<size_t>(out - begin); }
    void append(T const* from, size_t count) { out = std::copy_n(from, count, out); }

    /** How often `count` elements fit. */
    size_t fits(size_t count) const { return count == 0 ? SIZE_MAX : left() / count; }
    void appendTimes(T const* from, size_t count, size_t times)
    {
        if (count == 1)
            out = std::fill_n(out, times, *from);
        else if (count != 0)
            for (; times != 0; --times)
                append(from, count);
    }
};

std::optional<size_t> product(size_t a, size_t b)
{
    size_t result = 0;
    return __builtin_mul_overflow(a, b, &result) ? std::nullopt : std::optional<size_t>(result);
}

std::optional<size_t> sum(std::optional<size_t> a, size_t b)
{
    size_t result = 0;
    return !a || __builtin_add_overflow(*a, b, &result) ? std::nullopt : std::optional<size_t>(result);
}

}  // namespace

/** The members of the streams that no caller needs to know. */
struct Streams {
    using ByteFeed = Feed<unsigned char>;
    using UnitFeed = Feed<unsigned short>;

    /** What the beginning of a text needs before the rest is converted. */
    enum class Start { GO_ON, CUT, FULL, MISSING };

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

    static Error errorAt(Decoder const& decoder, Status status)
    {
        Error error = {};
        error.byteOffset = decoder.m_bytePosition;
        error.unitOffset = decoder.m_unitPosition;
        error.status = status;
        return error;
    }

    static Error invalidBytes(Decoder const& decoder, unsigned char const* bytes, size_t length)
    {
        Error error = errorAt(decoder, Status::INVALID);
        error.length = static_cast<unsigned char>(length);
        std::copy_n(bytes, std::min(length, sizeof error.bytes), error.bytes);
        return error;
    }

    /** `added` of `addedSize` elements is what Bom::ADD writes; `text` is the decoder or encoder that reads. */
    template <class Reader, class T>
    static Start beginWith(Reader& reader, size_t markLength, Room<T>& room, T const* added, size_t addedSize)
    {
        if (markLength == 0 && reader.m_options.bom == Bom::REQUIRE)
            return Start::MISSING;
        if (reader.m_options.bom == Bom::ADD) {
            if (room.left() < addedSize)
                return Start::FULL;
            room.append(added, addedSize);
        }
        reader.m_atStart = false;
        return Start::GO_ON;
    }

    /** Deals with the byte-order mark at the beginning of bytes. */
    template <class T>
    static Start start(Decoder& decoder, ByteFeed& feed, Room<T>& room, T const* added, size_t addedSize)
    {
        if (decoder.m_options.bom == Bom::KEEP) {
            decoder.m_atStart = false;
            return Start::GO_ON;
        }
        ByteFeed::Range const range = feed.range();
        unsigned short unit = 0;
        Progress progress = {};
        if (range.begin != range.end)
            progress = decoder.m_engine->decodeStrict(*decoder.m_converter, range.begin, range.end, &unit, &unit + 1,
                                                      range.last);
        if (progress.written == 0 && progress.stop == Stop::SOURCE_CUT)
            return Start::CUT;
        bool const isMarked = progress.written == 1 && unit == BYTE_ORDER_MARK;
        Start const result = beginWith(decoder, isMarked ? progress.consumed : 0, room, added, addedSize);
        if (result == Start::GO_ON && isMarked)
            pass(decoder, feed, progress.consumed);
        return result;
    }

    /** Passes over bytes. */
    static void pass(Decoder& decoder, ByteFeed& feed, size_t count)
    {
        feed.advance(count);
        decoder.m_bytePosition += count;
    }

    /** Passes over the malformed sequences at `bytes`, within `range`, at most `most`. Counts and returns them. */
    static size_t passIllegal(StreamErrors& stream, Decoder& decoder, ByteFeed& feed, ByteFeed::Range const& range,
                              unsigned char const* bytes, size_t most)
    {
        ErrorRun const run = decoder.m_engine->illegalRun(*decoder.m_converter, bytes, range.end, range.last, most);
        stream.m_count += run.count;
        pass(decoder, feed, run.length);
        return run.count;
    }

    /**
     * How many units are looked at before they are converted. After an error that ended a call at most twice as many as
     * have been converted since: then what is looked at again after the next error is in proportion to that, too.
     * @param position of `stream`, in units
     */
    static size_t lookAhead(StreamErrors const& stream, ErrorPolicy errors, unsigned long long position)
    {
        constexpr unsigned long long LEAST = 64;
        if (errors != ErrorPolicy::STRICT || stream.m_count == 0)
            return PIECE;
        unsigned long long const since = position - stream.m_last.unitOffset;
        return static_cast<size_t>(std::clamp<unsigned long long>(2 * since, LEAST, PIECE));
    }

    /** MISSING_BOM, which is an error however often it is asked for. */
    static Status missing(StreamErrors& stream, Error const& error)
    {
        if (stream.m_count == 0)
            record(stream, error);
        return Status::MISSING_BOM;
    }

    static Status decode(Decoder& decoder, ByteFeed& feed, Room<unsigned short>& room, bool last)
    {
        CharUnits const substitute = substituteOf(decoder.m_options);
        for (;;) {
            if (decoder.m_atStart && (last || feed.range().begin != feed.range().end)) {
                switch (start(decoder, feed, room, &BYTE_ORDER_MARK, 1)) {
                    case Start::GO_ON: break;
                    case Start::CUT: feed.hold(); return Status::DONE;
                    case Start::FULL: return Status::OUTPUT_FULL;
                    case Start::MISSING: return missing(decoder, errorAt(decoder, Status::MISSING_BOM));
                }
                decoder.m_unitPosition += room.written();
            }
            ByteFeed::Range const range = feed.range();
            if (range.begin == range.end)
                return Status::DONE;
            Progress const progress = decoder.m_engine->decodeStrict(*decoder.m_converter, range.begin, range.end,
                                                                     room.out, room.end, range.last);
            room.out += progress.written;
            decoder.m_unitPosition += progress.written;
            if (progress.stop == Stop::ILLEGAL) {
                unsigned char const* const bytes = range.begin + progress.consumed;
                bool const isReplaced = substitutes(decoder.m_options.errors);
                bool const fits = !isReplaced || room.left() >= substitute.count;
                decoder.m_bytePosition += progress.consumed;
                bool const isStopped = decoder.m_options.errors == ErrorPolicy::STRICT;
                if (fits && (isStopped || decoder.m_count == 0))
                    record(decoder, invalidBytes(decoder, bytes, progress.length));
                else if (fits)
                    ++decoder.m_count;
                feed.advance(progress.consumed);
                if (!fits)
                    return Status::OUTPUT_FULL;
                pass(decoder, feed, progress.length);
                if (isStopped)
                    return Status::INVALID;
                size_t const size = isReplaced ? substitute.count : 0;
                size_t const count =
                    1 + passIllegal(decoder, decoder, feed, range, bytes + progress.length, room.fits(size) - 1);
                room.appendTimes(substitute.units, size, count);
                decoder.m_unitPosition += size * count;
                continue;
            }
            pass(decoder, feed, progress.consumed);
            if (progress.stop == Stop::DESTINATION_FULL)
                return Status::OUTPUT_FULL;
            if (range.reachesEnd) {
                feed.hold();
                return Status::DONE;
            }
        }
    }

    /** How far the units of a piece are known to be well-formed, so that none is looked at again after an error. */
    struct WellFormed {
        unsigned short const* end = nullptr;
        unsigned short const* pieceEnd = nullptr;
        bool goesOn = false;  ///< units after `end` have not been looked at, or are half of a pair

        /** The end of the well-formed units at the front of a range; at least `most` of it are looked at if none is
         * known. */
        unsigned short const* endIn(UnitFeed::Range const& range, size_t most)
        {
            bool const isKnown = pieceEnd == range.end && end > range.begin;
            if (!isKnown) {
                auto const inRange = static_cast<size_t>(range.end - range.begin);
                size_t const seen = std::min(inRange, most);
                size_t const length = wellFormedLength(range.begin, range.begin + seen);
                end = range.begin + length;
                pieceEnd = range.end;
                goesOn = seen < inRange && length + 1 >= seen && length != 0;
            }
            return end;
        }
    };

    /** Encodes well-formed units; a pair is not torn, also where the target takes each half for a character. */
    static Progress encodeWhole(Encoder const& encoder, unsigned short const* units, unsigned short const* end,
                                Room<unsigned char> const& room)
    {
        Engine const& engine = *encoder.m_engine;
        Progress progress = engine.encode(*encoder.m_converter, units, end, room.out, room.end, true);
        unsigned short const* const stopped = units + progress.consumed;
        if (progress.stop == Stop::DESTINATION_FULL && progress.consumed != 0 && isPair(stopped - 1, end)) {
            unsigned char half[Encoder::MINIMUM_ROOM];
            progress.consumed -= 1;
            progress.written -=
                engine.encode(*encoder.m_converter, stopped - 1, stopped, half, std::end(half), true).written;
        }
        return progress;
    }

    /**
     * Asks the target how it writes the substitute and the mark, unless it has said so. Without memory for its tables
     * it cannot; then "?", one byte in every set that has tables, stands for what is lost until it can.
     */
    static void askTarget(Encoder& encoder)
    {
        if (encoder.m_substituteSize != 0)
            return;
        if (encodeChar(encoder, CharUnits(U'?'), encoder.m_substitute) == 0) {
            encoder.m_substitute[0] = '?';
            return;
        }
        encoder.m_bomSize = encodeChar(encoder, CharUnits(BYTE_ORDER_MARK), encoder.m_bom);
        encoder.m_substituteSize = encodeChar(encoder, substituteOf(encoder.m_options), encoder.m_substitute);
        if (encoder.m_substituteSize == 0)
            encoder.m_substituteSize = encodeChar(encoder, CharUnits(U'?'), encoder.m_substitute);
    }

    static size_t substituteSize(Encoder const& encoder) { return std::max<size_t>(encoder.m_substituteSize, 1); }

    /** What stands for units that the target lacks, or for a surrogate without its partner. */
    struct Substitute {
        unsigned char bytes[Encoder::MINIMUM_ROOM];
        size_t size;
    };

    static Substitute substituteFor(Encoder const& encoder, unsigned short const* units, size_t count)
    {
        Substitute result = {};
        if (encoder.m_options.errors == ErrorPolicy::ESCAPE) {
            unsigned char ascii[2 * ESCAPE_LENGTH];
            unsigned char* asciiEnd = ascii;
            for (size_t i = 0; i < count; ++i)
                asciiEnd = writeEscape(asciiEnd, units[i]);
            unsigned short escape[2 * ESCAPE_LENGTH];
            unsigned short* const escapeEnd = std::copy(ascii, asciiEnd, escape);
            result.size = encoder.m_engine
                              ->encode(*encoder.m_converter, escape, escapeEnd, result.bytes,
                                       result.bytes + sizeof result.bytes, true)
                              .written;
        }
        // Also for an escape of which the target has nothing, since its tables found no memory.
        if (result.size == 0 && substitutes(encoder.m_options.errors)) {
            result.size = substituteSize(encoder);
            std::copy_n(encoder.m_substitute, result.size, result.bytes);
        }
        return result;
    }

    /** Surrogates without their partners at the front of a range, at most `most`. */
    static ErrorRun loneSurrogates(UnitFeed::Range const& range, unsigned short const* units, size_t most)
    {
        unsigned short const* unit = units;
        while (unit != range.end && static_cast<size_t>(unit - units) != most && isSurrogate(*unit) &&
               !isPair(unit, range.end) && (range.last || unit + 1 != range.end || isLowSurrogate(*unit)))
            ++unit;
        auto const count = static_cast<size_t>(unit - units);
        return {count, count};
    }

    /**
     * Writes what stands for the errors at `units`, as many as fit, and returns them.
     * @param errors the run of errors at a unit, of a number at most
     * @param like   what stands for an error before them
     */
    template <class Errors>
    static ErrorRun substituteRun(Encoder const& encoder, Room<unsigned char>& room, unsigned short const* units,
                                  Errors const& errors, Substitute const& like)
    {
        if (encoder.m_options.errors != ErrorPolicy::ESCAPE) {
            ErrorRun const run = errors(units, room.fits(like.size));
            room.appendTimes(like.bytes, like.size, run.count);
            return run;
        }
        // Many with one call of the engine.
        constexpr size_t CHARACTERS = 16;
        size_t const escapeSize = ESCAPE_LENGTH * encoder.m_converter->getMinUnitSize();
        ErrorRun total = {0, 0};
        while (like.size >= escapeSize) {
            size_t const most = std::min(CHARACTERS, room.fits(2 * escapeSize));
            ErrorRun const run = errors(units + total.length, most);
            unsigned char ascii[2 * ESCAPE_LENGTH * CHARACTERS];
            unsigned char* asciiEnd = ascii;
            for (size_t i = 0; i < run.length; ++i)
                asciiEnd = writeEscape(asciiEnd, units[total.length + i]);
            unsigned short escapes[2 * ESCAPE_LENGTH * CHARACTERS];
            unsigned short* const escapesEnd = std::copy(ascii, asciiEnd, escapes);
            room.out +=
                encoder.m_engine->encode(*encoder.m_converter, escapes, escapesEnd, room.out, room.end, true).written;
            total.length += run.length;
            total.count += run.count;
            if (run.count < CHARACTERS)
                break;
        }
        return total;
    }

    static Error badUnits(Encoder const& encoder, unsigned short const* units, size_t count)
    {
        Error error = {};
        error.byteOffset = encoder.m_bytePosition;
        error.unitOffset = encoder.m_unitPosition;
        error.status = count == 1 && isSurrogate(units[0]) ? Status::INVALID : Status::UNREPRESENTABLE;
        error.length = static_cast<unsigned char>(count);
        error.codePoint = count == 2 ? codePointOf(units[0], units[1]) : units[0];
        return error;
    }

    static void pass(Encoder& encoder, UnitFeed& feed, size_t count)
    {
        feed.advance(count);
        encoder.m_unitPosition += count;
    }

    static Start start(Encoder& encoder, UnitFeed& feed, Room<unsigned char>& room)
    {
        if (encoder.m_options.bom == Bom::KEEP) {
            encoder.m_atStart = false;
            return Start::GO_ON;
        }
        UnitFeed::Range const range = feed.range();
        size_t const length = range.begin != range.end && range.begin[0] == BYTE_ORDER_MARK ? 1 : 0;
        Start const result = beginWith(encoder, length, room, encoder.m_bom, encoder.m_bomSize);
        if (result == Start::GO_ON)
            pass(encoder, feed, length);
        return result;
    }

    static Status encode(Encoder& encoder, UnitFeed& feed, Room<unsigned char>& room, bool last)
    {
        bool const isStopped = encoder.m_options.errors == ErrorPolicy::STRICT;  // by the first error
        WellFormed known;
        for (;;) {
            if (encoder.m_atStart && (last || feed.range().begin != feed.range().end)) {
                switch (start(encoder, feed, room)) {
                    case Start::GO_ON:
                    case Start::CUT: break;
                    case Start::FULL: return Status::OUTPUT_FULL;
                    case Start::MISSING: {
                        Error error = {};
                        error.status = Status::MISSING_BOM;
                        return missing(encoder, error);
                    }
                }
                encoder.m_bytePosition += room.written();
            }
            UnitFeed::Range const range = feed.range();
            if (range.begin == range.end)
                return Status::DONE;

            // The engines differ in what they make of unpaired surrogates, so they see none. A unit becomes a byte at
            // least, so that more units than the room has bytes would be looked at in vain.
            unsigned short const* const wellFormedEnd =
                known.endIn(range, std::min(lookAhead(encoder, encoder.m_options.errors, encoder.m_unitPosition),
                                            std::max<size_t>(room.left(), 2)));
            unsigned short const* unit = range.begin;
            if (unit != wellFormedEnd) {
                Progress const progress = encodeWhole(encoder, unit, wellFormedEnd, room);
                unit += progress.consumed;
                room.out += progress.written;
                encoder.m_bytePosition += progress.written;
                pass(encoder, feed, progress.consumed);
                if (progress.stop == Stop::DESTINATION_FULL)
                    return Status::OUTPUT_FULL;
                if (unit == range.end || (unit == wellFormedEnd && known.goesOn))
                    continue;
            }
            if (unit + 1 == range.end && isHighSurrogate(*unit) && !range.last) {
                if (!range.reachesEnd)
                    continue;
                feed.hold();
                return Status::DONE;
            }
            size_t const length = isPair(unit, range.end) ? 2 : 1;
            Substitute const substitute = substituteFor(encoder, unit, length);
            if (room.left() < substitute.size)
                return Status::OUTPUT_FULL;
            if (isStopped || encoder.m_count == 0)
                record(encoder, badUnits(encoder, unit, length));
            else
                ++encoder.m_count;
            unsigned char const* const before = room.out;
            room.append(substitute.bytes, substitute.size);
            pass(encoder, feed, length);
            if (isStopped)
                return encoder.m_last.status;
            ErrorRun const run = substituteRun(
                encoder, room, unit + length,
                [&](unsigned short const* units, size_t most) {
                    return unit == wellFormedEnd
                               ? loneSurrogates(range, units, most)
                               : encoder.m_engine->unmappableRun(*encoder.m_converter, units, wellFormedEnd, most);
                },
                substitute);
            encoder.m_count += run.count;
            pass(encoder, feed, run.length);
            encoder.m_bytePosition += static_cast<size_t>(room.out - before);
        }
    }

    /** A decoded run of a transcoder. */
    struct Run {
        ByteFeed::Range source;
        unsigned short* units;
    };

    /** Passes over the bytes that became the first `count` units of a run. */
    static size_t bytesOf(Decoder& decoder, Run const& run, size_t count)
    {
        // No decoder tears a pair or delivers nothing for bytes, so the same conversion into less room ends right
        // there.
        return count == 0 ? 0
                          : decoder.m_engine
                                ->decodeStrict(*decoder.m_converter, run.source.begin, run.source.end, run.units,
                                               run.units + count, run.source.last)
                                .consumed;
    }

    static void passUnits(Transcoder& transcoder, ByteFeed& feed, Run const& run, size_t count, size_t byteCount)
    {
        transcoder.m_lineFeeds += countLineFeeds(run.units, run.units + count);
        transcoder.m_decoder.m_unitPosition += count;
        pass(transcoder.m_decoder, feed, byteCount);
    }

    /** Encodes the `count` units of a run. DONE: all of them; else what of the run was passed over is settled. */
    static Status encodeRun(Transcoder& transcoder, ByteFeed& feed, Room<unsigned char>& room, Run const& run,
                            size_t count)
    {
        Encoder& encoder = transcoder.m_encoder;
        unsigned short const* unit = run.units;
        unsigned short const* const end = run.units + count;
        auto const stop = [&](Status status) {
            auto const done = static_cast<size_t>(unit - run.units);
            passUnits(transcoder, feed, run, done, bytesOf(transcoder.m_decoder, run, done));
            return status;
        };
        while (unit != end) {
            Progress const progress = encodeWhole(encoder, unit, end, room);
            unit += progress.consumed;
            room.out += progress.written;
            if (progress.stop == Stop::SOURCE_USED)
                break;
            if (progress.stop == Stop::DESTINATION_FULL)
                return stop(Status::OUTPUT_FULL);
            size_t const length = isPair(unit, end) ? 2 : 1;
            Substitute const substitute = substituteFor(encoder, unit, length);
            if (room.left() < substitute.size)
                return stop(Status::OUTPUT_FULL);
            bool const isStrict = encoder.m_options.errors == ErrorPolicy::STRICT;
            if (isStrict || transcoder.m_count == 0) {
                auto const done = static_cast<size_t>(unit - run.units);
                Error error = badUnits(encoder, unit, length);
                error.status = Status::UNREPRESENTABLE;
                size_t const before = bytesOf(transcoder.m_decoder, run, done);
                size_t const after = bytesOf(transcoder.m_decoder, run, done + length);
                error.byteOffset = transcoder.m_decoder.m_bytePosition + before;
                error.unitOffset = transcoder.m_decoder.m_unitPosition + done;
                error.lineFeeds = transcoder.m_lineFeeds + countLineFeeds(run.units, unit);
                error.length = static_cast<unsigned char>(after - before);
                record(transcoder, error);
                if (isStrict) {
                    passUnits(transcoder, feed, run, done + length, after);
                    return Status::UNREPRESENTABLE;
                }
            }
            else {
                ++transcoder.m_count;
            }
            room.append(substitute.bytes, substitute.size);
            unit += length;
            ErrorRun const more = substituteRun(
                encoder, room, unit,
                [&](unsigned short const* units, size_t most) {
                    return encoder.m_engine->unmappableRun(*encoder.m_converter, units, end, most);
                },
                substitute);
            transcoder.m_count += more.count;
            unit += more.length;
        }
        return Status::DONE;
    }

    static Status transcode(Transcoder& transcoder, ByteFeed& feed, Room<unsigned char>& room, bool last)
    {
        Decoder& decoder = transcoder.m_decoder;
        Encoder& encoder = transcoder.m_encoder;
        unsigned short units[PIECE];
        for (;;) {
            if (decoder.m_atStart && (last || feed.range().begin != feed.range().end)) {
                switch (start<unsigned char>(decoder, feed, room, encoder.m_bom, encoder.m_bomSize)) {
                    case Start::GO_ON: break;
                    case Start::CUT: feed.hold(); return Status::DONE;
                    case Start::FULL: return Status::OUTPUT_FULL;
                    case Start::MISSING: return missing(transcoder, errorAt(decoder, Status::MISSING_BOM));
                }
            }
            Run const run = {feed.range(), units};
            if (run.source.begin == run.source.end)
                return Status::DONE;
            // A unit becomes a byte at least, so that more units than the room has bytes would be decoded in vain.
            size_t const most = std::min(std::max<size_t>(room.left(), 2),
                                         lookAhead(transcoder, encoder.m_options.errors, decoder.m_unitPosition));
            Progress const progress = decoder.m_engine->decodeStrict(
                *decoder.m_converter, run.source.begin, run.source.end, units, units + most, run.source.last);
            Status const encoded = encodeRun(transcoder, feed, room, run, progress.written);
            if (encoded != Status::DONE)
                return encoded;
            bool const isIllegal = progress.stop == Stop::ILLEGAL;
            unsigned char const* const bad = run.source.begin + progress.consumed;
            bool const isReplaced = isIllegal && substitutes(decoder.m_options.errors);
            bool const fits = !isReplaced || room.left() >= substituteSize(encoder);
            transcoder.m_lineFeeds += countLineFeeds(units, units + progress.written);
            decoder.m_unitPosition += progress.written;
            decoder.m_bytePosition += progress.consumed;
            bool const isStopped = decoder.m_options.errors == ErrorPolicy::STRICT;
            if (isIllegal && fits && !isStopped && transcoder.m_count != 0) {
                ++transcoder.m_count;
            }
            else if (isIllegal && fits) {
                Error error = invalidBytes(decoder, bad, progress.length);
                error.lineFeeds = transcoder.m_lineFeeds;
                record(transcoder, error);
            }
            feed.advance(progress.consumed);
            if (!fits)
                return Status::OUTPUT_FULL;
            if (isIllegal) {
                pass(decoder, feed, progress.length);
                if (isStopped)
                    return Status::INVALID;
                size_t const size = isReplaced ? substituteSize(encoder) : 0;
                size_t const count =
                    1 + passIllegal(transcoder, decoder, feed, run.source, bad + progress.length, room.fits(size) - 1);
                room.appendTimes(encoder.m_substitute, size, count);
                decoder.m_unitPosition += isReplaced ? substituteOf(decoder.m_options).count * count : 0;
            }
            else if (progress.stop != Stop::DESTINATION_FULL && run.source.reachesEnd) {
                feed.hold();
                return Status::DONE;
            }
        }
    }

    /** A byte that is malformed wherever it stands among its like. */
    static bool hasMalformedByte(Decoder const& decoder)
    {
        for (unsigned int value = 0; value < 0x100; ++value) {
            auto const byte = static_cast<unsigned char>(value);
            unsigned char const text[] = {byte, byte};
            unsigned short unit = 0;
            Progress const progress =
                decoder.m_engine->decodeStrict(*decoder.m_converter, text, text + 2, &unit, &unit + 1, true);
            if (progress.stop == Stop::ILLEGAL && progress.consumed == 0 && progress.length == 1)
                return true;
        }
        return false;
    }

    /** Bytes of `units` in the target of an encoder; 0 where it lacks them. */
    template <size_t N>
    static unsigned char encodeChar(Encoder const& encoder, CharUnits const& c, unsigned char (&bytes)[N])
    {
        Progress const progress =
            encoder.m_engine->encode(*encoder.m_converter, c.units, c.units + c.count, bytes, bytes + N, true);
        return progress.stop == Stop::SOURCE_USED ? static_cast<unsigned char>(progress.written)
                                                  : static_cast<unsigned char>(0);
    }
};

Decoder::Decoder(KX7CharSet from, Options const& options) noexcept
    : m_engine(nullptr), m_converter(&converterOf(from)), m_options(options), m_atStart(true), m_heldCount(0), m_held(),
      m_bytePosition(0), m_unitPosition(0)
{
    if (hasConverter(from))
        m_engine = engineOf(*m_converter);
}

StreamResult Decoder::convert(Span<char const> source, Span<char16_t> dest, bool last) noexcept
{
    if (!m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::ByteFeed feed(reinterpret_cast<unsigned char const*>(source.data()), source.size(), last, m_held,
                           m_heldCount);
    Room<unsigned short> room(dest.data(), dest.size());
    Status const status = Streams::decode(*this, feed, room, last);
    return {feed.consumed(), room.written(), status};
}

void Decoder::reset() noexcept
{
    Streams::forget(*this);
    m_atStart = true;
    m_heldCount = 0;
    m_bytePosition = 0;
    m_unitPosition = 0;
}

std::optional<size_t> Decoder::maxUnits(size_t byteCount) const noexcept
{
    std::optional<size_t> const bytes = sum(byteCount, m_heldCount);
    if (!m_engine || !bytes)
        return std::nullopt;
    size_t const ofError = substitutes(m_options.errors) ? substituteOf(m_options).count : 0;
    size_t const codeSize = m_converter->getMinUnitSize();
    size_t const ofMark = m_atStart && m_options.bom == Bom::ADD ? 1 : 0;
    if (codeSize == 1)
        return sum(product(*bytes, ofError == 2 && Streams::hasMalformedByte(*this) ? 2 : 1), ofMark);
    size_t const ofCode = std::max<size_t>(codeSize / 2, ofError);
    return sum(sum(product(*bytes / codeSize, ofCode), *bytes % codeSize == 0 ? 0 : ofError), ofMark);
}

Encoder::Encoder(KX7CharSet to, Options const& options) noexcept
    : m_engine(nullptr), m_converter(&converterOf(to)), m_options(options), m_atStart(true), m_heldCount(0),
      m_substituteSize(0), m_bomSize(0), m_held(0), m_substitute(), m_bom(), m_bytePosition(0), m_unitPosition(0)
{
    if (!hasConverter(to))
        return;
    m_engine = engineOf(*m_converter);
    Streams::askTarget(*this);
}

StreamResult Encoder::convert(Span<char16_t const> source, Span<char> dest, bool last) noexcept
{
    if (!m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::askTarget(*this);
    Streams::UnitFeed feed(reinterpret_cast<unsigned short const*>(source.data()), source.size(), last, &m_held,
                           m_heldCount);
    Room<unsigned char> room(dest.data(), dest.size());
    Status const status = Streams::encode(*this, feed, room, last);
    return {feed.consumed(), room.written(), status};
}

void Encoder::reset() noexcept
{
    Streams::forget(*this);
    m_atStart = true;
    m_heldCount = 0;
    m_bytePosition = 0;
    m_unitPosition = 0;
}

std::optional<size_t> Encoder::maxBytes(size_t unitCount) const noexcept
{
    std::optional<size_t> const units = sum(unitCount, m_heldCount);
    if (!m_engine || !units)
        return std::nullopt;
    // A surrogate without its partner is an error of one unit in every set.
    size_t const ofError = m_options.errors == ErrorPolicy::REPLACE  ? Streams::substituteSize(*this)
                           : m_options.errors == ErrorPolicy::ESCAPE ? ESCAPE_LENGTH * m_converter->getMinUnitSize()
                                                                     : 0;
    // EUC-JP has room for a third byte, but no character of the set that would need it.
    bool const isEucJp = m_converter == &converterOf(KX7CS_EUC_JP);
    size_t const ofUnit = std::max<size_t>(isEucJp ? 2 : m_converter->getMaxUnitSize(), ofError);
    return sum(product(*units, ofUnit), m_atStart && m_options.bom == Bom::ADD ? m_bomSize : 0);
}

namespace {

Options withBom(Options options, Bom bom)
{
    options.bom = bom;
    return options;
}

}  // namespace

Transcoder::Transcoder(KX7CharSet from, KX7CharSet to, Options const& options) noexcept
    : m_decoder(from, options), m_encoder(to, withBom(options, Bom::KEEP)), m_lineFeeds(0)
{
}

StreamResult Transcoder::convert(Span<char const> source, Span<char> dest, bool last) noexcept
{
    if (!m_decoder.m_engine || !m_encoder.m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::askTarget(m_encoder);
    Streams::ByteFeed feed(reinterpret_cast<unsigned char const*>(source.data()), source.size(), last, m_decoder.m_held,
                           m_decoder.m_heldCount);
    Room<unsigned char> room(dest.data(), dest.size());
    Status const status = Streams::transcode(*this, feed, room, last);
    return {feed.consumed(), room.written(), status};
}

void Transcoder::reset() noexcept
{
    Streams::forget(*this);
    m_decoder.reset();
    m_encoder.reset();
    m_lineFeeds = 0;
}

void Transcoder::setErrors(ErrorPolicy errors) noexcept
{
    m_decoder.setErrors(errors);
    m_encoder.setErrors(errors);
}

std::optional<size_t> Transcoder::maxBytes(size_t byteCount) const noexcept
{
    std::optional<size_t> const units = m_decoder.maxUnits(byteCount);
    return units ? m_encoder.maxBytes(*units) : std::nullopt;
}

}  // namespace kx7
