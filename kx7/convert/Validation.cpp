// kx7text - whether a text is well-formed, and its byte-order mark.
#include <algorithm>
#include <cstring>

#include "kx7/convert.h"
#include "kx7/converters/Pump.h"

namespace kx7 {

namespace {

/** A text up to the first malformed sequence. */
struct WellFormed {
    KX7CharSetConverter& converter;
    Engine const& engine;
    unsigned char const* in;
    unsigned char const* end;
    Progress progress = {};

    template <size_t SIZE>
    bool read(NoSink<SIZE>& sink)
    {
        if (in == end)
            return false;
        progress = engine.decodeStrict(converter, in, end, std::begin(sink.units), std::end(sink.units), true);
        in += progress.consumed;
        return true;
    }
    Stop stop() const { return progress.stop; }

    template <class Sink>
    static bool passError(Sink const& /*sink*/)
    {
        return false;
    }
    static bool carry() { return false; }
};

/** What the strict decoder of a set says; in units of `unitSize` bytes. */
Validity validate(KX7CharSet charSet, void const* text, size_t byteCount, size_t unitSize)
{
    KX7CharSetConverter& converter = converterOf(charSet);
    auto const* const begin = static_cast<unsigned char const*>(text);
    WellFormed wellFormed = {converter, *engineOf(converter), begin, begin + byteCount};
    NoSink<> nowhere;
    pump(wellFormed, nowhere);
    return {static_cast<size_t>(wellFormed.in - begin) / unitSize, wellFormed.progress.length / unitSize};
}

}  // namespace

Validity validateUtf8(std::string_view text) noexcept
{
    return validate(KX7CS_UTF8, text.data(), text.size(), 1);
}

Validity validateUtf16(std::u16string_view text) noexcept
{
    return validate(KX7CS_UTF16, text.data(), text.size() * sizeof(char16_t), sizeof(char16_t));
}

Validity validateUtf16(std::string_view bytes) noexcept
{
    return validate(KX7CS_UTF16, bytes.data(), bytes.size(), 1);
}

Validity validateUtf32(std::u32string_view text) noexcept
{
    return validate(KX7CS_UTF32, text.data(), text.size() * sizeof(char32_t), sizeof(char32_t));
}

Validity validateUtf32(std::string_view bytes) noexcept
{
    return validate(KX7CS_UTF32, bytes.data(), bytes.size(), 1);
}

DetectedBom detectBom(std::string_view bytes) noexcept
{
    // UTF-32 before UTF-16, whose mark in one byte order it begins with.
    struct {
        std::string_view mark;
        KX7CharSet littleEndian;
        KX7CharSet bigEndian;
    } const marks[] = {
        {std::string_view("\xEF\xBB\xBF", 3), KX7CS_UTF8, KX7CS_UTF8},
        {std::string_view("\xFF\xFE\0\0", 4), KX7CS_UTF32, KX7CS_OS_DEFAULT},
        {std::string_view("\0\0\xFE\xFF", 4), KX7CS_UTF32BE, KX7CS_UTF32},
        {std::string_view("\xFF\xFE", 2), KX7CS_UTF16, KX7CS_OS_DEFAULT},
        {std::string_view("\xFE\xFF", 2), KX7CS_UTF16BE, KX7CS_UTF16},
        {std::string_view("\x84\x31\x95\x33", 4), KX7CS_GB18030, KX7CS_GB18030},
    };
    for (auto const& entry : marks)
        if (bytes.substr(0, entry.mark.size()) == entry.mark) {
            // The host's order has the plain name; there is none for little-endian text on a big-endian host.
            KX7CharSet const charSet = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? entry.littleEndian : entry.bigEndian;
            return charSet == KX7CS_OS_DEFAULT ? DetectedBom{charSet, 0} : DetectedBom{charSet, entry.mark.size()};
        }
    return {KX7CS_OS_DEFAULT, 0};
}

}  // namespace kx7
