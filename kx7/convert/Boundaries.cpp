// kx7text - where bytes of a character set can be cut, and how lines show in them.
#include "kx7/convert/Boundaries.h"

#include <algorithm>

#include "kx7/convert.h"
#include "kx7/convert/WebSets.h"
#include "kx7/converters/Pump.h"

namespace kx7 {

namespace {

/** No character takes as many bytes: the longest is two escapes of UTF-16. */
constexpr size_t MORE_THAN_A_CHARACTER = 16;

constexpr bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

/** The last byte of UTF-8 that can begin a character; the end where the last four bytes cannot. */
size_t lastLeadByte(unsigned char const* bytes, size_t size)
{
    constexpr size_t LONGEST = 4;
    for (size_t length = 1; length <= std::min(size, LONGEST); ++length)
        if (!isContinuation(bytes[size - length]))
            return size - length;
    return size < LONGEST ? 0 : size;
}

/** A place near the end of bytes where a strict decoder is between characters, whatever is before it. */
size_t restart(Encoding encoding, size_t codeSize, unsigned char const* bytes, size_t size)
{
    switch (encoding.boundary) {
        case Boundary::ANYWHERE: return size;
        case Boundary::AFTER_CODE: return size < codeSize ? 0 : size / codeSize * codeSize - codeSize;
        case Boundary::BEFORE_LEAD_BYTE: return lastLeadByte(bytes, size);
        case Boundary::AFTER_CONTROL_BYTE: break;
    }
    // A lead byte before such a byte stands alone, which the decoder sees a byte or two later at the most.
    size_t at = size - std::min(size, MORE_THAN_A_CHARACTER);
    while (at != 0 && bytes[at - 1] > ' ')
        --at;
    return at;
}

/** Characters and malformed sequences alike, up to an incomplete one. */
struct Characters {
    KX7CharSetConverter& converter;
    Engine const& engine;
    unsigned char const* in;
    unsigned char const* end;
    Progress progress = {};

    template <size_t SIZE>
    bool read(NoSink<SIZE>& sink)
    {
        progress = engine.decodeStrict(converter, in, end, std::begin(sink.units), std::end(sink.units), false);
        in += progress.consumed;
        return true;
    }
    Stop stop() const { return progress.stop; }

    template <class Sink>
    bool passError(Sink const& /*sink*/)
    {
        in += progress.length;
        return true;
    }
    static bool carry() { return false; }
};

}  // namespace

std::string_view wholeCharacters(std::string_view bytes, KX7CharSet from) noexcept
{
    Served const served = servedInLayer(from);
    if (!served.engine)
        return {};
    KX7CharSetConverter& converter = *served.converter;
    Engine const& engine = *served.engine;
    auto const* const begin = reinterpret_cast<unsigned char const*>(bytes.data());
    size_t const at = restart(engine.encoding, converter.getNullCharSize(), begin, bytes.size());
    Characters characters = {converter, engine, begin + at, begin + bytes.size()};
    NoSink<512> nowhere;
    pump(characters, nowhere);
    return bytes.substr(0, static_cast<size_t>(characters.in - begin));
}

bool lineFeedsAreBytes(KX7CharSet from) noexcept
{
    Served const served = servedInLayer(from);
    if (!served.engine)
        return false;
    KX7CharSetConverter& converter = *served.converter;
    Engine const& engine = *served.engine;
    unsigned char const byte = '\n';
    unsigned short unit = 0;
    return engine.encoding.lineFeedIsByte &&
           engine.decodeStrict(converter, &byte, &byte + 1, &unit, &unit + 1, true).written == 1 && unit == '\n';
}

}  // namespace kx7
