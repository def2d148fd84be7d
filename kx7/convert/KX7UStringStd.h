// kx7text - KX7UString and the standard library: std::u16string, views, std::hash, a literal, std::formatter.
//
//     using namespace kx7::literals;
//     std::unordered_set<KX7UString> names = {u"Stra\xDF" "e"_kx7};
//     KX7UString const text = kx7::toKX7UString("caf\xE9", KX7CS_WCP1252).text;
//
// What a language standard does not have is not declared: views and character sets need C++17.
#ifndef KX7_CONVERT_KX7USTRINGSTD_H
#define KX7_CONVERT_KX7USTRINGSTD_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#if __cplusplus >= 201703L
#include <string_view>

#include "kx7/convert.h"
#endif
#if __cplusplus >= 202002L && defined __has_include
#if __has_include(<format>)
#include <format>
#endif
#endif

#include "kx7/text/KX7UString.h"

namespace kx7 {

/**
 * The `length` units at `units`, zeros and unpaired surrogates included. Throws std::length_error "exceed maximum
 * string length" for more than a KX7UString holds.
 */
inline KX7UString toKX7UString(char16_t const* units, std::size_t length)
{
    // No object is longer than this. It is too long for the constructor, which throws; a larger sum would wrap.
    constexpr std::size_t MOST = PTRDIFF_MAX / sizeof *units;
    return length == 0 ? KX7UString() : KX7UString(units, units + (length < MOST ? length : MOST));
}

/** All units of `text`. */
inline KX7UString toKX7UString(std::u16string const& text)
{
    return toKX7UString(text.data(), text.size());
}

/** All units of `text`, zeros included. */
inline std::u16string toU16String(KX7UString const& text)
{
    return std::u16string(text.data(), text.data() + text.length());
}

namespace literals {

/** u"text"_kx7: the units as they are written. */
inline KX7UString operator""_kx7(char16_t const* units, std::size_t length)
{
    return toKX7UString(units, length);
}

}  // namespace literals

#if __cplusplus >= 201703L

/** All units of `text`. */
inline KX7UString toKX7UString(std::u16string_view text)
{
    return toKX7UString(text.data(), text.size());
}

/** A text in a KX7UString. */
struct DecodedString : Outcome {
    KX7UString text;  ///< what was decoded
};

/** Bytes of `from`; as kx7::decode. Unlike the constructors of KX7UString it cuts nothing off and says what was lost.
 */
inline DecodedString toKX7UString(std::string_view bytes, KX7CharSet from, Options const& options = {})
{
    Units const units = decode(bytes, from, options);
    DecodedString result;
    static_cast<Outcome&>(result) = units;
    result.text = toKX7UString(units.text);
    return result;
}

/** `text` in the bytes of `to`; as kx7::encode. */
inline Bytes toBytes(KX7UString const& text, KX7CharSet to, Options const& options = {})
{
    return encode(toU16String(text), to, options);
}

#endif

}  // namespace kx7

/** Agrees with operator==, which ends at a 0 unit within the text. */
template <>
struct std::hash<KX7UString> {
    /** The hash of the units before the first 0. */
    std::size_t operator()(KX7UString const& text) const noexcept
    {
        // FNV-1a with the parameters of the word size.
        constexpr bool isWide = sizeof(std::size_t) > 4;
        std::size_t value = static_cast<std::size_t>(isWide ? 14695981039346656037ULL : 2166136261ULL);
        for (unsigned short const* unit = text.data(); *unit != 0; ++unit) {
            value ^= *unit;
            value *= static_cast<std::size_t>(isWide ? 1099511628211ULL : 16777619ULL);
        }
        return value;
    }
};

#ifdef __cpp_lib_format
/** Formats the text in UTF-8, with the options of strings; an unpaired surrogate becomes U+FFFD. */
template <>
struct std::formatter<KX7UString, char> : std::formatter<std::string_view, char> {
    template <class Context>
    auto format(KX7UString const& text, Context& context) const
    {
        kx7::Options options;
        options.errors = kx7::ErrorPolicy::REPLACE;
        kx7::Bytes const bytes = kx7::toBytes(text, KX7CS_UTF8, options);
        return std::formatter<std::string_view, char>::format(std::string_view(bytes.text), context);
    }
};
#endif

#endif
