// kx7text tests - the Encoding Standard's labels and its hooks for other standards.
#ifndef KX7_TESTS_MODEL_WEB_WEBHOOKS_H
#define KX7_TESTS_MODEL_WEB_WEBHOOKS_H

#include "tests/model/web/WebCodec.h"

namespace kx7test {

/** "get an encoding": the name of the encoding; empty: failure. */
inline std::string webEncodingOf(std::string label)
{
    auto const isSpace = [](char c) { return c == '\t' || c == '\n' || c == '\f' || c == '\r' || c == ' '; };
    while (!label.empty() && isSpace(label.front()))
        label.erase(0, 1);
    while (!label.empty() && isSpace(label.back()))
        label.pop_back();
    for (char& c : label) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    for (auto const& [name, labels] : webEncodings()) {
        for (std::string const& known : labels) {
            if (known == label)
                return name;
        }
    }
    return {};
}

/** "get an output encoding" */
inline std::string webOutputEncoding(std::string const& encoding)
{
    if (encoding == "replacement" || encoding == "UTF-16BE" || encoding == "UTF-16LE")
        return "UTF-8";
    return encoding;
}

/** "BOM sniff": the name of the encoding; empty: null. */
inline std::string webBomSniff(std::string const& bytes)
{
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
        return "UTF-8";
    if (bytes.compare(0, 2, "\xFE\xFF") == 0)
        return "UTF-16BE";
    if (bytes.compare(0, 2, "\xFF\xFE") == 0)
        return "UTF-16LE";
    return {};
}

/** The output of "process a queue" in mode "replacement". */
inline std::u32string webReplaced(std::vector<WebDecoded> const& results)
{
    std::u32string text;
    for (WebDecoded const& result : results)
        text += result.isError ? U"\uFFFD" : result.codePoints;
    return text;
}

/** "decode": of bytes in a fallback encoding */
inline std::u32string webDecode(std::string const& bytes, std::string const& encoding)
{
    std::string const bomEncoding = webBomSniff(bytes);
    if (bomEncoding.empty())
        return webReplaced(WebDecoder{encoding}.decode(bytes));
    return webReplaced(WebDecoder{bomEncoding}.decode(bytes.substr(bomEncoding == "UTF-8" ? 3 : 2)));
}

/** "UTF-8 decode without BOM": the mark is a character. */
inline std::u32string webUtf8DecodeWithoutBom(std::string const& bytes)
{
    return webReplaced(WebDecoder{"UTF-8"}.decode(bytes));
}

/** "UTF-8 decode" */
inline std::u32string webUtf8Decode(std::string const& bytes)
{
    return webUtf8DecodeWithoutBom(bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? bytes.substr(3) : bytes);
}

/** "UTF-8 decode without BOM or fail": false is failure. */
inline bool webUtf8DecodeWithoutBomOrFail(std::string const& bytes, std::u32string& text)
{
    auto const results = WebDecoder{"UTF-8"}.decode(bytes, true);
    if (!results.empty() && results.back().isError)
        return false;
    text = webReplaced(results);
    return true;
}

/** "encode": what the encoding lacks becomes "&#", its value in base ten and ";". */
inline std::string webEncode(std::u32string const& codePoints, std::string const& encoding)
{
    std::string bytes;
    for (WebEncoded const& result : WebEncoder{encoding}.encode(codePoints))
        bytes +=
            result.isError ? "&#" + std::to_string(static_cast<unsigned int>(result.codePoint)) + ";" : result.bytes;
    return bytes;
}

}  // namespace kx7test

#endif
