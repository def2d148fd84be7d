// kx7text - conversion without counting bytes: whole texts, streams, validation, names of character sets (C++17).
//
//     kx7::Units const text = kx7::decode("caf\xE9", KX7CS_WCP1252);
//     text.text == u"caf\xE9" && text.isComplete();
//
//     kx7::Decoder decoder(KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE});
//     kx7::StreamResult const step = decoder.convert(bytes, units, isLast);
//
// Counts instead of terminators: a zero is a character like any other. Nothing is truncated, supplementary characters
// stay whole. UTF-8, UTF-16 and UTF-32 have to be well-formed, where the published converters are lenient, EUC-JP has
// to keep to its ranges, and UTF-16 with escapes must not escape ASCII ("U+002F"), which its encoder writes as itself;
// the other sets follow their tables. Byte order is the host's.
//
// Functions and streams are noexcept unless they return a string; those throw std::bad_alloc, and std::length_error
// where a text would be longer than a string can be, and nothing else. Characters of a set whose tables find no memory
// are errors, until there is some. Functions may be called from any thread at once; a stream is used by one thread at a
// time.
#ifndef KX7_CONVERT_H
#define KX7_CONVERT_H

#if __cplusplus < 201703L
#error "kx7/convert.h needs C++17"
#endif

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kx7/base/Export.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/convert/Boundaries.h"
#include "kx7/convert/WebCharSets.h"

class KX7CharSetConverter;

namespace kx7 {

struct Engine;

/** A pointer and a count. Made of those or of whatever has data() and size(). */
template <class T>
class Span {
public:
    /** Nothing. */
    constexpr Span() noexcept : m_data(nullptr), m_size(0) {}

    /** `size` elements at `data`. */
    constexpr Span(T* data, std::size_t size) noexcept : m_data(data), m_size(size) {}

    /** All of a text or a container. */
    template <class Text, class Element = std::remove_pointer_t<decltype(std::declval<Text&>().data())>,
              std::enable_if_t<std::is_convertible<Element (*)[], T (*)[]>::value, int> = 0>
    constexpr Span(Text&& text) noexcept : m_data(text.data()), m_size(text.size())
    {
    }

    constexpr T* data() const noexcept { return m_data; }                        ///< the first element
    constexpr std::size_t size() const noexcept { return m_size; }               ///< how many there are
    constexpr bool empty() const noexcept { return m_size == 0; }                ///< there is none
    constexpr T* begin() const noexcept { return m_data; }                       ///< the first element
    constexpr T* end() const noexcept { return m_data + m_size; }                ///< after the last element
    constexpr T& operator[](std::size_t i) const noexcept { return m_data[i]; }  ///< the element at `i`

    /** The elements after the first `count`, which is at most size(). */
    constexpr Span after(std::size_t count) const noexcept { return {m_data + count, m_size - count}; }

private:
    T* m_data;
    std::size_t m_size;
};

/** What is done with what cannot be converted: malformed or unmapped input, characters that the target lacks. */
enum class ErrorPolicy : unsigned char {
    STRICT,   ///< the conversion stops after it
    REPLACE,  ///< the substitute stands for each malformed sequence and for each character that the target lacks
    SKIP,     ///< nothing stands for it
    ESCAPE    ///< "U+20AC" for each code unit that the target lacks; malformed bytes as with REPLACE
};

/** What is done about U+FEFF at the beginning of a text. Anywhere else it is a character like any other. */
enum class Bom : unsigned char {
    KEEP,     ///< it is converted like any other character
    STRIP,    ///< it is left out
    REQUIRE,  ///< it is left out, and where there is none nothing is converted: Status::MISSING_BOM
    ADD       ///< the result begins with one, whether the source does or not, unless the target has no U+FEFF
};

/** How a text is converted. */
struct Options {
    ErrorPolicy errors = ErrorPolicy::STRICT;  ///< what is done with errors

    /** What REPLACE writes: a Unicode character, or 0 for U+FFFD. Where the target lacks it, "?". */
    char32_t substitute = 0;

    Bom bom = Bom::KEEP;  ///< what is done about a byte-order mark
};

/** Why a conversion returned. */
enum class Status : unsigned char {
    DONE,             ///< the source is used up; the beginning of a character at its end is kept for the next call
    OUTPUT_FULL,      ///< what follows does not fit whole
    INVALID,          ///< STRICT: malformed or unmapped input
    UNREPRESENTABLE,  ///< STRICT: a character that the target lacks
    MISSING_BOM,      ///< Bom::REQUIRE: the text begins with something else; nothing is converted
    NO_CONVERTER      ///< the library cannot convert that character set; nothing is converted
};

/** Something that could not be converted, and where. Offsets count from the beginning of the text. */
struct Error {
    /** Bytes before it: of the source where that is bytes, else of the result. */
    unsigned long long byteOffset;

    /** UTF-16 code units before it: of the source, of the result or, between bytes and bytes, of what is between. */
    unsigned long long unitOffset;

    /** Transcoder: U+000A among those units; else 0. */
    unsigned long long lineFeeds;

    /** INVALID, UNREPRESENTABLE, MISSING_BOM; DONE: there was no error. */
    Status status;

    /** Bytes or code units of the source that it takes; 0 for MISSING_BOM. */
    unsigned char length;

    /** INVALID in bytes: the first of them. */
    unsigned char bytes[14];

    /** UNREPRESENTABLE: the character. INVALID in UTF-16: the surrogate without its partner. Else 0. */
    char32_t codePoint;
};

/** How far a call of a stream came. */
struct StreamResult {
    std::size_t consumed;  ///< bytes or units of the source, those that are kept for the next call included
    std::size_t written;   ///< units or bytes of the destination
    Status status;         ///< why the call returned
};

/** What a Transcoder counts as lines. */
enum class LineFeeds : unsigned char {
    IN_TEXT,   ///< U+000A in the UTF-16 between: right for every character set
    IN_BYTES,  ///< bytes 0x0A of the source outside malformed sequences: faster; the same where lineFeedsAreBytes says
               ///< so
    NONE       ///< nothing: Transcoder::lineFeeds stays as it is, Error::lineFeeds is 0
};

/** How a call of Transcoder::convert works; the same text may be converted by calls of different kinds. */
struct TranscoderCall {
    bool last = false;                         ///< the text ends with the piece
    LineFeeds lineFeeds = LineFeeds::IN_TEXT;  ///< what is counted

    /**
     * Where the UTF-16 between is put, which the call overwrites; the caller's, and not needed after it. With 8,192
     * units long texts take some percent less time than with the 2,048 that are on the stack where this has fewer than
     * two.
     */
    Span<char16_t> buffer = {};
};

/** What streams have in common: the first error, the last one, how many there were. */
class KX7_API StreamErrors {
public:
    /** Everything that could not be converted since the beginning of the text. */
    unsigned long long errorCount() const noexcept { return m_count; }

    /** The first of it; its status is DONE where there was none. */
    Error const& firstError() const noexcept { return m_first; }

    /** What the last call stopped at, where its status is INVALID, UNREPRESENTABLE or MISSING_BOM. */
    Error const& lastError() const noexcept { return m_last; }

protected:
    /** No error so far. */
    StreamErrors() noexcept : m_first(), m_last(), m_count(0) {}

    friend struct Streams;

    Error m_first;               ///< see firstError
    Error m_last;                ///< see lastError
    unsigned long long m_count;  ///< see errorCount
};

/**
 * Bytes to UTF-16, in pieces of any size: the result does not depend on where the pieces end.
 *
 * A character or a substitute is written whole; what does not fit whole is left, and a capacity of MINIMUM_CAPACITY
 * suffices for each. After an error that stops it (STRICT) a stream is ready for what follows: the sequence is
 * consumed, nothing stands for it, and the next call goes on after it. A stream can be copied: both go on from there.
 */
class KX7_API Decoder : public StreamErrors {
public:
    /** Units in which whatever comes next fits. */
    static constexpr std::size_t MINIMUM_CAPACITY = 2;

    /** A stream at the beginning of a text. `from` may have no converter: convert says so. */
    explicit Decoder(KX7CharSet from, Options const& options = {}) noexcept;

    /**
     * Converts the next piece.
     * @param last the text ends with it: what begins a character at its end is malformed
     */
    StreamResult convert(Span<char const> source, Span<char16_t> dest, bool last) noexcept;

    /** Begins a new text: forgets what is kept, the position and the errors. */
    void reset() noexcept;

    /** What is done with errors from now on. */
    void setErrors(ErrorPolicy errors) noexcept { m_options.errors = errors; }

    /** Bytes so far, what is kept for the next call not counted. */
    unsigned long long bytePosition() const noexcept { return m_bytePosition; }

    /** Units so far, what is kept for the next call not counted. */
    unsigned long long unitPosition() const noexcept { return m_unitPosition; }

    /**
     * The most units that `byteCount` further bytes and those that are kept can become, whatever they are. Exact at the
     * beginning of a text, but for Bom::REQUIRE: some text of that length becomes so many. None where size_t cannot
     * hold it, and where there is no converter.
     */
    std::optional<std::size_t> maxUnits(std::size_t byteCount) const noexcept;

private:
    friend class Transcoder;
    friend struct Streams;

    Engine const* m_engine;
    KX7CharSetConverter* m_converter;
    Options m_options;
    bool m_atStart;
    unsigned char m_heldCount;  ///< bytes at the front of m_held that begin a character
    unsigned char m_held[16];
    unsigned long long m_bytePosition;
    unsigned long long m_unitPosition;
};

/** UTF-16 to bytes, in pieces of any size; as Decoder. */
class KX7_API Encoder : public StreamErrors {
public:
    /** Bytes in which whatever comes next fits: an escape in UTF-32. */
    static constexpr std::size_t MINIMUM_CAPACITY = 24;

    /** A stream at the beginning of a text. `to` may have no converter: convert says so. */
    explicit Encoder(KX7CharSet to, Options const& options = {}) noexcept;

    /**
     * Converts the next piece.
     * @param last the text ends with it: a high surrogate at its end has no partner
     */
    StreamResult convert(Span<char16_t const> source, Span<char> dest, bool last) noexcept;

    /** Begins a new text: forgets what is kept, the position and the errors. */
    void reset() noexcept;

    /** What is done with errors from now on. */
    void setErrors(ErrorPolicy errors) noexcept { m_options.errors = errors; }

    /** Bytes so far, what is kept for the next call not counted. */
    unsigned long long bytePosition() const noexcept { return m_bytePosition; }

    /** Units so far, what is kept for the next call not counted. */
    unsigned long long unitPosition() const noexcept { return m_unitPosition; }

    /**
     * The most bytes that `unitCount` further units and those that are kept can become, whatever they are. Exact at the
     * beginning of a text, but for Bom::REQUIRE: some text of that length becomes so many. None where size_t cannot
     * hold it, and where there is no converter.
     */
    std::optional<std::size_t> maxBytes(std::size_t unitCount) const noexcept;

private:
    friend class Transcoder;
    friend struct Streams;

    Engine const* m_engine;
    KX7CharSetConverter* m_converter;
    Options m_options;
    bool m_atStart;
    unsigned char m_heldCount;       ///< 1: m_held is a high surrogate
    unsigned char m_substituteSize;  ///< bytes of m_substitute; the substitute in the target
    unsigned char m_bomSize;         ///< bytes of m_bom; 0: the target has no U+FEFF
    unsigned short m_held;
    unsigned char m_substitute[12];
    unsigned char m_bom[8];
    unsigned long long m_bytePosition;
    unsigned long long m_unitPosition;
};

/**
 * Bytes to bytes of another character set, in pieces of any size; as Decoder. Memory beside the object: 4 KiB of stack.
 * Malformed bytes are replaced by the substitute of the target, as characters that it lacks are, unless setSubstitutes
 * tells them apart.
 */
class KX7_API Transcoder : public StreamErrors {
public:
    /** Bytes in which whatever comes next fits. */
    static constexpr std::size_t MINIMUM_CAPACITY = Encoder::MINIMUM_CAPACITY;

    /** A stream at the beginning of a text. Either set may have no converter: convert says so. */
    Transcoder(KX7CharSet from, KX7CharSet to, Options const& options = {}) noexcept;

    /**
     * Converts the next piece.
     * @param last the text ends with it: what begins a character at its end is malformed
     */
    StreamResult convert(Span<char const> source, Span<char> dest, bool last) noexcept;

    /** Converts the next piece, as `call` says. */
    StreamResult convert(Span<char const> source, Span<char> dest, TranscoderCall const& call) noexcept;

    /** Begins a new text: forgets what is kept, the position and the errors. */
    void reset() noexcept;

    /** What is done with errors from now on. */
    void setErrors(ErrorPolicy errors) noexcept;

    /**
     * What REPLACE writes from now on, each as Options::substitute: Unicode characters, or 0 for U+FFFD, and "?" where
     * the target lacks it.
     * @param malformed for a malformed sequence, also with ESCAPE
     * @param lacking   for a character that the target lacks
     */
    void setSubstitutes(char32_t malformed, char32_t lacking) noexcept;

    /** Bytes of the source so far, what is kept for the next call not counted. */
    unsigned long long bytePosition() const noexcept { return m_decoder.m_bytePosition; }

    /** U+000A in the text before that position. */
    unsigned long long lineFeeds() const noexcept { return m_lineFeeds; }

    /**
     * A number of bytes that `byteCount` further ones and those that are kept cannot exceed: what the one side makes
     * at most of the most that the other makes, which few pairs of sets reach. None as with the others.
     */
    std::optional<std::size_t> maxBytes(std::size_t byteCount) const noexcept;

private:
    friend struct Streams;

    Decoder m_decoder;
    Encoder m_encoder;
    unsigned long long m_lineFeeds;
};

/** What became of a text beside the text. */
struct Outcome {
    /**
     * DONE; INVALID, UNREPRESENTABLE: with STRICT, the text ends before `first`; MISSING_BOM, NO_CONVERTER: there is no
     * text.
     */
    Status status = Status::DONE;

    /** Everything that could not be converted; with STRICT 1 at most. */
    unsigned long long errorCount = 0;

    /** The first of it; its status is DONE where there was none. */
    Error first = {};

    /** All of the source is in the text, errors by their substitutes. */
    bool isComplete() const noexcept { return status == Status::DONE; }

    /** The same without an error. */
    bool isLossless() const noexcept { return status == Status::DONE && errorCount == 0; }
};

/** A text in UTF-16. */
struct Units : Outcome {
    std::u16string text;  ///< the result
};

/** A text in bytes. */
struct Bytes : Outcome {
    std::string text;  ///< the result
};

/** A whole text to UTF-16. */
KX7_API Units decode(std::string_view source, KX7CharSet from, Options const& options = {});

/** A whole text from UTF-16. */
KX7_API Bytes encode(std::u16string_view source, KX7CharSet to, Options const& options = {});

/** A whole text from bytes to bytes. */
KX7_API Bytes transcode(std::string_view source, KX7CharSet from, KX7CharSet to, Options const& options = {});

/** Whether a text is well-formed, and where it is not. */
struct Validity {
    std::size_t offset;  ///< bytes, or units of UTF-16, before the first malformed sequence; all of the text if valid
    std::size_t length;  ///< of that sequence: as long as what could begin a well-formed one; 0 if valid

    /** The text is well-formed. */
    explicit operator bool() const noexcept { return length == 0; }
};

/** UTF-8 without overlong forms, surrogates, values above U+10FFFF and unfinished sequences. */
KX7_API Validity validateUtf8(std::string_view text) noexcept;

/** UTF-16 without unpaired surrogates. */
KX7_API Validity validateUtf16(std::u16string_view text) noexcept;

/** The same in bytes, of which there is an even number. */
KX7_API Validity validateUtf16(std::string_view bytes) noexcept;

/** UTF-32 without surrogates and values above U+10FFFF. */
KX7_API Validity validateUtf32(std::u32string_view text) noexcept;

/** The same in bytes, of which there is a multiple of four. */
KX7_API Validity validateUtf32(std::string_view bytes) noexcept;

/** A byte-order mark at the beginning of bytes. */
struct DetectedBom {
    KX7CharSet charSet;  ///< KX7CS_OS_DEFAULT: there is none
    std::size_t length;  ///< bytes; 0: there is none

    /** There is one. */
    explicit operator bool() const noexcept { return length != 0; }
};

/**
 * The byte-order mark of UTF-8, UTF-16, UTF-32 (either order) or GB 18030 that `bytes` begin with. UTF-16 that begins
 * with U+FEFF U+0000 looks like UTF-32 and is taken for it.
 */
KX7_API DetectedBom detectBom(std::string_view bytes) noexcept;

/** A character set and what it is called. */
struct CharSetInfo {
    KX7CharSet charSet;  ///< also the number of the code page
    char const* name;    ///< "KX7CS_WCP1252"; of a set of kx7::web the name of the encoding: "IBM866"
    char const* iana;    ///< preferred MIME name at IANA, or another name there: "windows-1252"; null: none
    char const* whatwg;  ///< name of the encoding in the WHATWG Encoding Standard that the set is, or of a multibyte
                         ///< one that it comes nearest to; null: that one is another set, or nearer to one
};

/**
 * Every named character set but KX7CS_OS_DEFAULT, in a fixed order: the KX7CS_ sets, those without a converter
 * included, then those of kx7::web.
 */
KX7_API Span<CharSetInfo const> charSets() noexcept;

/** Names of one character set; null where the value is none. KX7CS_OS_DEFAULT: those of the set it stands for. */
KX7_API CharSetInfo const* charSetInfo(KX7CharSet charSet) noexcept;

/** What decides where a label means different sets: "iso-8859-1" is windows-1252 on the Web. */
enum class Labels : unsigned char {
    IANA_FIRST,   ///< a code-page number ("cp1253"), then IANA
    WHATWG_FIRST  ///< the WHATWG Encoding Standard
};

/**
 * The character set of a code-page number ("1251", "cp1251"), a name, in any case and with or without "KX7CS_"
 * ("wcp1251"), or a label of IANA or WHATWG ("Shift_JIS", "latin1"). White space around it does not count. Whether it
 * has a converter is another question.
 *
 * A number or a KX7CS_ name means the KX7CS_ set; the name of a single-byte encoding of the Encoding Standard,
 * EUC-JP, EUC-KR or Shift_JIS means that encoding byte for byte, which is a KX7CS_ set or one of kx7::web.
 */
KX7_API std::optional<KX7CharSet> findCharSet(std::string_view label, Labels labels = Labels::IANA_FIRST) noexcept;

/** This layer can convert `charSet`, rather than taking it for UTF-8 as the published functions do. */
KX7_API bool hasConverter(KX7CharSet charSet) noexcept;

/**
 * Enters the sets of kx7::web and their names into the registry of the process, as a program enters converters of its
 * own, so that the functions of KX7CharSet.h, KX7CharSetConverter::getConverter and KX7UString take them too. A set for
 * which the program has registered a converter keeps that; to call this again changes nothing.
 *
 * Call it before other threads convert. Throws std::bad_alloc, after which some sets or names may be entered and
 * another call enters the rest.
 */
KX7_API void registerCharSets();

/** A label that leads to a character set. */
struct CharSetLabel {
    char const* label;  ///< in lower case
    KX7CharSet iana;    ///< by IANA; KX7CS_OS_DEFAULT: not registered there
    KX7CharSet whatwg;  ///< by WHATWG; KX7CS_OS_DEFAULT: not listed there
};

/** Every label that findCharSet knows beside numbers and KX7CS_ names, sorted. */
KX7_API Span<CharSetLabel const> charSetLabels() noexcept;

}  // namespace kx7

#endif
