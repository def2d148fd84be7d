// kx7text tests - the decoders and encoders of the Encoding Standard by the name of the encoding.
//
// A model shares no code with the library. One file a family, each step of an algorithm in the order of the standard's
// text, so that a reader can hold the two beside each other; the data are the standard's own files.
#ifndef KX7_TESTS_MODEL_WEB_WEBCODEC_H
#define KX7_TESTS_MODEL_WEB_WEBCODEC_H

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/model/web/Big5Web.h"
#include "tests/model/web/EucJpWeb.h"
#include "tests/model/web/EucKrWeb.h"
#include "tests/model/web/Gb18030Web.h"
#include "tests/model/web/Iso2022JpWeb.h"
#include "tests/model/web/ShiftJisWeb.h"
#include "tests/model/web/SingleByteWeb.h"
#include "tests/model/web/Utf16Web.h"
#include "tests/model/web/Utf8Web.h"

namespace kx7test {

/** Every encoding of the standard by its name, in the standard's order, with its labels. */
inline std::vector<std::pair<std::string, std::vector<std::string>>> const& webEncodings()
{
    static auto const encodings = [] {
        std::vector<std::pair<std::string, std::vector<std::string>>> read;
        for (std::string const& line : webDataLines("labels.txt")) {
            size_t const tab = line.find('\t');
            std::string const name = line.substr(tab + 1);
            if (read.empty() || read.back().first != name)
                read.push_back({name, {}});
            read.back().second.push_back(line.substr(0, tab));
        }
        return read;
    }();
    return encodings;
}

/** The index of a single-byte encoding. */
inline WebIndex const& singleByteWebIndex(std::string const& encoding)
{
    if (encoding == "ISO-8859-8-I")
        return WebIndex::named("iso-8859-8");
    std::string name;
    for (char const c : encoding)
        name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return WebIndex::named(name);
}

inline std::unique_ptr<WebHandler> makeWebDecoder(std::string const& encoding)
{
    if (encoding == "UTF-8")
        return std::make_unique<Utf8WebDecoder>();
    if (encoding == "GBK" || encoding == "gb18030")
        return std::make_unique<Gb18030WebDecoder>();
    if (encoding == "Big5")
        return std::make_unique<Big5WebDecoder>();
    if (encoding == "EUC-JP")
        return std::make_unique<EucJpWebDecoder>();
    if (encoding == "ISO-2022-JP")
        return std::make_unique<Iso2022JpWebDecoder>();
    if (encoding == "Shift_JIS")
        return std::make_unique<ShiftJisWebDecoder>();
    if (encoding == "EUC-KR")
        return std::make_unique<EucKrWebDecoder>();
    if (encoding == "replacement")
        return std::make_unique<ReplacementWebDecoder>();
    if (encoding == "UTF-16BE" || encoding == "UTF-16LE")
        return std::make_unique<Utf16WebDecoder>(encoding == "UTF-16BE");
    if (encoding == "x-user-defined")
        return std::make_unique<UserDefinedWebDecoder>();
    return std::make_unique<SingleByteWebDecoder>(singleByteWebIndex(encoding));
}

/** "get an encoder" */
inline std::unique_ptr<WebHandler> makeWebEncoder(std::string const& encoding)
{
    if (encoding == "replacement" || encoding == "UTF-16BE" || encoding == "UTF-16LE")
        throw std::logic_error(encoding + " has no encoder");
    if (encoding == "UTF-8")
        return std::make_unique<Utf8WebEncoder>();
    if (encoding == "GBK" || encoding == "gb18030")
        return std::make_unique<Gb18030WebEncoder>(encoding == "GBK");
    if (encoding == "Big5")
        return std::make_unique<Big5WebEncoder>();
    if (encoding == "EUC-JP")
        return std::make_unique<EucJpWebEncoder>();
    if (encoding == "ISO-2022-JP")
        return std::make_unique<Iso2022JpWebEncoder>();
    if (encoding == "Shift_JIS")
        return std::make_unique<ShiftJisWebEncoder>();
    if (encoding == "EUC-KR")
        return std::make_unique<EucKrWebEncoder>();
    if (encoding == "x-user-defined")
        return std::make_unique<UserDefinedWebEncoder>();
    return std::make_unique<SingleByteWebEncoder>(singleByteWebIndex(encoding));
}

/** One result of a decoder: the byte sequence from `begin` up to `end` is these code points, or malformed. */
struct WebDecoded {
    bool isError;
    std::u32string codePoints;  // one, of some Big5 codes two; none of an error
    size_t begin, end;
};

/** One result of an encoder: the code points from `begin` up to `end` are these bytes, or `codePoint` has none. */
struct WebEncoded {
    bool isError;
    std::string bytes;
    char32_t codePoint;  // of an error
    size_t begin, end;
};

/** A decoder whose instance starts afresh with each call. */
struct WebDecoder {
    std::string encoding;

    /** "process a queue" with every error noted, or up to the first one. An error is U+FFFD in mode "replacement". */
    std::vector<WebDecoded> decode(std::string const& bytes, bool isFatal = false) const
    {
        WebQueue queue(bytes);
        std::unique_ptr<WebHandler> const handler = makeWebDecoder(encoding);
        std::vector<WebDecoded> results;
        size_t begin = 0;
        for (;;) {
            WebResult const result = handler->handle(queue, queue.read());
            if (result.kind == WebResult::FINISHED)
                return results;
            if (result.kind == WebResult::CONTINUE && !result.complete)
                continue;
            size_t const end = queue.offset() - result.kept;
            bool const isError = result.kind == WebResult::ERROR;
            if (result.kind != WebResult::CONTINUE)
                results.push_back({isError, {result.items.begin(), result.items.end()}, begin - result.before, end});
            if (isError && isFatal)
                return results;
            begin = result.before == 0 ? end : queue.offset();
        }
    }
};

/** An encoder whose instance starts afresh with each call. */
struct WebEncoder {
    std::string encoding;

    /** "process a queue" with every error noted, or up to the first one. */
    std::vector<WebEncoded> encode(std::u32string const& codePoints, bool isFatal = false) const
    {
        WebQueue queue(codePoints);
        std::unique_ptr<WebHandler> const handler = makeWebEncoder(encoding);
        std::vector<WebEncoded> results;
        size_t begin = 0;
        for (;;) {
            WebResult const result = handler->handle(queue, queue.read());
            if (result.kind == WebResult::FINISHED)
                return results;
            if (result.kind == WebResult::ERROR) {
                results.push_back({true, {}, static_cast<char32_t>(result.items.at(0)), begin, queue.offset()});
                if (isFatal)
                    return results;
            }
            else {
                std::string bytes;
                for (int const byte : result.items)
                    bytes += static_cast<char>(byte);
                results.push_back({false, bytes, 0, begin, queue.offset()});
            }
            begin = queue.offset();
        }
    }
};

}  // namespace kx7test

#endif
