// kx7text fuzzing - streams in pieces, in little capacity, against the whole text at once, and the functions of whole
// texts against both.
#include "tests/convert/Samples.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/Memory.h"

using namespace kx7test;
using kx7::Bom;
using kx7::ErrorPolicy;
using kx7::Status;

namespace {

KX7CharSet charSetFrom(Input& input)
{
    return charSetRows()[input.below(charSetRows().size())].charSet;
}

kx7::Options optionsFrom(Input& input)
{
    constexpr char32_t SUBSTITUTES[] = {0, '?', '_', 0xE9, 0x3042, 0xFFFF, 0x1F600, 0x20000};
    unsigned int const how = input.byte();
    return {static_cast<ErrorPolicy>(how & 3), SUBSTITUTES[how >> 2 & 7], static_cast<Bom>(how >> 5 & 3)};
}

std::vector<size_t> piecesFrom(Input& input)
{
    std::vector<size_t> pieces(input.below(40));
    for (size_t& piece : pieces)
        piece = input.below(32);
    return pieces;
}

/** What a function of whole texts gave is what the stream gave, as far as the function went. */
template <class Text, class Result>
void requireSameResult(Result const& result, Streamed<Text> const& streamed, kx7::Options const& options)
{
    bool const stops = options.errors == ErrorPolicy::STRICT && streamed.count != 0;
    require(result.first == streamed.first, "first error");
    require(result.errorCount == (stops ? 1 : streamed.count), "number of errors");
    require(result.status == (stops ? streamed.first.status : streamed.status), "status");
    require(stops ? streamed.text.compare(0, result.text.size(), result.text) == 0 : result.text == streamed.text,
            "text");
}

/** A strict result ends where its error says; the bytes of an error are those of the source. */
template <class Result>
void requireErrorInPlace(Result const& result, std::string_view source)
{
    kx7::Error const& error = result.first;
    if (error.status != Status::INVALID)
        return;
    require(error.length != 0 && error.byteOffset + error.length <= source.size(), "place of the error");
    size_t const shown = std::min<size_t>(error.length, std::size(error.bytes));
    require(memcmp(error.bytes, source.data() + error.byteOffset, shown) == 0, "bytes of the error");
}

/** What the functions say that only look. */
void requireValidity(std::string_view bytes, KX7CharSet charSet)
{
    kx7::Units const units = kx7::decode(bytes, charSet);
    kx7::Validity validity;
    switch (charSet) {
        case KX7CS_UTF8: validity = kx7::validateUtf8(bytes); break;
        case KX7CS_UTF16: validity = kx7::validateUtf16(bytes); break;
        case KX7CS_UTF32: validity = kx7::validateUtf32(bytes); break;
        default: return;
    }
    require(bool(validity) == units.isLossless(), "validity");
    require(validity.offset == (validity ? bytes.size() : units.first.byteOffset), "place of the malformed sequence");
    require(validity.length == units.first.length, "length of the malformed sequence");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static PageEnd<char> bytesIn;
    static PageEnd<char16_t> unitsIn;
    constexpr size_t ENOUGH = 64 * 1024;
    Input input(data, size);
    size_t const kind = input.below(3);
    KX7CharSet const from = charSetFrom(input);
    KX7CharSet const to = charSetFrom(input);
    kx7::Options const options = optionsFrom(input);
    std::vector<size_t> const pieces = piecesFrom(input);
    size_t const capacity = input.below(64);
    if (kind == 0) {
        auto const text = input.rest<char16_t>();
        std::u16string_view const source(unitsIn.hold(text, 0), text.size());
        kx7::Encoder const encoder(to, options);
        auto const whole = runStream<std::string>(encoder, source, {}, ENOUGH);
        require(whole == runStream<std::string>(encoder, source, pieces, capacity), "encoder in pieces");
        require(whole.text.size() <= encoder.maxBytes(source.size()), "longer than the most");
        requireSameResult(kx7::encode(source, to, options), whole, options);
        return 0;
    }
    auto const text = input.rest<char>();
    std::string_view const source(bytesIn.hold(text, 0), text.size());
    kx7::Units const units = kx7::decode(source, from, options);
    if (kind == 1) {
        kx7::Decoder const decoder(from, options);
        auto const whole = runStream<std::u16string>(decoder, source, {}, ENOUGH);
        require(whole == runStream<std::u16string>(decoder, source, pieces, capacity), "decoder in pieces");
        require(whole.text.size() <= decoder.maxUnits(source.size()), "longer than the most");
        requireSameResult(units, whole, options);
        requireErrorInPlace(units, source);
        requireValidity(source, from);
        return 0;
    }
    kx7::Transcoder const transcoder(from, to, options);
    auto const whole = runStream<std::string>(transcoder, source, {}, ENOUGH);
    require(whole == runStream<std::string>(transcoder, source, pieces, capacity), "transcoder in pieces");
    require(whole.text.size() <= transcoder.maxBytes(source.size()), "longer than the most");
    kx7::Bytes const bytes = kx7::transcode(source, from, to, options);
    requireSameResult(bytes, whole, options);
    requireErrorInPlace(bytes, source);
    // A decoder and an encoder, where neither stops and nothing is put in front.
    if (options.errors == ErrorPolicy::SKIP && options.bom == Bom::KEEP)
        require(bytes.text == kx7::encode(units.text, to, options).text, "not what the two make one after the other");
    return 0;
}
