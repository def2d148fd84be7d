// kx7text - whole texts: a stream that is given all of the source, and a string that grows.
#include <algorithm>

#include "kx7/convert.h"

namespace kx7 {

namespace {

/** Elements of the result that are filled with zeros at a time, so that they are still in the cache when converted
 * into. */
constexpr size_t AT_ONCE = size_t{1} << 15;

/** Converts all of `source` with a stream into `result.text`, which has place for `capacity` to begin with. */
template <class Stream, class Source, class Result>
void convertWhole(Stream& stream, Source source, Result& result, size_t capacity)
{
    auto& text = result.text;
    size_t written = 0;
    size_t wanted = std::max(capacity, Stream::MINIMUM_CAPACITY);
    do {
        if (wanted - written < Stream::MINIMUM_CAPACITY)
            wanted += wanted / 2 + Stream::MINIMUM_CAPACITY;
        if (wanted > AT_ONCE)
            text.reserve(wanted);
        text.resize(std::min(wanted, written + AT_ONCE));
        StreamResult const step = stream.convert(source, {text.data() + written, text.size() - written}, true);
        source = source.after(step.consumed);
        written += step.written;
        result.status = step.status;
    } while (result.status == Status::OUTPUT_FULL);
    text.resize(written);
    result.errorCount = stream.errorCount();
    result.first = stream.firstError();
}

}  // namespace

Units decode(std::string_view source, KX7CharSet from, Options const& options)
{
    Units result;
    Decoder decoder(from, options);
    convertWhole(decoder, Span<char const>(source), result, source.size() / GetMinUnitSize(from));
    return result;
}

Bytes encode(std::u16string_view source, KX7CharSet to, Options const& options)
{
    Bytes result;
    Encoder encoder(to, options);
    size_t const size = std::min(source.size(), result.text.max_size() / 8);
    convertWhole(encoder, Span<char16_t const>(source), result, size * GetMinUnitSize(to) + size / 8);
    return result;
}

Bytes transcode(std::string_view source, KX7CharSet from, KX7CharSet to, Options const& options)
{
    Bytes result;
    Transcoder transcoder(from, to, options);
    size_t const size = std::min(source.size() / GetMinUnitSize(from), result.text.max_size() / 8);
    convertWhole(transcoder, Span<char const>(source), result, size * GetMinUnitSize(to) + size / 8);
    return result;
}

}  // namespace kx7
