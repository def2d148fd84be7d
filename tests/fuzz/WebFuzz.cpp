// kx7text fuzzing - encodings of the Encoding Standard by their names: decoded whole and in pieces, and encoded,
// against the model of the standard.
#include "kx7/convert.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/WebEncodings.h"

using namespace kx7test;

namespace {

void compareDecode(std::string const& encoding, KX7CharSet charSet, std::string const& bytes, size_t piece)
{
    std::vector<WebDecoded> const results = WebDecoder{encoding}.decode(bytes);
    std::u16string const expected = unitsOf(webReplaced(results));
    auto const error = std::find_if(results.begin(), results.end(), [](auto const& r) { return r.isError; });
    kx7::Options const replacing = {kx7::ErrorPolicy::REPLACE};
    kx7::Units const whole = kx7::decode(bytes, charSet, replacing);
    require(whole.text == expected, "decoded whole");
    require(whole.isLossless() == (error == results.end()), "whether there are errors");
    if (error != results.end())
        require(whole.first.byteOffset == error->begin && whole.first.length == error->end - error->begin,
                "the first error");

    kx7::Decoder decoder(charSet, replacing);
    std::u16string text;
    for (size_t at = 0; at < bytes.size();) {
        char16_t units[64];
        size_t const size = std::min(piece, bytes.size() - at);
        kx7::StreamResult const step =
            decoder.convert(std::string_view(bytes).substr(at, size), {units, 64}, at + size == bytes.size());
        text.append(units, step.written);
        at += step.consumed;
        require(step.consumed != 0 || step.written != 0, "a piece changes nothing");
    }
    require(text == expected, "decoded in pieces");
    require(decoder.errorCount() == whole.errorCount, "errors in pieces");
}

void compareEncode(std::string const& encoding, KX7CharSet charSet, std::u32string const& text)
{
    std::string expected;
    for (WebEncoded const& result : WebEncoder{encoding}.encode(text))
        expected += result.isError ? "?" : result.bytes;
    require(kx7::encode(unitsOf(text), charSet, {kx7::ErrorPolicy::REPLACE, U'?'}).text == expected, "encoded");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    std::string const& encoding = exactWebEncodings()[input.below(exactWebEncodings().size())];
    KX7CharSet const charSet = kx7::findCharSet(encoding).value_or(KX7CS_OS_DEFAULT);
    size_t const piece = 1 + input.below(64);
    bool const isEncoded = input.byte() % 2 != 0;
    auto const bytes = input.rest<char>();
    if (!isEncoded) {
        compareDecode(encoding, charSet, bytes, piece);
        return 0;
    }
    std::u32string text;
    for (char16_t const unit : Input(data, size).rest<char16_t>())
        text += unit >= 0xD800 && unit <= 0xDFFF ? U'\x10000' + unit : char32_t{unit};
    compareEncode(encoding, charSet, text);
    return 0;
}
